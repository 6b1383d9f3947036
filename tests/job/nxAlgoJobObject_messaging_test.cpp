#include <gtest/gtest.h>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"

namespace {

TEST(nxAlgoJobObjectMessaging, CallsTheHost)
{
    const std::string frequency = "error: stopTimer : t . Invalid frequency has to be creater than 0";
    const std::tuple<const char*, std::string, const char*> rows[] = {
        {"job:logText('some text')", "", "some text"},
        {"job:logText(12.5)", "", "12.5"},
        {"job:startTimer('t', 1.9)", "", "StartTimer(t,1)"},
        {"job:startTimer('t', -1)", "", "StartTimer(t,4294967295)"},
        {"job:startTimer(1, '2')", "", "StartTimer(1,2)"},
        {"job:startTimer('t', 0.9)", frequency, ""},
        {"job:startTimer('t', 0/0)", frequency, ""},
        {"job:stopTimer('t')", "", "StopTimer(t)"},
        {"for _, level in ipairs{'ERROR', 'WARN', 'INFO', 'error'} do job:sendUserState(level, 'x') end", "",
         "SendUserState(37,x) SendUserState(36,x) SendUserState(32,x) SendUserState(32,x)"},
        {"job:sendUserText1('a') job:sendUserText2('b') job:sendUserText3(3)", "",
         "SendUserText1(a) SendUserText2(b) SendUserText3(3)"},
        {"job:sendUserLog({b=1, a='x', [3]=0.5})", "", "SendUserLog(3=0.5,a=x,b=1)"},
        {"job:sendUserLog({a=true})", "error: sendUserLog incorrect collection of parameters", ""},
        {"job:sendUserLog('a')", "error: sendUserLog requires a collection of parameters", ""},
        {"job:setOrderUserString('a') job:setOrderUserString2('b')", "",
         "SetOrderUserString(a) SetOrderUserString2(b)"},
        {"job:setShatterOnExit(true) job:setEnableCrossProtection(false) job:setDisableParentFills(true)", "",
         "SetShatterOnExit(true) SetEnableCrossProtection(false) SetDisableParentFills(true)"},
        {"job:setDisableReport(false) job:setEnablePandL(true)", "",
         "SetDisableReport(false) SetEnablePandL(true)"},
        {"job:getPandL('EUR')", "12.5", "GetPandL(EUR)"},
        {"job:getPandL('eur')", "error: getPandL. invalid currency : eur", ""},
        {"job:setChartLine('c', 'l', 1.5, -1)", "", "SetChartLine(c,l,1.5,4294967295)"},
        {"job:removeChartLine('c', 'l')", "", "RemoveChartLine(c,l)"},
    };
    nxScriptJob script;
    script.host.pandL = nxDecimal::FromMantissa(125, 1);
    for (const auto& [code, answer, calls] : rows) {
        EXPECT_EQ(script.Evaluate(code), answer) << code;
        EXPECT_EQ(script.host.TakeCalls(), calls) << code;
    }
}

TEST(nxAlgoJobObjectMessaging, AWrongCountOfArgumentsNeverReachesTheHost)
{
    const std::pair<std::string, const char*> rows[] = {
        {"logText", "logText requires 1 argument [text]"},
        {"sendUserLog", "sendUserLog incorrect number of parameters. Requires a collection of parameters"},
        {"setEnablePandL", "setEnablePandL requires 1 argument. true or false"},
        {"getPandL", "getPandL requires 1 argument currency"},
        {"setChartLine", "setChartLine requires 4 arguments. [ chartID, lineID, value, colour ]"},
        {"removeChartLine", "setChartLine requires 2 arguments. [ chartID, lineID ]"},
        {"getDataStore", "getDataStore requires at leastt 1 argument. name, [create]"},
    };
    nxScriptJob script;
    for (const auto& [function, message] : rows)
        for (const char* arguments : {"()", "(1, 1, 1, 1, 1)"})
            EXPECT_EQ(script.Evaluate("job:" + function + arguments), std::string("error: ") + message);
    EXPECT_EQ(script.host.TakeCalls(), "");
}

TEST(nxAlgoJobObjectMessaging, TellsWhatTheHostRefusesAndLogsWhatItIsAsked)
{
    nxScriptJob script;
    script.host.refusal = "the disk is full";
    EXPECT_EQ(script.Evaluate("job:sendUserLog({a=1})"), "error: sendUserLog error: the disk is full");
    EXPECT_EQ(script.Evaluate("job:setChartLine('c', 'l', 1, 1)"), "error: ");
    EXPECT_EQ(script.Evaluate("job:removeChartLine('c', 'l')"), "error: ");
    EXPECT_EQ(script.Evaluate("job:getPandL('USD')"), "nil");
    nxRecordingLog log;
    script.Evaluate("job:setOrderUserString('a') job:setOrderUserString2('b') job:setDisableReport(true)");
    script.Evaluate("job:getPandL('x')");
    EXPECT_EQ(log.TakeLines(),
              "32 [test] SetOrderUserString a\n32 [test] SetOrderUserString2 b\n"
              "32 [test] setDisableReport true\n37 [test] getPandL invalid currency\n");
}

}  // namespace
