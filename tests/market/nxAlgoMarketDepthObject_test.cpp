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

using Row = std::pair<const char*, const char*>;  // code and what it evaluates to

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

    void ExpectRows(nxAlgoMarketDepthObject& depth, std::initializer_list<Row> rows)
    {
        ASSERT_TRUE(script.job.OnMarketDepth(depth).IsSuccess());
        for (const auto& [code, expected] : rows)
            EXPECT_EQ(script.Evaluate(code), expected) << code;
    }

    nxMarketDepth book;
    nxScriptJob script;
    nxAlgoMarketDepthObject object{&script.host, &book, 8};
};

// Both sides count from the lowest price, so the best bid is the last.
TEST_F(nxAlgoMarketDepthObjectTest, LevelsAscendFromTheLowestPrice)
{
    ExpectRows(object, {
                           {"it.id, it.bidCount, it.askCount", "8 2 3"},
                           {"it:bid(0), it:bid(1), it:bidQty(0), it:bidQty(1)", "99 100 5 7"},
                           {"it:ask(0), it:ask(1), it:ask(2)", "101 101.5 102"},
                           {"it:askQty(0), it:askQty(1), it:askQty(2)", "11 13 17"},
                           {"it:ask(1.9), it:askQty(1.9)", "101.5 13"},
                           {"it:ask(4294967296)", "101"},
                       });
}

TEST_F(nxAlgoMarketDepthObjectTest, ALevelThatIsNotThereIsAnErrorWithoutText)
{
    ExpectRows(object, {{"it:bid(2)", "error: "},
                        {"it:askQty(3)", "error: "},
                        {"it:bid()", "error: "},
                        {"it:askQty(0, 1)", "error: "},
                        {"it:bid(0/0)", "99"}});
    book.Clear();
    ExpectRows(object,
               {{"it.bidCount, it.askCount", "0 0"}, {"it:bid(0)", "error: "}, {"it:ask(0)", "error: "}});
}

TEST_F(nxAlgoMarketDepthObjectTest, SumsVolumesFromTheBestPriceOutward)
{
    ExpectRows(object, {
                           {"it:getBidVolumeAtPrice(99)", "12"},
                           {"it:getBidVolumeAtPrice(100.01)", "0"},
                           {"it:getBidVolumeAtPrice(99.5)", "7"},
                           {"it:getAskVolumeAtPrice(101.5)", "24"},
                           {"it:getBidVolumeAtPrice()", "error: Invalid parameters. Requires price"},
                           {"it:getBidPriceWithVolume(1, 2, 3)", ""},
                           {"it:getAskPriceWithVolume()", ""},
                       });
    // Beyond every decimal, with and without a tick; NaN is beyond nothing.
    for (const char* tick : {"0", "0.01", "0.5"}) {
        object.SetPriceManipulator(nxPriceManipulator(Price(tick)));
        ExpectRows(object, {{"it:getAskVolumeAtPrice(math.huge), it:getBidVolumeAtPrice(math.huge)", "41 0"},
                            {"it:getAskVolumeAtPrice(-1e19), it:getBidVolumeAtPrice(-1e19)", "0 12"},
                            {"it:getAskVolumeAtPrice(1e17), it:getBidVolumeAtPrice(1e17)", "41 0"},
                            {"it:getAskVolumeAtPrice(0/0), it:getBidVolumeAtPrice(0/0)", "0 0"}});
    }
    book.SetAsk(Price("103"), 0xFFFFFFFDu);
    ExpectRows(object, {{"it:getAskVolumeAtPrice(103)", "38"}});  // 41 more than 2^32 - 3, cut to 32 bits
}

TEST_F(nxAlgoMarketDepthObjectTest, APriceBetweenTicksIsRoundedFirst)
{
    object.SetPriceManipulator(nxPriceManipulator(Price("0.5")));
    ExpectRows(object, {{"it:getAskVolumeAtPrice(101.25)", "24"},  // up, as halves do
                        {"it:getBidVolumeAtPrice(100.25)", "0"}});
    object.SetPriceManipulator(nxPriceManipulator());
    ExpectRows(object, {{"it:getAskVolumeAtPrice(101.49996)", "24"},  // without ticks, to 4 places
                        {"it:getAskVolumeAtPrice(101.49994)", "11"}});
}

}  // namespace
