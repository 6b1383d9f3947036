// The recorded market: what is shown, trades, queues, stops and bars.
#include <algorithm>

#include "tests/host/nxNaiveExchange.h"

namespace {

constexpr unsigned int Endless = ~0u;

bool IsBetter(bool isBuy, int price, int other)
{
    return isBuy ? price > other : price < other;
}

}  // namespace

// --- What is shown

nxNaiveExchange::Volume nxNaiveExchange::_GetLeft(bool bids, int price) const
{
    if (const auto found = _shown[bids].find(price); found != _shown[bids].end()) {
        const Shown& level = found->second;
        if (!level.volume) return {};
        return level.isGone ? 0 : *level.volume - std::min(*level.volume, level.gone);
    }
    if (_hasDepth) return 0;
    if (_shown[bids].empty()) return {};
    return IsBetter(bids, price, _shown[bids].begin()->first) ? Volume(0) : std::nullopt;
}

unsigned int nxNaiveExchange::_GetFree(bool bids, int price) const
{
    const Shown& level = _shown[bids].at(price);
    if (level.isGone) return 0;
    if (!level.volume) return Endless;
    return *level.volume - std::min(*level.volume, level.gone + level.taken);
}

// Of the assumed book beyond the best price.
unsigned int nxNaiveExchange::_GetAssumed(bool bids, int price) const
{
    if (_options.beyond == Beyond::Wait || _hasDepth || _options.hasBars || _rows[bids] == 0) return 0;
    if (price <= 0) return 0;
    if (_tradedTo[bids] && !IsBetter(bids, *_tradedTo[bids], price)) return 0;
    const unsigned int mean = std::max(1u, static_cast<unsigned int>(_sizes[bids] / _rows[bids]));
    const auto found = _assumed[bids].find(price);
    return mean - std::min(mean, found == _assumed[bids].end() ? 0 : found->second.taken);
}

nxNaiveExchange::Price nxNaiveExchange::_GetBest(bool bids) const
{
    if (_shown[bids].empty()) return {};
    return bids ? _shown[bids].rbegin()->first : _shown[bids].begin()->first;
}

nxNaiveExchange::Price nxNaiveExchange::_FindBestFree(const Order& order, bool& isAssumed) const
{
    Price best;
    for (const auto& [price, level] : _shown[!order.isBuy])
        if (order.Reaches(price) && _GetFree(!order.isBuy, price) != 0)
            if (!best || IsBetter(!order.isBuy, price, *best)) best = price;
    if (best || !order.isMarket || !_GetBest(!order.isBuy)) return best;
    for (int i = 1; i <= 1000; ++i) {
        const int price = *_GetBest(!order.isBuy) + (order.isBuy ? i : -i) * _options.tick;
        if (_GetAssumed(!order.isBuy, price) == 0) continue;
        isAssumed = true;
        return price;
    }
    return {};
}

nxNaiveExchange::Price nxNaiveExchange::_GetMarketPrice(bool isBuy) const
{
    return _last ? _last : _GetBest(!isBuy);
}

// Of resting limit orders, from the best on.
std::vector<int> nxNaiveExchange::_GetPrices(bool buys) const
{
    std::vector<int> prices;
    for (const unsigned int id : _line) {
        const Order& order = Get(id);
        if (order.rests && order.isBuy == buys && !order.isMarket) prices.push_back(*order.terms.price);
    }
    std::sort(prices.begin(), prices.end(), [buys](int a, int b) { return IsBetter(buys, a, b); });
    prices.erase(std::unique(prices.begin(), prices.end()), prices.end());
    return prices;
}

std::vector<unsigned int> nxNaiveExchange::_GetIdsAt(bool buys, int price) const
{
    std::vector<unsigned int> ids;
    for (const unsigned int id : _line) {
        const Order& order = Get(id);
        if (order.rests && !order.isMarket && order.isBuy == buys && order.terms.price == price)
            ids.push_back(id);
    }
    return ids;
}

void nxNaiveExchange::_Show(bool bids, int price, const Volume& volume)
{
    Shown& level = _shown[bids][price];
    level.volume = volume;
    level.gone = 0;
    level.isGone = false;
    if (volume) level.taken = std::min(level.taken, *volume);
    if (_hasDepth && volume == 0) _shown[bids].erase(price);
}

