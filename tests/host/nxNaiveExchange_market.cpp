// The recorded market: what is shown, trades, queues, stops and bars.
#include <algorithm>

#include "tests/host/nxNaiveExchange.h"

namespace {

constexpr unsigned int Endless = ~0u;

// A trailing stop, to where the price allows it.
void Follow(nxExchangeOrder& order, const nxDecimal& price)
{
    if (order.kind.execution != nxOrderExecution::TrailingStop) return;
    const bool isBuy = order.kind.side == nxSide::Buy;
    const nxDecimal followed = isBuy ? price + order.trailDistance : price - order.trailDistance;
    if (nxIsBetter(order.kind.side, order.terms.stopPrice, followed)) order.terms.stopPrice = followed;
}

}  // namespace

// --- What is shown

// To where a buyer pays more, a seller takes less.
nxDecimal nxNaiveExchange::_Move(nxSide side, const nxDecimal& price, long long ticks) const
{
    return price + nxDecimal::FromMantissa(nxGetSigned(side, ticks) * _product.tickSize.GetMantissa(), 0);
}

nxVolume nxNaiveExchange::_GetLeft(nxSide side, const nxDecimal& price) const
{
    const auto& levels = _shown[side];
    if (const auto found = levels.find(price); found != levels.end()) {
        const Shown& level = found->second;
        return level.volume.IsValid() ? nxVolume(level.GetWithout(level.gone)) : nxVolume();
    }
    if (_hasDepth) return 0u;
    return !levels.empty() && nxIsBetter(side, price, levels.begin()->first) ? nxVolume(0u) : nxVolume();
}

unsigned int nxNaiveExchange::_GetFree(nxSide side, const nxDecimal& price) const
{
    const Shown& level = _shown[side].at(price);
    return level.volume.IsValid() ? level.GetWithout(level.gone + level.taken) : Endless;
}

// Where nobody stands at the best price, nobody is assumed beyond it.
bool nxNaiveExchange::_Assumes(nxSide side) const
{
    const nxDecimal best = _GetBest(side);
    return _options.walksBeyond && !_hasDepth && _rows[side] != 0 && best.IsValid() &&
           _shown[side].at(best).volume != 0u;
}

// Of the assumed book beyond the best price.
unsigned int nxNaiveExchange::_GetAssumed(nxSide side, const nxDecimal& price) const
{
    if (price <= nxDecimalZero) return 0;
    if (_tradedTo[side].IsValid() && !nxIsBetter(side, _tradedTo[side], price)) return 0;
    const unsigned int mean = std::max(1u, static_cast<unsigned int>(_sizes[side] / _rows[side]));
    const auto found = _assumed[side].find(price);
    return found == _assumed[side].end() ? mean : mean - std::min(mean, found->second.taken);
}

nxDecimal nxNaiveExchange::_GetBest(nxSide side) const
{
    if (_shown[side].empty()) return {};
    return side == nxSide::Buy ? _shown[side].rbegin()->first : _shown[side].begin()->first;
}

nxDecimal nxNaiveExchange::_FindBestFree(const Order& order, bool& isAssumed) const
{
    const nxSide other = nxGetOpposite(order.kind.side);
    nxDecimal best;
    for (const auto& [price, level] : _shown[other])
        if (order.Reaches(price) && _GetFree(other, price) != 0)
            if (!best.IsValid() || nxIsBetter(other, price, best)) best = price;
    for (int i = 1; order.kind.isMarket && _Assumes(other) && !best.IsValid() && i <= 1000; ++i) {
        const nxDecimal price = _Move(order.kind.side, _GetBest(other), i);
        isAssumed = _GetAssumed(other, price) != 0;
        if (isAssumed) best = price;
    }
    return best;
}

nxDecimal nxNaiveExchange::_GetMarketPrice(nxSide side) const
{
    return _last.IsValid() ? _last : _GetBest(nxGetOpposite(side));
}

// Of resting limit orders, from the best on.
std::vector<nxDecimal> nxNaiveExchange::_GetPrices(nxSide side) const
{
    std::vector<nxDecimal> prices;
    for (const unsigned int id : _line) {
        const Order& order = Get(id);
        if (order.isResting && order.kind.side == side && !order.kind.isMarket)
            prices.push_back(order.terms.price);
    }
    std::ranges::sort(prices, [side](const auto& a, const auto& b) { return nxIsBetter(side, a, b); });
    prices.erase(std::unique(prices.begin(), prices.end()), prices.end());
    return prices;
}

