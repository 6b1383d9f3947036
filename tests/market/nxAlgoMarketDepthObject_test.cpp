#include "scriptFramework/market/nxAlgoMarketDepthObject.h"

#include <gtest/gtest.h>

#include "base/records/nxMarketDepth.h"
#include "tests/support/nxScriptJob.h"

namespace {

nxDecimal Price(const char* text)
{
    nxDecimal price;
    EXPECT_TRUE(price.SetFromString(text).IsSuccess()) << text;
    return price;
}

class nxAlgoMarketDepthObjectTest : public testing::Test
{
protected:
    nxAlgoMarketDepthObjectTest()
    {
        book.SetBid(Price("99"), 5);
        book.SetBid(Price("100.0"), 7);
        book.SetAsk(Price("101"), 11);
        book.SetAsk(Price("101.50"), 13);
        book.SetAsk(Price("102"), 17);
    }

    void ExpectRows(const std::string& part = {})
    {
        ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnMarketDepth, object));
        script.ExpectRows("market.txt", part);
    }

    nxMarketDepth book;
    nxScriptJob script;
    nxAlgoMarketDepthObject object{&script.host, &book, 8};
};

// Both sides count from the lowest price, so the best bid is the last.
TEST_F(nxAlgoMarketDepthObjectTest, LevelsAscendFromTheLowestPrice)
{
    ExpectRows();
}

TEST_F(nxAlgoMarketDepthObjectTest, ALevelThatIsNotThereIsAnErrorWithoutText)
{
    ExpectRows();
    book.Clear();
    ExpectRows("cleared");
}

TEST_F(nxAlgoMarketDepthObjectTest, SumsVolumesFromTheBestPriceOutward)
{
    ExpectRows();
    for (const char* tick : {"0", "0.01", "0.5"}) {
        object.SetPriceManipulator(nxPriceManipulator(Price(tick)));
        ExpectRows("beyond");
    }
    book.SetAsk(Price("103"), 0xFFFFFFFDu);
    ExpectRows("wrapped");
}

TEST_F(nxAlgoMarketDepthObjectTest, APriceBetweenTicksIsRoundedFirst)
{
    object.SetPriceManipulator(nxPriceManipulator(Price("0.5")));
    ExpectRows();
    object.SetPriceManipulator(nxPriceManipulator());
    ExpectRows("unticked");
}

}  // namespace