void nxNaiveExchange::_ShowBest(bool bids, int price, const Volume& volume)
{
    if (_GetBest(bids) != price) {
        _shown[bids].clear();
        _assumed[bids].clear();
    }
    _tradedTo[bids].reset();
    _Show(bids, price, volume);
}

unsigned int nxNaiveExchange::_GetAdvance(unsigned int ahead, unsigned int shown,
                                          unsigned int cancelled) const
{
    if (_options.queue == Queue::Back) return 0;
    if (_options.queue == Queue::Even) return cancelled * ahead / shown;
    unsigned long long front = 1, back = 1;
    for (unsigned int i = 0; i < _options.power; ++i) {
        front *= ahead;
        back *= shown - ahead;
    }
    return std::min(ahead, static_cast<unsigned int>(cancelled * front / (front + back)));
}

// Who joins stands behind all that has left the price.
unsigned int nxNaiveExchange::_GetLate(const Order& order) const
{
    const auto found = _late[order.isBuy].find(*order.terms.price);
    return found == _late[order.isBuy].end() || !order.ahead ? 0 : found->second.gone;
}

// They are remembered where own orders rest.
void nxNaiveExchange::_ForgetLate()
{
    for (const bool bids : {true, false})
        std::erase_if(_late[bids], [&](const auto& entry) { return _GetIdsAt(bids, entry.first).empty(); });
}

void nxNaiveExchange::_MoveQueues(bool bids, const std::map<int, Volume>& before)
{
    for (const int price : _GetPrices(bids)) {
        const auto found = before.find(price);
        const Volume was = found == before.end() ? Volume() : found->second;
        const Volume is = _GetLeft(bids, price);
        Late& late = _late[bids][price];
        const bool isLess = was && is && *is < *was;
        if (!is || (isLess && _now - late.time > _options.lateTrades)) {
            late.gone = 0;
            for (const unsigned int id : _GetIdsAt(bids, price))
                _Of(id).part = 0;
        }
        if (!is) continue;
        if (isLess && _options.lateTrades != 0) {
            late.gone += *was - *is;
            late.time = _now;
        }
        unsigned int least = 0;  // nobody passes an own order in front
        for (const unsigned int id : _GetIdsAt(bids, price)) {
            Order& order = _Of(id);
            if (!order.ahead) {
                order.ahead = is;
                continue;
            }
            const unsigned int ahead = *order.ahead;
            const unsigned int moved = isLess ? _GetAdvance(ahead, *was, *was - *is) : 0;
            order.ahead = least = std::max(least, std::min(*is, ahead - moved));
            order.part += ahead - *order.ahead;
        }
    }
}

// --- Events of the market

void nxNaiveExchange::OnOpen(long long time)
{
    _now = time;
    _isOpen = _isFresh = true;
    _LookAnew();
}

void nxNaiveExchange::OnClose(long long time)
{
    _now = time;
    _isOpen = false;
    for (const bool bids : {true, false}) {
        _closed[bids].clear();
        for (const int price : _GetPrices(bids))
            _closed[bids][price] = _GetLeft(bids, price);
    }
}

// What was taken and traded before is forgotten.
void nxNaiveExchange::_LookAnew()
{
    for (const bool bids : {true, false}) {
        for (auto& [price, level] : _shown[bids])
            level = {level.volume};
        _assumed[bids].clear();
        _tradedTo[bids].reset();
        _MoveQueues(bids, _closed[bids]);
    }
}

void nxNaiveExchange::Join()
{
    _isOpen = true;
    _isFresh = false;
    _LookAnew();
}

void nxNaiveExchange::OnQuote(const Row& row, long long time)
{
    _now = time;
    if (row.last) _last = row.last;
    if (_options.hasBars) return;
    if (row.isTrade && _last && _isOpen) _Trade(*_last, row.traded, row.side);
    bool isAnew[2] = {false, false};
    for (const bool bids : {true, false}) {
        const Price price = row.price[bids] ? row.price[bids] : _quoted[bids];
        const Volume size = row.volume[bids] ? row.volume[bids] : _quotedSize[bids];
        const bool isNamed = row.price[bids] || row.volume[bids];
        const bool isOther = price != _quoted[bids] || size != _quotedSize[bids];
        _quoted[bids] = price;
        _quotedSize[bids] = size;
        if (isOther && price && size) {
            _sizes[bids] += *size;
            ++_rows[bids];
        }
        if (!isNamed || !price || (row.isTrade && !isOther && !_isFresh)) continue;
        if (_hasDepth) continue;
        isAnew[bids] = true;
        std::map<int, Volume> before;
        for (const int own : _GetPrices(bids))
            before[own] = _GetLeft(bids, own);
        _ShowBest(bids, *price, size);
        if (_isOpen) _MoveQueues(bids, before);
    }
    if (_isOpen) _Act(isAnew[false], isAnew[true], row.isTrade && _last);
}

