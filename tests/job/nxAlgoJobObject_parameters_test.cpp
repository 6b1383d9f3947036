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

}  // namespace
