#include "host/jobs/nxHostOrders.h"

#include "host/jobs/nxOrderServices.h"
#include "host/jobs/nxTradingJob.h"

nxHostOrders::nxHostOrders(nxTradingJob& job, bool isOfJob)
    : nxAlgoOrderCollectionObject(&job), _job(job), _isOfJob(isOfJob)
{
}

nxAlgoOrderObject* nxHostOrders::GetOrder(unsigned int index)
{
    if (index == 0 || index > GetCount()) return nullptr;
    if (_isOfJob) return &_job.GetOwnOrders()[index - 1];
    return _job.GetOrder(_job.GetServices().orders->GetOrders()[index - 1]->GetID());
}

unsigned int nxHostOrders::GetCount()
{
    return static_cast<unsigned int>(_isOfJob ? _job.GetOwnOrders().size()
                                              : _job.GetServices().orders->GetOrders().size());
}
