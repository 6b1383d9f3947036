#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/exchange/nxExchangeOrder.h"

// The rules of docs/exchange.md for quotes, depth, trades and requests once more, as plainly and slowly as
// can be: one list of orders, whole prices, a level's queue as a row of single lots. To run beside the real
// book.
class nxNaiveBook
{
public:
    enum class Model { Touch, Cross, Queue };
    struct Order
    {
        unsigned int id = 0;
        bool isBuy = true, isMarket = false;
        nxOrderExecution execution = nxOrderExecution::None;
        int price = 0, stop = 0, trail = 0;
        unsigned int volume = 0, executed = 0, peak = 0, threshold = 0, displayed = 0;
        std::optional<unsigned int> ahead;
        bool rests = false, waits = false;

        unsigned int GetRest() const { return volume - executed; }
        bool Reaches(int other) const { return isMarket || (isBuy ? other <= price : other >= price); }
    };
    struct Change
    {
        bool isBid = true;
        int price = 0;
        unsigned int volume = 0;
    };
    // One price and volume for each side; a row gives both.
    using Quote = std::pair<Change, Change>;

    nxNaiveBook(Model model, bool hasDepth) : _model(model), _hasDepth(hasDepth) {}

    std::vector<std::string> fills;

    Order* Find(unsigned int id)
    {
        for (Order& order : _orders)
            if (order.id == id) return &order;
        return nullptr;
    }

    void New(const Order& order)
    {
        _orders.push_back(order);
        Enter(_orders.size() - 1);
    }
    // One that comes to be now knows of no trade before what is shown.
    void ForgetTrades() { _traded[false] = _traded[true] = {}; }
    void Cancel(unsigned int id)
    {
        std::erase_if(_orders, [id](const Order& order) { return order.id == id; });
    }
    void Amend(unsigned int id, int price, unsigned int volume)
    {
        Order order = *Find(id);
        const bool keeps = order.price == price && volume <= order.volume;
        order.price = price;
        order.volume = volume;
        if (order.GetRest() == 0) return Cancel(id);
        order.displayed = std::min(order.displayed, order.GetRest());
        if (keeps) {
            *Find(id) = order;
        } else {
            Cancel(id);
            New(order);
        }
    }

    void Trade(int price, unsigned int volume, int side)
    {
        _last = price;
        for (const bool buys : {true, false}) {
            unsigned int budget = volume;
            for (const int own : GetPrices(buys)) {
                if (buys ? own < price : own > price) break;
                const bool hits = own != price || side != (buys ? 1 : -1);
                if (_model == Model::Touch && hits) {
                    unsigned int endless = ~0u;
                    Sweep(buys, own, endless, true);
                } else if (own != price) {
                    Sweep(buys, own, budget, false);
                    PassQueue(buys, own);
                } else if (hits) {
                    ConsumeQueue(buys, own, volume, budget);
                }
            }
        }
        for (const bool bids : {true, false})
            for (const auto& [level, shown] : _shown[bids]) {
                const bool isBetter = bids ? level > price : level < price;
                unsigned int& traded = _traded[bids][level];
                if (isBetter) traded = shown;
                if (level == price && side != (bids ? 1 : -1)) traded = std::min(shown, traded + volume);
            }
    }
    void SetQuote(const std::optional<Quote>& quote, bool hasTrade)
    {
        bool isAnew[2] = {false, false};
        for (const bool bids : {true, false}) {
            if (!quote) break;
            const Change& now = bids ? quote->first : quote->second;
            auto& shown = _shown[bids];
            const bool isSame = shown.size() == 1 && shown.begin()->first == now.price;
            isAnew[bids] = !hasTrade || !isSame || shown.begin()->second != now.volume;
            shown = {{now.price, now.volume}};
            if (!isSame) _traded[bids] = _taken[bids] = {};
            if (isAnew[bids]) ShowLevel(bids, now.price, now.volume);
            if (isAnew[bids])
                for (const int price : GetPrices(bids))
                    Refresh(bids, price, GetShown(bids, price));
        }
        if (isAnew[false]) Meet(true);
        if (isAnew[true]) Meet(false);
        if (hasTrade || !_last) TryStops();
    }
    void SetDepth(const std::vector<Change>& changes)
    {
        for (const Change& change : changes) {
            auto& shown = _shown[change.isBid];
            shown[change.price] = change.volume;
            if (change.volume == 0) shown.erase(change.price);
            ShowLevel(change.isBid, change.price, change.volume);
        }
        for (const Change& change : changes)
            Refresh(change.isBid, change.price, change.volume);
        Meet(true);
        Meet(false);
        if (!_last) TryStops();
    }

private:
    using Side = std::map<int, unsigned int>;

