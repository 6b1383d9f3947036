#include "scriptFramework/analytics/nxAlgoTickDataCollectionObject.h"

#include <algorithm>

#include "base/log/nxLogMessage.h"
#include "base/memory/nxLargePages.h"
#include "base/threads/nxMutexGuard.h"
#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

using Self = nxAlgoTickDataCollectionObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"subscribe", &Self::subscribe},       {"get", &Self::get}, {"createIndicator", &Self::createIndicator},
    {"getIndicator", &Self::getIndicator}, {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"count", &Self::Get_count, nullptr},
    {"period", &Self::Get_period, nullptr},
    {"product", &Self::Get_product, nullptr},
    {"realTime", &Self::Get_realTime, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

namespace {

// As indicators take them; NaN for a null.
nxIndicatorBar ReadValues(const nxTickData& tick)
{
    return {tick.GetOpen().GetAsDouble(), tick.GetHigh().GetAsDouble(), tick.GetLow().GetAsDouble(),
            tick.GetClose().GetAsDouble(), static_cast<double>(tick.GetVolume())};
}

template <class T>
void Reserve(std::vector<T>& values, std::size_t room)
{
    std::vector<T> moved;
    moved.reserve(room);
    nxUseLargePages(moved.data(), room * sizeof(T));
    moved.assign(values.begin(), values.end());
    values.swap(moved);
}

}  // namespace

nxAlgoTickDataCollectionObject::nxAlgoTickDataCollectionObject(nxAlgoJobInterface* job,
                                                               nxAlgoProductObject* product,
                                                               const std::string& period,
                                                               const nxTickDataPeriodEnum& periodEnum,
                                                               unsigned int tickCount)
    : nxAlgoObject(job),
      _product(product),
      _period(period),
      _periodEnum(periodEnum),
      _tickCount(tickCount),
      _realTimeObject(job, this)
{
}

nxAlgoTickDataCollectionObject::~nxAlgoTickDataCollectionObject()
{
    _realTimeTick.reset();
    _indicators.clear();
}

const nxGenericProductID& nxAlgoTickDataCollectionObject::GetProductID() const
{
    return _product->GetGenericProductID();
}

void nxAlgoTickDataCollectionObject::_AppendRaw(const nxIndicatorBar& bar)
{
    if (_closeValues.size() == _chargedBars) [[unlikely]]
        _MakeRoom();
    _closeValues.push_back(bar.close);
    _openValues.push_back(bar.open);
    _highValues.push_back(bar.high);
    _lowValues.push_back(bar.low);
    _volumeValues.push_back(bar.volume);
}

// Charged are up to twice the bars there are, or 256. Room is made in steps of eight, since memory that is
// set aside and not touched costs nothing, but each move touches new memory for all that was there.
void nxAlgoTickDataCollectionObject::_MakeRoom()
{
    constexpr std::size_t first = 256;
    const std::size_t charged = std::max(first, 2 * _chargedBars);
    if (charged > _closeValues.capacity()) {
        const std::size_t room = std::max(first, 8 * _closeValues.capacity());
        for (std::vector<double>* values :
             {&_closeValues, &_openValues, &_highValues, &_lowValues, &_volumeValues})
            Reserve(*values, room);
        Reserve(_times, room);
    }
    _chargedBars = charged;
    _charge.SetAnyway(_GetBytes());
}

std::size_t nxAlgoTickDataCollectionObject::_GetBytes() const
{
    std::size_t values = 5;
    for (const auto& [name, indicator] : _indicators)
        values += indicator->GetLineCount();
    return _chargedBars * (values * sizeof(double) + sizeof(nxDateTime)) + _ticks.GetBytes();
}

// To be called under the mutex.
nxAlgoTickDataObject& nxAlgoTickDataCollectionObject::_GetTick(std::size_t place)
{
    const std::size_t before = _ticks.GetBytes();
    nxAlgoTickDataObject& tick = _ticks.Get(place, [&] {
        nxAlgoTickDataObject made(GetJob(), this);
        made.SetValues({_openValues[place], _highValues[place], _lowValues[place], _closeValues[place],
                        _volumeValues[place]},
                       _times[place]);
        return made;
    });
    if (_ticks.GetBytes() != before) _charge.SetAnyway(_GetBytes());
    return tick;
}

bool nxAlgoTickDataCollectionObject::SetAccount(nxLuaResults& results)
{
    std::size_t bytes = 0;
    {
        const nxMutexGuard guard(_mutex);
        bytes = _GetBytes();
    }
    return results.Sets(_charge, bytes);
}

void nxAlgoTickDataCollectionObject::_ReplaceRaw(const nxIndicatorBar& bar)
{
    _closeValues.back() = bar.close;
    _openValues.back() = bar.open;
    _highValues.back() = bar.high;
    _lowValues.back() = bar.low;
    _volumeValues.back() = bar.volume;
}

nxAlgoTickDataObject* nxAlgoTickDataCollectionObject::AddTickData(const nxTickData& tick, bool recalculate)
{
    const std::size_t place = _AddBar(tick, recalculate);
    const nxMutexGuard guard(_mutex);
    return &_GetTick(place);
}

std::size_t nxAlgoTickDataCollectionObject::_AddBar(const nxTickData& tick, bool recalculate)
{
    const nxMutexGuard guard(_mutex);
    const std::size_t place = _times.size();
    if (_closeValues.size() > place) {
        _ReplaceRaw(ReadValues(tick));
    } else {
        _AppendRaw(ReadValues(tick));
    }
    _times.push_back(tick.GetTime());
    _realTimeTick.reset();
    if (recalculate) {
        for (const auto& [name, indicator] : _indicators) {
            indicator->ClearRealTimeResult();
            indicator->CalculateNewResult(_openValues, _highValues, _lowValues, _closeValues, _volumeValues,
                                          static_cast<unsigned int>(_times.size()));
        }
    }
    return place;
}

// The time is not kept: the bar under construction has none.
void nxAlgoTickDataCollectionObject::OnTick(const nxDecimal& price, const nxVolume& volume, const nxDateTime&,
                                            const nxBuySellEnum& buySell)
{
    const unsigned int amount = volume.IsValid() ? volume.GetValue() : 0;
    const unsigned int bought = buySell == nxBuySell_Buy ? amount : 0;
    const unsigned int sold = buySell == nxBuySell_Sell ? amount : 0;
    if (_realTimeTick == nullptr) {
        _realTimeTick = std::make_unique<nxTickData>();
        _realTimeTick->SetOpen(price);
        _realTimeTick->SetLow(price);
        _realTimeTick->SetHigh(price);
    }
    nxTickData& tick = *_realTimeTick;
    if (!(tick.GetLow() < price)) tick.SetLow(price);
    if (!(tick.GetHigh() > price)) tick.SetHigh(price);
    tick.SetClose(price);
    tick.SetVolume(tick.GetVolume() + amount);
    tick.SetBuyVolume(tick.GetBuyVolume() + bought);
    tick.SetSellVolume(tick.GetSellVolume() + sold);
    _SetRealTimeRawData(tick);
    _realTimeObject.SetTickData(tick);
    _CalculateRealTime();
    GetJob()->OnTickData(_realTimeObject);
}

void nxAlgoTickDataCollectionObject::SetRealTimeTickData(const nxTickData& tick)
{
    _realTimeTick.reset(tick.CopyInstance());
    _realTimeObject.SetTickData(*_realTimeTick);
    _SetRealTimeRawData(*_realTimeTick);
    _CalculateRealTime();
}

void nxAlgoTickDataCollectionObject::_SetRealTimeRawData(const nxTickData&)
{
    const nxMutexGuard guard(_mutex);
    const nxIndicatorBar raw = ReadValues(*_realTimeTick);
    if (_times.size() + 1 == _closeValues.size()) {
        _ReplaceRaw(raw);
        return;
    }
    _AppendRaw(raw);
    if (_times.size() + 1 != _closeValues.size())
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(),
                     "Invalid tick collection size with real time data. Tick data : ", _times.size(),
                     " , close : ", _closeValues.size());
}

