#include "host/run/nxRunNotes.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/jobs/nxHostTickDataCollection.h"
#include "host/run/nxUnreadParameters.h"

namespace {

bool HasRows(const nxFeedProduct* product)
{
    return product != nullptr && (product->Has(nxFeedKind::Quote) || product->Has(nxFeedKind::Depth) ||
                                  product->Has(nxFeedKind::Bar));
}

// "A, B and 3 more".
std::string JoinNames(const std::vector<std::string>& names)
{
    constexpr std::size_t most = 5;
    const std::size_t shown = std::min(names.size(), most);
    std::string text =
        fmt::format("{}", fmt::join(names.begin(), names.begin() + static_cast<long>(shown), ", "));
    if (names.size() > shown) text += fmt::format(" and {} more", names.size() - shown);
    return text;
}

// A file of products may describe more than one run needs; but beside a product that nothing describes it is
// mostly a name that the two files spell in two ways.
void NoteDescriptions(nxRunState& state, const nxFeedProductTable& products)
{
    const std::vector<nxProductDescription>& described = state.options.products;
    std::vector<std::string> missing, nameless;
    for (const nxProductDescription& product : described)
        if (!product.IsStrategy() && !HasRows(products.Find(product.name))) missing.push_back(product.name);
    // The described ones are the first of the table.
    for (auto i = static_cast<unsigned int>(described.size()); i < products.GetCount(); ++i)
        if (HasRows(&products.Get(i))) nameless.push_back(products.Get(i).GetName());
    if (!missing.empty() && !nameless.empty())
        state.statistics.remarks.push_back(
            fmt::format("described, but without rows: {}; in the data, but not described: {}",
                        JoinNames(missing), JoinNames(nameless)));
}

void NoteCollections(nxMarketJob& job, std::vector<std::string>& notes)
{
    for (const auto& [name, product] : job.GetProducts())
        for (nxHostTickDataCollection* collection : product->GetCollections())
            if (!collection->IsSubscribed() && collection->IsEmpty())
                notes.push_back(fmt::format(
                    "a collection of {} bars of {} stayed empty, since the script never called its "
                    "subscribe()",
                    collection->GetPeriodName(), name));
}

// Of the orders that were sent; isWanted(order) chooses.
template <class IsWanted>
std::vector<std::string> GetTradedProducts(const nxTradingJob& job, IsWanted isWanted)
{
    std::vector<const nxHostProduct*> products;
    for (const nxHostOrder& order : job.GetOwnOrders()) {
        const nxHostProduct* const product = &order.GetHostProduct();
        if (order.GetTicket().IsSent() && isWanted(order) &&
            std::ranges::find(products, product) == products.end())
            products.push_back(product);
    }
    std::vector<std::string> names;
    for (const nxHostProduct* product : products)
        names.push_back(product->GetMarket().GetName());
    return names;
}

// An order without a limit needs a quote to be filled at.
void NoteMissingQuotes(nxTradingJob& job, const nxFeedProductTable& products, std::vector<std::string>& notes)
{
    std::vector<std::string> names =
        GetTradedProducts(job, [](const nxHostOrder& order) { return order.GetTicket().IsMarket(); });
    std::erase_if(names, [&](const std::string& name) {
        const nxFeedProduct* const known = products.Find(name);
        return known == nullptr || known->HasBid() || known->HasAsk() || known->Has(nxFeedKind::Depth) ||
               known->Has(nxFeedKind::Bar);
    });
    if (!names.empty())
        notes.push_back(
            fmt::format("the data of {} hold trades and no quotes, which MARKET orders need: send LIMIT "
                        "orders, or add quotes or depth",
                        JoinNames(names)));
}

// What the orders meet is not what marks and scripts see.
void NoteTwoMarkets(nxRunState& state, const nxTradingJob& job, const nxFeedProductTable& products)
{
    std::vector<std::string>& remarks = state.statistics.remarks;
    for (const std::string& name : GetTradedProducts(job, [](const nxHostOrder&) { return true; })) {
        const nxFeedProduct* const known = products.Find(name);
        if (known == nullptr || !known->Has(nxFeedKind::Depth) || (!known->HasBid() && !known->HasAsk()))
            continue;
        std::string remark = name +
                             " has depth and quotes: orders meet the depth; marks and the scripts' "
                             "prices are the quotes";
        if (std::ranges::find(remarks, remark) == remarks.end()) remarks.push_back(std::move(remark));
    }
}

void NoteLateTrades(nxRunState& state, const nxLateTrades& trades)
{
    if (trades.late == 0) return;
    state.statistics.remarks.push_back(fmt::format(
        "{} of {} trades at the prices of own orders were recorded after the change of size that they "
        "caused, and count once (--late-trades)",
        trades.late, trades.all));
}

void NoteUnknownImpact(const nxRunState& state, const nxTradingJob& job, const nxTrading& trading,
                       std::vector<std::string>& notes)
{
    const unsigned long long count = trading.GetStatistics(job).withoutImpact;
    if (state.options.exchange.impact <= 0 || count == 0) return;
    notes.push_back(
        fmt::format("{} fill{} without impact: the data hold no two days before, and the products file "
                    "no dailyVolatility and dailyVolume",
                    count, count == 1 ? "" : "s"));
}

void NoteUnfilled(nxTradingJob& job, const nxTrading& trading, std::vector<std::string>& notes)
{
    const nxTradingStatistics counted = trading.GetStatistics(job);
    if (counted.orders == 0 || counted.fills != 0) return;
    const auto [reason, count] = trading.GetCommonestEnd(job);
    std::string text = fmt::format("no order was filled; {} of {}: {}", count, counted.orders, reason);
    if (reason == nxTrading::EndOfTime)
        text += ". An order is for its day unless createOrder is given time = \"GTC\"";
    notes.push_back(std::move(text));
}

}  // namespace

