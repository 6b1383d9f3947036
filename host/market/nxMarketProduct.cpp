#include "host/market/nxMarketProduct.h"

#include <algorithm>
#include <utility>

#include "base/time/nxTime.h"
#include "host/market/nxAdjustment.h"
#include "host/market/nxImpliedQuote.h"

namespace {

constexpr unsigned int LargestVolume = 0xFFFFFFFD;  // beyond lie the marks

nxPrice MakeNoChange()
{
    nxPrice price;
    price.SetNoChange();
    return price;
}

void SetLevel(nxMarketDepth& depth, nxSide side, const nxDecimal& price, const nxVolume& volume)
{
    if (side == nxSide::Buy) {
        depth.SetBid(price, volume);
    } else {
        depth.SetAsk(price, volume);
    }
}

long long FloorDay(long long time)
{
    const long long day = time / nxTime::NanosecondsPerDay;
    return time % nxTime::NanosecondsPerDay < 0 ? day - 1 : day;
}

}  // namespace

nxMarketProduct::nxMarketProduct(std::string name) : _name(std::move(name)), _update(MakeNoChange())
{
    _volumes.SetUpdateType(nxPriceTradeVolumesUpdateType_Snapshot);
}

bool nxMarketProduct::GetTradeVolumesUpdate(nxPriceTradeVolumes& update) const
{
    if (!_traded.IsValid() && !_volumesCleared) return false;
    update = nxPriceTradeVolumes();
    update.SetUpdateType(_volumesCleared ? nxPriceTradeVolumesUpdateType_Reset
                                         : nxPriceTradeVolumesUpdateType_Delta);
    update.AddTrade(_price.GetLastPrice(), _traded);
    return true;
}

// Most events change what the one before changed, and all fields are many.
void nxMarketProduct::_BeginUpdate(Changed changes)
{
    static const nxPrice noChange = MakeNoChange();
    _traded.SetNull();
    _volumesCleared = false;
    if (_changed != changes || changes == Changed::Any) {
        _update = noChange;
    } else if (changes == Changed::BestQuote) {
        _update.SetBidPrice(nxNoChangeInitalizer());
        _update.SetBidVolume(nxNoChangeInitalizer());
        _update.SetAskPrice(nxNoChangeInitalizer());
        _update.SetAskVolume(nxNoChangeInitalizer());
    }  // a bar sets all that the bar before has set
    _changed = changes;
}

void nxMarketProduct::_CountSize(nxSide side)
{
    const nxBestQuote best = GetBest(side);
    if (!best.price.IsValid() || !best.volume.IsValid()) return;
    _sizes[side].sum += best.volume.GetValue();
    ++_sizes[side].count;
}

void nxMarketProduct::ApplyQuote(const nxFeedQuote& quote, long long time)
{
    _BeginUpdate(quote.last.IsNoChange() && quote.lastVolume.IsNoChange() ? Changed::BestQuote
                                                                          : Changed::Any);
    const auto set = [this](auto setter, const auto& value) {
        if (value.IsNoChange()) return;
        (_price.*setter)(value);
        (_update.*setter)(value);
    };
    // A quote that the row repeats is none that changed.
    const auto setNew = [&](auto getter, auto setter, const auto& value) {
        if (value.IsNoChange() || (_price.*getter)() == value) return false;
        (_price.*setter)(value);
        (_update.*setter)(value);
        return true;
    };
    bool bid = setNew(&nxPrice::GetBidPrice, &nxPrice::SetBidPrice, quote.bid);
    bid |= setNew(&nxPrice::GetBidVolume, &nxPrice::SetBidVolume, quote.bidVolume);
    bool ask = setNew(&nxPrice::GetAskPrice, &nxPrice::SetAskPrice, quote.ask);
    ask |= setNew(&nxPrice::GetAskVolume, &nxPrice::SetAskVolume, quote.askVolume);
    if (bid) _CountSize(nxSide::Buy);
    if (ask) _CountSize(nxSide::Sell);
    set(&nxPrice::SetLastPrice, quote.last);
    set(&nxPrice::SetLastVolume, quote.lastVolume);
    if (!quote.IsTrade()) return;
    _price.SetLastPriceBuySellIndicator(quote.side);
    _update.SetLastPriceBuySellIndicator(quote.side);
    // A trade at the price of the one before is one all the same.
    _update.SetLastPrice(_price.GetLastPrice());
    _AddTrade(_price.GetLastPrice(), quote.lastVolume, time);
}

// Where it does, the caller sets open, high and low anew.
void nxMarketProduct::_BeginDay(long long time)
{
    const long long day = FloorDay(time);
    if (day == _day) return;
    _changed = Changed::Any;
    const nxDecimal previousClose = _day ? _price.GetClosePrice() : nxDecimal();
    if (_day) _daily.AddDay(_price.GetTotalTradedVolume().GetValue(), previousClose.GetAsDouble());
    _day = day;
    _volumesCleared = !_volumes.GetPriceMap().empty();
    _volumes.Clear();
    for (nxPrice* record : {&_price, &_update}) {
        record->SetPreviousClosePrice(previousClose);
        record->SetTotalTradedVolume(nxVolume(0u));
    }
}

void nxMarketProduct::_AddVolume(const nxVolume& volume)
{
    if (!volume.IsValid()) return;
    const unsigned int before = _price.GetTotalTradedVolume().GetValue();
    const nxVolume total = before + std::min(volume.GetValue(), LargestVolume - before);
    _price.SetTotalTradedVolume(total);
    _update.SetTotalTradedVolume(total);
}

