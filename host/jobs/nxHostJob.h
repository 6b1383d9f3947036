#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/jobs/nxTradingJob.h"
#include "host/jobs/nxWatchedJobs.h"
#include "scriptFramework/job/nxAlgoJobObject.h"

// One job of the reference host, whole: the script's job object with its life, over the layers that answer it
// (nxLaunchedJob tells of them), its timers, and what it shares with other jobs. Owned by the run, used on
// its thread. The object goes first, then the layers from above: what a script holds outlives it, since its
// finalizers may still use it.
class nxHostJob : public nxTradingJob
{
public:
    nxHostJob(const nxHostServices& services, const nxJobOptions& options, unsigned int index,
              const std::string& logName);

    // Until Close.
    nxAlgoJobObject& GetObject() { return *_object; }
    [[nodiscard]] nxErrorEnum Start();
    // Between a start that succeeded and the end.
    bool IsRunning() const { return _running; }
    void SetRunning(bool running) { _running = running; }
    // Ends the script, whose finalizers may still use this job and those that it watches.
    void Close() { _object.reset(); }

    // The other jobs as this one's script sees them; null until it has asked.
    nxWatchedJobs* GetWatchedJobs() { return _watchedJobs.get(); }

    bool IsActive() const override { return _object && _object->IsActive(); }
    bool IsInOnInit() override { return _inOnInit; }
    void Shutdown() override;
    void StartTimer(const std::string& name, unsigned int milliseconds) override;
    void StopTimer(const std::string& name) override;
    nxAlgoVorantJobCollectionObject* GetVorantJobs() override;
    nxAlgoDataStoreObject* GetDataStore(const std::string& name, bool create) override;
    void SendParameter(const std::string& tag, const std::string& name, const std::string& value) override;
    std::string GetDynamicParameter(const std::string& tag, std::string name) override;

private:
    bool _inOnInit = false;
    bool _running = false;
    std::unique_ptr<nxWatchedJobs> _watchedJobs;
    std::optional<nxAlgoJobObject> _object;
};
