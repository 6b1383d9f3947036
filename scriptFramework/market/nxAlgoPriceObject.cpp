#include "scriptFramework/market/nxAlgoPriceObject.h"

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
