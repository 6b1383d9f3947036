#pragma once

#include <ostream>
#include <string>

#include "host/run/nxRunOptions.h"

// A run under the models that its options name, with all its output, and then the same run in silence under
// others, as far as these can differ: other fill models and a queue that only trades move where it sent
// orders to books, other bar models and limits that must be traded through where it sent some to bars, and
// twice the latency; after its summary a table of what came of each, so that nobody mistakes luck in a model
// for profit. The others write no record, what their scripts print goes nowhere, and their data stores are
// copies of those of before, in memory.
class nxRunEnvelope
{
public:
    // Why these options cannot be run several times: data or a script that can be read only once.
    // Empty when they can.
    [[nodiscard]] static std::string FindObstacle(const nxRunOptions& options);
    // The worst result of all.
    [[nodiscard]] static nxRunResult Run(const nxRunOptions& options, std::ostream& out, std::ostream& err);
};
