#include "tests/lua/nxTeller.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <utility>

#include "tests/lua/nxProbe.h"

namespace {

constexpr std::size_t LongSize = 100;  // from which on only the size is told

std::string Join(const std::vector<double>& values)
{
    if (values.size() > LongSize) return std::to_string(values.size());
    std::string text;
    for (const double value : values)
        text += std::to_string(static_cast<int>(value)) + ",";
    return text;
}

}  // namespace

constexpr nxLuaWrapper<nxTeller>::FunctionType nxTeller::Functions[] = {
    {"takeWrites", &nxTeller::takeWrites},
    {"isolate", &nxTeller::isolate},
    {"fail", &nxTeller::fail},
    {"give", &nxTeller::give},
    {"types", &nxTeller::types},
    {"missing", &nxTeller::missing},
    {"read", &nxTeller::read},
    {"named", &nxTeller::named},
    {"vector", &nxTeller::vector},
    {"matrix", &nxTeller::matrix},
    {"map", &nxTeller::map},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(nxTeller::Functions));

constexpr nxLuaWrapper<nxTeller>::PropertyType nxTeller::Properties[] = {{nullptr, nullptr, nullptr}};

bool nxTeller::takeWrites(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(std::exchange(_engine.probe.writes, {}));
    return true;
}

bool nxTeller::isolate(nxLuaParameters& parameters, nxLuaResults&)
{
    _engine.Isolate(parameters.Parameter(1).GetUnsigned());
    return true;
}

bool nxTeller::fail(nxLuaParameters& parameters, nxLuaResults& results)
{
    const std::string kind = parameters.Parameter(1).GetString();
    if (kind == "exception") throw std::runtime_error("host: %s");
    if (kind == "no text") return false;
    results.Add(1.0);
    return results.Fail("late");
}

bool nxTeller::give(nxLuaParameters& parameters, nxLuaResults& results)
{
    using Matrix = std::vector<std::vector<double>>;
    const std::map<std::string, std::function<void(nxLuaResults&)>> kinds = {
        {"null literal", [](auto& r) { r.Add(static_cast<const char*>(nullptr)); }},
        {"bools", [](auto& r) { r.Add(true), r.Add(false); }},
        {"greatest unsigned", [](auto& r) { r.Add(0xFFFFFFFFu); }},
        {"unsigned long long above the signed", [](auto& r) { r.Add(1ull << 63); }},
        {"volume", [](auto& r) { r.Add(nxVolume(0xFFFFFFFDu)); }},
        {"no-change volume", [](auto& r) { r.Add(nxVolume(nxNoChangeInitalizer())); }},
        {"decimal", [](auto& r) { r.Add(nxDecimal::FromMantissa(10025, 2)); }},
        {"no-change decimal", [](auto& r) { r.Add(nxDecimal(nxNoChangeInitalizer())); }},
        {"vector",
         [](auto& r) {
             r.Add(std::vector<double>({1, 2.5, 3}));
         }},
        {"matrix",
         [](auto& r) {
             r.Add(Matrix({{1, 2}, {}, {3}}));
         }},
        {"empty matrix", [](auto& r) { r.Add(Matrix()); }},
        {"several", [](auto& r) { r.AddNull(), r.Add(1.0), r.AddNull(); }},
        {"objects and long tables",
         [this](auto& r) {
             r.AddObject(&_engine.probe), r.template AddObjectOrNull<nxOther>(nullptr);
             r.Add(std::vector<double>(1000, 1.0)), r.Add(Matrix(100, std::vector<double>(3, 1.0)));
         }},
    };
    kinds.at(parameters.Parameter(1).GetString())(results);
    return true;
}

bool nxTeller::types(nxLuaParameters& parameters, nxLuaResults& results)
{
    std::string told = std::to_string(parameters.Count());
    for (unsigned int i = 0; i <= parameters.Count() + 1; ++i) {
        const nxLuaParameter& parameter = parameters.Parameter(i);
        told += std::string(" ") + parameter.GetType() + (parameter.IsValid() ? "+" : "-") +
                (parameter.IsNull() ? "0" : "") + (parameter.IsTable() ? "T" : "");
    }
    results.Add(told);
    return true;
}

bool nxTeller::missing(nxLuaParameters& parameters, nxLuaResults& results)
{
    std::vector<double> values{1.0};
    std::vector<std::vector<double>> rows{values};
    std::string given, error = "kept";
    double value = 5.0;
    for (const unsigned int number : {0u, parameters.Count() + 1}) {
        const nxLuaParameter& parameter = parameters.Parameter(number);
        EXPECT_EQ(parameter.GetNumber(), 0.0);
        EXPECT_EQ(parameter.GetUnsigned(), 0u);
        EXPECT_EQ(parameter.GetString(), nullptr);
        EXPECT_FALSE(parameter.GetBool() || parameter.GetNamedValue("a", given) ||
                     parameter.GetNamedValue("a", value) || parameter.GetAsDoubleVector(values) ||
                     parameter.GetAsMatrix(rows, error));
    }
    EXPECT_TRUE(values.empty() && rows.empty());
    EXPECT_EQ(value, 5.0);
    results.Add(error);
    return true;
}

bool nxTeller::read(nxLuaParameters& parameters, nxLuaResults& results)
{
    const std::string kind = parameters.Parameter(1).GetString();
    const nxLuaParameter& given = parameters.Parameter(2);
    if (kind == "number") results.Add(given.GetNumber());
    if (kind == "unsigned") results.Add(given.GetUnsigned());
    if (kind == "text") results.Add(given.GetString());
    if (kind == "flag") results.Add(given.GetBool());
    return true;
}

bool nxTeller::named(nxLuaParameters& parameters, nxLuaResults& results)
{
    const nxLuaParameter& table = parameters.Parameter(1);
    double value = -1.0;
    bool isOn = false;
    std::string word = "before";
    std::string told = table.GetNamedValue("k", value) ? "n" : "-";
    told += std::to_string(static_cast<int>(value)) + (table.GetNamedValue("k", isOn) ? "b" : "-");
    told += isOn ? "1" : "0";
    told += table.GetNamedValue("k", word) ? "s" : "-";
    results.Add(told + word);
    return true;
}

bool nxTeller::vector(nxLuaParameters& parameters, nxLuaResults& results)
{
    std::vector<double> values{9, 9};
    const std::string told = parameters.Parameter(1).GetAsDoubleVector(values) ? "+" : "-";
    results.Add(told + Join(values));
    return true;
}

bool nxTeller::matrix(nxLuaParameters& parameters, nxLuaResults& results)
{
    std::vector<std::vector<double>> rows{{9}};
    std::string error = "kept";
    std::string told = parameters.Parameter(1).GetAsMatrix(rows, error) ? "+" : "-";
    if (rows.size() > LongSize) {
        results.Add(told + std::to_string(rows.size()));
        return true;
    }
    for (const auto& row : rows)
        told += "[" + Join(row) + "]";
    results.Add(told + error);
    return true;
}

bool nxTeller::map(nxLuaParameters& parameters, nxLuaResults& results)
{
    std::map<std::string, std::string> pairs{{"old", "1"}};
    std::string told = parameters.Parameter(1).GetAsNameValueMap(pairs) ? "+" : "-";
    for (const auto& [name, value] : pairs)
        told += " " + name + "=" + value;
    results.Add(told);
    return true;
}
