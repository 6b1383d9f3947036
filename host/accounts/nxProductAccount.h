#pragma once

#include "base/enums/nxCurrencyEnum.h"
#include "base/records/nxPrice.h"
#include "host/accounts/nxFeeSchedule.h"
#include "host/accounts/nxPositionKeeper.h"
#include "scriptFramework/market/nxAlgoPosition.h"

// What the fills of one product come to, for one job or for all of a run: position, fees and profit, at the
// market's prices. A value; the description is read when it is made.
class nxProductAccount
{
public:
    nxProductAccount() = default;
    // A point value that is not valid is 1.
    nxProductAccount(const nxDecimal& pointValue, const nxCurrencyEnum& currency, const nxFeeSchedule& fees)
        : _pointValue(pointValue.IsValid() ? pointValue : nxDecimalOne),
          _currency(currency),
          _fees(fees),
          _keeper(_pointValue)
    {
    }

    const nxPositionKeeper& GetKeeper() const { return _keeper; }
    const nxDecimal& GetPointValue() const { return _pointValue; }
    const nxCurrencyEnum& GetCurrency() const { return _currency; }
    // What a position would bring now: a long one counts at the bid, a short one at the ask, and either at
    // the last trade where the market shows none. Null for none of them.
    nxDecimal GetMark(const nxPrice& price) const;

    void AddFill(nxSide side, const nxDecimal& price, unsigned int volume, bool isMaker)
    {
        _keeper.AddFill(side, price, volume, GetFee(price, volume, isMaker));
    }
    nxExactAmount GetFee(const nxDecimal& price, unsigned int volume, bool isMaker) const
    {
        return _fees.GetFee(isMaker, price, volume, _pointValue);
    }
    void BeginDay(const nxPrice& price) { _keeper.BeginDay(GetMark(price)); }

    // The sections total and day with the open position, or the local section, of what scripts see.
    void FillTotal(nxAlgoPosition& position) const;
    void FillLocal(nxAlgoPosition& position) const;

private:
    nxDecimal _pointValue = nxDecimalOne;
    nxCurrencyEnum _currency;
    nxFeeSchedule _fees;
    nxPositionKeeper _keeper;
};
