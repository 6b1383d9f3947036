#pragma once

#include <limits>

#include "base/enums/nxTickDataPeriodEnum.h"
#include "base/records/nxTickData.h"
#include "base/time/nxTime.h"
#include "host/feed/nxFeedEvent.h"
#include "host/market/nxTradingHours.h"

// Folds trades, or bars of a finer period, into bars of one of the six periods. Bars begin at the multiples
// of their period in UTC, a SESSION at the opening of the market, or, without trading hours or in a market
// that is always open, at midnight UTC; what comes while the market is closed belongs to no session. A bar's
// time is its beginning. Where nothing comes, there is no bar. A value, used by one thread.
//
// A trade belongs to the bar in whose span it lies, the end left out. A row of a bars file bears the time of
// its end, so it belongs to the bar that holds the moment before. It also ends that bar if the next row, one
// row's period later, must lie behind. Rows that are a day or so apart are sessions as they are and keep
// the time that the file gives them.
class nxBarBuilder
{
public:
    // rowPeriod: nanoseconds between the rows of the bars file; 0 where it is not known. rowsBearStart: in
    // the file their time was that much earlier than the one they are added with.
    nxBarBuilder(const nxTickDataPeriodEnum& period, const nxTradingHours& hours, long long rowPeriod,
                 bool rowsBearStart = false);

    // False for rows too coarse for the period.
    bool CanFoldRows() const;

    // The bar that has ended by `time`, in nanoseconds since 1970, good until the next call; null when there
    // is none. To be asked before anything of that time is added.
    const nxTickData* Close(long long time);
    // From which time on Close has a bar to give.
    long long GetDue() const { return _due; }

    // The bar that the row completes, good until the next call; null when more may come.
    const nxTickData* AddRow(const nxFeedBar& row, long long time);
    // False when the trade belongs to no bar.
    bool AddTrade(const nxDecimal& price, unsigned int volume, const nxBuySellEnum& side, long long time);

    // The bar under construction; null when there is none.
    const nxTickData* GetBar() const { return _isEmpty ? nullptr : &_bar; }

private:
    // Moves the span to the one that holds the time; false when none does.
    bool _FindSpan(long long time);
    void _Begin(const nxDecimal& open);
    const nxTickData* _Finish();

    long long _length;  // nanoseconds; 0: a session
    nxTradingHours _hours;
    long long _rowPeriod;
    bool _rowsBearStart;
    long long _begin = 0;
    long long _end = 0;  // of the span, itself left out
    long long _due = nxTime::Never;
    nxTickData _bar;
    bool _isEmpty = true;
};
