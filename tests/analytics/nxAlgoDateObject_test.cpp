#include "scriptFramework/analytics/nxAlgoDateObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

TEST(nxAlgoDateObject, ConvertsBetweenTextAndSeconds)
{
    const std::string format = "error: date:getAsSeconds invalid date format should be YYYYMMDD:HH:MM:SS";
    const std::string seconds = "error: date:getAsDate invalid parameter should be seconds";
    const std::pair<const char*, std::string> rows[] = {
        {"date:getAsSeconds('20240131:12:34:56')", "1706704496"},
        {"date:getAsSeconds(20240131)", "1706659200"},
        {"date:getAsSeconds('20230229')", format},
        {"date:getAsSeconds('20240131:12:34')", format},  // grows to a text that is too long
        {"date:getAsSeconds('')", format},
        {"date:getAsSeconds('19700101:00:00:00')", format},  // this second stands for null
        {"date:getAsSeconds()", "error: date:getAsSeconds requires 1 parameter "},
        {"date:getAsDate(1706704496.9)", "'20240131:12:34:56'"},
        {"date:getAsDate(-1)", "'19691231:23:59:59'"},
        {"date:getAsDate(253402300799)", "'99991231:23:59:59'"},
        {"date:getAsDate(253402300800)", seconds},
        {"date:getAsDate(1.5)", seconds},
        {"date:getAsDate(1e300)", seconds},
        {"date:getAsDate(0/0)", seconds},
        {"date:getAsDate()", "error: date:getAsDate requires 1 parameter "},
    };
    nxScriptJob script;
    for (const auto& [code, expected] : rows)
        EXPECT_EQ(script.Evaluate(code), expected) << code;
}

}  // namespace
