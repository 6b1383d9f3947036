#pragma once

#include <string>
#include <type_traits>

#include "base/records/nxPrice.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// A script's read-only view of a product's price: the argument of OnPrice, which the host builds for each
// event, and the object behind a product's `price`. It points at two records of the host, which must live as
// long as a script may read the view and must not change during a callback. Copies point at the same records.
//
// A record or value that is not there reads as nil, an empty text or false; nothing here raises an error.
class nxAlgoPriceObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoPriceObject";
    static constexpr bool endsWithEvent = true;
    static const nxLuaWrapper<nxAlgoPriceObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoPriceObject>::PropertyType Properties[];

    nxAlgoPriceObject(nxAlgoJobInterface* job, unsigned int id);
    // update is what this event brought, its untouched fields at no-change; null when nothing is known of
    // that.
    nxAlgoPriceObject(nxAlgoJobInterface* job, const nxPrice* snapshot, const nxPrice* update,
                      unsigned int id);

    // Also forgets the update: what is asked for on demand has changed no side.
    void SetSnapshot(const nxPrice* snapshot);

    bool isBid(nxLuaParameters&, nxLuaResults&);
    bool isAsk(nxLuaParameters&, nxLuaResults&);
    bool isLast(nxLuaParameters&, nxLuaResults&);

    bool Get_id(nxLuaResults& r) { return _Give<&View::_GetId>(r); }
    bool Get_bidPrice(nxLuaResults& r) { return _Give<&View::_GetBid>(r); }
    bool Get_bidVolume(nxLuaResults& r) { return _Give<&View::_GetBidQty>(r); }
    bool Get_askPrice(nxLuaResults& r) { return _Give<&View::_GetAsk>(r); }
    bool Get_askVolume(nxLuaResults& r) { return _Give<&View::_GetAskQty>(r); }
    bool Get_impliedBidPrice(nxLuaResults& r) { return _Give<&View::_GetImpliedBid>(r); }
    bool Get_impliedBidVolume(nxLuaResults& r) { return _Give<&View::_GetImpliedBidQty>(r); }
    bool Get_impliedAskPrice(nxLuaResults& r) { return _Give<&View::_GetImpliedAsk>(r); }
    bool Get_impliedAskVolume(nxLuaResults& r) { return _Give<&View::_GetImpliedAskQty>(r); }
    bool Get_paperBidPrice(nxLuaResults& r) { return _Give<&View::_GetPaperBid>(r); }
    bool Get_paperBidVolume(nxLuaResults& r) { return _Give<&View::_GetPaperBidQty>(r); }
    bool Get_paperAskPrice(nxLuaResults& r) { return _Give<&View::_GetPaperAsk>(r); }
    bool Get_paperAskVolume(nxLuaResults& r) { return _Give<&View::_GetPaperAskQty>(r); }
    bool Get_low(nxLuaResults& r) { return _Give<&View::_GetLow>(r); }
    bool Get_high(nxLuaResults& r) { return _Give<&View::_GetHigh>(r); }
    bool Get_lastPrice(nxLuaResults& r) { return _Give<&View::_GetTrade>(r); }
    bool Get_lastVolume(nxLuaResults& r) { return _Give<&View::_GetTradeQty>(r); }
    bool Get_lastBuySell(nxLuaResults& r) { return _Give<&View::_GetLastBuySell>(r); }
    bool Get_totalTradedVolume(nxLuaResults& r) { return _Give<&View::_GetTotalTradeQty>(r); }
    bool Get_theo(nxLuaResults& r) { return _Give<&View::_GetTheo>(r); }
    bool Get_theo2(nxLuaResults& r) { return _Give<&View::_GetTheo2>(r); }
    bool Get_open(nxLuaResults& r) { return _Give<&View::_GetOpen>(r); }
    bool Get_close(nxLuaResults& r) { return _Give<&View::_GetClose>(r); }
    bool Get_previousClose(nxLuaResults& r) { return _Give<&View::_GetPreviousClose>(r); }
    bool Get_previousSettlement(nxLuaResults& r) { return _Give<&View::_GetPreviousSettlement>(r); }
    bool Get_settlement(nxLuaResults& r) { return _Give<&View::_GetSettlement>(r); }
    bool Get_settlementType(nxLuaResults& r) { return _Give<&View::_GetSettlementType>(r); }

private:
    using View = nxAlgoPriceObject;

    template <auto read>
    bool _Give(nxLuaResults& results)
    {
        results.Add((this->*read)());
        return true;
    }
    template <auto getter>
    auto _Read() const
    {
        using Value = std::remove_cvref_t<decltype((_snapshot->*getter)())>;
        return _snapshot == nullptr ? Value() : (_snapshot->*getter)();
    }
    // Price and volume of the better of direct and implied, always from one call, so that the two agree.
    struct Quote
    {
        nxDecimal price;
        nxVolume volume;
    };
    Quote _GetBestBid() const;
    Quote _GetBestAsk() const;

    unsigned int _GetId() const { return _id; }
    nxDecimal _GetBid() const { return _GetBestBid().price; }
    nxVolume _GetBidQty() const { return _GetBestBid().volume; }
    nxDecimal _GetAsk() const { return _GetBestAsk().price; }
    nxVolume _GetAskQty() const { return _GetBestAsk().volume; }
    nxDecimal _GetImpliedBid() const { return _Read<&nxPrice::GetImpliedBidPrice>(); }
    nxVolume _GetImpliedBidQty() const { return _Read<&nxPrice::GetImpliedBidVolume>(); }
    nxDecimal _GetImpliedAsk() const { return _Read<&nxPrice::GetImpliedAskPrice>(); }
    nxVolume _GetImpliedAskQty() const { return _Read<&nxPrice::GetImpliedAskVolume>(); }
    nxDecimal _GetPaperBid() const { return _Read<&nxPrice::GetBidPrice>(); }
    nxVolume _GetPaperBidQty() const { return _Read<&nxPrice::GetBidVolume>(); }
    nxDecimal _GetPaperAsk() const { return _Read<&nxPrice::GetAskPrice>(); }
    nxVolume _GetPaperAskQty() const { return _Read<&nxPrice::GetAskVolume>(); }
    nxDecimal _GetLow() const { return _Read<&nxPrice::GetLowPrice>(); }
    nxDecimal _GetHigh() const { return _Read<&nxPrice::GetHighPrice>(); }
    nxDecimal _GetTrade() const { return _Read<&nxPrice::GetLastPrice>(); }
    nxVolume _GetTradeQty() const { return _Read<&nxPrice::GetLastVolume>(); }
    std::string _GetLastBuySell() const;
    nxVolume _GetTotalTradeQty() const { return _Read<&nxPrice::GetTotalTradedVolume>(); }
    nxDecimal _GetTheo() const { return _Read<&nxPrice::GetTheoreticalPrice>(); }
    nxDecimal _GetTheo2() const { return _Read<&nxPrice::GetTheoretical2Price>(); }
    nxDecimal _GetOpen() const { return _Read<&nxPrice::GetOpenPrice>(); }
    nxDecimal _GetClose() const { return _Read<&nxPrice::GetClosePrice>(); }
    nxDecimal _GetPreviousClose() const { return _Read<&nxPrice::GetPreviousClosePrice>(); }
    nxDecimal _GetPreviousSettlement() const { return _Read<&nxPrice::GetPreviousSettlementPrice>(); }
    nxDecimal _GetSettlement() const { return _Read<&nxPrice::GetSettlementPrice>(); }
    std::string _GetSettlementType() const;

    const nxPrice* _snapshot = nullptr;
    const nxPrice* _update = nullptr;
    unsigned int _id;
};
