#pragma once

#include "base/enums/nxCurrencyEnum.h"
#include "base/records/nxPrice.h"
#include "host/accounts/nxAdjusted.h"
#include "host/accounts/nxFeeCounter.h"
#include "host/accounts/nxPositionKeeper.h"
#include "host/exchange/nxExchangeEvent.h"
#include "scriptFramework/market/nxAlgoPosition.h"

// What the fills of one product come to, for one job or for all of a run: position, fees and profit, at the
// market's prices. A value; the description is read when it is made.
class nxProductAccount
{
public:
    nxProductAccount() = default;
    // A point value that is not valid is 1.
    explicit nxProductAccount(const nxProductDescription& product)
        : _pointValue(product.pointValue.IsValid() ? product.pointValue : nxDecimalOne),
          _currency(product.currency),
          _fees(nxFeeSchedule(product)),
          _keeper(_pointValue)
    {
    }

    const nxPositionKeeper& GetKeeper() const { return _keeper; }
    const nxDecimal& GetPointValue() const { return _pointValue; }
    const nxCurrencyEnum& GetCurrency() const { return _currency; }
    // What a position would bring now: a long one counts at the bid, a short one at the ask, and either at
    // the last trade where the market shows none. Null for none of them.
    nxDecimal GetMark(const nxPrice& price) const;

    // Of one job; gives the fee.
    nxExactAmount AddFill(nxSide side, const nxExchangeEvent& fill)
    {
        const nxExactAmount fee = _fees.Add(fill, _pointValue);
        AddFill(side, fill, fee);
        return fee;
    }
    // Of a job whose account knows the fee.
    void AddFill(nxSide side, const nxExchangeEvent& fill, const nxExactAmount& fee)
    {
        _lastFee = fee;
        _keeper.AddFill(side, fill.fillPrice, fill.fillVolume, fee);
        if (fill.impact.IsValid()) _keeper.AddCash(nxExactAmount() - GetImpact(fill));
    }
    // Of the last fill.
    const nxExactAmount& GetLastFee() const { return _lastFee; }
    // What the market's answer to the fill costs.
    nxExactAmount GetImpact(const nxExchangeEvent& fill) const
    {
        return {fill.impact, fill.fillVolume, _pointValue};
    }
    // What an adjustment does to the position at that mark.
    nxAdjusted GetAdjusted(const nxAdjustment& adjustment, const nxDecimal& mark) const;
    void Adjust(const nxAdjustment& adjustment, const nxAdjusted& adjusted);
    void BeginDay(const nxPrice& price) { _keeper.BeginDay(GetMark(price)); }

    // The sections total and day with the open position, or the local section, of what scripts see.
    void FillTotal(nxAlgoPosition& position) const;
    void FillLocal(nxAlgoPosition& position) const;

private:
    nxDecimal _pointValue = nxDecimalOne;
    nxCurrencyEnum _currency;
    nxFeeCounter _fees;
    nxPositionKeeper _keeper;
    nxExactAmount _lastFee;
};
