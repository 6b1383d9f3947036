#include "host/exchange/nxAnswerLine.h"

#include "host/exchange/nxExchangeOrder.h"

nxExchangeEvent& nxAnswerLine::Send(const nxExchangeOrder& order, nxExchangeEvent::Kind kind, long long time)
{
    nxExchangeEvent& event = _events.Send({}, _latency.GetArrival(_random, time));
    event.kind = kind;
    event.order = order.id;
    event.owner = order.kind.owner;
    event.time = time;
    event.status = order.status;
    event.price = order.terms.price;
    event.stopPrice = order.terms.stopPrice;
    event.volume = nxOrderTerms::GetOr(order.terms.volume, 0);
    event.executed = order.executed;
    event.ahead = order.isResting ? order.ahead : nxVolume();
    return event;
}
