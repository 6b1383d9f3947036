#include "scriptFramework/market/nxAlgoPriceObject.h"

#include "base/records/nxPrice.h"

using Self = nxAlgoPriceObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"isBid", &Self::isBid},
    {"isAsk", &Self::isAsk},
    {"isLast", &Self::isLast},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {"bidPrice", &Self::Get_bidPrice, nullptr},
    {"bidVolume", &Self::Get_bidVolume, nullptr},
    {"askPrice", &Self::Get_askPrice, nullptr},
    {"askVolume", &Self::Get_askVolume, nullptr},
    {"impliedBidPrice", &Self::Get_impliedBidPrice, nullptr},
    {"impliedBidVolume", &Self::Get_impliedBidVolume, nullptr},
    {"impliedAskPrice", &Self::Get_impliedAskPrice, nullptr},
    {"impliedAskVolume", &Self::Get_impliedAskVolume, nullptr},
    {"paperBidPrice", &Self::Get_paperBidPrice, nullptr},
    {"paperBidVolume", &Self::Get_paperBidVolume, nullptr},
    {"paperAskPrice", &Self::Get_paperAskPrice, nullptr},
    {"paperAskVolume", &Self::Get_paperAskVolume, nullptr},
    {"low", &Self::Get_low, nullptr},
    {"high", &Self::Get_high, nullptr},
    {"lastPrice", &Self::Get_lastPrice, nullptr},
    {"lastVolume", &Self::Get_lastVolume, nullptr},
    {"lastBuySell", &Self::Get_lastBuySell, nullptr},
    {"totalTradedVolume", &Self::Get_totalTradedVolume, nullptr},
    {"theo", &Self::Get_theo, nullptr},
    {"theo2", &Self::Get_theo2, nullptr},
    {"open", &Self::Get_open, nullptr},
    {"close", &Self::Get_close, nullptr},
    {"previousClose", &Self::Get_previousClose, nullptr},
    {"previousSettlement", &Self::Get_previousSettlement, nullptr},
    {"settlement", &Self::Get_settlement, nullptr},
    {"settlementType", &Self::Get_settlementType, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoPriceObject::nxAlgoPriceObject(nxAlgoJobInterface* job, unsigned int id) : nxAlgoObject(job), _id(id) {}

nxAlgoPriceObject::nxAlgoPriceObject(nxAlgoJobInterface* job, const nxPrice* snapshot, const nxPrice* update,
                                     unsigned int id)
    : nxAlgoObject(job), _snapshot(snapshot), _update(update), _id(id)
{
}

void nxAlgoPriceObject::SetSnapshot(const nxPrice* snapshot)
{
    _snapshot = snapshot;
    _update = nullptr;
}

// A side has changed as soon as one of its four fields is not no-change: a null price counts.
bool nxAlgoPriceObject::isBid(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_update != nullptr &&
                !(_update->GetBidPrice().IsNoChange() && _update->GetBidVolume().IsNoChange() &&
                  _update->GetImpliedBidPrice().IsNoChange() && _update->GetImpliedBidVolume().IsNoChange()));
    return true;
}

bool nxAlgoPriceObject::isAsk(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_update != nullptr &&
                !(_update->GetAskPrice().IsNoChange() && _update->GetAskVolume().IsNoChange() &&
                  _update->GetImpliedAskPrice().IsNoChange() && _update->GetImpliedAskVolume().IsNoChange()));
    return true;
}

// Stricter than the two above, on purpose: a trade counts only when both price and volume are real values.
bool nxAlgoPriceObject::isLast(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_update != nullptr && _update->GetLastPrice().IsValid() &&
                _update->GetLastVolume().IsValid());
    return true;
}

bool nxAlgoPriceObject::Get_id(nxLuaResults& results)
{
    results.Add(_id);
    return true;
}

bool nxAlgoPriceObject::Get_bidPrice(nxLuaResults& results)
{
    results.Add(_GetBid());
    return true;
}

bool nxAlgoPriceObject::Get_bidVolume(nxLuaResults& results)
{
    results.Add(_GetBidQty());
    return true;
}

