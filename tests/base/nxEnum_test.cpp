#include "base/enums/nxEnum.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "base/enums/nxBoolEnum.h"
#include "base/enums/nxBuySellEnum.h"
#include "base/enums/nxClientIDQualifierEnum.h"
#include "base/enums/nxCurrencyEnum.h"
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

// The enumerators by class, as they are written down: nxBuySell_Buy = 11 belongs to nxBuySellEnum.
std::multimap<std::string, unsigned int> ReadEnumerators()
{
    std::multimap<std::string, unsigned int> enumerators;
    std::ifstream header(NX_SOURCE_DIR "/base/enums/nxEnumValue.h");
    const std::regex row(R"(\s+(\w+)_\w+ = (\d+),)");
    std::smatch match;
    for (std::string line; std::getline(header, line);)
        if (std::regex_match(line, match, row))
            enumerators.emplace(match[1].str() + "Enum", static_cast<unsigned int>(std::stoul(match[2])));
    enumerators.erase("nxEnumEnum");  // the marks, which belong to no class
    return enumerators;
}

// A class takes its own enumerators and no other's; each has three texts, and two of them lead back to it.
template <class Enum>
void ExpectItsEnumeratorsAlone(const std::multimap<std::string, unsigned int>& enumerators)
{
    const std::string className = Enum().GetClassName();
    SCOPED_TRACE(className);
    EXPECT_TRUE(enumerators.contains(className));
    for (const auto& [owner, value] : enumerators) {
        Enum target(nxEnum_NoChange);
        target = value;
        EXPECT_EQ(target, owner == className ? value : 0) << value;
        EXPECT_EQ(target, Enum(value)) << value;
        if (owner != className) continue;
        EXPECT_NE(target.GetAsString(), "NOT_REGISTERED") << value;
        EXPECT_FALSE(target.GetLongDescription().empty()) << value;
        for (const std::string& text : {target.GetAsString(), target.GetShortDescription()}) {
            Enum read;
            EXPECT_TRUE(read.SetFromString(text)) << text;
            EXPECT_EQ(read, value) << text;
        }
    }
    for (const char* text : {"", "eur", "no such", "UNDEFINED", "NOT_REGISTERED"}) {
        Enum read(enumerators.find(className)->second);
        EXPECT_FALSE(read.SetFromString(text)) << text;
        EXPECT_TRUE(read.IsUndefined()) << text;
    }
}

template <class... Enums>
void ExpectClasses()
{
    const auto enumerators = ReadEnumerators();
    (ExpectItsEnumeratorsAlone<Enums>(enumerators), ...);
    std::set<std::string> names;
    for (const auto& [owner, value] : enumerators)
        names.insert(owner);
    EXPECT_EQ(names.size(), sizeof...(Enums));
}

TEST(nxEnum, EveryEnumeratorBelongsToOneClassAndIsFoundByItsTexts)
{
    ExpectClasses<nxBuySellEnum, nxLogLevelEnum, nxProductTypeEnum, nxStrategyTypeEnum, nxValueStatusEnum,
                  nxSyntheticStrategyLegCalculationPriceTypeEnum, nxPriceTradeVolumesUpdateTypeEnum,
                  nxTickDataPeriodEnum, nxFillSourceEnum, nxMarketByOrderActionTypeEnum,
                  nxTradingCapacityEnum, nxClientIDQualifierEnum, nxExecutionDecisionQualifierEnum,
                  nxInvestmentDecisionQualifierEnum, nxMultiLegReportingTypeEnum, nxMessageChannelEnum,
                  nxOrderTypeEnum, nxExecutionRestrictionEnum, nxOrderStatusEnum,
                  nxOrderTransactionStatusEnum, nxSyntheticOrderTypeEnum, nxSyntheticChildOrderTypeEnum,
                  nxBoolEnum, nxRoundingMethodEnum, nxOrderFlagEnum, nxVorantParameterTypeEnum,
                  nxCurrencyEnum, nxFunctionEnum, nxErrorEnum>();
}

TEST(nxEnum, LimitsAreExclusiveAndTheMarksFitEveryClass)
{
    const std::pair<unsigned int, unsigned int> rows[] = {{0, 0},   {1, 0},   {2, 2},  {10, 0},
                                                          {11, 11}, {12, 12}, {13, 0}, {0xFFFFFFFF, 0}};
    for (const auto& [given, held] : rows)
        EXPECT_EQ(nxBuySellEnum(given), held) << given;
    EXPECT_EQ(nxErrorEnum(1999999).GetAsString(), "NOT_REGISTERED");
    EXPECT_EQ(nxBuySellEnum().GetAsString(), "UNDEFINED");
    EXPECT_EQ(nxBuySellEnum(nxEnum_NoChange).GetLongDescription(), "NO_CHANGE");
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
    const unsigned int numbers[] = {nxBuySell_Buy,
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
    const std::pair<unsigned int, bool> rows[] = {{0, false},    {2, false},    {1101, false},
                                                  {1102, true},  {1103, true},  {1104, true},
                                                  {1105, false}, {1106, false}, {1107, false}};
    for (const auto& [status, working] : rows)
        EXPECT_EQ(nxOrderStatusEnum(status).IsWorkingOrder(), working) << status;
}

TEST(nxProductTypeEnum, CodesAreUniqueAndWithoutADot)
{
    std::set<std::string> codes;
    for (unsigned int value = nxProductType_Future; value <= nxProductType_Fund; ++value) {
        const std::string code = nxProductTypeEnum(value).GetAsCode();
        EXPECT_TRUE(codes.insert(code).second) << code;
        EXPECT_EQ(code.find('.'), std::string::npos) << code;
        EXPECT_FALSE(code.empty()) << value;
    }
    EXPECT_STREQ(nxProductTypeEnum().GetAsCode(), "");
}

}  // namespace
