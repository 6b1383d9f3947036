#pragma once

#include "base/enums/nxCurrencyEnum.h"
#include "base/values/nxDecimal.h"

// How much of a product is held and at what cost, in three sections: total over everything, local for what
// the job's own trading brought, day for the current trading day. A plain record that the host fills in;
// averages, costs and revenues come ready from it. A new position holds true zeros, not null.
class nxAlgoPosition
{
public:
    nxAlgoPosition() = default;
    nxAlgoPosition(const nxAlgoPosition&) = default;
    nxAlgoPosition& operator=(const nxAlgoPosition&) = default;
    virtual ~nxAlgoPosition() = default;

    // Long minus short, so that a long position is positive. The local and the day section are subtracted in
    // 32 bits.
    long long GetTotalNet() const { return static_cast<long long>(_totalLong - _totalShort); }
    long long GetLocalNet() const { return static_cast<int>(_localLong - _localShort); }
    int GetDayNet() const { return static_cast<int>(_dayLong - _dayShort); }

    unsigned long long GetTotalShort() const { return _totalShort; }
    unsigned long long GetTotalLong() const { return _totalLong; }
    unsigned long long GetLocalShort() const { return _localShort; }
    unsigned long long GetLocalLong() const { return _localLong; }
    unsigned int GetDayShort() const { return _dayShort; }
    unsigned int GetDayLong() const { return _dayLong; }
    int GetOpenPos() const { return _openPos; }
    nxCurrencyEnum GetCurrency() const { return _currency; }
    nxDecimal GetDayAverageBuyPrice() const { return _dayAverageBuyPrice; }
    nxDecimal GetDayAverageSellPrice() const { return _dayAverageSellPrice; }
    nxDecimal GetTotalAverageBuyPrice() const { return _totalAverageBuyPrice; }
    nxDecimal GetTotalAverageSellPrice() const { return _totalAverageSellPrice; }
    nxDecimal GetRunningOpenDayAveragePrice() const { return _runningOpenDayAveragePrice; }
    nxDecimal GetTotalCost() const { return _totalCost; }
    nxDecimal GetTotalRevenue() const { return _totalRevenue; }
    nxDecimal GetDayCost() const { return _dayCost; }
    nxDecimal GetDayRevenue() const { return _dayRevenue; }
    nxDecimal GetLocalCost() const { return _localCost; }
    nxDecimal GetLocalRevenue() const { return _localRevenue; }
    nxDecimal GetLocalAverageBuyPrice() const { return _localAverageBuyPrice; }
    nxDecimal GetLocalAverageSellPrice() const { return _localAverageSellPrice; }

    void SetTotalShort(unsigned long long value) { _totalShort = value; }
    void SetTotalLong(unsigned long long value) { _totalLong = value; }
    // The local volumes are kept in 32 bits: a larger value is cut.
    void SetLocalShort(unsigned long long value) { _localShort = static_cast<unsigned int>(value); }
    void SetLocalLong(unsigned long long value) { _localLong = static_cast<unsigned int>(value); }
    void SetDayShort(unsigned int value) { _dayShort = value; }
    void SetDayLong(unsigned int value) { _dayLong = value; }
    void SetOpenPos(int value) { _openPos = value; }
    void SetCurrency(const nxCurrencyEnum& value) { _currency = value; }
    void SetDayAverageBuyPrice(const nxDecimal& value) { _dayAverageBuyPrice = value; }
    void SetDayAverageSellPrice(const nxDecimal& value) { _dayAverageSellPrice = value; }
    void SetTotalAverageBuyPrice(const nxDecimal& value) { _totalAverageBuyPrice = value; }
    void SetTotalAverageSellPrice(const nxDecimal& value) { _totalAverageSellPrice = value; }
    void SetRunningOpenDayAveragePrice(const nxDecimal& value) { _runningOpenDayAveragePrice = value; }
    void SetTotalCost(const nxDecimal& value) { _totalCost = value; }
    void SetTotalRevenue(const nxDecimal& value) { _totalRevenue = value; }
    void SetDayCost(const nxDecimal& value) { _dayCost = value; }
    void SetDayRevenue(const nxDecimal& value) { _dayRevenue = value; }
    void SetLocalCost(const nxDecimal& value) { _localCost = value; }
    void SetLocalRevenue(const nxDecimal& value) { _localRevenue = value; }
    void SetLocalAverageBuyPrice(const nxDecimal& value) { _localAverageBuyPrice = value; }
    void SetLocalAverageSellPrice(const nxDecimal& value) { _localAverageSellPrice = value; }

private:
    unsigned long long _totalShort = 0;
    unsigned long long _totalLong = 0;
    unsigned int _localShort = 0;
    unsigned int _localLong = 0;
    unsigned int _dayShort = 0;
    unsigned int _dayLong = 0;
    nxDecimal _dayAverageBuyPrice = nxDecimalZero;
    nxDecimal _dayAverageSellPrice = nxDecimalZero;
    nxDecimal _totalAverageBuyPrice = nxDecimalZero;
    nxDecimal _totalAverageSellPrice = nxDecimalZero;
    nxDecimal _runningOpenDayAveragePrice = nxDecimalZero;
    nxCurrencyEnum _currency;
    nxDecimal _totalCost = nxDecimalZero;
    nxDecimal _totalRevenue = nxDecimalZero;
    nxDecimal _dayCost = nxDecimalZero;
    nxDecimal _dayRevenue = nxDecimalZero;
    int _openPos = 0;
    nxDecimal _localCost = nxDecimalZero;
    nxDecimal _localRevenue = nxDecimalZero;
    nxDecimal _localAverageBuyPrice = nxDecimalZero;
    nxDecimal _localAverageSellPrice = nxDecimalZero;
};
