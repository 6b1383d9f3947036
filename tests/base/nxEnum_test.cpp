#include "base/enums/nxEnum.h"

#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "base/enums/nxBoolEnum.h"
#include "base/enums/nxBuySellEnum.h"
#include "base/enums/nxClientIDQualifierEnum.h"
#include "base/enums/nxCurrencyEnum.h"
#include "base/enums/nxEnumTexts.h"
#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxExecutionDecisionQualifierEnum.h"
#include "base/enums/nxExecutionRestrictionEnum.h"
#include "base/enums/nxFillSourceEnum.h"
#include "base/enums/nxFunctionEnum.h"
#include "base/enums/nxInvestmentDecisionQualifierEnum.h"
#include "base/enums/nxLogLevelEnum.h"
#include "base/enums/nxMarketByOrderActionTypeEnum.h"
#include "base/enums/nxMessageChannelEnum.h"
#include "base/enums/nxMultiLegReportingTypeEnum.h"
#include "base/enums/nxOrderFlagEnum.h"
#include "base/enums/nxOrderStatusEnum.h"
#include "base/enums/nxOrderTransactionStatusEnum.h"
#include "base/enums/nxOrderTypeEnum.h"
#include "base/enums/nxPriceTradeVolumesUpdateTypeEnum.h"
#include "base/enums/nxProductTypeEnum.h"
#include "base/enums/nxRoundingMethodEnum.h"
#include "base/enums/nxStrategyTypeEnum.h"
#include "base/enums/nxSyntheticChildOrderTypeEnum.h"
#include "base/enums/nxSyntheticOrderTypeEnum.h"
#include "base/enums/nxSyntheticStrategyLegCalculationPriceTypeEnum.h"
#include "base/enums/nxTickDataPeriodEnum.h"
#include "base/enums/nxTradingCapacityEnum.h"
#include "base/enums/nxValueStatusEnum.h"
#include "base/enums/nxVorantParameterTypeEnum.h"

namespace {

// What the tests ask of an enum class without knowing which.
struct EnumClass
{
    std::string name;
    unsigned minValue, maxValue;  // both outside
    std::function<unsigned(unsigned)> construct;
    std::function<unsigned(unsigned)> assign;
    std::function<unsigned(const std::string&)> read;
    std::function<std::unique_ptr<std::string[]>(unsigned)> texts;
};

template <class Enum>
EnumClass Class(const char* name, unsigned minValue, unsigned maxValue)
{
    return {name,
            minValue,
            maxValue,
            [](unsigned value) { return Enum(value).GetValue(); },
            [](unsigned value) {
                Enum target(nxEnum_NoChange);
                target = value;
                return target.GetValue();
            },
            [](const std::string& text) {
                Enum target(nxEnum_NoChange);
                return target.SetFromString(text) ? target.GetValue() : target.GetValue() + 1;  // 1: refused
            },
            [](unsigned value) {
                const Enum e(value);
                return std::unique_ptr<std::string[]>(
                    new std::string[]{e.GetAsString(), e.GetShortDescription(), e.GetLongDescription()});
            }};
}

const std::vector<EnumClass> classes = {
    Class<nxBuySellEnum>("nxBuySellEnum", 10, 13),
    Class<nxLogLevelEnum>("nxLogLevelEnum", 30, 39),
    Class<nxProductTypeEnum>("nxProductTypeEnum", 100, 200),
    Class<nxStrategyTypeEnum>("nxStrategyTypeEnum", 200, 240),
    Class<nxValueStatusEnum>("nxValueStatusEnum", 240, 244),
    Class<nxSyntheticStrategyLegCalculationPriceTypeEnum>("nxSyntheticStrategyLegCalculationPriceTypeEnum",
                                                          300, 320),
    Class<nxPriceTradeVolumesUpdateTypeEnum>("nxPriceTradeVolumesUpdateTypeEnum", 320, 330),
    Class<nxTickDataPeriodEnum>("nxTickDataPeriodEnum", 400, 430),
    Class<nxFillSourceEnum>("nxFillSourceEnum", 430, 450),
    Class<nxMarketByOrderActionTypeEnum>("nxMarketByOrderActionTypeEnum", 450, 460),
    Class<nxTradingCapacityEnum>("nxTradingCapacityEnum", 460, 470),
    Class<nxClientIDQualifierEnum>("nxClientIDQualifierEnum", 470, 480),
    Class<nxExecutionDecisionQualifierEnum>("nxExecutionDecisionQualifierEnum", 480, 490),
    Class<nxInvestmentDecisionQualifierEnum>("nxInvestmentDecisionQualifierEnum", 490, 500),
    Class<nxMultiLegReportingTypeEnum>("nxMultiLegReportingTypeEnum", 500, 510),
    Class<nxMessageChannelEnum>("nxMessageChannelEnum", 510, 530),
    Class<nxOrderTypeEnum>("nxOrderTypeEnum", 1000, 1050),
    Class<nxExecutionRestrictionEnum>("nxExecutionRestrictionEnum", 1050, 1100),
    Class<nxOrderStatusEnum>("nxOrderStatusEnum", 1100, 1150),
    Class<nxOrderTransactionStatusEnum>("nxOrderTransactionStatusEnum", 1150, 1200),
    Class<nxSyntheticOrderTypeEnum>("nxSyntheticOrderTypeEnum", 1200, 1250),
    Class<nxSyntheticChildOrderTypeEnum>("nxSyntheticChildOrderTypeEnum", 1250, 1300),
    Class<nxBoolEnum>("nxBoolEnum", 5000, 5003),
    Class<nxRoundingMethodEnum>("nxRoundingMethodEnum", 7400, 7410),
    Class<nxOrderFlagEnum>("nxOrderFlagEnum", 8000, 8020),
    Class<nxVorantParameterTypeEnum>("nxVorantParameterTypeEnum", 9600, 9609),
    Class<nxCurrencyEnum>("nxCurrencyEnum", 10000, 10500),
    Class<nxFunctionEnum>("nxFunctionEnum", 100000, 200000),
    Class<nxErrorEnum>("nxErrorEnum", 999999, 2000000)};

TEST(nxEnum, LimitsAreExclusiveAndRangesDoNotMeet)
{
    unsigned previousMax = nxEnum_NoChange;
    for (const EnumClass& c : classes) {
        EXPECT_GE(c.minValue, previousMax) << c.name;
        previousMax = c.maxValue - 1;
        for (const auto& store : {c.construct, c.assign}) {
            EXPECT_EQ(store(c.minValue), 0u) << c.name;
            EXPECT_EQ(store(c.minValue + 1), c.minValue + 1) << c.name;
            EXPECT_EQ(store(c.maxValue - 1), c.maxValue - 1) << c.name;
            EXPECT_EQ(store(c.maxValue), 0u) << c.name;
            EXPECT_EQ(store(nxEnum_NoChange), 2u) << c.name;
            EXPECT_EQ(store(0xFFFFFFFF), 0u) << c.name;
        }
    }
}

// Every enumerator that is written down lies in some class's range with three texts, and its name leads back
// to it.
TEST(nxEnum, EveryRegisteredValueIsFoundByItsTexts)
{
    unsigned registered = 0;
    for (const EnumClass& c : classes) {
        unsigned ofClass = 0;
        for (unsigned value = c.minValue + 1; value < std::min(c.maxValue, c.minValue + 20000); ++value) {
            const auto texts = c.texts(value);
            if (texts[0] == "NOT_REGISTERED") continue;
            ++ofClass;
            EXPECT_EQ(c.read(texts[0]), value) << c.name << " " << texts[0];
            EXPECT_EQ(c.read(texts[1]), value) << c.name << " " << texts[1];
            EXPECT_FALSE(texts[2].empty()) << c.name << " " << texts[0];
        }
        EXPECT_GT(ofClass, 0u) << c.name;
        registered += ofClass;
        for (const char* text : {"", "eur", "no such", "UNDEFINED", "NOT_REGISTERED"})
            EXPECT_EQ(c.read(text), 1u) << c.name;
        EXPECT_EQ(c.texts(0)[0], "UNDEFINED");
        EXPECT_EQ(c.texts(2)[2], "NO_CHANGE");
    }

    std::ifstream header(NX_SOURCE_DIR "/base/enums/nxEnumValue.h");
    const std::regex enumerator(R"(\s+\w+ = (\d+),)");
    unsigned written = 0;
    for (std::string line; std::getline(header, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, enumerator)) continue;
        ++written;
        EXPECT_NE(nxEnumTexts::Get(static_cast<unsigned>(std::stoul(match[1]))).name, "NOT_REGISTERED")
            << line;
    }
    EXPECT_EQ(registered + 2, written);  // the two marks belong to no class
}

