#include "host/exchange/nxBookListener.h"

#include <cassert>

namespace {

struct Words
{
    const char* name;
    const char* text;
};

Words GetWords(nxFillCause cause)
{
    switch (cause) {
        case nxFillCause::Took:
            return {"took", "it took what was shown"};
        case nxFillCause::Touched:
            return {"touched", "the market touched its price"};
        case nxFillCause::TradedThrough:
            return {"tradedThrough", "the market traded through its price"};
        case nxFillCause::Queue:
            return {"queue", "a trade reached its place in the queue"};
        case nxFillCause::Crossed:
            return {"crossed", "a quote of the other side reached its price"};
        case nxFillCause::Bar:
            return {"bar", "the bar reached it"};
        case nxFillCause::OwnOrder:
            return {"ownOrder", "it met an own order"};
        case nxFillCause::Assumed:
            return {"assumed", "it went beyond what was shown"};
    }
    return {"", ""};
}

}  // namespace

const char* nxGetName(nxFillCause cause)
{
    return GetWords(cause).name;
}

const char* nxGetText(nxFillCause cause)
{
    return GetWords(cause).text;
}

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
