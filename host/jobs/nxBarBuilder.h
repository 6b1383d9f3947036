#pragma once

#include "base/records/nxTickData.h"
#include "base/time/nxTime.h"
#include "host/feed/nxFeedEvent.h"
#include "host/jobs/nxBarSpan.h"

// Folds trades, or bars of a finer period, into bars by a rule: see nxBarSpan for the time that each covers.
// What comes while the market is closed belongs to no session, and so to none of the bars that follow them. A
// bar's time is its beginning. Where nothing comes, there is no bar. A value, used by one thread.
//
// A trade belongs to the bar in whose span it lies, the end left out. A row of a bars file bears the time of
// its end, so it belongs to the bar that holds the moment before. It also ends that bar if the next row, one
// row's period later, must lie after it. Rows that are a day or so apart are sessions as they are and keep
// the time that the file gives them.
class nxBarBuilder
{
public:
    // rowPeriod: nanoseconds between the rows of the bars file; 0 where it is not known. rowsBearStart: in
    // the file their time was that much earlier than the one they are added with.
    nxBarBuilder(const nxBarTerms& terms, const nxTradingHours& hours, long long rowPeriod,
                 bool rowsBearStart = false);

    // False for rows too coarse for the rule, and where it asks for trades.
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
    // The bar that the latest trade has completed, good until the next call; null when more may come.
    const nxTickData* CloseFull() { return _isEmpty || !_IsFull() ? nullptr : _Finish(); }

    // The bar under construction; null when there is none.
    const nxTickData* GetBar() const { return _isEmpty ? nullptr : &_bar; }

private:
    void _Begin(const nxDecimal& open, long long time);
    bool _IsFull() const;
    const nxTickData* _Finish();
    const nxTickData* _AddDaily(const nxFeedBar& row, long long time);
    void _Fold(const nxFeedBar& row, long long begin);

    nxBarTerms _terms;
    nxBarSpan _span;
    long long _rowPeriod;
    bool _rowsBearStart;
    long long _due = nxTime::Never;
    nxTickData _bar;
    long long _trades = 0;  // in it
    bool _isEmpty = true;
};
