#pragma once

#include <ostream>

#include "host/results/nxResultRun.h"

// The result document of a run: one JSON object with everything that a program or a page needs to show what
// the run came to. The same result gives the same bytes. docs/results.md tells its measures,
// docs/result.schema.json its form.
class nxResultDocument
{
public:
    static void Write(std::ostream& out, const nxResult& result);
};
