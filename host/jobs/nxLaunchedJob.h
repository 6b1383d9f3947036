#pragma once

#include <optional>
#include <string>
#include <utility>

#include "host/jobs/nxHostServices.h"
#include "host/jobs/nxJobOptions.h"
#include "host/report/nxRunRecord.h"
#include "scriptFramework/job/nxQuietJobInterface.h"

// A job of the reference host comes in layers, each over the one before it, and whoever deals with a job
// takes the first layer that does: nxLaunchedJob, nxReportingJob, nxMarketJob, nxTradingJob, and nxHostJob,
// of which every job is one.
//
// Here is what the job was launched with, and its way to the run around it. Used on the run's thread.
class nxLaunchedJob : public nxQuietJobInterface
{
public:
    // What changed for those that watch the job.
    struct Changes
    {
        bool status = false;  // user texts, user state
        bool rest = false;    // output parameters, reference, selection
    };

    // The index counts the jobs of a run from 0. The options' account is also the owner that others see.
    nxLaunchedJob(const nxHostServices& services, const nxJobOptions& options, unsigned int index,
                  const std::string& logName);

    const nxHostServices& GetServices() const { return _services; }
    const nxJobOptions& GetOptions() const { return _options; }
    const std::string& GetName() const { return _options.name; }
    unsigned int GetIndex() const { return _index; }
    // The selection as it stands now: a script may set its price. Empty without a context.
    const nxJobSelection& GetSelection() const { return _selection; }
    // A value that the job's own parameter of that name refuses leaves it alone; null when it is taken.
    [[nodiscard]] std::optional<std::string> ChangeParameter(const std::string& name,
                                                             const std::string& value)
    {
        return _options.parameters.Change(name, value);
    }
    // What changed since the last call.
    Changes TakeChanges() { return std::exchange(_changes, {}); }
    // Writes a line of the run's record.
    void Record(const char* type, nxRunRecord::Fields fields) const;

    nxVolume GetID() override { return _index + 1; }
    std::string GetAccount() override { return _options.account; }
    const std::string& GetLogPrefix() const override { return _logPrefix; }
    nxVorantParameter* GetParameter(const std::string& id) const override;
    bool HasContext() override { return _options.selection.has_value(); }
    std::string GetSelectedProduct() override { return _selection.product; }
    unsigned int GetSelectedVolume() const override;
    double GetSelectedPrice() const override { return _selectedPrice; }
    std::string GetSelectedSide() override { return _selection.side; }
    std::string GetSelectedSpreadSpec() override { return _selection.spread; }
    void SetSelectedPrice(const double& price) override;

protected:
    void _NoteChange(bool Changes::*change);

private:
    const nxHostServices _services;
    nxJobOptions _options;
    const unsigned int _index;
    const std::string _logPrefix;
    nxJobSelection _selection;
    double _selectedPrice = 0.0;  // as the script set it, which may be no decimal
    Changes _changes;
};