std::vector<unsigned int> nxNaiveExchange::_GetIdsAt(nxSide side, const nxDecimal& price) const
{
    std::vector<unsigned int> ids;
    for (const unsigned int id : _line) {
        const Order& order = Get(id);
        if (order.isResting && order.kind.side == side && order.terms.price == price) ids.push_back(id);
    }
    return ids;
}

// What own orders see at their prices.
nxNaiveExchange::Volumes nxNaiveExchange::_See(nxSide side) const
{
    Volumes seen;
    for (const nxDecimal& price : _GetPrices(side))
        seen[price] = _GetLeft(side, price);
    return seen;
}

void nxNaiveExchange::_Show(nxSide side, const nxDecimal& price, const nxVolume& volume)
{
    Shown& level = _shown[side][price];
    level = {volume, level.taken};
    if (volume.IsValid()) level.taken = std::min(level.taken, volume.GetValue());
    if (_hasDepth && volume == 0u) _shown[side].erase(price);
}

unsigned int nxNaiveExchange::_GetAdvance(unsigned int ahead, unsigned int shown,
                                          unsigned int cancelled) const
{
    const std::string model = _options.queue.model->name;
    if (model == "back") return 0;
    if (model == "even") return cancelled * ahead / shown;
    unsigned long long front = 1, back = 1;
    for (unsigned int i = 0; i < _options.queue.power; ++i) {
        front *= ahead;
        back *= shown - ahead;
    }
    return std::min(ahead, static_cast<unsigned int>(cancelled * front / (front + back)));
}

// Also of all that has left the price.
void nxNaiveExchange::_StandAtTheEnd(Order& order)
{
    const auto& late = _late[order.kind.side];
    const auto found = late.find(order.terms.price);
    order.ahead = _GetLeft(order.kind.side, order.terms.price);
    order.movedUp = found == late.end() || !order.ahead.IsValid() ? 0 : found->second.gone;
}

// Late lots are remembered where own orders rest.
void nxNaiveExchange::_ForgetLate()
{
    for (const nxSide side : nxSides)
        std::erase_if(_late[side], [&](const auto& entry) { return _GetIdsAt(side, entry.first).empty(); });
}

void nxNaiveExchange::_MoveQueues(nxSide side, const Volumes& before)
{
    for (const nxDecimal& price : _GetPrices(side)) {
        const auto found = before.find(price);
        const nxVolume was = found == before.end() ? nxVolume() : found->second;
        const nxVolume is = _GetLeft(side, price);
        Late& late = _late[side][price];
        const bool isLess = was.IsValid() && is.IsValid() && is < was;
        if (!is.IsValid() || (isLess && _now - late.time > _options.lateTrades)) {
            late.gone = 0;
            for (const unsigned int id : _GetIdsAt(side, price))
                _Of(id).movedUp = 0;
        }
        if (isLess && _options.lateTrades != 0) late = {late.gone + was.GetValue() - is.GetValue(), _now};
        if (is.IsValid()) _MoveQueue(side, price, isLess ? was : is, is.GetValue());
    }
}

void nxNaiveExchange::_MoveQueue(nxSide side, const nxDecimal& price, const nxVolume& was, unsigned int is)
{
    unsigned int least = 0;  // nobody passes an own order in front
    for (const unsigned int id : _GetIdsAt(side, price)) {
        Order& order = _Of(id);
        if (!order.ahead.IsValid()) {
            order.ahead = is;
            continue;
        }
        const unsigned int ahead = order.ahead.GetValue();
        const unsigned int cancelled = was.GetValue() - is;
        const unsigned int moved = cancelled != 0 ? _GetAdvance(ahead, was.GetValue(), cancelled) : 0;
        least = std::max(least, std::min(is, ahead - moved));
        order.ahead = least;
        order.movedUp += ahead - least;
    }
}

// --- Events of the market

// What was taken and traded before is forgotten.
void nxNaiveExchange::OnOpen(long long time)
{
    _now = time;
    _isOpen = _isFresh = true;
    for (const nxSide side : nxSides) {
        for (auto& [price, level] : _shown[side])
            level = {level.volume};
        _assumed[side].clear();
        _tradedTo[side].SetNull();
        _MoveQueues(side, _closed[side]);
    }
}

void nxNaiveExchange::OnClose(long long time)
{
    _now = time;
    _isOpen = false;
    for (const nxSide side : nxSides)
        _closed[side] = _See(side);
}

void nxNaiveExchange::Join(long long time)
{
    OnOpen(time);
    _isFresh = false;
}