bool nxAlgoPriceObject::Get_askPrice(nxLuaResults& results)
{
    results.Add(_GetAsk());
    return true;
}

bool nxAlgoPriceObject::Get_askVolume(nxLuaResults& results)
{
    results.Add(_GetAskQty());
    return true;
}

bool nxAlgoPriceObject::Get_impliedBidPrice(nxLuaResults& results)
{
    results.Add(_GetImpliedBid());
    return true;
}

bool nxAlgoPriceObject::Get_impliedBidVolume(nxLuaResults& results)
{
    results.Add(_GetImpliedBidQty());
    return true;
}

bool nxAlgoPriceObject::Get_impliedAskPrice(nxLuaResults& results)
{
    results.Add(_GetImpliedAsk());
    return true;
}

bool nxAlgoPriceObject::Get_impliedAskVolume(nxLuaResults& results)
{
    results.Add(_GetImpliedAskQty());
    return true;
}

bool nxAlgoPriceObject::Get_paperBidPrice(nxLuaResults& results)
{
    results.Add(_GetPaperBid());
    return true;
}

bool nxAlgoPriceObject::Get_paperBidVolume(nxLuaResults& results)
{
    results.Add(_GetPaperBidQty());
    return true;
}

bool nxAlgoPriceObject::Get_paperAskPrice(nxLuaResults& results)
{
    results.Add(_GetPaperAsk());
    return true;
}

bool nxAlgoPriceObject::Get_paperAskVolume(nxLuaResults& results)
{
    results.Add(_GetPaperAskQty());
    return true;
}

bool nxAlgoPriceObject::Get_low(nxLuaResults& results)
{
    results.Add(_GetLow());
    return true;
}

bool nxAlgoPriceObject::Get_high(nxLuaResults& results)
{
    results.Add(_GetHigh());
    return true;
}

bool nxAlgoPriceObject::Get_lastPrice(nxLuaResults& results)
{
    results.Add(_GetTrade());
    return true;
}

bool nxAlgoPriceObject::Get_lastVolume(nxLuaResults& results)
{
    results.Add(_GetTradeQty());
    return true;
}

bool nxAlgoPriceObject::Get_lastBuySell(nxLuaResults& results)
{
    results.Add(_GetLastBuySell());
    return true;
}

bool nxAlgoPriceObject::Get_totalTradedVolume(nxLuaResults& results)
{
    results.Add(_GetTotalTradeQty());
    return true;
}

bool nxAlgoPriceObject::Get_theo(nxLuaResults& results)
{
    results.Add(_GetTheo());
    return true;
}

bool nxAlgoPriceObject::Get_theo2(nxLuaResults& results)
{
    results.Add(_GetTheo2());
    return true;
}

bool nxAlgoPriceObject::Get_open(nxLuaResults& results)
{
    results.Add(_GetOpen());
    return true;
}

bool nxAlgoPriceObject::Get_close(nxLuaResults& results)
{
    results.Add(_GetClose());
    return true;
}

bool nxAlgoPriceObject::Get_previousClose(nxLuaResults& results)
{
    results.Add(_GetPreviousClose());
    return true;
}

bool nxAlgoPriceObject::Get_previousSettlement(nxLuaResults& results)
{
    results.Add(_GetPreviousSettlement());
    return true;
}

bool nxAlgoPriceObject::Get_settlement(nxLuaResults& results)
{
    results.Add(_GetSettlement());
    return true;
}

bool nxAlgoPriceObject::Get_settlementType(nxLuaResults& results)
{
    results.Add(_GetSettlementType());
    return true;
}

nxDecimal nxAlgoPriceObject::_Read(const nxDecimal& (nxPrice::*getter)() const) const
{
    return _snapshot == nullptr ? nxDecimal() : (_snapshot->*getter)();
}

nxVolume nxAlgoPriceObject::_Read(const nxVolume& (nxPrice::*getter)() const) const
{
    return _snapshot == nullptr ? nxVolume() : (_snapshot->*getter)();
}

nxAlgoPriceObject::Quote nxAlgoPriceObject::_GetBestBid() const
{
    Quote best;
    if (_snapshot != nullptr) _snapshot->GetBestBidPriceAndVolume(best.price, best.volume);
    return best;
}

