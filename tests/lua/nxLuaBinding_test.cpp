// What scripts see of bound objects, as tests/data/lua/binding.txt tells it. The rows of a section share an
// engine; those of one that begins with === have one each.

#include <gtest/gtest.h>

#include <optional>

#include "tests/lua/nxProbe.h"
#include "tests/support/nxRowFile.h"

namespace {

TEST(nxLuaBinding, EveryRowComesToWhatItSays)
{
    std::optional<nxProbeEngine> engine;
    std::string section;
    for (const nxRow& row : nxReadRows("lua/binding.txt")) {
        if (row.section != section || row.section.starts_with('=')) engine.emplace();
        section = row.section;
        EXPECT_EQ(nxTrim(engine->Evaluate(row.what)), row.outcome) << "line " << row.line << ", " << section;
    }
}

}  // namespace