    void Note(Order& order, int price, unsigned int volume, bool isMaker)
    {
        order.executed += volume;
        fills.push_back(std::to_string(order.id) + ": " + std::to_string(volume) + "@" +
                        std::to_string(price) + (isMaker ? " maker" : " taker"));
    }
    void DropFilled()
    {
        std::erase_if(_orders, [](const Order& order) { return order.GetRest() == 0; });
    }
    // Those that a trade went beyond have nobody in front.
    void PassQueue(bool buys, int price)
    {
        if (_level[buys][price]) _level[buys][price] = 0;
        for (const unsigned int id : GetIdsAt(buys, price))
            if (Find(id)->ahead) Find(id)->ahead = 0;
    }
    // The data name a level: its own trades are in that, and no more can be taken of it than there is.
    void ShowLevel(bool bids, int price, unsigned int volume)
    {
        _traded[bids].erase(price);
        _taken[bids][price] = std::min(_taken[bids][price], volume);
    }
    // Of resting limit orders, from the best on.
    std::vector<int> GetPrices(bool buys) const
    {
        std::vector<int> prices;
        for (const Order& order : _orders)
            if (order.rests && order.isBuy == buys && !order.isMarket) prices.push_back(order.price);
        std::ranges::sort(prices);
        prices.erase(std::unique(prices.begin(), prices.end()), prices.end());
        if (buys) std::ranges::reverse(prices);
        return prices;
    }
    std::vector<unsigned int> GetIdsAt(bool buys, int price) const
    {
        std::vector<unsigned int> ids;
        for (const Order& order : _orders)
            if (order.rests && !order.isMarket && order.isBuy == buys && order.price == price)
                ids.push_back(order.id);
        return ids;
    }
    std::optional<unsigned int> GetShown(bool bids, int price) const
    {
        const Side& shown = _shown[bids];
        if (const auto level = shown.find(price); level != shown.end())
            return level->second - GetFrom(_traded[bids], price);
        if (_hasDepth) return 0;
        if (shown.empty()) return {};
        const int best = shown.begin()->first;
        return (bids ? price > best : price < best) ? std::optional(0u) : std::nullopt;
    }
    static unsigned int GetFrom(const Side& side, int price)
    {
        const auto found = side.find(price);
        return found == side.end() ? 0 : found->second;
    }
    unsigned int GetFree(bool bids, int price) const
    {
        const unsigned int gone = GetFrom(_traded[bids], price) + GetFrom(_taken[bids], price);
        return GetFrom(_shown[bids], price) - std::min(gone, GetFrom(_shown[bids], price));
    }
    std::vector<int> GetShownPrices(bool bids) const
    {
        std::vector<int> prices;
        for (const auto& [price, volume] : _shown[bids])
            prices.push_back(price);
        if (bids) std::ranges::reverse(prices);
        return prices;
    }
    void ToTheEnd(unsigned int id)
    {
        const Order order = *Find(id);
        Cancel(id);
        _orders.push_back(order);
    }

    // The order stands last in the list; true when a new peak sent it there again.
    bool Renew(unsigned int id, const std::optional<unsigned int>& shown)
    {
        Order& order = *Find(id);
        if (order.execution != nxOrderExecution::Iceberg || order.displayed > order.threshold) return false;
        if (order.displayed >= order.GetRest()) return false;
        order.displayed = std::min(order.peak, order.GetRest());
        order.ahead = shown;
        ToTheEnd(id);
        return true;
    }

