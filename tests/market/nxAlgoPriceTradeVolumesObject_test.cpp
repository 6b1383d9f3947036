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

class nxAlgoPriceTradeVolumesObjectTest : public testing::Test
{
protected:
    void ExpectRows(const std::string& part = {})
    {
        ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnPriceTradeVolumes, object));
        script.ExpectRows("market.txt", part);
    }

    nxScriptJob script;
    nxAlgoPriceTradeVolumesObject object{&script.host, 4};
};

TEST_F(nxAlgoPriceTradeVolumesObjectTest, GivesVolumesByIndexFromTheLowestPrice)
{
    ExpectRows("empty");
    object.UpdatePriceTradeVolumes(Trades({{"100.01", 5}, {"99.5", 7}, {"101", 9}}));
    object.UpdatePriceTradeVolumes(Trades({{"99.50", 3}}));
    ExpectRows();
}

TEST_F(nxAlgoPriceTradeVolumesObjectTest, FindsVolumesByPrice)
{
    object.UpdatePriceTradeVolumes(Trades({{"100.01", 5}, {"99.5", 7}, {"0.3", 9}, {"1600000000.25", 2}}));
    ExpectRows();
    object.SetTickSize(nxDecimal(1, 100, 2));
    ExpectRows("hundredths");
    object.SetTickSize(nxDecimal(5, 10, 1));
    ExpectRows("halves");
}

}  // namespace
