#pragma once

#include "scriptFramework/orders/nxAlgoOrderCollectionObject.h"

class nxTradingJob;

// What job:getOrders and job:getJobOrders answer: the orders of the run, or those of the job alone, counted
// from 1 in the order in which they came to be, with those that are over. Follows as new ones come. Owned by
// the job.
class nxHostOrders : public nxAlgoOrderCollectionObject
{
public:
    nxHostOrders(nxTradingJob& job, bool isOfJob);

    nxAlgoOrderObject* GetOrder(unsigned int index) override;
    unsigned int GetCount() override;

private:
    nxTradingJob& _job;
    const bool _isOfJob;
};