    void Enter(std::size_t index)
    {
        const unsigned int id = _orders[index].id;
        Order& order = _orders[index];
        order.rests = false;
        if (order.waits) return TryStop(id);
        if (order.execution == nxOrderExecution::FillOrKill) {
            unsigned long long sum = 0;
            for (const int price : GetShownPrices(!order.isBuy))
                if (order.Reaches(price)) sum += GetFree(!order.isBuy, price);
            for (const Order& own : _orders)
                if (own.rests && !own.isMarket && own.isBuy != order.isBuy && order.Reaches(own.price))
                    sum += own.GetRest();
            if (sum < order.GetRest()) return Cancel(id);
        }
        Take(id);
        if (Find(id) == nullptr) return;
        Order& left = *Find(id);
        if (left.execution == nxOrderExecution::ImmediateOrCancel) return Cancel(id);
        std::optional<unsigned int> shown = GetShown(left.isBuy, left.price);
        if (!left.isMarket && !GetIdsAt(left.isBuy, left.price).empty())
            shown = _level[left.isBuy][left.price];
        _level[left.isBuy][left.price] = shown;
        left.rests = true;
        left.ahead = shown;
        left.displayed = 0;
        Renew(id, shown);
    }

    // The best price first, what is shown before own orders at the same.
    void Take(unsigned int id)
    {
        for (Order* order = Find(id); order->GetRest() != 0;) {
            std::optional<int> best;
            const auto consider = [&](int price) {
                if (order->Reaches(price) && (!best || (order->isBuy ? price < *best : price > *best)))
                    best = price;
            };
            for (const int price : GetShownPrices(!order->isBuy))
                if (GetFree(!order->isBuy, price) != 0) consider(price);
            for (const int price : GetPrices(!order->isBuy))
                consider(price);
            if (!best) return;
            if (const unsigned int free = GetFree(!order->isBuy, *best); free != 0) {
                const unsigned int volume = std::min(free, order->GetRest());
                _taken[!order->isBuy][*best] += volume;
                Note(*order, *best, volume, false);
                continue;
            }
            Order& own = *Find(GetIdsAt(!order->isBuy, *best).front());
            const unsigned int volume = std::min(own.GetRest(), order->GetRest());
            own.displayed -= std::min(own.displayed, volume);
            Note(own, *best, volume, true);
            Note(*order, *best, volume, false);
            if (own.GetRest() == 0) {
                DropFilledBut(id);
            } else {
                Renew(own.id, _level[own.isBuy][own.price]);
            }
            order = Find(id);
        }
        DropFilled();
    }
    void DropFilledBut(unsigned int id)
    {
        std::erase_if(_orders, [id](const Order& order) { return order.GetRest() == 0 && order.id != id; });
    }

    // Everybody at the price in turn, peak after peak.
    void Sweep(bool buys, int price, unsigned int& budget, bool isWhole)
    {
        std::vector<unsigned int> turn = GetIdsAt(buys, price);
        for (std::size_t i = 0; i < turn.size() && budget != 0; ++i)
            if (ServeResting(turn[i], price, budget, isWhole)) turn.push_back(turn[i]);
    }
    // True when it stands at the end with a new peak.
    bool ServeResting(unsigned int id, int price, unsigned int& budget, bool isWhole)
    {
        Order& order = *Find(id);
        const bool hides = order.execution == nxOrderExecution::Iceberg && !isWhole;
        const unsigned int volume =
            std::min(budget, hides ? std::min(order.displayed, order.GetRest()) : order.GetRest());
        budget -= volume;
        order.displayed -= std::min(order.displayed, volume);
        Note(order, price, volume, true);
        const bool isBuy = order.isBuy;
        if (order.GetRest() == 0) {
            DropFilled();
            return false;
        }
        return Renew(id, _level[isBuy][price]);
    }