TEST(nxEnum, AssigningThroughTheBaseKeepsToTheRange)
{
    nxBuySellEnum side(nxBuySell_Sell);
    nxEnum& base = side;
    base = nxOrderType_Limit;
    EXPECT_TRUE(side.IsUndefined());
    base = nxBuySell_Buy;
    EXPECT_EQ(side, nxBuySell_Buy);
    base.SetNoChange();
    EXPECT_TRUE(side.IsNoChange());
}

// These numbers are known outside this code: to scripts, hosts and stored data.
TEST(nxEnum, NumbersKnownOutside)
{
    const unsigned numbers[] = {nxBuySell_Buy,
                                nxLogLevel_Detail,
                                nxLogLevel_Info,
                                nxLogLevel_Warn,
                                nxLogLevel_Error,
                                nxOrderType_Limit,
                                nxOrderType_Market,
                                nxExecutionRestriction_Stop,
                                nxExecutionRestriction_TrailingStop,
                                nxBool_True,
                                nxRoundingMethod_Nearest,
                                nxOrderFlag_SpreadUnbalanced};
    EXPECT_THAT(numbers, testing::ElementsAre(11, 31, 32, 36, 37, 1001, 1002, 1053, 1055, 5001, 7403, 8001));
}

TEST(nxOrderStatusEnum, OnlyOrdersInTheMarketWork)
{
    const std::pair<unsigned, bool> rows[] = {{0, false},    {2, false},    {1101, false},
                                              {1102, true},  {1103, true},  {1104, true},
                                              {1105, false}, {1106, false}, {1107, false}};
    for (const auto& [status, working] : rows)
        EXPECT_EQ(nxOrderStatusEnum(status).IsWorkingOrder(), working) << status;
}

TEST(nxProductTypeEnum, CodesAreUniqueAndWithoutADot)
{
    std::set<std::string> codes;
    for (unsigned value = nxProductType_Future; value <= nxProductType_Fund; ++value) {
        const std::string code = nxProductTypeEnum(value).GetAsCode();
        EXPECT_TRUE(codes.insert(code).second) << code;
        EXPECT_EQ(code.find('.'), std::string::npos) << code;
        EXPECT_FALSE(code.empty()) << value;
    }
    EXPECT_STREQ(nxProductTypeEnum().GetAsCode(), "");
}

}  // namespace
