#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"

#include <cstdint>

#include "base/log/nxLogMessage.h"
#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

using Self = nxAlgoEventWindowObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"start", &Self::start},
    {"stop", &Self::stop},
    {"enableRegression", &Self::enableRegression},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {"min", &Self::Get_min, nullptr},
    {"max", &Self::Get_max, nullptr},
    {"averagePrice", &Self::Get_averagePrice, nullptr},
    {"vwap", &Self::Get_vwap, nullptr},
    {"range", &Self::Get_range, nullptr},
    {"totaltraded", &Self::Get_totaltraded, nullptr},
    {"stddev", &Self::Get_stddev, nullptr},
    {"change", &Self::Get_change, nullptr},
    {"averageVolume", &Self::Get_averageVolume, nullptr},
    {"first", &Self::Get_first, nullptr},
    {"last", &Self::Get_last, nullptr},
    {"size", &Self::Get_size, nullptr},
    {"slope", &Self::Get_slope, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoEventWindowObject::nxAlgoEventWindowObject(nxAlgoJobInterface* job, nxAlgoProductObject* product,
                                                 double duration, double frequency)
    : nxAlgoObject(job), _product(product), _frequency(frequency)
{
    for (nxDecimal* value : {&_min, &_max, &_averagePrice, &_vwap, &_range, &_stddev, &_change,
                             &_averageVolume, &_first, &_last, &_slope})
        value->SetNoChange();
    _totaltraded.SetNoChange();
    _series.SetDuration(duration);
}

nxAlgoEventWindowObject::~nxAlgoEventWindowObject()
{
    if (_started) GetJob()->StopEventWindowTimer(this);
    if (_subscribed) _product->UnsubscribePrices(this);
}

bool nxAlgoEventWindowObject::start(nxLuaParameters&, nxLuaResults&)
{
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Starting Trade Window");
    if (_started) return true;
    if (!_subscribed) {
        _product->SubscribePrices(this);
        _subscribed = true;
    }
    if (_frequency > 0.0) GetJob()->StartEventWindowTimer(this, _frequency);
    _started = true;
    return true;
}

bool nxAlgoEventWindowObject::stop(nxLuaParameters&, nxLuaResults&)
{
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Stopping Trade Window");
    if (!_started) return true;
    if (_subscribed) {
        _product->UnsubscribePrices(this);
        _subscribed = false;
    }
    // Also of a window that has none: a host may count the calls.
    GetJob()->StopEventWindowTimer(this);
    _started = false;
    return true;
}

bool nxAlgoEventWindowObject::enableRegression(nxLuaParameters&, nxLuaResults&)
{
    _regressionEnabled = true;
    _series.EnableRegression();
    return true;
}

void nxAlgoEventWindowObject::OnPrice(const nxPrice& price)
{
    if (!price.GetLastPrice().IsValid() || !price.GetLastVolume().IsValid()) return;
    _series.AddTrade(price.GetLastPrice(), price.GetLastVolume());
    if (_frequency == 0.0) _CalculateAndPublish(false);
}

void nxAlgoEventWindowObject::_CalculateAndPublish(bool force)
{
    _series.Recalculate();
    bool changed = force;
    const auto publish = [&](auto& published, const auto& value) {
        if (published == value) return;
        published = value;
        changed = true;
    };
    publish(_min, _series.GetMin());
    publish(_max, _series.GetMax());
    publish(_range, _series.GetRange());
    publish(_averagePrice, _series.GetAverage());
    publish(_averageVolume, _series.GetAverageVolume());
    publish(_vwap, _series.GetVWAP());
    publish(_totaltraded, _series.GetTotalTraded());
    publish(_stddev, _series.GetStandardDeviation());
    publish(_change, _series.GetPercentageChange());
    publish(_slope, _series.GetSlope());
    publish(_first, _series.GetFirst());
    publish(_last, _series.GetLast());
    publish(_size, _series.GetSize());
    if (changed) GetJob()->OnEventWindow(*this);
}

bool nxAlgoEventWindowObject::Get_id(nxLuaResults& results)
{
    results.Add(static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(this)));
    return true;
}

bool nxAlgoEventWindowObject::Get_min(nxLuaResults& results)
{
    results.Add(_min);
    return true;
}

bool nxAlgoEventWindowObject::Get_max(nxLuaResults& results)
{
    results.Add(_max);
    return true;
}

bool nxAlgoEventWindowObject::Get_averagePrice(nxLuaResults& results)
{
    results.Add(_averagePrice);
    return true;
}

bool nxAlgoEventWindowObject::Get_vwap(nxLuaResults& results)
{
    results.Add(_vwap);
    return true;
}

bool nxAlgoEventWindowObject::Get_range(nxLuaResults& results)
{
    results.Add(_range);
    return true;
}

bool nxAlgoEventWindowObject::Get_totaltraded(nxLuaResults& results)
{
    results.Add(_totaltraded);
    return true;
}

bool nxAlgoEventWindowObject::Get_stddev(nxLuaResults& results)
{
    results.Add(_stddev);
    return true;
}

bool nxAlgoEventWindowObject::Get_change(nxLuaResults& results)
{
    results.Add(_change);
    return true;
}

bool nxAlgoEventWindowObject::Get_averageVolume(nxLuaResults& results)
{
    results.Add(_averageVolume);
    return true;
}

bool nxAlgoEventWindowObject::Get_first(nxLuaResults& results)
{
    results.Add(_first);
    return true;
}

bool nxAlgoEventWindowObject::Get_last(nxLuaResults& results)
{
    results.Add(_last);
    return true;
}

bool nxAlgoEventWindowObject::Get_size(nxLuaResults& results)
{
    results.Add(_size);
    return true;
}

bool nxAlgoEventWindowObject::Get_slope(nxLuaResults& results)
{
    results.Add(_slope);
    return true;
}