    // The queue as a row: 0 for a recorded lot, an id for an own order.
    void ConsumeQueue(bool buys, int price, unsigned int traded, unsigned int budget)
    {
        std::optional<unsigned int>& shown = _level[buys][price];
        const std::optional<unsigned int> before = shown;
        std::vector<unsigned int> row;
        unsigned int recorded = 0;
        const auto addRecorded = [&](unsigned int until) {
            for (; recorded < until; ++recorded)
                row.push_back(0);
        };
        for (const unsigned int id : GetIdsAt(buys, price)) {
            if (!Find(id)->ahead) continue;
            addRecorded(*Find(id)->ahead);
            row.push_back(id);
        }
        if (before) addRecorded(*before);
        for (std::size_t i = 0; i < row.size() && budget != 0;) {
            if (row[i] == 0) {
                --budget;
                row.erase(row.begin() + static_cast<std::ptrdiff_t>(i));
            } else if (_model == Model::Cross) {
                ++i;
            } else {
                const unsigned int id = row[i];
                const bool renewed = ServeResting(id, price, budget, false);
                if (Find(id) != nullptr && !renewed) break;  // the trade was too small for it
                row.erase(row.begin() + static_cast<std::ptrdiff_t>(i));
                if (renewed && before) row.push_back(id);
            }
        }
        if (before) shown = *before - std::min(*before, traded);
        unsigned int front = 0;
        for (const unsigned int lot : row) {
            if (lot == 0) {
                ++front;
            } else {
                Find(lot)->ahead = shown ? std::min(front, *shown) : front;
            }
        }
    }

    void Refresh(bool bids, int price, const std::optional<unsigned int>& now)
    {
        const std::optional<unsigned int> before = _level[bids][price];
        _level[bids][price] = now;
        if (!now) return;
        for (const unsigned int id : GetIdsAt(bids, price)) {
            Order& order = *Find(id);
            if (!order.ahead) {
                order.ahead = now;
                continue;
            }
            const unsigned long long cancelled = before && *before > *now ? *before - *now : 0;
            const unsigned long long share = cancelled == 0 ? 0 : cancelled * *order.ahead / *before;
            order.ahead = std::min(*now, static_cast<unsigned int>(*order.ahead - share));
        }
    }

    void Meet(bool buys)
    {
        std::vector<unsigned int> market;
        for (const Order& order : _orders)
            if (order.rests && order.isMarket && order.isBuy == buys) market.push_back(order.id);
        for (const unsigned int id : market)
            Take(id);
        for (const int quote : GetShownPrices(!buys)) {
            const unsigned int free = GetFree(!buys, quote);
            const bool isTouch = _model == Model::Touch;
            unsigned int budget = isTouch && free != 0 ? ~0u : free;
            const unsigned int begin = budget;
            for (const int own : GetPrices(buys))
                if (buys ? own >= quote : own <= quote) Sweep(buys, own, budget, isTouch);
            _taken[!buys][quote] += std::min(free, begin - budget);
        }
    }

    void TryStops()
    {
        std::vector<unsigned int> waiting;
        for (const Order& order : _orders)
            if (order.waits) waiting.push_back(order.id);
        for (const unsigned int id : waiting)
            TryStop(id);
    }
    void TryStop(unsigned int id)
    {
        Order& order = *Find(id);
        std::optional<int> price = _last;
        const std::vector<int> quotes = GetShownPrices(!order.isBuy);
        if (!price && !quotes.empty()) price = quotes.front();
        if (!price) return;
        const int sign = order.isBuy ? 1 : -1;
        if (sign * *price < sign * order.stop) {
            if (order.trail != 0)
                order.stop = sign * std::min(sign * order.stop, sign * *price + order.trail);
            return;
        }
        order.waits = false;
        ToTheEnd(id);
        Enter(_orders.size() - 1);
    }

    const Model _model;
    const bool _hasDepth;
    std::vector<Order> _orders;  // those that live, in the order of their places
    Side _shown[2];              // of the recorded market: asks, bids
    Side _traded[2];             // by the recorded market, since it showed the level
    Side _taken[2];              // by orders
    std::map<int, std::optional<unsigned int>> _level[2];  // what own orders see of their levels
    std::optional<int> _last;
};
