#pragma once

#include "scriptFramework/supervision/nxAlgoVorantJobObject.h"

class nxHostJob;
class nxNewsServices;

// One job as another one's script sees it. Owned by the watching job; the watched one lives as long as the
// run. Used on the replay's thread.
class nxWatchedJob : public nxAlgoVorantJobObject
{
public:
    nxWatchedJob(nxNewsServices& services, nxHostJob& watcher, nxHostJob& watched);

    nxHostJob& GetWatched() { return _watched; }
    // The script wants to hear of its changes.
    bool IsSubscribed() const { return _subscribed; }
    // Takes over what the watched job shows now.
    void Refresh();

protected:
    bool _IsRunning() override;
    std::string _GetReference() override;
    nxErrorEnum _Stop() override;
    nxErrorEnum _Subscribe() override;

private:
    nxNewsServices& _services;
    nxHostJob& _watcher;
    nxHostJob& _watched;
    bool _subscribed = false;
};
