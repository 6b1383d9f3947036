#include "host/report/nxOrderStories.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/feed/nxFeedTime.h"

namespace {

using Kind = nxExchangeEvent::Kind;

std::string GetText(const nxVolume& volume)
{
    return volume.IsValid() ? std::to_string(volume.GetValue()) : "an unknown volume";
}

// Those that are given.
std::string GetText(const nxOrderTerms& terms)
{
    std::string text;
    const auto add = [&](const char* name, const auto& value, const auto& shown) {
        if (value.IsValid()) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, shown);
    };
    const auto price = [&](const char* name, const nxDecimal& value) {
        add(name, value, value.GetAsString());
    };
    const auto count = [&](const char* name, const nxVolume& value) { add(name, value, value.GetValue()); };
    count("volume", terms.volume);
    price("price", terms.price);
    price("stop", terms.stopPrice);
    count("peak", terms.icebergMinPeak);
    count("profit at ticks", terms.bracketProfit);
    count("stop loss at ticks", terms.bracketStopLoss);
    if (terms.expiry.IsValid()) text += ", until " + terms.expiry.GetAsString();
    return text;
}

std::string GetText(const nxOrderKind& kind)
{
    const char* const execution = nxGetText(kind.execution);
    return fmt::format("{} {}{}{} {}", nxGetText(kind.side), nxGetTypeText(kind.isMarket),
                       *execution == '\0' ? "" : " ", execution, nxGetText(kind.duration));
}

std::string GetMoney(const nxExactAmount& amount)
{
    nxDecimal number = amount.GetAsDecimal();
    number.Normalise(0);
    return number.GetAsString();
}

std::string Count(unsigned long long count, const char* what)
{
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

}  // namespace

nxOrderStories::nxOrderStories(const std::vector<unsigned int>& orders, FeeOf feeOf)
    : _feeOf(std::move(feeOf))
{
    for (const unsigned int number : orders)
        if (std::ranges::find(_stories, number, &Story::number) == _stories.end())
            _stories.emplace_back().number = number;
}

nxOrderStories::Story* nxOrderStories::_Find(const nxExchangeOrder& order)
{
    const auto found = std::ranges::find(_stories, order.id, &Story::number);
    return found == _stories.end() ? nullptr : &*found;
}

void nxOrderStories::Best::Note(const nxDecimal& other, nxSide side, long long when)
{
    if (!other.IsValid()) return;
    if (price.IsValid() && !nxIsBetter(side, other, price)) return;
    price = other;
    time = when;
}

void nxOrderStories::Story::Tell(long long time, const std::string& text)
{
    TellMoves();
    lines.push_back(nxFeedTime::GetAsString(time) + "  " + text);
}

void nxOrderStories::Story::TellMoves()
{
    const Moves told = std::exchange(moves, {});
    if (told.trades + told.changes == 0) return;
    std::string text = fmt::format("queue ahead from {} to {}:", GetText(told.from), GetText(told.to));
    if (told.trades != 0) text += fmt::format(" {} took {}", Count(told.trades, "trade"), told.traded);
    if (told.trades != 0 && told.changes != 0) text += ",";
    if (told.changes != 0)
        text += fmt::format(" {} of the level cancelled {}", Count(told.changes, "change"), told.cancelled);
    if (told.last != told.first) text += ", until " + nxFeedTime::GetAsString(told.last);
    lines.push_back(nxFeedTime::GetAsString(told.first) + "  " + text);
}

void nxOrderStories::Story::NoteQuotes(const nxMarketProduct& market, long long time)
{
    const nxSide other = nxGetOpposite(order.kind.side);
    const nxBookSide& levels = market.GetLevels(other);
    if (!levels.IsEmpty()) return quote.Note(levels.GetBest().price, other, time);
    quote.Note(other == nxSide::Sell ? market.GetPrice().GetAskPrice() : market.GetPrice().GetBidPrice(),
               other, time);
}

