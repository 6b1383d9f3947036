#pragma once

#include <string>

#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxOrderStatusEnum.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"
#include "host/exchange/nxBookListener.h"

// What the exchange tells about an order, as it stood right then.
struct nxExchangeEvent
{
    enum class Kind {
        Accepted,
        ChildCreated,  // of a bracket; Accepted follows
        Triggered,     // what was held is working now: a stop, or an order that waited for the opening
        Filled,
        Amended,
        Cancelled,  // by request, by its own terms or by its date; reason tells
        Rejected,
        AmendRejected,
        CancelRejected,
        QueueMoved
    };

    Kind kind = Kind::Accepted;
    unsigned int order = 0;
    unsigned int owner = 0;
    long long time = 0;  // at the exchange
    long long due = 0;   // at the script
    nxOrderStatusEnum status;
    nxDecimal price, stopPrice;  // of the order
    unsigned int volume = 0;
    unsigned int executed = 0;
    nxVolume ahead;  // in the queue; of an order that enters the market, before it takes what it can
    nxDecimal fillPrice;
    unsigned int fillVolume = 0;
    bool isMaker = false;
    nxDecimal impact;  // of a taker's fill: what each lot costs beside its price; null: not known, or none
                       // asked for
    nxFillCause cause = nxFillCause::Took;
    bool isRequested = false;  // an amendment or the end of an order: by its owner
    nxErrorEnum error;         // of what was rejected: the cause
    std::string reason;
};