nxAlgoPriceObject::Quote nxAlgoPriceObject::_GetBestAsk() const
{
    Quote best;
    if (_snapshot != nullptr) _snapshot->GetBestAskPriceAndVolume(best.price, best.volume);
    return best;
}

nxDecimal nxAlgoPriceObject::_GetBid() const
{
    return _GetBestBid().price;
}

nxVolume nxAlgoPriceObject::_GetBidQty() const
{
    return _GetBestBid().volume;
}

nxDecimal nxAlgoPriceObject::_GetAsk() const
{
    return _GetBestAsk().price;
}

nxVolume nxAlgoPriceObject::_GetAskQty() const
{
    return _GetBestAsk().volume;
}

nxDecimal nxAlgoPriceObject::_GetImpliedBid() const
{
    return _Read(&nxPrice::GetImpliedBidPrice);
}

nxVolume nxAlgoPriceObject::_GetImpliedBidQty() const
{
    return _Read(&nxPrice::GetImpliedBidVolume);
}

nxDecimal nxAlgoPriceObject::_GetImpliedAsk() const
{
    return _Read(&nxPrice::GetImpliedAskPrice);
}

nxVolume nxAlgoPriceObject::_GetImpliedAskQty() const
{
    return _Read(&nxPrice::GetImpliedAskVolume);
}

nxDecimal nxAlgoPriceObject::_GetPaperBid() const
{
    return _Read(&nxPrice::GetBidPrice);
}

nxVolume nxAlgoPriceObject::_GetPaperBidQty() const
{
    return _Read(&nxPrice::GetBidVolume);
}

nxDecimal nxAlgoPriceObject::_GetPaperAsk() const
{
    return _Read(&nxPrice::GetAskPrice);
}

nxVolume nxAlgoPriceObject::_GetPaperAskQty() const
{
    return _Read(&nxPrice::GetAskVolume);
}

nxDecimal nxAlgoPriceObject::_GetLow() const
{
    return _Read(&nxPrice::GetLowPrice);
}

nxDecimal nxAlgoPriceObject::_GetHigh() const
{
    return _Read(&nxPrice::GetHighPrice);
}

nxDecimal nxAlgoPriceObject::_GetTrade() const
{
    return _Read(&nxPrice::GetLastPrice);
}

nxVolume nxAlgoPriceObject::_GetTradeQty() const
{
    return _Read(&nxPrice::GetLastVolume);
}

nxVolume nxAlgoPriceObject::_GetTotalTradeQty() const
{
    return _Read(&nxPrice::GetTotalTradedVolume);
}

nxDecimal nxAlgoPriceObject::_GetPreviousSettlement() const
{
    return _Read(&nxPrice::GetPreviousSettlementPrice);
}

nxDecimal nxAlgoPriceObject::_GetSettlement() const
{
    return _Read(&nxPrice::GetSettlementPrice);
}

nxDecimal nxAlgoPriceObject::_GetTheo() const
{
    return _Read(&nxPrice::GetTheoreticalPrice);
}

nxDecimal nxAlgoPriceObject::_GetTheo2() const
{
    return _Read(&nxPrice::GetTheoretical2Price);
}

nxDecimal nxAlgoPriceObject::_GetOpen() const
{
    return _Read(&nxPrice::GetOpenPrice);
}

nxDecimal nxAlgoPriceObject::_GetClose() const
{
    return _Read(&nxPrice::GetClosePrice);
}

nxDecimal nxAlgoPriceObject::_GetPreviousClose() const
{
    return _Read(&nxPrice::GetPreviousClosePrice);
}

std::string nxAlgoPriceObject::_GetLastBuySell() const
{
    if (_snapshot == nullptr) return {};
    const nxBuySellEnum& side = _snapshot->GetLastPriceBuySellIndicator();
    return side == nxBuySell_Buy ? "BUY" : side == nxBuySell_Sell ? "SELL" : "";
}

std::string nxAlgoPriceObject::_GetSettlementType() const
{
    return _snapshot == nullptr ? std::string()
                                : _snapshot->GetSettlementPriceType().GetShortDescription(" ");
}
