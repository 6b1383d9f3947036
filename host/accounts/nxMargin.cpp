#include "host/accounts/nxMargin.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/exchange/nxExchangeEvent.h"
#include "host/feed/nxFeedTime.h"
#include "host/market/nxMarketProduct.h"

namespace {

// The most that can be held, one way or the other, when all orders of one side are filled.
long long GetWorst(long long net, const nxBySide<long long>& working)
{
    return std::max(net + working.buy, working.sell - net);
}

// null where nothing is known.
nxDecimal GetReference(const nxMarketProduct& market, nxSide side)
{
    const nxBestQuote best = market.GetBest(nxGetOpposite(side));
    return best.price.IsValid() ? best.price : market.GetPrice().GetLastPrice();
}

nxExactAmount GetMargin(const nxProductDescription& terms, const nxDecimal& margin, long long lots,
                        const nxDecimal& price)
{
    if (!terms.marginIsRate) return {margin, lots};
    const nxDecimal& point = terms.pointValue.IsValid() ? terms.pointValue : nxDecimalOne;
    return nxExactAmount(price < nxDecimalZero ? -price : price, lots, point) * margin;
}

std::string Text(const nxExactAmount& amount)
{
    nxDecimal number = amount.GetAsDecimal(2);
    number.Normalise(0);
    return number.GetAsString();
}

}  // namespace

nxMargin::Lots& nxMargin::_GetWorking(Product& product, unsigned int job) const
{
    if (job >= product.working.size()) product.working.resize(job + 1, Lots{0, 0});
    return product.working[job];
}

nxMargin::Job& nxMargin::_GetJob(unsigned int job)
{
    if (job >= _jobs.size()) _jobs.resize(job + 1);
    return _jobs[job];
}

void nxMargin::OnEvent(const nxExchangeOrder& order, const nxExchangeEvent&, const nxMarketProduct&)
{
    const unsigned int left = order.IsAlive() ? order.GetRemaining() : 0;
    const auto [known, isNew] = _remaining.try_emplace(order.id, 0);
    _GetWorking(_products[order.kind.product], order.kind.owner)[order.kind.side] +=
        static_cast<long long>(left) - known->second;
    known->second = left;
    if (left == 0) _remaining.erase(known);
}

nxExactAmount nxMargin::_GetEquity(unsigned int job, const nxCurrencyEnum& currency) const
{
    return nxExactAmount(_capital, 1) + _ledger.GetProfit(job, currency);
}

nxExactAmount nxMargin::_GetInitial(unsigned int job, const nxCurrencyEnum& currency)
{
    nxExactAmount sum;
    for (unsigned int i = 0; i < _products.size(); ++i) {
        Product& product = _products[i];
        if (product.terms.currency != currency || !product.terms.initialMargin.IsValid()) continue;
        const nxLedger::Position held = _ledger.GetPosition(job, i);
        const long long lots = GetWorst(held.net, _GetWorking(product, job));
        if (lots == 0) continue;
        sum += GetMargin(product.terms, product.terms.initialMargin, lots,
                         held.mark.IsValid() ? held.mark : GetReference(*product.market, nxSide::Buy));
    }
    return sum;
}

nxExactAmount nxMargin::_GetMaintenance(unsigned int job, const nxCurrencyEnum& currency) const
{
    nxExactAmount sum;
    for (unsigned int i = 0; i < _products.size(); ++i) {
        const nxProductDescription& terms = _products[i].terms;
        const nxDecimal& margin =
            terms.maintenanceMargin.IsValid() ? terms.maintenanceMargin : terms.initialMargin;
        if (terms.currency != currency || !margin.IsValid()) continue;
        const nxLedger::Position held = _ledger.GetPosition(job, i);
        if (held.net != 0) sum += GetMargin(terms, margin, std::abs(held.net), held.mark);
    }
    return sum;
}

std::string nxMargin::FindObstacle(const nxExchangeOrder& order)
{
    Product& product = _products[order.kind.product];
    if (!product.terms.initialMargin.IsValid()) return {};
    const unsigned int owner = order.kind.owner;
    const nxSide side = order.kind.side;
    // Of an amendment the order counts as it will be, and not as it is.
    const auto known = _remaining.find(order.id);
    const long long counted = known == _remaining.end() ? 0 : known->second;
    Lots& working = _GetWorking(product, owner);
    const long long net = _ledger.GetPosition(owner, order.kind.product).net;
    working[side] -= counted;
    Lots wanted = working;
    wanted[side] += order.GetRemaining();
    const long long added = GetWorst(net, wanted) - GetWorst(net, working);
    const nxExactAmount used = _GetInitial(owner, product.terms.currency);
    working[side] += counted;
    if (added <= 0) return {};
    const nxDecimal price = order.kind.isMarket ? GetReference(*product.market, side) : order.terms.price;
    const nxExactAmount need = GetMargin(product.terms, product.terms.initialMargin, added, price);
    const nxExactAmount free = _GetEquity(owner, product.terms.currency) - used;
    if (!(free - need).IsNegative()) return {};
    Job& job = _GetJob(owner);
    std::string text = fmt::format("the order needs a margin of {}, and {} are free", Text(need), Text(free));
    if (++job.beyond == 1) {
        job.firstBeyond = order.arrived;
        job.beyondText = text;
    }
    return _rule == nxMarginRule::Refuse ? text : std::string();
}

void nxMargin::Look(unsigned int product, long long time)
{
    const nxCurrencyEnum& currency = _products[product].terms.currency;
    for (unsigned int number = 0; number < _products[product].working.size(); ++number) {
        if (_ledger.GetPosition(number, product).net == 0) continue;
        const nxExactAmount equity = _GetEquity(number, currency);
        const nxExactAmount margin = _GetMaintenance(number, currency);
        Job& job = _GetJob(number);
        const bool isBreached = (equity - margin).IsNegative();
        if (isBreached && !job.isBreached && ++job.breaches == 1) {
            job.firstBreach = time;
            job.breachText =
                fmt::format("{} of capital and profit, {} of margin", Text(equity), Text(margin));
        }
        job.isBreached = isBreached;
    }
}

std::vector<std::string> nxMargin::GetNotes(unsigned int job) const
{
    std::vector<std::string> notes;
    if (job >= _jobs.size()) return notes;
    const Job& known = _jobs[job];
    const char* const done = _rule == nxMarginRule::Refuse ? "refused" : "let through (--margin tell)";
    if (known.beyond != 0)
        notes.push_back(fmt::format("{} order{} beyond the buying power {}, the first at {}: {}",
                                    known.beyond, known.beyond == 1 ? "" : "s", done,
                                    nxFeedTime::GetAsString(known.firstBeyond), known.beyondText));
    if (known.breaches != 0)
        notes.push_back(
            fmt::format("below the maintenance margin {} time{}, first at {}: {}. Nothing was "
                        "closed, as a broker would have",
                        known.breaches, known.breaches == 1 ? "" : "s",
                        nxFeedTime::GetAsString(known.firstBreach), known.breachText));
    return notes;
}
