#include "host/exchange/nxBookListener.h"

#include <cassert>

void nxBookListener::Fill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                          nxFillCause cause)
{
    assert(volume != 0 && volume <= order.GetRemaining() && order.IsWithin(price) && order.triggered);
    order.executed += volume;
    order.status = order.GetRemaining() == 0 ? nxOrderStatus_Filled : nxOrderStatus_PartiallyFilled;
    if (order.GetRemaining() == 0) order.isResting = false;
    OnFill(order, price, volume, isMaker, cause);
}

void nxBookListener::Trigger(nxExchangeOrder& order)
{
    order.triggered = true;
    order.status = nxOrderStatus_Working;
    OnTriggered(order);
}
