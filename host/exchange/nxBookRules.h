#pragma once

#include "base/time/nxTime.h"
#include "host/exchange/nxBarModel.h"
#include "host/exchange/nxFillModel.h"
#include "host/exchange/nxQueueModel.h"
#include "host/exchange/nxSelfTrade.h"

// By what rules a book fills its orders. docs/exchange.md tells each.
struct nxBookRules
{
    const nxFillModel* fills = &nxFillModel::GetDefault();
    nxQueueRule queue;
    nxBarRule bars;
    nxSelfTrade selfTrade = nxSelfTrade::CancelNewest;
    // Where the data show the best price alone, MARKET orders go on into an assumed book.
    bool walksBeyond = true;
    // How long after a change of a queue the trade that caused it may be recorded; 0: never.
    long long lateTrades = 100 * nxTime::NanosecondsPerMillisecond;
};
