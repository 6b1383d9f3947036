// What scripts see of bound objects, as tests/data/lua/binding.txt tells it. The rows of a section share an
// engine; those of one that begins with === have one each.

#include <gtest/gtest.h>

#include <optional>

#include "tests/lua/nxProbe.h"
#include "tests/support/nxRowFile.h"

namespace {

// A wrapper that is made on demand must not differ from a whole one in anything. So all rows are asked while
// nobody has looked at a wrapper but by its fields, with those that the globals hold made whole before each
// row, and once a script has had a class metatable, from when on all are made whole.
TEST(nxLuaBinding, EveryRowComesToWhatItSays)
{
    for (const char* look : {"", "for _, o in ipairs({probe, cleared, other, teller}) do next(o) end",
                             "local _ = getmetatable(probe)"})
    {
        std::optional<nxProbeEngine> engine;
        std::string section;
        for (const nxRow& row : nxReadRows("lua/binding.txt")) {
            if (row.section != section || row.section.starts_with('=')) engine.emplace();
            section = row.section;
            EXPECT_EQ(engine->Evaluate(look), "");
            EXPECT_EQ(nxTrim(engine->Evaluate(row.what)), row.outcome)
                << "line " << row.line << ", " << section << ", after " << look;
        }
    }
}

}  // namespace