void nxNaiveExchange::OnDepth(const std::vector<Level>& levels, long long time)
{
    _now = time;
    _hasDepth = true;
    for (const Level& level : levels) {
        const std::map<int, Volume> before = {{level.price, _GetLeft(level.isBid, level.price)}};
        _Show(level.isBid, level.price, level.volume);
        if (_isOpen) _MoveQueues(level.isBid, before);
    }
    if (_isOpen) _Act(true, true, false);
}

// Resting orders first, then stops, then what waited for the opening.
void nxNaiveExchange::_Act(bool asksAnew, bool bidsAnew, bool isTrade)
{
    const bool opens = _isFresh;
    _isFresh = false;
    if (asksAnew) _Meet(true);
    if (bidsAnew) _Meet(false);
    if (isTrade || !_last) _TryStops();
    if (opens) _OpenWaiting();
    _Settle();
}

void nxNaiveExchange::_Trade(int price, const Volume& volume, int side)
{
    for (const bool buys : {true, false}) {
        unsigned int budget = volume.value_or(Endless);
        const bool hits = side != (buys ? 1 : -1);
        const bool isTouch = _options.fills == Fills::Touch;
        const unsigned int putBack = hits && volume ? _PutBack(buys, price, *volume) : 0;
        for (const int own : _GetPrices(buys)) {
            if (IsBetter(buys, price, own)) break;
            if (own == price && !hits) break;
            if (isTouch) {
                unsigned int endless = Endless;
                _Sweep(buys, own, endless, true, Cause::Touched);
            } else if (own != price) {
                _Sweep(buys, own, budget, false, Cause::TradedThrough);
                for (const unsigned int id : _GetIdsAt(buys, own))
                    if (Get(id).ahead) _Of(id).ahead = 0;
            } else if (volume) {
                _TakeFromQueue(buys, own, *volume, putBack, budget);
            }
        }
        if (const Price best = _GetBest(buys); best && IsBetter(buys, *best, price))
            if (!_tradedTo[buys] || IsBetter(buys, *_tradedTo[buys], price)) _tradedTo[buys] = price;
        for (auto& [at, level] : _shown[buys]) {
            if (IsBetter(buys, at, price)) level.isGone = level.volume.has_value();
            if (at != price || !hits || !volume) continue;
            level.gone = std::min(level.volume.value_or(0), level.gone + *volume - putBack);
        }
    }
}

// Lots that were counted as cancelled, for the trade that took them.
unsigned int nxNaiveExchange::_PutBack(bool buys, int price, unsigned int volume)
{
    const auto found = _late[buys].find(price);
    if (found == _late[buys].end() || found->second.gone == 0) return 0;
    Late& late = found->second;
    if (_options.lateTrades == 0 || _now - late.time > _options.lateTrades) return 0;
    const unsigned int lots = std::min(volume, late.gone);
    for (const unsigned int id : _GetIdsAt(buys, price)) {
        Order& order = _Of(id);
        const unsigned int part = (order.part * lots + late.gone - 1) / late.gone;
        if (order.ahead) *order.ahead += part;
        order.part -= part;
    }
    late.gone -= lots;
    return lots;
}