void nxAlgoTickDataCollectionObject::_CalculateRealTime()
{
    for (const auto& [name, indicator] : _indicators)
        indicator->CalculateRealTime(_openValues, _highValues, _lowValues, _closeValues, _volumeValues);
}

void nxAlgoTickDataCollectionObject::_Calculate(nxAlgoIndicatorObject& indicator)
{
    const nxMutexGuard guard(_mutex);
    if (!_times.empty())
        indicator.CalculateNewResult(_openValues, _highValues, _lowValues, _closeValues, _volumeValues,
                                     static_cast<unsigned int>(_times.size()));
    if (_realTimeTick != nullptr)
        indicator.CalculateRealTime(_openValues, _highValues, _lowValues, _closeValues, _volumeValues);
}

nxAlgoIndicatorObject* nxAlgoTickDataCollectionObject::_createIndicator(
    const std::string&, const std::map<std::string, std::string>&, std::string&)
{
    return nullptr;
}

bool nxAlgoTickDataCollectionObject::_Subscribe(bool)
{
    return false;
}

bool nxAlgoTickDataCollectionObject::subscribe(nxLuaParameters&, nxLuaResults&)
{
    return _Subscribe(_enableRealTime);
}

bool nxAlgoTickDataCollectionObject::get(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() > 1)
        return results.Fail("tickDataCollection:get requires none or one argument [index]");
    const unsigned int index = parameters.Count() == 1 ? parameters.Parameter(1).GetUnsigned() : 0;
    nxAlgoTickDataObject* tick = nullptr;
    {
        const nxMutexGuard guard(_mutex);
        if (index < _times.size()) tick = &_GetTick(_times.size() - 1 - index);
    }
    if (tick == nullptr) {
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "tickDataCollection:get invalid index : ", index);
        return results.Fail("tickDataCollection:get invalid index");
    }
    results.AddObject(tick);
    return true;
}

