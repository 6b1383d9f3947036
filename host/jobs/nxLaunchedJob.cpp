#include "host/jobs/nxLaunchedJob.h"

#include "base/values/nxStringHelper.h"
#include "host/jobs/nxNewsServices.h"
#include "host/jobs/nxOutputServices.h"

nxLaunchedJob::nxLaunchedJob(const nxHostServices& services, const nxJobOptions& options, unsigned int index,
                             const std::string& logName)
    : _services(services),
      _options(options),
      _index(index),
      _logPrefix("[" + logName + "] "),
      _selection(options.selection.value_or(nxJobSelection())),
      _selectedPrice(_selection.price.IsValid() ? _selection.price.GetAsDouble() : 0.0)
{
}

void nxLaunchedJob::Record(const char* type, nxRunRecord::Fields fields) const
{
    _services.output->Record(*this, type, fields);
}

void nxLaunchedJob::_NoteChange(bool Changes::*change)
{
    _changes.*change = true;
    _services.news->NoteChange();
}

nxVorantParameter* nxLaunchedJob::GetParameter(const std::string& id) const
{
    const nxVorantParameter* parameter = _options.parameters.Find(id);
    return parameter == nullptr ? nullptr : parameter->CopyInstance();
}

unsigned int nxLaunchedJob::GetSelectedVolume() const
{
    return _selection.volume.IsValid() ? _selection.volume.GetValue() : 0;
}

void nxLaunchedJob::SetSelectedPrice(const double& price)
{
    Record("selectedPrice", {{"price", price}});
    if (price == _selectedPrice) return;
    _selectedPrice = price;
    // Null where it is none: others are shown a decimal.
    static_cast<void>(_selection.price.SetFromString(nxStringHelper::GetAsString(price)));
    _NoteChange(&Changes::rest);
}