void nxNaiveExchange::OnQuote(const nxFeedQuote& row, long long time)
{
    _now = time;
    if (row.last.IsValid()) _last = row.last;
    if (_product.isOfBars) return;
    if (row.IsTrade() && _isOpen) _Trade(row);
    nxBySide<bool> isAnew;
    isAnew.buy = _ShowRow(nxSide::Buy, row.bid, row.bidVolume, row.IsTrade());
    isAnew.sell = _ShowRow(nxSide::Sell, row.ask, row.askVolume, row.IsTrade());
    if (_isOpen) _Act(isAnew, row.IsTrade());
}

// True when it shows the best price anew.
bool nxNaiveExchange::_ShowRow(nxSide side, const nxDecimal& price, const nxVolume& volume, bool isTrade)
{
    const nxDecimal quoted = _quoted[side];
    const nxVolume size = _quotedSize[side];
    if (price.IsValid()) _quoted[side] = price;
    if (volume.IsValid()) _quotedSize[side] = volume;
    const bool isOther = _quoted[side] != quoted || _quotedSize[side] != size;
    if (isOther && _quoted[side].IsValid() && _quotedSize[side].IsValid()) {
        _sizes[side] += _quotedSize[side].GetValue();
        ++_rows[side];
    }
    const bool isNamed = price.IsValid() || volume.IsValid();
    if (!isNamed || !_quoted[side].IsValid() || (isTrade && !isOther && !_isFresh) || _hasDepth) return false;
    const Volumes before = _See(side);
    if (_GetBest(side) != _quoted[side]) {
        _shown[side].clear();
        _assumed[side].clear();
    }
    _tradedTo[side].SetNull();
    _Show(side, _quoted[side], _quotedSize[side]);
    if (_isOpen) _MoveQueues(side, before);
    return true;
}

void nxNaiveExchange::OnDepth(const std::vector<nxFeedLevel>& levels, long long time)
{
    _now = time;
    _hasDepth = true;
    for (const nxFeedLevel& level : levels) {
        const Volumes before = {{level.price, _GetLeft(level.side, level.price)}};
        _Show(level.side, level.price, level.volume);
        if (_isOpen) _MoveQueues(level.side, before);
    }
    if (_isOpen) _Act({true, true}, false);
}

// Resting orders first, then stops, then what waited for the opening.
void nxNaiveExchange::_Act(const nxBySide<bool>& isAnew, bool isTrade)
{
    const bool opens = _isFresh;
    _isFresh = false;
    for (const nxSide side : nxSides)
        if (isAnew[nxGetOpposite(side)]) _Meet(side);
    if (isTrade || !_last.IsValid())
        for (const unsigned int id :
             _Copy([](const Order& order) { return !order.triggered && !order.waitsForOpening; }))
            if (Get(id).GetRemaining() != 0) _TryStop(_Of(id));
    if (opens) _OpenWaiting();
    _Settle();
}

void nxNaiveExchange::_Trade(const nxFeedQuote& trade)
{
    const bool hasVolume = trade.lastVolume.IsValid();
    const unsigned int volume = hasVolume ? trade.lastVolume.GetValue() : Endless;
    for (const nxSide side : nxSides) {
        unsigned int budget = volume;
        const bool hits = trade.side != nxGetBuySell(side);
        const unsigned int putBack = hits && hasVolume ? _PutBack(side, _last, volume) : 0;
        for (const nxDecimal& own : _GetPrices(side)) {
            if (nxIsBetter(side, _last, own) || (own == _last && !hits)) break;
            if (_IsTouch()) {
                unsigned int endless = Endless;
                _Sweep(side, own, endless, nxFillCause::Touched);
            } else if (own != _last) {
                _Sweep(side, own, budget, nxFillCause::TradedThrough);
                for (const unsigned int id : _GetIdsAt(side, own))
                    if (Get(id).ahead.IsValid()) _Of(id).ahead = 0u;
            } else if (hasVolume) {
                _TakeFromQueue(side, own, volume, putBack, budget);
            }
        }
        nxDecimal& farthest = _tradedTo[side];
        const nxDecimal best = _GetBest(side);
        if (best.IsValid() && nxIsBetter(side, best, _last))
            if (!farthest.IsValid() || nxIsBetter(side, farthest, _last)) farthest = _last;
        for (auto& [at, level] : _shown[side]) {
            if (!level.volume.IsValid()) continue;
            if (nxIsBetter(side, at, _last)) level.gone = level.volume.GetValue();
            if (at == _last && hits && hasVolume)
                level.gone = std::min(level.volume.GetValue(), level.gone + volume - putBack);
        }
    }
}