void nxMarketProduct::_AddTrade(const nxDecimal& price, const nxVolume& volume, long long time)
{
    if (!price.IsValid()) return;
    const std::optional<long long> before = _day;
    _BeginDay(time);
    const bool first = before != _day;
    for (nxPrice* record : {&_price, &_update}) {
        record->SetClosePrice(price);
        if (first) record->SetOpenPrice(price);
    }
    if (first || price > _price.GetHighPrice()) {
        _price.SetHighPrice(price);
        _update.SetHighPrice(price);
    }
    if (first || price < _price.GetLowPrice()) {
        _price.SetLowPrice(price);
        _update.SetLowPrice(price);
    }
    _AddVolume(volume);
    _traded = volume;
    _volumes.AddTrade(price, volume);
}

void nxMarketProduct::ApplyBar(const nxFeedBar& bar, long long time)
{
    _BeginUpdate(bar.volume.IsValid() ? Changed::Bar : Changed::Any);
    _BeginDay(time);
    for (nxPrice* record : {&_price, &_update}) {
        record->SetOpenPrice(bar.open);
        record->SetHighPrice(bar.high);
        record->SetLowPrice(bar.low);
        record->SetClosePrice(bar.close);
        record->SetLastPrice(bar.close);
        record->SetLastVolume(bar.volume);
    }
    _AddVolume(bar.volume);
}

void nxMarketProduct::ApplyDepth(std::span<const nxFeedLevel> levels)
{
    _traded.SetNull();
    _volumesCleared = false;
    _hasDepth = true;
    for (const nxFeedLevel& level : levels) {
        _book[level.side].Set(level.price, level.volume);
        if (_keepsDepth) SetLevel(_depth, level.side, level.price, level.volume);
    }
}

const nxMarketDepth& nxMarketProduct::GetDepth() const
{
    if (std::exchange(_keepsDepth, true)) return _depth;
    for (const nxSide side : nxSides)
        _book[side].ForEach([&](const nxBookSide::Level& level) {
            SetLevel(_depth, side, level.price, level.volume);
            return true;
        });
    return _depth;
}

// Into the price and, where it is news, into the update. True when it is.
template <class Value>
bool nxMarketProduct::_Change(const Value& (nxPrice::*getter)() const, void (nxPrice::*setter)(const Value&),
                              const Value& value)
{
    if ((_price.*getter)() == value) return false;
    (_price.*setter)(value);
    (_update.*setter)(value);
    return true;
}

bool nxMarketProduct::QuoteFromDepth()
{
    _BeginUpdate(Changed::BestQuote);
    const auto getBest = [&](nxSide side) {
        return _book[side].IsEmpty() ? nxBookSide::Level() : _book[side].GetBest();
    };
    const auto getVolume = [](const nxBookSide::Level& level) {
        return level.price.IsValid() ? nxVolume(level.volume) : nxVolume();
    };
    const nxBookSide::Level bid = getBest(nxSide::Buy);
    const nxBookSide::Level ask = getBest(nxSide::Sell);
    bool changed = _Change(&nxPrice::GetBidPrice, &nxPrice::SetBidPrice, bid.price);
    changed |= _Change(&nxPrice::GetBidVolume, &nxPrice::SetBidVolume, getVolume(bid));
    changed |= _Change(&nxPrice::GetAskPrice, &nxPrice::SetAskPrice, ask.price);
    changed |= _Change(&nxPrice::GetAskVolume, &nxPrice::SetAskVolume, getVolume(ask));
    return changed;
}

bool nxMarketProduct::ApplyImplied(const nxImpliedQuote& quote)
{
    nxImpliedQuote before;
    before.bid = _price.GetImpliedBidPrice();
    before.ask = _price.GetImpliedAskPrice();
    before.bidVolume = _price.GetImpliedBidVolume();
    before.askVolume = _price.GetImpliedAskVolume();
    // The update stays that of the latest event.
    if (before == quote) return false;
    _BeginUpdate(Changed::Any);
    bool bid = _Change(&nxPrice::GetImpliedBidPrice, &nxPrice::SetImpliedBidPrice, quote.bid);
    bid |= _Change(&nxPrice::GetImpliedBidVolume, &nxPrice::SetImpliedBidVolume, quote.bidVolume);
    bool ask = _Change(&nxPrice::GetImpliedAskPrice, &nxPrice::SetImpliedAskPrice, quote.ask);
    ask |= _Change(&nxPrice::GetImpliedAskVolume, &nxPrice::SetImpliedAskVolume, quote.askVolume);
    if (bid) _CountSize(nxSide::Buy);
    if (ask) _CountSize(nxSide::Sell);
    return true;
}

void nxMarketProduct::Adjust(const nxAdjustment& adjustment)
{
    _BeginUpdate(Changed::Any);
    for (const nxSide side : nxSides)
        _book[side].Clear();
    _depth.Clear();
    _daily.ForgetClose();
    const auto adjust = [&](auto getter, auto setter) {
        (_price.*setter)(adjustment.GetPrice((_price.*getter)()));
    };
    adjust(&nxPrice::GetBidPrice, &nxPrice::SetBidPrice);
    adjust(&nxPrice::GetAskPrice, &nxPrice::SetAskPrice);
    adjust(&nxPrice::GetLastPrice, &nxPrice::SetLastPrice);
    adjust(&nxPrice::GetOpenPrice, &nxPrice::SetOpenPrice);
    adjust(&nxPrice::GetHighPrice, &nxPrice::SetHighPrice);
    adjust(&nxPrice::GetLowPrice, &nxPrice::SetLowPrice);
    adjust(&nxPrice::GetClosePrice, &nxPrice::SetClosePrice);
    adjust(&nxPrice::GetPreviousClosePrice, &nxPrice::SetPreviousClosePrice);
}

bool nxMarketProduct::SetState(unsigned int bits)
{
    if (_state == bits) return false;
    _state.SetValue(bits);
    return true;
}
