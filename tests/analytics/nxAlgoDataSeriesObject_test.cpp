#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

void ExpectRows(nxScriptJob& script, std::initializer_list<std::pair<const char*, const char*>> rows)
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
                // How the assignment is called in it differs between the builds of Lua.
                {"select(2, pcall(function() s.capacity = 'x' end)):match('bad argument #3 .*(%(.*)')",
                 "'(number expected, got string)'"},
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

}  // namespace
