#include "host/jobs/nxHostTickDataCollection.h"

#include "base/time/nxTimeStamp.h"
#include "host/jobs/nxBarServices.h"
#include "host/jobs/nxMarketJob.h"
#include "host/jobs/nxOutputServices.h"
#include "host/jobs/nxTimerServices.h"
#include "indicators/nxIndicatorCatalogue.h"

nxHostTickDataCollection::nxHostTickDataCollection(nxHostProduct& product, const std::string& period,
                                                   const nxTickDataPeriodEnum& periodEnum, unsigned int ticks,
                                                   const nxDateTime& start, const nxDateTime& end,
                                                   const nxBarOrigin& source)
    : nxAlgoTickDataCollectionObject(product.GetJob(), &product, period, periodEnum, ticks),
      _start(start),
      _endDate(end),
      _source(source),
      _builder(_MakeBuilder())
{
    if (_source.terms.IsMadeOfTrades() && _source.hasTrades) _source.hasRows = false;
}

nxHostTickDataCollection::~nxHostTickDataCollection()
{
    if (_isSubscribed) _GetProduct()->UnsubscribePrices(this);
}

nxHostProduct& nxHostTickDataCollection::GetHostProduct() const
{
    return static_cast<nxHostProduct&>(*_GetProduct());  // who makes every collection of the host
}

bool nxHostTickDataCollection::_IsWanted(const nxTickData& bar) const
{
    return (!_start.IsValid() || bar.GetTime() >= _start) &&
           (!_endDate.IsValid() || bar.GetTime() <= _endDate);
}

bool nxHostTickDataCollection::_ReadTrade(const nxFeedQuote& quote)
{
    if (!quote.IsTrade()) return false;
    if (quote.last.IsValid()) _last = quote.last;
    _lastVolume = quote.lastVolume.IsValid() ? quote.lastVolume.GetValue() : 0;
    return _last.IsValid();
}

std::deque<nxTickData> nxHostTickDataCollection::_ReadBars(unsigned long long known, std::size_t most)
{
    std::deque<nxTickData> bars;
    _completed = 0;
    const auto take = [&](const nxTickData* bar) {
        if (bar == nullptr || ++_completed <= known || !_IsWanted(*bar)) return;
        bars.push_back(*bar);
        if (bars.size() > most) bars.pop_front();
    };
    const nxHostServices& services = GetHostProduct().GetOwner().GetServices();
    services.bars->ReadHistory(GetHostProduct(), [&](const nxFeedEvent& event) {
        if (event.kind == nxFeedKind::Bar && !_source.terms.IsMadeOfTrades()) {
            take(_builder.Close(event.time));
            take(_builder.AddRow(event.bar, event.time));
        } else if (event.kind == nxFeedKind::Quote && _ReadTrade(event.quote) && !_source.hasRows) {
            take(_builder.Close(event.time));
            static_cast<void>(_builder.AddTrade(_last, _lastVolume, event.quote.side, event.time));
            take(_builder.CloseFull());
        }
    });
    take(_builder.Close(nxTime::GetEarlier(services.timers->GetTime(), _GetDelay())));
    _seen = services.bars->GetEventCount();
    return bars;
}

void nxHostTickDataCollection::LoadHistory()
{
    if (_source.hasRows && !_builder.CanFoldRows()) {
        nxMarketJob& job = GetHostProduct().GetOwner();
        const std::string reason =
            _source.terms.IsMadeOfTrades()
                ? "they are made of trades, and its data are bars"
                : "the rows of its bars file are " +
                      std::to_string(_source.rowPeriod / nxTime::NanosecondsPerSecond) + " seconds apart";
        job.GetServices().output->LogText(job, "no " + GetPeriodName() + " bars of " +
                                                   GetHostProduct().GetMarket().GetName() + ": " + reason);
        return;
    }
    const std::size_t most = _GetRequestedTicks() == 0 ? std::string::npos : _GetRequestedTicks();
    for (const nxTickData& bar : _ReadBars(0, most))
        _AddBar(bar, false);
}

bool nxHostTickDataCollection::_Subscribe(bool realTime)
{
    if (_isSubscribed || (_source.hasRows && !_builder.CanFoldRows())) return true;
    _isSubscribed = true;
    _realTime = realTime;
    const nxHostServices& services = GetHostProduct().GetOwner().GetServices();
    if (_seen != services.bars->GetEventCount()) {
        _builder = _MakeBuilder();
        for (const nxTickData& bar : _ReadBars(_completed, std::string::npos))
            _AddBar(bar, true);
    }
    _GetProduct()->SubscribePrices(this);
    return true;
}

void nxHostTickDataCollection::_AddCompleted(const nxTickData& bar)
{
    ++_completed;
    if (_IsWanted(bar)) _AddBar(bar, true);
}

void nxHostTickDataCollection::Close(long long time)
{
    _Add(_builder.Close(nxTime::GetEarlier(time, _GetDelay())));
}

void nxHostTickDataCollection::Feed(const nxFeedEvent& event)
{
    if (event.kind == nxFeedKind::Bar) {
        if (_source.terms.IsMadeOfTrades()) return;
        _Add(_builder.Close(event.time));
        _Add(_builder.AddRow(event.bar, event.time));
        const nxTickData* const bar = _builder.GetBar();
        if (_realTime && !_source.hasTrades && bar != nullptr && _IsWanted(*bar)) SetRealTimeTickData(*bar);
        return;
    }
    if (event.kind != nxFeedKind::Quote || !_ReadTrade(event.quote)) return;
    if (!_source.hasRows) {
        _Add(_builder.Close(event.time));
        if (!_builder.AddTrade(_last, _lastVolume, event.quote.side, event.time)) return;
    }
    if (_realTime && (_source.hasRows || _IsWanted(*_builder.GetBar())))
        OnTick(_last, _lastVolume, nxTimeStamp::FromNanoseconds(event.time).GetAsDateTime(),
               event.quote.side);
    _Add(_builder.CloseFull());
}

nxAlgoIndicatorObject* nxHostTickDataCollection::_createIndicator(
    const std::string& type, const std::map<std::string, std::string>& parameters, std::string& error)
{
    std::unique_ptr<nxTechnicalIndicator> indicator = nxIndicatorCatalogue::Create(type, parameters, error);
    if (indicator == nullptr) return nullptr;
    auto object = std::make_unique<nxAlgoIndicatorObject>(GetJob(), indicator.release());
    _Calculate(*object);
    return object.release();
}
