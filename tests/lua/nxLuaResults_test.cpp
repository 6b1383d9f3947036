#include "scriptFramework/lua/nxLuaResults.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/lua/nxProbe.h"

namespace {

// Shows a table by its length and, to two levels, its elements.
constexpr const char* Shown = R"lua(
local function text(t)
  if type(t) ~= "table" then return tostring(t) end
  local parts = {}
  for i = 1, #t do parts[i] = text(t[i]) end
  return "{" .. table.concat(parts, ",") .. "}"
end
local function join(...)
  local parts = {}
  for i = 1, select("#", ...) do parts[i] = text((select(i, ...))) end
  return table.concat(parts, " ")
end
return join(probe:run())
)lua";

TEST(nxLuaResults, GivesEachKindOfValue)
{
    using Matrix = std::vector<std::vector<double>>;
    const std::tuple<const char*, std::function<void(nxLuaResults&)>, const char*> rows[] = {
        {"null literal", [](auto& r) { r.Add(static_cast<const char*>(nullptr)); }, "'nil'"},
        {"bool", [](auto& r) { r.Add(true), r.Add(false); }, "'true false'"},
        {"greatest unsigned", [](auto& r) { r.Add(0xFFFFFFFFu); }, "'4294967295'"},
        {"unsigned long long above the signed", [](auto& r) { r.Add(1ull << 63); }, "'9.2233720368548e+18'"},
        {"volume", [](auto& r) { r.Add(nxVolume(0xFFFFFFFDu)); }, "'4294967293'"},
        {"no-change volume", [](auto& r) { r.Add(nxVolume(nxNoChangeInitalizer())); }, "'nil'"},
        {"decimal", [](auto& r) { r.Add(nxDecimal::FromMantissa(10025, 2)); }, "'100.25'"},
        {"no-change decimal", [](auto& r) { r.Add(nxDecimal(nxNoChangeInitalizer())); }, "'nil'"},
        {"vector",
         [](auto& r) {
             r.Add(std::vector<double>{1, 2.5, 3});
         },
         "'{1,2.5,3}'"},
        {"matrix with an empty row",
         [](auto& r) {
             r.Add(Matrix{{1, 2}, {}, {3}});
         },
         "'{{1,2},{},{3}}'"},
        {"empty matrix", [](auto& r) { r.Add(Matrix()); }, "'nil'"},
        {"several, in order", [](auto& r) { r.AddNull(), r.Add(1.0), r.AddNull(); }, "'nil 1 nil'"},
    };
    nxProbeEngine engine;
    for (const auto& [name, add, expected] : rows) {
        SCOPED_TRACE(name);
        engine.probe.body = [&add = add](auto&, nxLuaResults& results) {
            add(results);
            return true;
        };
        EXPECT_EQ(engine.Evaluate(Shown), expected);
    }
}

TEST(nxLuaResults, CountsOneForEachValue)
{
    nxProbeEngine engine;
    int count = 0;
    engine.probe.body = [&](auto&, nxLuaResults& results) {
        results.AddObject(&engine.probe);
        results.AddObjectOrNull<nxOther>(nullptr);
        results.Add(std::vector<double>(1000, 1.0));
        results.Add(std::vector<std::vector<double>>(100, std::vector<double>(3, 1.0)));
        count = results.Count();
        return true;
    };
    EXPECT_EQ(engine.Evaluate("probe:run()"), "table nil table table");
    EXPECT_EQ(count, 4);
}

}  // namespace
