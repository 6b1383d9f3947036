#include "base/time/nxTimeSource.h"

#include <chrono>

namespace {

constinit thread_local const nxTimeSource* installedSource = nullptr;

}  // namespace

nxTimeStamp nxTimeSource::Now()
{
    if (installedSource != nullptr) return installedSource->GetNow();
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return nxTimeStamp::FromNanoseconds(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

nxTimeSource::Installation::Installation(const nxTimeSource& source) : _earlier(installedSource)
{
    installedSource = &source;
}

nxTimeSource::Installation::~Installation()
{
    installedSource = _earlier;
}
