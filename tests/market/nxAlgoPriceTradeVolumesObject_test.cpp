#include "scriptFramework/market/nxAlgoPriceTradeVolumesObject.h"

#include <gtest/gtest.h>

#include "base/records/nxPriceTradeVolumes.h"
#include "tests/support/nxScriptJob.h"

namespace {

nxPriceTradeVolumes Trades(std::initializer_list<std::pair<const char*, unsigned int>> trades)
{
    nxPriceTradeVolumes update;
    for (const auto& [text, volume] : trades) {
        nxDecimal price;
        EXPECT_TRUE(price.SetFromString(text).IsSuccess());
        update.AddTrade(price, volume);
    }
    return update;
}

using Row = std::pair<const char*, const char*>;  // code and what it evaluates to

void ExpectRows(nxScriptJob& script, nxAlgoPriceTradeVolumesObject& object, std::initializer_list<Row> rows)
{
    ASSERT_TRUE(script.job.OnPriceTradeVolumes(object).IsSuccess());
    for (const auto& [code, expected] : rows)
        EXPECT_EQ(script.Evaluate(code), expected) << code;
}

TEST(nxAlgoPriceTradeVolumesObject, GivesVolumesByIndexFromTheLowestPrice)
{
    nxScriptJob script;
    nxAlgoPriceTradeVolumesObject object(&script.host, 4);
    ExpectRows(script, object, {{"it.id, it.count", "4 0"}, {"it:getPriceVolumeAtIndex(1)", "nil nil"}});
    object.UpdatePriceTradeVolumes(Trades({{"100.01", 5}, {"99.5", 7}, {"101", 9}}));
    object.UpdatePriceTradeVolumes(Trades({{"99.50", 3}}));
    const char* const needsOne =
        "error: priceTradeVolumes:getPriceVolumeAtIndex requires one argument [index]";
    ExpectRows(script, object,
               {{"it.count", "3"},
                {"it:getPriceVolumeAtIndex(0)", "nil nil"},
                {"it:getPriceVolumeAtIndex(1)", "99.5 10"},
                {"it:getPriceVolumeAtIndex(2.9)", "100.01 5"},
                {"it:getPriceVolumeAtIndex(it.count + 1)", "nil nil"},
                {"it:getPriceVolumeAtIndex()", needsOne}});
}

TEST(nxAlgoPriceTradeVolumesObject, FindsVolumesByPrice)
{
    nxScriptJob script;
    nxAlgoPriceTradeVolumesObject object(&script.host, 4);
    object.UpdatePriceTradeVolumes(Trades({{"100.01", 5}, {"99.5", 7}, {"0.3", 9}, {"1600000000.25", 2}}));
    const char* const needsOne = "error: priceTradeVolumes:getVolumeAtPrice requires one argument [price]";
    // Without a tick size: to ten places, or as many as so large a price can have.
    ExpectRows(script, object,
               {{"it:getVolumeAtPrice(100.014)", "nil"},
                {"it:getVolumeAtPrice(99.5)", "7"},
                {"it:getVolumeAtPrice(0.1 + 0.2)", "9"},
                {"it:getVolumeAtPrice(1600000000.25)", "2"},
                {"it:getVolumeAtPrice(1e300)", "nil"},
                {"it:getVolumeAtPrice()", needsOne}});
    object.SetTickSize(nxDecimal(1, 100, 2));
    ExpectRows(script, object,
               {{"it:getVolumeAtPrice(100.014)", "5"},
                {"it:getVolumeAtPrice(100.004)", "nil"},
                {"it:getVolumeAtPrice(99.5)", "7"}});
    object.SetTickSize(nxDecimal(5, 10, 1));
    ExpectRows(script, object, {{"it:getVolumeAtPrice(99.3)", "7"}, {"it:getVolumeAtPrice(99.75)", "nil"}});
}

}  // namespace
