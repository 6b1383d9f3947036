#pragma once

#include "host/exchange/nxExchangeEvent.h"
#include "host/exchange/nxLatency.h"
#include "host/exchange/nxMessageLine.h"

struct nxExchangeOrder;

// The line on which an exchange's answers travel to the scripts.
class nxAnswerLine
{
public:
    // The random numbers outlive it.
    nxAnswerLine(const nxLatency& latency, nxExactRandom& random) : _latency(latency), _random(random) {}

    // An answer about the order as it stands at that time, which may be completed where it is.
    nxExchangeEvent& Send(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, long long time);

    long long GetNextTime() const { return _events.GetNextTime(); }
    bool IsDue(long long time) const { return _events.IsDue(time); }
    nxExchangeEvent Pop() { return _events.Pop(); }

private:
    const nxLatency _latency;
    nxExactRandom& _random;
    nxMessageLine<nxExchangeEvent> _events;
};