void nxOrderStories::OnRequest(const nxExchangeOrder& order, nxOrderRequest request,
                               const nxOrderTerms& terms, const nxMarketProduct& market, long long sent,
                               long long due)
{
    Story* const story = _Find(order);
    if (story == nullptr) return;
    story->order = order;
    const std::string travels =
        due == sent ? "" : fmt::format(" ({} ms to the exchange)", static_cast<double>(due - sent) / 1e6);
    switch (request) {
        case nxOrderRequest::New:
            return story->Tell(sent, fmt::format("sent: {} of {}, {}{}", GetText(order.kind),
                                                 market.GetName(), GetText(terms), travels));
        case nxOrderRequest::Amend:
            return story->Tell(sent, "amendment sent: " + GetText(terms) + travels);
        case nxOrderRequest::Cancel:
            return story->Tell(sent, "pull sent" + travels);
    }
}

void nxOrderStories::OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                             const nxMarketProduct& market)
{
    Story* const story = _Find(order);
    if (story == nullptr) return;
    story->order = order;
    const std::string reason = event.reason.empty() ? "" : ": " + event.reason;
    switch (event.kind) {
        case Kind::Accepted:
            story->NoteQuotes(market, event.time);
            return story->Tell(event.time, event.status == nxOrderStatus_Held
                                               ? "arrived, and is held out of the market"
                                               : "arrived, and is in the market");
        case Kind::ChildCreated:
            return story->Tell(event.time,
                               fmt::format("made by a fill of order {}: {} of {}, {}", order.parent,
                                           GetText(order.kind), market.GetName(), GetText(order.terms)));
        case Kind::Triggered:
            story->quote = story->trade = {};
            story->NoteQuotes(market, event.time);
            return story->Tell(event.time, "triggered, and is in the market");
        case Kind::Filled:
            return story->Tell(event.time,
                               fmt::format("filled {} at {}, {} of {} executed: {}, {}, fee {}",
                                           event.fillVolume, event.fillPrice.GetAsString(), event.executed,
                                           event.volume, event.isMaker ? "maker" : "taker",
                                           nxGetText(event.cause), GetMoney(_feeOf(order, event))));
        case Kind::Amended:
            story->tradedAtPrice = 0;
            return story->Tell(event.time,
                               (event.isRequested ? "amended: " : "amended by the bracket's other side: ") +
                                   GetText(order.terms));
        case Kind::Cancelled:
            story->reason = event.reason;
            return story->Tell(event.time, event.reason.empty() ? "pulled" : "ended" + reason);
        case Kind::Rejected:
            story->reason = event.reason;
            return story->Tell(event.time, "arrived, and is rejected" + reason);
        case Kind::AmendRejected:
            return story->Tell(event.time, "amendment refused" + reason);
        case Kind::CancelRejected:
            return story->Tell(event.time, "pull refused" + reason);
        case Kind::QueueMoved:
            return;
    }
}

void nxOrderStories::OnQueueMove(const nxExchangeOrder& order, const nxVolume& before, nxQueueMove move,
                                 long long time)
{
    Story* const story = _Find(order);
    if (story == nullptr) return;
    story->order = order;
    if (move == nxQueueMove::Joined)
        return story->Tell(time, fmt::format("joined the queue at {} with {} ahead",
                                             order.terms.price.GetAsString(), GetText(order.ahead)));
    if (!before.IsValid())
        return story->Tell(time, "its place in the queue is known now: " + GetText(order.ahead) + " ahead");
    Moves& moves = story->moves;
    if (moves.trades + moves.changes == 0) {
        moves.first = time;
        moves.from = before;
    }
    moves.last = time;
    moves.to = order.ahead;
    const unsigned int gone = before.GetValue() - order.ahead.GetValue();
    ++(move == nxQueueMove::Traded ? moves.trades : moves.changes);
    (move == nxQueueMove::Traded ? moves.traded : moves.cancelled) += gone;
}