std::vector<nxAlgoTickDataCollectionObject::NamedIndicator>::iterator
nxAlgoTickDataCollectionObject::_FindPlace(const std::string& name)
{
    return std::ranges::lower_bound(_indicators, name, {}, &NamedIndicator::first);
}

bool nxAlgoTickDataCollectionObject::createIndicator(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1)
        return results.Fail(
            "createIndicator incorrect number of parameters. Requires a collection of parameters");
    const nxLuaParameter& table = parameters.Parameter(1);
    if (!table.IsTable()) return results.Fail("createIndicator requires a collection of parameters");
    std::map<std::string, std::string> values;
    if (!table.GetAsNameValueMap(values))
        return results.Fail("createIndicator incorrect collection of parameters");
    const auto name = values.find("name");
    if (name == values.end()) return results.Fail("createIndicator Name not specified");
    if (_Has(name->second)) return results.Fail("createIndicator " + name->second + " already exists");
    const auto type = values.find("type");
    if (type == values.end()) return results.Fail("createIndicator Type not specified");
    std::string error;
    std::unique_ptr<nxAlgoIndicatorObject> indicator(_createIndicator(type->second, values, error));
    if (indicator == nullptr) return results.Fail("createIndicator " + error);
    indicator->SetName(name->second);
    nxAlgoIndicatorObject* const created = indicator.get();
    _indicators.emplace(_FindPlace(name->second), name->second, std::move(indicator));
    if (!SetAccount(results)) return false;
    results.AddObject(created);
    return true;
}

bool nxAlgoTickDataCollectionObject::getIndicator(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1)
        return results.Fail("tickDataCollection:getIndicator requires one argument [name]");
    const std::string name = parameters.Parameter(1).GetString();
    if (!_Has(name)) return results.Fail("tickDataCollection:getIndicator indicator " + name + " not found");
    results.AddObject(_FindPlace(name)->second.get());
    return true;
}

bool nxAlgoTickDataCollectionObject::Get_count(nxLuaResults& results)
{
    std::size_t count = 0;
    {
        const nxMutexGuard guard(_mutex);
        count = _times.size();
    }
    results.Add(static_cast<unsigned int>(count));
    return true;
}

bool nxAlgoTickDataCollectionObject::Get_period(nxLuaResults& results)
{
    results.Add(_period);
    return true;
}

bool nxAlgoTickDataCollectionObject::Get_product(nxLuaResults& results)
{
    results.AddObject(_product);
    return true;
}

bool nxAlgoTickDataCollectionObject::Get_realTime(nxLuaResults& results)
{
    results.AddObjectOrNull(_HaveRealTime() ? &_realTimeObject : nullptr);
    return true;
}
