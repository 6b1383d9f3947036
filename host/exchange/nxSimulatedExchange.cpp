#include "host/exchange/nxSimulatedExchange.h"

#include <algorithm>
#include <utility>

nxSimulatedExchange::nxSimulatedExchange(const nxExchangeOptions& options, nxExchangeObservers observers)
    : _observers(std::move(observers)),
      _latency(options.request),
      _random(options.seed),
      _answers(options.answer, _random),
      _engine({options, options.seed + 1, options.participation, options.reportQueue, options.impact},
              _answers, _observers)
{
}

void nxSimulatedExchange::_Send(nxOrderRequest kind, unsigned int order, long long now,
                                const nxOrderTerms& terms)
{
    const Request& request = _requests.Send({kind, order, 0, terms}, _latency.GetArrival(_random, now));
    _Show(kind, order, terms, now, request.due);
}

void nxSimulatedExchange::_Show(nxOrderRequest kind, unsigned int order, const nxOrderTerms& terms,
                                long long now, long long due) const
{
    const nxExchangeOrder& known = GetOrder(order);
    const bool isNew = kind == nxOrderRequest::New;
    for (nxExchangeObserver* observer : _observers)
        observer->OnRequest(known, kind, isNew ? known.terms : terms, _engine.GetMarket(known.kind.product),
                            now, due);
}

void nxSimulatedExchange::TakeAtOnce(unsigned int reserved, const nxOrderKind& kind,
                                     const nxOrderTerms& terms, long long now)
{
    _engine.Describe(reserved, kind, terms);
    const long long time = std::max(_engine.GetTime(), now);
    _Show(nxOrderRequest::New, reserved, terms, time, time);
    _engine.TakeAtOnce(reserved, time);
}

unsigned int nxSimulatedExchange::Submit(const nxOrderKind& kind, const nxOrderTerms& terms, long long now)
{
    const unsigned int id = Reserve();
    Submit(id, kind, terms, now);
    return id;
}

void nxSimulatedExchange::Submit(unsigned int reserved, const nxOrderKind& kind, const nxOrderTerms& terms,
                                 long long now)
{
    _engine.Describe(reserved, kind, terms);
    _Send(nxOrderRequest::New, reserved, now, {});
}

void nxSimulatedExchange::Amend(unsigned int order, const nxOrderTerms& changes, long long now)
{
    _Send(nxOrderRequest::Amend, order, now, changes);
}

void nxSimulatedExchange::Cancel(unsigned int order, long long now)
{
    _Send(nxOrderRequest::Cancel, order, now, {});
}

long long nxSimulatedExchange::GetNextTime() const
{
    return std::min({_requests.GetNextTime(), _answers.GetNextTime(), _engine.GetNextExpiry()});
}

// lastExpiry: until when orders end by their dates.
void nxSimulatedExchange::_Advance(long long time, long long lastExpiry)
{
    for (;;) {
        const long long due = _engine.GetNextExpiry();
        const long long expiry = due <= lastExpiry ? due : nxTime::Never;
        const long long request = _requests.GetNextTime();
        const long long next = std::min(expiry, request);
        if (next > time || next == nxTime::Never) break;
        _engine.AdvanceTo(next);
        if (expiry <= request) {
            _engine.Expire();
        } else {
            _Carry(_requests.Pop());
        }
    }
    _engine.AdvanceTo(time);
}

void nxSimulatedExchange::_Carry(const Request& request)
{
    switch (request.kind) {
        case nxOrderRequest::New:
            return _engine.Place(request.order);
        case nxOrderRequest::Amend:
            return _engine.Amend(request.order, request.terms);
        case nxOrderRequest::Cancel:
            return _engine.Cancel(request.order);
    }
}

bool nxSimulatedExchange::PopEvent(nxExchangeEvent& event, long long time)
{
    if (!_answers.IsDue(time)) return false;
    event = _answers.Pop();
    return true;
}
