#include "scriptFramework/lua/nxLuaParameter.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/lua/nxProbe.h"

namespace {

std::string Join(const std::vector<double>& values)
{
    std::string text;
    for (const double value : values)
        text += std::to_string(static_cast<int>(value)) + ",";
    return text;
}

// Runs each row's call of probe:run with a body that answers with one text.
void ExpectRows(const std::function<std::string(nxLuaParameters&)>& describe,
                std::initializer_list<nxProbeEngine::Row> rows)
{
    nxProbeEngine engine;
    engine.probe.body = [&](nxLuaParameters& parameters, nxLuaResults& results) {
        results.Add(describe(parameters));
        return true;
    };
    engine.ExpectRows(rows);
}

TEST(nxLuaParameter, TellsTypeAndPresence)
{
    const auto describe = [](nxLuaParameters& parameters) {
        std::string text = std::to_string(parameters.Count());
        for (unsigned int i = 0; i <= parameters.Count() + 1; ++i) {
            const nxLuaParameter& parameter = parameters.Parameter(i);
            text += std::string(" ") + parameter.GetType() + (parameter.IsValid() ? "+" : "-") +
                    (parameter.IsNull() ? "0" : "") + (parameter.IsTable() ? "T" : "");
        }
        return text;
    };
    ExpectRows(describe,
               {{"probe:run()", "'0 NONE- NONE-'"},
                {"probe:run(nil)", "'1 NONE- NIL-0 NONE-'"},
                {"probe:run(1, 'a', true, {})", "'4 NONE- NUMBER+ STRING+ BOOLEAN+ TABLE+T NONE-'"}});
}

TEST(nxLuaParameter, AMissingParameterReadsAsZero)
{
    const auto describe = [](nxLuaParameters& parameters) {
        std::vector<double> vector{1.0};
        std::vector<std::vector<double>> matrix{vector};
        std::string text, error = "kept";
        double number = 5.0;
        for (const unsigned int missing : {0u, parameters.Count() + 1}) {
            const nxLuaParameter& parameter = parameters.Parameter(missing);
            EXPECT_EQ(parameter.GetNumber(), 0.0);
            EXPECT_EQ(parameter.GetUnsigned(), 0u);
            EXPECT_EQ(parameter.GetString(), nullptr);
            EXPECT_FALSE(parameter.GetBool());
            EXPECT_FALSE(parameter.GetNamedValue("a", text));
            EXPECT_FALSE(parameter.GetNamedValue("a", number));
            EXPECT_FALSE(parameter.GetAsDoubleVector(vector));
            EXPECT_FALSE(parameter.GetAsMatrix(matrix, error));
        }
        EXPECT_TRUE(vector.empty());
        EXPECT_TRUE(matrix.empty());
        EXPECT_EQ(number, 5.0);
        return error;
    };
    ExpectRows(describe, {{"probe:run()", "'kept'"}, {"probe:run(7, {})", "'kept'"}});
}

TEST(nxLuaParameter, ConvertsScalarsAsLuaDoes)
{
    const auto number = [](nxLuaParameters& p) { return std::to_string(p.Parameter(1).GetNumber()); };
    ExpectRows(number, {{"probe:run('0x10')", "'16.000000'"},
                        {"probe:run('x')", "error: bad argument #1 to 'run' (number expected, got string)"},
                        {"probe:run(nil)", "error: bad argument #1 to 'run' (number expected, got nil)"}});
    const auto text = [](nxLuaParameters& p) { return std::string(p.Parameter(1).GetString()); };
    ExpectRows(text, {{"probe:run(1.5)", "'1.5'"},
                      {"probe:run(true)", "error: bad argument #1 to 'run' (string expected, got boolean)"}});
    const auto boolean = [](nxLuaParameters& p) {
        return std::string(p.Parameter(2).GetBool() ? "yes" : "no");
    };
    ExpectRows(boolean,
               {{"probe:run(0, true)", "'yes'"},
                {"probe:run(0, false)", "'no'"},
                {"probe:run(0, 1)", "error: bad argument #2 to 'run' (boolean expected, got number)"}});
}

TEST(nxLuaParameter, ReadsNamedValuesByExactType)
{
    const auto describe = [](nxLuaParameters& parameters) {
        const nxLuaParameter& table = parameters.Parameter(1);
        double number = -1.0;
        bool flag = false;
        std::string text = "before";
        const bool hasNumber = table.GetNamedValue("k", number);
        const bool hasFlag = table.GetNamedValue("k", flag);
        const bool hasText = table.GetNamedValue("k", text);
        return std::string(hasNumber ? "n" : "-") + std::to_string(static_cast<int>(number)) +
               (hasFlag ? "b" : "-") + (flag ? "1" : "0") + (hasText ? "s" : "-") + text;
    };
    ExpectRows(describe, {{"probe:run({k=12})", "'n12-0s12'"},
                          {"probe:run({k='12'})", "'--1-0s12'"},
                          {"probe:run({k=true})", "'--1b1-'"},
                          {"probe:run({})", "'--1-0-'"},
                          {"probe:run(setmetatable({}, {__index={k=1}}))", "'--1-0-'"},
                          {"probe:run(5)", "'--1-0-before'"}});
}

TEST(nxLuaParameter, ReadsVectorsUpToTheFirstNil)
{
    const auto describe = [](nxLuaParameters& parameters) {
        std::vector<double> values{9, 9};
        const bool complete = parameters.Parameter(1).GetAsDoubleVector(values);
        return values.size() > 100 ? std::to_string(values.size()) : (complete ? "+" : "-") + Join(values);
    };
    ExpectRows(describe,
               {{"probe:run({1,nil,3})", "'+1,'"},
                {"probe:run({1,2,true,4})", "'-1,2,'"},
                {"probe:run({})", "'+'"},
                {"local t = {}; for i = 1, 100000 do t[i] = i end; return probe:run(t)", "'100000'"}});
}

TEST(nxLuaParameter, ReadsMatrices)
{
    const auto describe = [](nxLuaParameters& parameters) {
        std::vector<std::vector<double>> matrix{{9}};
        std::string error = "kept";
        std::string text = parameters.Parameter(1).GetAsMatrix(matrix, error) ? "+ " : "- ";
        if (matrix.size() > 100) return text + std::to_string(matrix.size());
        for (const auto& row : matrix)
            text += "[" + Join(row) + "]";
        return text + error;
    };
    ExpectRows(describe,
               {{"probe:run({{1,2},{3},{}})", "'+ [1,2,][3,][]kept'"},
                {"probe:run({{1},2})", "'- [1,]not a matrix'"},
                {"probe:run({{1,2},{3,{},5},{6}})", "'- [1,2,][3,]index is not a number'"},
                {"probe:run(1)", "'- kept'"},
                {"local t = {}; for i = 1, 20000 do t[i] = {i} end; return probe:run(t)", "'+ 20000'"}});
}

TEST(nxLuaParameter, ReadsNamesAndValuesAsText)
{
    const auto describe = [](nxLuaParameters& parameters) {
        std::map<std::string, std::string> map{{"old", "1"}};
        std::string text = parameters.Parameter(1).GetAsNameValueMap(map) ? "+" : "-";
        for (const auto& [name, value] : map)
            text += " " + name + "=" + value;
        return text;
    };
    ExpectRows(describe,
               {{"probe:run({b=2, a='x', [10]=1.5})", "'+ 10=1.5 a=x b=2'"},
                {"probe:run({})", "'+'"},
                {"probe:run({a=true})", "'-'"},
                {"probe:run({[{}]=1})", "'-'"},
                {"probe:run('a')", "'-'"},
                // Number keys must not change under the traversal.
                {"local t = {}; for i = 1, 50 do t[i] = i end; return (probe:run(t):len())", "283"}});
}

TEST(nxLuaTruncate, KeepsTheLow32BitsOfAWholeNumber)
{
    const std::pair<double, unsigned int> rows[] = {{1.9, 1},
                                                    {-0.9, 0},
                                                    {-1.9, 0xFFFFFFFF},
                                                    {4294967297.5, 1},
                                                    {1e15, 0xA4C68000},
                                                    {-9223372036854775808.0, 0},
                                                    {9223372036854775808.0, 0},
                                                    {1e300, 0},
                                                    {std::numeric_limits<double>::infinity(), 0},
                                                    {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (const auto& [number, expected] : rows)
        EXPECT_EQ(nxLuaTruncate(number), expected) << number;
}

}  // namespace