// The queue as a row: 0 for a recorded lot, an id for an own order.
void nxNaiveExchange::_TakeFromQueue(bool buys, int price, unsigned int traded, unsigned int putBack,
                                     unsigned int& budget)
{
    Volume shown = _GetLeft(buys, price);
    if (shown) *shown += putBack;
    const bool isKnown = shown.has_value();
    std::vector<unsigned int> row;
    unsigned int recorded = 0;
    const auto addRecorded = [&](unsigned int until) {
        for (; recorded < until; ++recorded)
            row.push_back(0);
    };
    for (const unsigned int id : _GetIdsAt(buys, price)) {
        if (!Get(id).ahead) continue;
        addRecorded(*Get(id).ahead);
        row.push_back(id);
    }
    if (isKnown) addRecorded(*shown);
    for (std::size_t i = 0; i < row.size() && budget != 0;) {
        if (row[i] != 0 && _options.fills == Fills::Cross) {
            ++i;
            continue;
        }
        const unsigned int id = row[i];
        if (id == 0) {
            --budget;
        } else if (Get(id).GetRest() != 0) {
            const bool renewed = _Serve(id, price, budget, false, Cause::Queue);
            if (Get(id).GetRest() != 0 && !renewed) break;  // the trade was too small for it
            if (renewed && isKnown) row.push_back(id);
        }
        row.erase(row.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if (isKnown) *shown -= std::min(*shown, traded);
    unsigned int front = 0;
    for (const unsigned int lot : row) {
        if (lot == 0) {
            ++front;
        } else {
            _Of(lot).ahead = shown ? std::min(front, *shown) : front;
        }
    }
}

// Everybody at the price in turn, peak after peak.
void nxNaiveExchange::_Sweep(bool buys, int price, unsigned int& budget, bool isWhole, Cause cause)
{
    std::vector<unsigned int> turn = _GetIdsAt(buys, price);
    for (std::size_t i = 0; i < turn.size() && budget != 0; ++i)
        if (Get(turn[i]).GetRest() != 0 && _Serve(turn[i], price, budget, isWhole, cause))
            turn.push_back(turn[i]);
}

// True when it stands at the end with a new peak.
bool nxNaiveExchange::_Serve(unsigned int id, int price, unsigned int& budget, bool isWhole, Cause cause)
{
    Order& order = _Of(id);
    const bool hides = order.execution == nxOrderExecution::Iceberg && !isWhole;
    const unsigned int volume =
        std::min(budget, hides ? std::min(order.displayed, order.GetRest()) : order.GetRest());
    budget -= volume;
    _Fill(order, price, volume, true, cause);
    return order.GetRest() != 0 && _Renew(order);
}

bool nxNaiveExchange::_Renew(Order& order)
{
    if (order.execution != nxOrderExecution::Iceberg) return false;
    if (order.displayed > order.terms.threshold.value_or(0) || order.displayed >= order.GetRest())
        return false;
    order.displayed = std::min(*order.terms.minPeak, order.GetRest());
    order.ahead = _GetLeft(order.isBuy, *order.terms.price);
    order.part = _GetLate(order);
    _ToTheEnd(order.id);
    return true;
}

// Who waits for the other side's quotes: MARKET orders, then limits from the best price on.
void nxNaiveExchange::_Meet(bool buys)
{
    for (const unsigned int id : std::vector<unsigned int>(_line))
        if (Get(id).rests && Get(id).isMarket && Get(id).isBuy == buys && Get(id).GetRest() != 0) _Take(id);
    std::vector<int> quotes;
    for (const auto& [price, level] : _shown[!buys])
        quotes.push_back(price);
    if (!buys) std::ranges::reverse(quotes);
    const bool isTouch = _options.fills == Fills::Touch;
    for (const int quote : quotes) {
        const unsigned int free = _GetFree(!buys, quote);
        unsigned int budget = isTouch && free != 0 ? Endless : free;
        const unsigned int begin = budget;
        for (const int own : _GetPrices(buys))
            if (!IsBetter(buys, quote, own))
                _Sweep(buys, own, budget, isTouch, isTouch ? Cause::Touched : Cause::Crossed);
        _shown[!buys][quote].taken += std::min(free, begin - budget);
    }
}

void nxNaiveExchange::_TryStops()
{
    for (const unsigned int id :
         _Copy([](const Order& order) { return order.isStopWaiting && !order.waitsForOpening; }))
        if (Get(id).GetRest() != 0) _TryStop(id);
}

void nxNaiveExchange::_TryStop(unsigned int id)
{
    Order& order = _Of(id);
    const Price price = _GetMarketPrice(order.isBuy);
    if (!price) return;
    const int sign = order.isBuy ? 1 : -1;
    if (sign * *price < sign * *order.terms.stop) {
        if (order.execution == nxOrderExecution::TrailingStop)
            order.terms.stop = sign * std::min(sign * *order.terms.stop, sign * *price + order.trail);
        return;
    }
    _Trigger(order);
    _Enter(id);
}

// --- Bars

void nxNaiveExchange::OnBar(const Bar& bar, long long time)
{
    _now = time;
    const long long begin = _options.barPeriod != 0 ? time - _options.barPeriod : _lastBar;
    _lastBar = time;
    _last = bar.close;
    if (!_isOpen) return;
    _barBudget = _options.participation != 0 && bar.volume
                     ? static_cast<unsigned int>(1ull * *bar.volume * _options.participation / 100)
                     : Endless;
    const Bar close{bar.close, bar.close, bar.close, bar.close, {}};
    if (_isFresh) _OpenWaiting();
    _isFresh = false;
    for (const unsigned int id : _line) {
        Order& order = _Of(id);
        if ((order.duration == nxOrderDuration::Day || order.duration == nxOrderDuration::PreOpen) &&
            order.ends == nxTime::Never && order.arrived < time)
            order.ends = _GetDayEnd(time - 1);
    }
    _MeetInTurn(bar, -1, begin);
    _MeetInTurn(close, begin, time - 1);
    for (const unsigned int id : std::vector<unsigned int>(_line)) {
        Order& order = _Of(id);
        if (!order.rests || !order.IsForNow() || order.arrived >= time || order.GetRest() == 0) continue;
        _End(order, order.duration == nxOrderDuration::Open ? "the opening is over"
                    : order.IsFok()                         ? "it could not be filled at once"
                                                            : "the rest could not be filled at once");
    }
    _Settle();
}

// Those that arrived after the one time, up to the other.
void nxNaiveExchange::_MeetInTurn(const Bar& bar, long long after, long long until)
{
    const auto meet = [&](const std::vector<unsigned int>& ids, auto how) {
        for (const unsigned int id : ids)
            if (Get(id).IsAlive() && Get(id).GetRest() != 0 && Get(id).arrived > after &&
                Get(id).arrived <= until)
                (this->*how)(_Of(id), bar);
    };
    std::vector<std::vector<unsigned int>> limits;
    for (const bool buys : {true, false})
        for (const int price : _GetPrices(buys))
            limits.push_back(_GetIdsAt(buys, price));
    const std::vector<unsigned int> stops = _Copy([](const Order& order) { return order.isStopWaiting; });
    meet(_Copy([](const Order& order) { return order.rests && order.isMarket; }), &nxNaiveExchange::_MeetBar);
    meet(stops, &nxNaiveExchange::_MeetBarAsStop);
    for (const std::vector<unsigned int>& ids : limits)
        meet(ids, &nxNaiveExchange::_MeetBar);
}

void nxNaiveExchange::_BarFill(Order& order, int price, bool isMaker)
{
    if (order.IsFok() && _barBudget < order.GetRest()) return;
    const unsigned int volume = std::min(_barBudget, order.GetRest());
    if (volume == 0) return;
    if (_barBudget != Endless) _barBudget -= volume;
    _Fill(order, price, volume, isMaker, Cause::Bar);
}

void nxNaiveExchange::_MeetBar(Order& order, const Bar& bar)
{
    if (order.Reaches(bar.open)) {
        _BarFill(order, bar.open, false);
    } else if (order.Reaches(order.isBuy ? bar.low : bar.high)) {
        _BarFill(order, *order.terms.price, true);
    }
}

void nxNaiveExchange::_MeetBarAsStop(Order& order, const Bar& bar)
{
    const int sign = order.isBuy ? 1 : -1;
    const auto isPassed = [&](int price) { return sign * price >= sign * *order.terms.stop; };
    int price = 0;
    if (isPassed(bar.open)) {
        price = bar.open;
    } else if (isPassed(order.isBuy ? bar.high : bar.low)) {
        price = *order.terms.stop;
    } else {
        if (order.execution != nxOrderExecution::TrailingStop) return;
        const int best = order.isBuy ? bar.low : bar.high;
        order.terms.stop = sign * std::min(sign * *order.terms.stop, sign * best + order.trail);
        if (!isPassed(bar.close)) return;
        price = *order.terms.stop;
    }
    _Trigger(order);
    order.rests = true;
    _ToTheEnd(order.id);
    if (order.Reaches(price)) _BarFill(order, price, false);
}
