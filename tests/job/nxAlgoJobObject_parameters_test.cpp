#include <gtest/gtest.h>

#include "scriptFramework/supervision/nxVorantParameterTemplate.h"
#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"

namespace {

// A class of the host's own that says it has some type.
class OwnParameter : public nxVorantPriceParameter
{
public:
    explicit OwnParameter(unsigned int type) : nxVorantParameterTemplate("", nxDecimalOne), _type(type) {}
    OwnParameter* CopyInstance() const override { return new OwnParameter(*this); }
    nxVorantParameterTypeEnum GetParameterType() const override { return _type; }

private:
    unsigned int _type;
};

TEST(nxAlgoJobObjectParameters, GetParameterTurnsEachTypeIntoItsLuaValue)
{
    const nxNoChangeInitalizer noChange;
    const std::tuple<nxVorantParameter*, const char*, const char*> rows[] = {
        {new nxVorantPriceParameter("", nxDecimal::FromMantissa(-1250, 2)), "-12.5", "-12.50 ( PRICE )"},
        {new nxVorantPriceParameter("", nxDecimal(noChange)), "nil", " ( PRICE )"},
        {new nxVorantVolumeParameter("", 4294967293), "4294967293", "4294967293 ( VOLUME )"},
        {new nxVorantDoubleParameter("", 4503599627370494.0), "4.5035996273705e+15", " ( DOUBLE )"},
        {new nxVorantDoubleParameter, "nil", " ( DOUBLE )"},
        {new nxVorantIntegerParameter("", nxIntValue(noChange)), "2147483646", " ( INTEGER )"},
        {new nxVorantBoolParameter("", nxBool_True), "true", "true ( BOOL )"},
        {new nxVorantBoolParameter("", nxBoolEnum(nxEnum_NoChange)), "false", "NO_CHANGE ( BOOL )"},
        {new nxVorantBoolParameter, "nil", "UNDEFINED ( BOOL )"},
        {new OwnParameter(nxVorantParameterType_String), "'1'", "1 ( STRING )"},
        {new OwnParameter(0), "'1'", "1 ( UNDEFINED )"},
        {new OwnParameter(nxVorantParameterType_Integer), "nil", "1 ( INTEGER )"},
    };
    nxScriptJob script;
    nxRecordingLog log;
    for (const auto& [parameter, value, logged] : rows) {
        script.host.parameters["12"].reset(parameter);
        EXPECT_EQ(script.Evaluate("job:getParameter(12)"), value) << logged;
        EXPECT_EQ(log.TakeLines(), "32 [test] Get Parameter : 12 = " + std::string(logged) + "\n");
    }
    EXPECT_EQ(script.Evaluate("job:getParameter('none')"), "nil");
    EXPECT_EQ(log.TakeLines(), "32 [test] Get Parameter : none = [NIL]\n");
}

TEST(nxAlgoJobObjectParameters, CallsTheHost)
{
    // ready: with a context, inside OnInit, nothing refused
    const std::tuple<bool, const char*, std::string, const char*, const char*> rows[] = {
        {true, "job:setOutputParameter('a', 1.5)", "", "SetParameter(a,1.5)",
         "31 [test] Set Output Parameter : a = 1.5 ok\n"},
        {false, "job:setOutputParameter('a', 'b')", "error: setOutputParameter failed a , b",
         "SetParameter(a,b)", "32 [test] Set Output Parameter : a = b failed\n"},
        {true, "job:getDynamicParameter('t', 'n')", "'value of n'", "GetDynamicParameter(t,n)",
         "32 [test] Get Dynamic Parameter : n Tag : t : value of n\n"},
        {true, "job:sendParameter('t', 'n', 5) job:publish('n', 'v') job:setReference('r')", "",
         "SendParameter(t,n,5) PublishParameter(n,v) SetReference(r)", "32 [test] SetReference r\n"},
        {true, "job:hasContext('ignored')", "true", "", ""},
        {false, "job:setReference('r')", "error: setReference can only be called via OnInit", "", ""},
        {true, "job.selectedProduct", "'FDAX'", "", "32 [test] Selected Product : FDAX\n"},
        {true, "job.selectedVolume", "4294967295", "", "32 [test] Selected Volume : 4294967295\n"},
        {true, "job.selectedSpreadSpec", "'1:2'", "", ""},
        {true, "job.selectedPrice", "100.25", "", "32 [test] Selected Price : 100.25\n"},
        {true, "job.selectedSide", "'BUY'", "", "32 [test] Selected Side : BUY\n"},
        {false, "job.selectedPrice = 1.5", "", "SetSelectedPrice(1.5)",
         "32 [test] Set Selected Price : 1.5\n"},
        {false, "job.account, job.transactionCount, job.tag", "'ACC' 7 'mine'", "", ""},
    };
    nxScriptJob script;
    nxRecordingLog log;
    for (const auto& [ready, lua, answer, calls, logged] : rows) {
        SCOPED_TRACE(lua);
        script.host.hasContext = script.host.inOnInit = ready;
        script.host.refusal = ready ? "" : "no";
        EXPECT_EQ(script.Evaluate(lua), answer);
        EXPECT_EQ(script.host.TakeCalls(), calls);
        EXPECT_EQ(log.TakeLines(), logged);
        const std::string code = lua;
        if (ready && code.starts_with("job.selected")) {
            script.host.hasContext = false;
            EXPECT_EQ(script.Evaluate(code),
                      "error: Job doesn't have context. Therefore cannot use " + code.substr(4));
        }
    }
}

}  // namespace
