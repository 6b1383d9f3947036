#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

TEST(nxAlgoJobObjectMessaging, CallsTheHost)
{
    const std::string frequency = "error: stopTimer : t . Invalid frequency has to be creater than 0";
    const struct
    {
        const char* code;
        std::string answer;
        const char* calls;
    } rows[] = {
        {"job:logText('some text')", "", "some text"},
        {"job:logText('')", "", ""},
        {"job:logText(12.5)", "", "12.5"},
        {"job:logText()", "error: logText requires 1 argument [text]", ""},
        {"job:logText('a', 'b')", "error: logText requires 1 argument [text]", ""},
        {"job:logText(nil)", "error: bad argument #1 to 'logText' (string expected, got nil)", ""},
        {"job:startTimer('t', 5)", "", "StartTimer(t,5)"},
        {"job:startTimer('t', 1.9)", "", "StartTimer(t,1)"},
        {"job:startTimer('t', -1)", "", "StartTimer(t,4294967295)"},
        {"job:startTimer(1, '2')", "", "StartTimer(1,2)"},
        {"job:startTimer('t', 0)", frequency, ""},
        {"job:startTimer('t', 0.9)", frequency, ""},
        {"job:startTimer('t', 2 ^ 32)", frequency, ""},
        {"job:startTimer('t', 0/0)", frequency, ""},
        {"job:startTimer('t')", "error: startTimer requires 2 arguments", ""},
        {"job:startTimer('t', 1, 2)", "error: startTimer requires 2 arguments", ""},
        {"job:startTimer('t', 'x')", "error: bad argument #2 to 'startTimer' (number expected, got string)",
         ""},
        {"job:startTimer(true, 1)", "error: bad argument #1 to 'startTimer' (string expected, got boolean)",
         ""},
        {"job:stopTimer('t')", "", "StopTimer(t)"},
        {"job:stopTimer()", "error: stopTimer requires 1 argument", ""},
        {"job:stopTimer('t', 'u')", "error: stopTimer requires 1 argument", ""},
    };
    nxScriptJob script;
    for (const auto& row : rows) {
        EXPECT_EQ(script.Evaluate(row.code), row.answer) << row.code;
        EXPECT_EQ(script.host.TakeCalls(), row.calls) << row.code;
    }
}

}  // namespace
