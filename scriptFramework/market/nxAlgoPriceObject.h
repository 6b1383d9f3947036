#pragma once

#include <string>

#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxPrice;

// A script's read-only view of a product's price: the argument of OnPrice, which the host builds for each
// event, and the object behind a product's `price`. It points at two records of the host, which must live as
// long as a script may read the view and must not change during a callback. Copies point at the same records.
//
// A record or value that is not there reads as nil, an empty text or false; nothing here raises an error.
class nxAlgoPriceObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoPriceObject";
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

    bool Get_id(nxLuaResults&);
    bool Get_bidPrice(nxLuaResults&);
    bool Get_bidVolume(nxLuaResults&);
    bool Get_askPrice(nxLuaResults&);
    bool Get_askVolume(nxLuaResults&);
    bool Get_impliedBidPrice(nxLuaResults&);
    bool Get_impliedBidVolume(nxLuaResults&);
    bool Get_impliedAskPrice(nxLuaResults&);
    bool Get_impliedAskVolume(nxLuaResults&);
    bool Get_paperBidPrice(nxLuaResults&);
    bool Get_paperBidVolume(nxLuaResults&);
    bool Get_paperAskPrice(nxLuaResults&);
    bool Get_paperAskVolume(nxLuaResults&);
    bool Get_low(nxLuaResults&);
    bool Get_high(nxLuaResults&);
    bool Get_lastPrice(nxLuaResults&);
    bool Get_lastVolume(nxLuaResults&);
    bool Get_lastBuySell(nxLuaResults&);
    bool Get_totalTradedVolume(nxLuaResults&);
    bool Get_theo(nxLuaResults&);
    bool Get_theo2(nxLuaResults&);
    bool Get_open(nxLuaResults&);
    bool Get_close(nxLuaResults&);
    bool Get_previousClose(nxLuaResults&);
    bool Get_previousSettlement(nxLuaResults&);
    bool Get_settlement(nxLuaResults&);
    bool Get_settlementType(nxLuaResults&);

private:
    // Price and volume of the better of direct and implied, always from one call, so that the two agree.
    struct Quote
    {
        nxDecimal price;
        nxVolume volume;
    };
    Quote _GetBestBid() const;
    Quote _GetBestAsk() const;
    nxDecimal _Read(const nxDecimal& (nxPrice::*getter)() const) const;
    nxVolume _Read(const nxVolume& (nxPrice::*getter)() const) const;

    nxDecimal _GetBid() const;
    nxVolume _GetBidQty() const;
    nxDecimal _GetAsk() const;
    nxVolume _GetAskQty() const;
    nxDecimal _GetImpliedBid() const;
    nxVolume _GetImpliedBidQty() const;
    nxDecimal _GetImpliedAsk() const;
    nxVolume _GetImpliedAskQty() const;
    nxDecimal _GetPaperBid() const;
    nxVolume _GetPaperBidQty() const;
    nxDecimal _GetPaperAsk() const;
    nxVolume _GetPaperAskQty() const;
    nxDecimal _GetLow() const;
    nxDecimal _GetHigh() const;
    nxDecimal _GetTrade() const;
    nxVolume _GetTradeQty() const;
    nxVolume _GetTotalTradeQty() const;
    std::string _GetLastBuySell() const;
    nxDecimal _GetPreviousSettlement() const;
    nxDecimal _GetSettlement() const;
    std::string _GetSettlementType() const;
    nxDecimal _GetTheo() const;
    nxDecimal _GetTheo2() const;
    nxDecimal _GetOpen() const;
    nxDecimal _GetClose() const;
    nxDecimal _GetPreviousClose() const;

    const nxPrice* _snapshot = nullptr;
    const nxPrice* _update = nullptr;
    unsigned int _id;
};
