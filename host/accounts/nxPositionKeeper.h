#pragma once

#include "base/values/nxDecimal.h"
#include "base/values/nxExactAmount.h"
#include "host/feed/nxSide.h"
#include "host/market/nxAdjustment.h"

// What trading one product brought: volumes, average prices, cash, realised and open profit, over the whole
// run and for the current day. Money is price times volume times point value. All sums are exact, so that
// cash and the value of the position add up to the profit; only average prices, and with them the split of
// the profit into realised and open, are rounded, to ten places.
class nxPositionKeeper
{
public:
    // One section of the account: the run, or the day.
    struct Section
    {
        nxBySide<unsigned long long> volume;
        nxBySide<nxExactAmount> money;   // paid for what was bought, got for what was sold; without fees
        nxBySide<nxExactAmount> prices;  // times volumes, for the averages
        nxExactAmount fees;              // negative: rebates won

        // Null while nothing was traded on that side.
        nxDecimal GetAveragePrice(nxSide side) const;
    };

    explicit nxPositionKeeper(const nxDecimal& pointValue = nxDecimalOne) : _pointValue(pointValue) {}

    void AddFill(nxSide side, const nxDecimal& price, unsigned int volume, const nxExactAmount& fee);
    // Money that comes or goes beside the fills.
    void AddCash(const nxExactAmount& amount)
    {
        _cash += amount;
        _dayCash += amount;
    }
    // Prices and lots are others from now on, `lots` being those that are open then; what they cost stays,
    // but for the part of lots that went away.
    void Split(const nxAdjustment& split, long long lots);
    // The position goes on in a product of another price, without gain or loss.
    void Roll(const nxDecimal& difference);
    // The day's section begins anew; what is open is carried at that price, where it is valid.
    void BeginDay(const nxDecimal& mark);

    const Section& GetTotal() const { return _total; }
    const Section& GetDay() const { return _day; }
    // Long above 0.
    long long GetNet() const { return _net; }
    // Of what is open, by the method of averages: what reduces a position leaves its average; what turns it
    // begins a new one. Null when nothing is open.
    nxDecimal GetOpenAveragePrice() const;

    // With the open position valued at mark; fees are taken off. An open position without a mark counts at
    // its average.
    nxExactAmount GetTotalProfit(const nxDecimal& mark) const;
    nxExactAmount GetDayProfit(const nxDecimal& mark) const;
    nxExactAmount GetOpenProfit(const nxDecimal& mark) const;
    nxExactAmount GetRealisedProfit(const nxDecimal& mark) const
    {
        return GetTotalProfit(mark) - GetOpenProfit(mark);
    }

private:
    nxExactAmount _GetValue(const nxDecimal& mark) const;

    nxDecimal _pointValue;
    nxExactAmount _cash;  // of the run: got less paid and fees
    Section _total;
    Section _day;
    long long _net = 0;
    nxExactAmount _openSum;   // prices times signed volume of what is open
    nxExactAmount _dayCash;   // of the day, beside its fills
    nxExactAmount _dayBegin;  // value of the position the day began with
};
