#include "host/jobs/nxHostJob.h"

#include "host/jobs/nxNewsServices.h"
#include "host/jobs/nxStoreServices.h"
#include "host/jobs/nxTimerServices.h"

nxHostJob::nxHostJob(const nxHostServices& services, const nxJobOptions& options, unsigned int index,
                     const std::string& logName)
    : nxTradingJob(services, options, index, logName), _object(std::in_place, this)
{
}

nxErrorEnum nxHostJob::Start()
{
    _inOnInit = true;
    const nxErrorEnum error = _object->StartJob();
    _inOnInit = false;
    return error;
}

nxAlgoVorantJobCollectionObject* nxHostJob::GetVorantJobs()
{
    if (_watchedJobs == nullptr) _watchedJobs = std::make_unique<nxWatchedJobs>(*GetServices().news, *this);
    return _watchedJobs.get();
}

nxAlgoDataStoreObject* nxHostJob::GetDataStore(const std::string& name, bool create)
{
    return GetServices().stores->GetDataStore(*this, name, create);
}

void nxHostJob::SendParameter(const std::string& tag, const std::string& name, const std::string& value)
{
    Record("sent", {{"tag", tag}, {"name", name}, {"value", value}});
    GetServices().news->SetDynamicParameter(tag, name, value);
}

std::string nxHostJob::GetDynamicParameter(const std::string& tag, std::string name)
{
    return GetServices().news->GetDynamicParameter(tag, name);
}

void nxHostJob::StartTimer(const std::string& name, unsigned int milliseconds)
{
    Record("timerStart", {{"name", name}, {"interval", milliseconds}});
    GetServices().timers->StartTimer(*this, name, milliseconds);
}

void nxHostJob::StopTimer(const std::string& name)
{
    Record("timerStop", {{"name", name}});
    GetServices().timers->StopTimer(*this, name);
}

void nxHostJob::Shutdown()
{
    Record("shutdown", {});
    GetServices().news->NoteShutdown(*this);
}
