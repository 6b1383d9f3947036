#pragma once

#include <deque>

#include "base/threads/nxMutexGuard.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"
#include "scriptFramework/lua/nxScriptCharge.h"

// A sliding window of trades and its statistics. A trade is stamped as it arrives, by nxTimeSource's time,
// and leaves when it is older than the duration; memory is that of the trades in the window. To add a trade
// costs no calculation: the statistics change only in Recalculate, which passes over the window twice.
//
// Guards itself: any thread may call, but SetDuration, which comes first. The getters give references that a
// Recalculate on another thread changes; a reader beside it may see a value in the middle of its change.
class nxTimeSeries_Trade
{
public:
    nxTimeSeries_Trade() = default;
    nxTimeSeries_Trade(const nxTimeSeries_Trade&) = delete;
    nxTimeSeries_Trade& operator=(const nxTimeSeries_Trade&) = delete;
    virtual ~nxTimeSeries_Trade() = default;

    // In seconds. A trade that is exactly so old stays; with 0 every trade older than now goes.
    void SetDuration(double seconds) { _duration = seconds; }
    // Where its trades are charged from now on.
    void SetAccount(const nxScriptCharge::Account& account);
    void AddTrade(const nxDecimal& price, const nxVolume& volume);
    // From now on Recalculate finds the slope. There is no way back.
    void EnableRegression();
    // Drops what is too old and calculates. Statistics that come out as 0 because there is nothing to divide
    // have 4 decimal places, all calculated ones 8.
    void Recalculate();

    // All null before the first Recalculate, and without trades but for the total, the size and the change,
    // which are 0 then.
    const nxDecimal& GetMin() const { return _Guarded(_min); }
    const nxDecimal& GetMax() const { return _Guarded(_max); }
    const nxDecimal& GetRange() const { return _Guarded(_range); }
    const nxDecimal& GetAverage() const { return _Guarded(_average); }
    const nxDecimal& GetVWAP() const { return _Guarded(_vwap); }
    // Wraps at 2^32, and so do the averages that are made of it.
    const nxVolume& GetTotalTraded() const { return _Guarded(_totalTraded); }
    // From the first to the last price.
    const nxDecimal& GetPercentageChange() const { return _Guarded(_percentageChange); }
    // Of the prices, over their count.
    const nxDecimal& GetStandardDeviation() const { return _Guarded(_standardDeviation); }
    const nxDecimal& GetAverageVolume() const { return _Guarded(_averageVolume); }
    const nxDecimal& GetFirst() const { return _Guarded(_first); }
    const nxDecimal& GetLast() const { return _Guarded(_last); }
    // Of the prices over the seconds; null unless regression is enabled, 0 where there is no line.
    const nxDecimal& GetSlope() const { return _Guarded(_slope); }
    unsigned int GetSize() const { return _Guarded(_size); }

private:
    struct Entry
    {
        double seconds;  // since 1970, to a quarter of a microsecond
        double priceAsDouble;
        nxDecimal price;
        unsigned int volume;
        unsigned int nanoseconds;  // of the second, exactly
    };

    template <class T>
    const T& _Guarded(const T& value) const
    {
        const nxMutexGuard guard(_mutex);
        return value;
    }
    void _Reset();
    void _Expire(double now);
    void _ChargeEntries();
    void _Summarise();
    void _FindDeviation(double sum);
    void _FindSlope();

    std::deque<Entry> _entries;  // by _mutex, as all below but the duration; oldest first
    mutable nxMutex _mutex;
    nxScriptCharge _charge;
    double _duration = 0.0;
    nxDecimal _min, _max, _range, _average, _vwap;
    nxVolume _totalTraded;
    nxDecimal _percentageChange, _standardDeviation, _averageVolume, _first, _last, _slope;
    unsigned int _size = 0;
    bool _regressionEnabled = false;
};