// Lots that were counted as cancelled, for the trade that took them.
unsigned int nxNaiveExchange::_PutBack(nxSide side, const nxDecimal& price, unsigned int volume)
{
    const auto found = _late[side].find(price);
    if (found == _late[side].end() || found->second.gone == 0) return 0;
    Late& late = found->second;
    if (_now - late.time > _options.lateTrades) return 0;
    const unsigned int lots = std::min(volume, late.gone);
    for (const unsigned int id : _GetIdsAt(side, price)) {
        Order& order = _Of(id);
        const unsigned int part = (order.movedUp * lots + late.gone - 1) / late.gone;
        if (order.ahead.IsValid()) order.ahead = order.ahead.GetValue() + part;
        order.movedUp -= part;
    }
    late.gone -= lots;
    return lots;
}

// The queue as a row: 0 for a recorded lot, an id for an own order.
void nxNaiveExchange::_TakeFromQueue(nxSide side, const nxDecimal& price, unsigned int traded,
                                     unsigned int putBack, unsigned int budget)
{
    const nxVolume left = _GetLeft(side, price);
    const bool isKnown = left.IsValid();
    const unsigned int shown = isKnown ? left.GetValue() + putBack : 0;
    std::vector<unsigned int> row;
    unsigned int recorded = 0;
    const auto addRecorded = [&](unsigned int until) {
        for (; recorded < until; ++recorded)
            row.push_back(0);
    };
    for (const unsigned int id : _GetIdsAt(side, price)) {
        if (!Get(id).ahead.IsValid()) continue;
        addRecorded(Get(id).ahead.GetValue());
        row.push_back(id);
    }
    addRecorded(shown);
    for (std::size_t i = 0; i < row.size() && budget != 0;) {
        const unsigned int id = row[i];
        if (id != 0 && !_options.fills->rule.fillsAtPrice) {
            ++i;
            continue;
        }
        if (id == 0) {
            --budget;
        } else if (Get(id).GetRemaining() != 0) {
            const bool renewed = _Serve(_Of(id), price, budget, nxFillCause::Queue);
            if (Get(id).GetRemaining() != 0 && !renewed) break;  // the trade was too small for it
            if (renewed && isKnown) row.push_back(id);
        }
        row.erase(row.begin() + static_cast<std::ptrdiff_t>(i));
    }
    const unsigned int most = isKnown ? shown - std::min(shown, traded) : Endless;
    unsigned int front = 0;
    for (const unsigned int lot : row)
        lot == 0 ? void(++front) : _Of(lot).ahead.SetValue(std::min(front, most));
}

// Everybody at the price in turn, peak after peak.
void nxNaiveExchange::_Sweep(nxSide side, const nxDecimal& price, unsigned int& budget, nxFillCause cause)
{
    std::vector<unsigned int> turn = _GetIdsAt(side, price);
    for (std::size_t i = 0; i < turn.size() && budget != 0; ++i)
        if (Get(turn[i]).GetRemaining() != 0 && _Serve(_Of(turn[i]), price, budget, cause))
            turn.push_back(turn[i]);
}

// True when it stands at the end with a new peak.
bool nxNaiveExchange::_Serve(Order& order, const nxDecimal& price, unsigned int& budget, nxFillCause cause)
{
    const bool hides = order.kind.execution == nxOrderExecution::Iceberg && !_IsTouch();
    const unsigned int open = order.GetRemaining();
    const unsigned int volume = std::min(budget, hides ? std::min(order.displayed, open) : open);
    budget -= volume;
    _Fill(order, price, volume, true, cause);
    return order.GetRemaining() != 0 && _Renew(order);
}

bool nxNaiveExchange::_Renew(Order& order)
{
    if (order.kind.execution != nxOrderExecution::Iceberg) return false;
    if (order.displayed > nxOrderTerms::GetOr(order.terms.icebergThreshold, 0)) return false;
    if (order.displayed >= order.GetRemaining()) return false;
    order.displayed = std::min(order.terms.icebergMinPeak.GetValue(), order.GetRemaining());
    _StandAtTheEnd(order);
    _ToTheEnd(order.id);
    return true;
}

