#include "scriptFramework/analytics/nxAlgoMatrixObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

// What the calculators do is tested with them; here, what a script gets of it.
TEST(nxAlgoMatrixObject, AndQuantCalculateWithWhatAScriptGives)
{
    const std::string notANumber = "index is not a number";
    const std::pair<const char*, std::string> rows[] = {
        {"show(matrix:add({{1, 2}, {3, 4}}, {{10, 20}, {30, 40}}))", "'11 22;33 44;'"},
        {"show(matrix:subtract({{1, 2}}, {{10, 20}}))", "'-9 -18;'"},
        {"show(matrix:multiply({{1, 2}, {3, 4}}, {{1}, {2}}))", "'5;11;'"},
        {"show(matrix:transpose({{1, 2}, {3, 4}}))", "'1 3;2 4;'"},
        {"show(matrix:inverse({{2, 0}, {0, 4}}))", "'0.5 0;0 0.25;'"},
        {"matrix:determinant({{0, 1}, {1, 0}})", "-1"},
        {"show(matrix:transpose({{'1.5', 2, nil, 3}}))", "'1.5;2;'"},  // a text counts, a gap ends the row
        {"matrix:add({{1}})", "error: Requires two matrices"},
        {"matrix:inverse()", "error: Requires one matrix"},
        {"matrix:determinant(5)", "error: Matrix invalid : "},
        {"matrix:determinant({1, 2})", "error: Matrix invalid : not a matrix"},
        {"matrix:multiply({{1, true}}, {{1}})", "error: First matrix invalid : " + notANumber},
        {"matrix:subtract({{1}}, {{'x'}})", "error: Second matrix invalid : " + notANumber},
        {"matrix:transpose({})", "error: matrix:transpose failed : the matrix is empty"},
        {"matrix:add({{1, 2, 3}, {4, 5, 6}}, {{1, 2}, {3, 4}})",
         "error: matrix:add failed : the dimensions differ: 2x3 and 2x2"},
        {"matrix:subtract({{1}}, {{1, 2}})",
         "error: matrix:subtract failed : the dimensions differ: 1x1 and 1x2"},
        {"matrix:multiply({{1, 2}}, {{1, 2}})",
         "error: matrix:multiply failed : the dimensions do not fit: 1x2 and 1x2"},
        {"matrix:determinant({{1, 2}})", "error: matrix:determinant failed : the matrix is not square: 1x2"},
        {"matrix:inverse({{1, 2}})", "error: matrix:inverse failed : the matrix is not square: 1x2"},
        {"string.format('%.12f', quant:normcdf(10, 2, '12'))", "'0.841344746069'"},
        {"quant:normcdf(10, 2)", "error: Requires three parameters: average,sigma and value"},
        {"quant:normcdf(10, 0, 10)", "error: "},
    };
    nxScriptJob script;
    script.Evaluate(
        "function show(m) local t = '' for _, r in ipairs(m) do t = t .. table.concat(r, ' ') .. ';' end "
        "return t end");
    for (const auto& [code, expected] : rows)
        EXPECT_EQ(script.Evaluate(code), expected) << code;
}

}  // namespace
