#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"

#include <gtest/gtest.h>

#include "scriptFramework/analytics/nxAlgoLibraryObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"
#include "tests/support/nxScriptJob.h"

namespace {

struct Row
{
    const char* code;
    const char* expected;
};

void ExpectRows(nxScriptJob& script, std::initializer_list<Row> rows)
{
    for (const auto& [code, expected] : rows)
        EXPECT_EQ(script.Evaluate(code), expected) << code;
}

TEST(nxAlgoDataSeriesObject, CountsFromTheOldestPointAndDropsItAboveTheCapacity)
{
    nxScriptJob script;
    const char* const badIndex = "error: Invalid index for DataSeries:get";
    ExpectRows(script,
               {{"s = job:createDataSeries('ignored')", ""},
                {"s.size, s.capacity, s.slope", "0 0 0"},
                {"for i = 1, 5 do s:add(i, i * 10) end return s:get(1)", "1 10"},
                {"s:get(1.9)", "1 10"},
                {"s:get(0)", badIndex},
                {"s:get(6)", badIndex},
                {"s:get(-1)", badIndex},
                {"s:get()", "error: Invalid argument to DataSeries:get. Requires 1 parameter [index]"},
                {"s:add(1)", "error: Invalid arguments to DataSeries:add. Requires 2 arguments"},
                {"s.capacity = 3 return s.size, s:get(1)", "3 3 30"},
                {"s:add(6, 60) return s.size, s:get(1)", "3 4 40"},
                {"s:average()", "5 50"},
                {"s.capacity = 2.7 return s.capacity, s:get(1)", "2 5 50"},
                {"s.capacity = -1 s:add(7, 70) return s.capacity, s.size", "0 3"},
                {"s.capacity = 'x'", "error: bad argument #3 to '?' (number expected, got string)"},
                {"s.capacity = 4 s:clear() return s.capacity, s.size, s:get(1)", badIndex},
                {"s.capacity, s.size", "4 0"},
                {"job:createDataSeries().size, s.size", "0 0"}});
}

// The dropped points wait in front of the arrays; nothing may see them.
TEST(nxAlgoDataSeriesObject, AFullSeriesShowsItsNewestPointsOnly)
{
    nxScriptJob script;
    EXPECT_EQ(script.Evaluate(R"(
local s = job:createDataSeries()
s.capacity = 7
for i = 1, 100 do
  s:add(i, -i)
  local first = math.max(1, i - 6)
  local x, y = s:get(1)
  local middle = (first + i) / 2
  local mx, my = s:average()
  assert(x == first and y == -first and s.size == i - first + 1, "first at " .. i)
  assert(s:get(s.size) == i and mx == middle and my == -middle, "average at " .. i)
  assert(s:minX() == first and s:maxX() == i and select(2, s:maxY()) == -first, "extremes at " .. i)
  if i % 3 == 0 then
    local n = s.size
    assert(math.abs(s:covariance() + (n * n - 1) / 12) < 1e-12, "covariance at " .. i)
  end
end)"),
              "");
}

TEST(nxAlgoDataSeriesObject, Statistics)
{
    nxScriptJob script;
    ExpectRows(script, {{"s = job:createDataSeries()", ""},
                        {"s:average()", "0 0"},
                        {"s:maxX()", "0 0"},
                        {"s:minY()", "0 0"},
                        {"s:stddev()", "error: stddev not supported on dataSeries"},
                        {"s:covariance()", "error: covariance not supported on dataSeries"},
                        // When the first point has the highest x its y is x again: kept.
                        {"s:add(5, 1) s:add(3, 2) s:add(5, 7) return s:maxX()", "5 5"},
                        {"s:clear() s:add(3, 2) s:add(5, 1) s:add(5, 7) return s:maxX()", "5 1"},
                        {"s:minX()", "3 2"},
                        {"s:maxY()", "5 7"},
                        {"s:minY()", "5 1"},
                        {"s:clear() s:add(1, 2) s:add(3, 6) return s:stddev()", "1 2"},
                        {"s:covariance()", "2"}});
}

// A script cannot reach loadLibrary; this class binds it for the test.
struct LibraryLoader : public nxAlgoObject
{
    static constexpr const char* className = "LibraryLoader";
    static const nxLuaWrapper<LibraryLoader>::FunctionType Functions[];
    static const nxLuaWrapper<LibraryLoader>::PropertyType Properties[];

    explicit LibraryLoader(nxAlgoJobObject& object) : nxAlgoObject(object.GetJob()), job(object) {}
    bool load(nxLuaParameters& parameters, nxLuaResults& results)
    {
        return job.loadLibrary(parameters, results);
    }

    nxAlgoJobObject& job;
};

constexpr nxLuaWrapper<LibraryLoader>::FunctionType LibraryLoader::Functions[] = {
    {"load", &LibraryLoader::load},
    {nullptr, nullptr},
};
constexpr nxLuaWrapper<LibraryLoader>::PropertyType LibraryLoader::Properties[] = {
    {nullptr, nullptr, nullptr},
};

class LoaderEngine : public nxLuaEngine
{
protected:
    void _RegisterCustomObjects() override
    {
        nxLuaWrapper<LibraryLoader>::Register(_GetState());
        nxLuaWrapper<nxAlgoLibraryObject>::Register(_GetState());
    }
};

TEST(nxAlgoLibraryObject, IsLoadedByTheHostAndCallsNothing)
{
    nxRecordingHost host;
    nxAlgoJobObject job(&host);
    LibraryLoader loader(job);
    nxAlgoLibraryObject library(&host);  // there is none at its path
    LoaderEngine engine;
    ASSERT_TRUE(engine.LoadText("")) << engine.GetLastError();
    ASSERT_TRUE(nxLuaWrapper<LibraryLoader>::SetGlobal(engine, "loader", &loader));
    const auto fails = [&](const std::string& code, const std::string& error) {
        return engine.LoadText("local ok, text = pcall(function() " + code +
                               " end) assert(not ok and text:find('" + error + "$'), text)");
    };
    EXPECT_TRUE(fails("loader:load()", "loadLibrary requires 1 argument %[libraryname%]"))
        << engine.GetLastError();
    EXPECT_TRUE(fails("loader:load('m')", "loadLibrary could not load library m")) << engine.GetLastError();
    EXPECT_EQ(host.TakeCalls(), "LoadLibrary(m)");
    host.library = &library;
    EXPECT_TRUE(
        engine.LoadText("local l = loader:load('m')\n"
                        "assert(select('#', l:call({1, 2, 3})) == 1 and l:call({1, 2, 3}) == nil)\n"
                        "assert(select('#', l:call(5)) == 0 and select('#', l:call({'x'})) == 0)\n"
                        "assert(select('#', l:call()) == 0)"))
        << engine.GetLastError();
}

}  // namespace