// Who waits for the other side's quotes: MARKET orders, then limits from the best price on.
void nxNaiveExchange::_Meet(nxSide side)
{
    for (const unsigned int id :
         _Copy([](const Order& order) { return order.isResting && order.kind.isMarket; }))
        if (Get(id).kind.side == side) _Take(_Of(id));
    const nxSide other = nxGetOpposite(side);
    std::vector<nxDecimal> quotes;
    for (const auto& [price, level] : _shown[other])
        quotes.push_back(price);
    if (other == nxSide::Buy) std::ranges::reverse(quotes);
    for (const nxDecimal& quote : quotes) {
        const unsigned int free = _GetFree(other, quote);
        const unsigned int begin = _IsTouch() && free != 0 ? Endless : free;
        unsigned int budget = begin;
        for (const nxDecimal& own : _GetPrices(side))
            if (!nxIsBetter(side, quote, own))
                _Sweep(side, own, budget, _IsTouch() ? nxFillCause::Touched : nxFillCause::Crossed);
        _shown[other][quote].taken += std::min(free, begin - budget);
    }
}

void nxNaiveExchange::_TryStop(Order& order)
{
    const nxDecimal price = _GetMarketPrice(order.kind.side);
    if (!price.IsValid()) return;
    if (nxIsBetter(order.kind.side, order.terms.stopPrice, price)) return Follow(order, price);
    _Trigger(order);
    _Enter(order);
}

// --- Bars

void nxNaiveExchange::OnBar(const nxFeedBar& bar, long long time)
{
    _now = time;
    const long long begin = _product.barPeriod != 0 ? time - _product.barPeriod : _lastBar;
    _lastBar = time;
    _last = bar.close;
    if (!_isOpen) return;
    _barBudget = _options.participation != 0 && bar.volume.IsValid()
                     ? bar.volume.GetValue() * _options.participation / 100
                     : Endless;
    if (_isFresh) _OpenWaiting();
    _isFresh = false;
    for (const unsigned int id : _line) {
        Order& order = _Of(id);
        if (order.EndsWithDay() && order.expires == nxTime::Never && order.arrived < time)
            order.expires = _GetDayEnd(time - 1);
    }
    _MeetInTurn(bar, -1, begin);
    _MeetInTurn({bar.close, bar.close, bar.close, bar.close, {}}, begin, time - 1);
    for (const unsigned int id :
         _Copy([](const Order& order) { return order.isResting && order.IsForNow(); }))
        if (Get(id).arrived < time && Get(id).GetRemaining() != 0) _EndForNow(_Of(id));
    _Settle();
}

// Those that arrived after the one time, up to the other.
void nxNaiveExchange::_MeetInTurn(const nxFeedBar& bar, long long after, long long until)
{
    std::vector<unsigned int> turn =
        _Copy([](const Order& order) { return order.isResting && order.kind.isMarket; });
    std::ranges::copy(_Copy([](const Order& order) { return !order.triggered; }), std::back_inserter(turn));
    for (const nxSide side : nxSides)
        for (const nxDecimal& price : _GetPrices(side))
            std::ranges::copy(_GetIdsAt(side, price), std::back_inserter(turn));
    for (const unsigned int id : turn) {
        Order& order = _Of(id);
        const bool isInTime = order.arrived > after && order.arrived <= until;
        if (!isInTime || !order.IsAlive() || order.GetRemaining() == 0) continue;
        order.triggered ? _MeetBar(order, bar) : _MeetBarAsStop(order, bar);
    }
}

void nxNaiveExchange::_BarFill(Order& order, const nxDecimal& price, bool isMaker)
{
    const unsigned int volume = std::min(_barBudget, order.GetRemaining());
    if (volume == 0 || (order.IsFok() && volume < order.GetRemaining())) return;
    if (_barBudget != Endless) _barBudget -= volume;
    _Fill(order, price, volume, isMaker, nxFillCause::Bar);
}

void nxNaiveExchange::_MeetBar(Order& order, const nxFeedBar& bar)
{
    if (order.Reaches(bar.open)) {
        _BarFill(order, bar.open, false);
    } else if (order.Reaches(order.kind.side == nxSide::Buy ? bar.low : bar.high)) {
        _BarFill(order, order.terms.price, true);
    }
}

void nxNaiveExchange::_MeetBarAsStop(Order& order, const nxFeedBar& bar)
{
    const nxSide side = order.kind.side;
    const bool isBuy = side == nxSide::Buy;
    const auto isPassed = [&](const nxDecimal& price) {
        return !nxIsBetter(side, order.terms.stopPrice, price);
    };
    nxDecimal price = order.terms.stopPrice;
    if (isPassed(bar.open)) {
        price = bar.open;
    } else if (!isPassed(isBuy ? bar.high : bar.low)) {
        Follow(order, isBuy ? bar.low : bar.high);
        if (!isPassed(bar.close)) return;
        price = order.terms.stopPrice;
    }
    _Trigger(order);
    order.isResting = true;
    _ToTheEnd(order.id);
    if (order.Reaches(price)) _BarFill(order, price, false);
}
