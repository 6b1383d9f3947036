#include "host/jobs/nxWatchedJob.h"

#include "base/threads/nxMutexGuard.h"
#include "host/jobs/nxHostJob.h"
#include "host/jobs/nxNewsServices.h"

nxWatchedJob::nxWatchedJob(nxNewsServices& services, nxHostJob& watcher, nxHostJob& watched)
    : nxAlgoVorantJobObject(&watcher), _services(services), _watcher(watcher), _watched(watched)
{
    _owner = watched.GetOptions().account;
    _name = watched.GetName();
    _id = watched.GetID();
    _isContext = watched.HasContext();
    _selectedProduct = watched.GetSelection().product;
    _selectedSide = watched.GetSelection().side;
    Refresh();
}

void nxWatchedJob::Refresh()
{
    {
        const nxMutexGuard guard(_statusMutex);
        _status = _watched.GetStatus();
    }
    const nxMutexGuard guard(_selectionMutex);
    _selectedPrice = _watched.GetSelection().price;
    _selectedVolume = _watched.GetSelection().volume;
}

bool nxWatchedJob::_IsRunning()
{
    return _watched.IsRunning();
}

std::string nxWatchedJob::_GetReference()
{
    return _watched.GetReference();
}

nxErrorEnum nxWatchedJob::_Stop()
{
    return _services.StopJob(_watched, _watcher);
}

nxErrorEnum nxWatchedJob::_Subscribe()
{
    _subscribed = true;
    return {};
}