void nxNoteWhatIsMissing(nxRunState& state, nxJobList& jobs, const nxTrading& trading,
                         const nxFeedProductTable& products)
{
    NoteDescriptions(state, products);
    NoteLateTrades(state, trading.GetLateTrades());
    for (const auto& runner : jobs) {
        std::vector<std::string>& notes = runner->GetStatistics().notes;
        NoteCollections(runner->GetJob(), notes);
        NoteMissingQuotes(runner->GetJob(), products, notes);
        NoteUnfilled(runner->GetJob(), trading, notes);
        NoteUnknownImpact(state, runner->GetJob(), trading, notes);
        for (std::string& note : trading.GetMarginNotes(runner->GetJob()))
            notes.push_back(std::move(note));
        NoteTwoMarkets(state, runner->GetJob(), products);
    }
}

void nxNoteUnreadParameters(nxRunState& state, nxJobList& jobs)
{
    nxUnreadParameters unread;
    for (const auto& runner : jobs) {
        const nxJobStatistics& statistics = runner->GetStatistics();
        const bool hasFailed = std::ranges::any_of(statistics.failures, [](const auto& failure) {
            return failure.callback.value_or(nxCallback::OnInit) == nxCallback::OnInit;
        });
        if (statistics[nxCallback::OnInit].count != 0 && !hasFailed)
            unread.Add(runner->GetJob().GetOptions(), statistics[nxCallback::OnParameter].defined);
    }
    for (const nxParameterChange& change : state.options.changes)
        if (!change.tag.empty()) unread.NoteTagged(change.name);
    state.statistics.notes = unread.GetNotes();
    state.statistics.unreadParameters = unread.GetNames();
}

void nxNoteNoLatency(nxRunState& state)
{
    const nxRunOptions& options = state.options;
    nxRunStatistics& statistics = state.statistics;
    const bool isTimed = options.exchange.request.most != 0 || options.exchange.answer.most != 0 ||
                         options.feedLatency.most != 0;
    const bool hasOrders =
        std::ranges::any_of(statistics.jobs, [](const auto& job) { return job.trading.orders != 0; });
    if (isTimed || !hasOrders) return;
    const bool isOfBars = std::ranges::all_of(
        statistics.jobs, [](const auto& job) { return job.trading.orders == job.trading.barOrders; });
    statistics.notes.push_back(
        isOfBars ? "orders and data took no time; over bars any --latency moves fills from the next open to "
                   "that bar's close"
                 : "orders and data took no time; --latency 5ms and --feed-latency 5ms show what time costs");
}
