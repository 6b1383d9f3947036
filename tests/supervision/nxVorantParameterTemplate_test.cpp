#include "scriptFramework/supervision/nxVorantParameterTemplate.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <memory>

namespace {

class SystemParameter : public nxVorantDoubleParameter
{
public:
    SystemParameter() { SetIsSystemParameter(true); }
};

TEST(nxVorantParameterTemplate, ReadsAndWritesText)
{
    const std::tuple<nxVorantParameter*, const char*, unsigned int, const char*, bool> rows[] = {
        {new nxVorantPriceParameter, "-12.50", 0, "-12.50", false},
        {new nxVorantDecimalParameter, "99999999999999999999", nxError_NumberOutOfRange, "", true},
        {new nxVorantVolumeParameter, "4294967294", 0, "", false},  // no-change
        {new nxVorantVolumeParameter, "4294967296", nxError_NumberOutOfRange, "", true},
        {new nxVorantDoubleParameter, "4503599627370494", 0, "", false},
        {new nxVorantDoubleParameter, "nan", nxError_NotANumber, "", true},
        {new nxVorantIntegerParameter, "2147483646", 0, "", false},
        {new nxVorantIntegerParameter, "", nxError_NotANumber, "", true},
        {new nxVorantBoolParameter, "FALSE", 0, "false", false},
        {new nxVorantBoolParameter, "yes", nxError_GeneralFailure, "UNDEFINED", true},
    };
    for (const auto& [made, input, error, readBack, null] : rows) {
        SCOPED_TRACE(input);
        const std::unique_ptr<nxVorantParameter> parameter(made);
        const bool isBool = parameter->GetParameterType() == nxVorantParameterType_Bool;
        EXPECT_TRUE(parameter->PersistValueFromString(isBool ? "true" : "1").IsSuccess());
        EXPECT_FALSE(parameter->IsNull());
        EXPECT_EQ(parameter->PersistValueFromString(input).GetValue(), error);
        std::string text = "left from before";
        parameter->PersistValueToString(text);
        EXPECT_EQ(text, readBack);
        EXPECT_EQ(parameter->IsNull(), null);

        const std::unique_ptr<nxVorantParameter> copy(parameter->CopyInstance());
        parameter->SetNull();
        EXPECT_TRUE(parameter->IsNull());
        EXPECT_EQ(copy->IsNull(), null);
    }
}

TEST(nxVorantParameterTemplate, ACopyKeepsTheSystemFlagAndANullDoubleIsOneNumber)
{
    const std::unique_ptr<nxVorantDoubleParameter> copy(SystemParameter().CopyInstance());
    EXPECT_TRUE(copy->GetIsSystemParameter());
    EXPECT_EQ(std::bit_cast<std::uint64_t>(copy->GetValue().GetValue()), 0x432FFFFFFFFFFFFEu);
}

}  // namespace