void nxOrderStories::OnMarket(unsigned int product, const nxMarketProduct& market, const nxTraded* traded,
                              long long time)
{
    for (Story& story : _stories) {
        const nxExchangeOrder& order = story.order;
        if (order.id == 0 || !order.IsAlive() || order.kind.product != product) continue;
        const nxSide side = order.kind.side;
        story.NoteQuotes(market, time);
        if (traded == nullptr) continue;
        // A stop that waits wants the price to come to it from the other side.
        const nxSide wanted = order.triggered ? nxGetOpposite(side) : side;
        story.trade.Note(wanted == nxSide::Sell ? traded->low : traded->high, wanted, time);
        const bool hits = traded->aggressor != nxGetBuySell(side);
        if (hits && traded->low == order.terms.price && traded->volume.IsValid())
            story.tradedAtPrice += traded->volume.GetValue();
    }
}

std::string nxOrderStories::_ExplainRest(const Story& story)
{
    const nxExchangeOrder& order = story.order;
    const unsigned int rest = order.GetRemaining();
    if (order.status == nxOrderStatus_Filled) return "filled";
    const std::string what = order.executed == 0 ? "not filled: " : fmt::format("{} not filled: ", rest);
    const auto at = [](const Best& best) {
        return best.price.GetAsString() + " at " + nxFeedTime::GetAsString(best.time);
    };
    const char* const side = order.kind.side == nxSide::Buy ? "ask" : "bid";
    const std::string quote = story.quote.price.IsValid() ? fmt::format("best {} {}", side, at(story.quote))
                                                          : fmt::format("there was no {}", side);
    if (order.status == nxOrderStatus_Pending) return what + "the run ended before the order arrived";
    if (order.status == nxOrderStatus_Rejected) return what + story.reason;
    if (!order.triggered)
        return what + "the stop at " + order.terms.stopPrice.GetAsString() + " was never reached; " +
               (story.trade.price.IsValid() ? "nearest trade " + at(story.trade) : "there was no trade");
    if (order.status == nxOrderStatus_Held) return what + "the market did not open";
    if (order.kind.isMarket) return what + "the market showed too little; " + quote;
    if (order.kind.IsImmediate()) return what + "the market showed too little within the price; " + quote;
    const std::string price = order.terms.price.GetAsString();
    std::string text = what;
    if (!order.ahead.IsValid()) {
        text += "its place in the queue is not known; ";
    } else if (order.ahead.GetValue() != 0) {
        text += fmt::format("{} stayed ahead; ", Count(order.ahead.GetValue(), "lot"));
    }
    const nxDecimal& trade = story.trade.price;
    if (trade.IsValid() && trade != order.terms.price && order.IsWithin(trade)) {
        text += "the market traded through " + price + ", but not for all of it";
    } else if (trade.IsValid() && trade == order.terms.price) {
        text += fmt::format("the market traded {} at {}, and never through it", story.tradedAtPrice, price);
    } else {
        text += "the market never traded at " + price +
                (trade.IsValid() ? ", nearest trade " + at(story.trade) : "");
    }
    return text + "; " + quote;
}

bool nxOrderStories::Write(std::ostream& out, std::ostream& err, unsigned int count,
                           const std::vector<std::string>& jobs)
{
    bool isWhole = true;
    for (Story& story : _stories) {
        if (story.number == 0 || story.number > count) {
            err << fmt::format("--explain {}: there is no such order; the run had {}\n", story.number,
                               count == 0 ? "none" : Count(count, "order"));
            isWhole = false;
            continue;
        }
        out << "--- order " << story.number;
        if (jobs.size() > 1 && story.order.id != 0) out << " of " << jobs[story.order.kind.owner];
        out << "\n";
        story.TellMoves();
        for (const std::string& line : story.lines)
            out << line << "\n";
        if (story.order.id == 0) {
            out << "created, and never worked\n";
        } else {
            out << _ExplainRest(story) << "\n";
        }
    }
    return isWhole;
}
