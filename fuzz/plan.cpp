// The plan of a sweep: refused with a reason, or its conditions let its first points through, and its splits
// of time are found.
#include <cstdint>
#include <cstdlib>

#include "fuzz/nxFuzzFile.h"
#include "host/sweep/nxPlanFile.h"
#include "host/sweep/nxPlanPoints.h"

namespace {

void Check(const nxPlan& plan)
{
    if (plan.GetHash().empty() || plan.GetDimensions().empty()) std::abort();
    const bool isSmall =
        nxGrid::IsCountable(plan.GetDimensions()) && nxGrid(plan.GetDimensions(), {}).GetSize() < 10'000;
    // What refuses nearly all of a large plan takes its time.
    if (!isSmall && !plan.GetConditions().empty()) return;
    nxPlanPoints points(plan);
    nxPlanPoint point;
    for (int i = 0; i < 20 && points.Next(point); ++i) {
        if (point.values.size() != plan.GetDimensions().size()) std::abort();
        std::vector<double> numbers;
        for (const std::string& value : point.values)
            numbers.push_back(nxDimension::GetNumber(value));
        if (!plan.IsAllowed(numbers)) std::abort();
    }
    if (isSmall && points.CountAllowed() > points.GetGridSize()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const nxFuzzFile file({reinterpret_cast<const char*>(data), size});
    std::vector<nxPlanEntry> entries;
    nxFeedError error;
    nxPlan plan;
    if (!nxPlanFile::Read(file.GetPath(), entries, error)) {
        if (error.GetText().empty()) std::abort();
    } else if (const auto fault = plan.SetFromEntries(entries, {"sharpe", "orders"})) {
        if (fault->empty()) std::abort();
    } else {
        Check(plan);
        nxTimeSplits::Parts parts;
        static_cast<void>(plan.GetSplits().Split({19'000, 20'000}, parts));
    }
    return 0;
}
