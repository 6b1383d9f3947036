#include "host/feed/nxFeedReader.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "tests/host/nxFeedFixture.h"

namespace {

const std::string Quotes = "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n";
const std::string Depth = "time,product,side,price,volume\n";
const std::string Bars = "time,product,open,high,low,close,volume\n";
constexpr long long Base = 1'700'000'000'000'000'000;

// A time of 19 digits, as recordings have it.
std::string At(unsigned int nanoseconds)
{
    return std::to_string(Base + nanoseconds);
}

// The times in a text, where "@7" stands for At(7).
std::string Expand(std::string text)
{
    for (std::size_t at = 0; (at = text.find('@', at)) != std::string::npos;)
        text.replace(at, 2, At(static_cast<unsigned int>(text[at + 1] - '0')));
    return text;
}

struct Outcome
{
    std::string text;  // events and the error
    std::vector<std::string> badRows;
    std::vector<std::string> remarks;
};

Outcome Read(const std::string& content, bool isLenient = false,
             const std::vector<nxFeedProductTerms>& descriptions = {}, bool barsBearStart = false)
{
    const nxFeedFile file(Expand(content));
    nxFeed feed({.isLenient = isLenient, .barsBearStart = barsBearStart});
    Outcome outcome;
    if (feed.Open({file.GetPath()}, descriptions))
        outcome.text = file.Hide(ReadAll(feed));
    else
        outcome.text = file.Hide(feed.GetError().GetText() + "\n");
    for (const nxFeedError& error : feed.GetReaders()[0]->GetBadRows())
        outcome.badRows.push_back(file.Hide(error.GetText()));
    for (const std::string& remark : feed.GetRemarks())
        outcome.remarks.push_back(file.Hide(remark));
    return outcome;
}

nxFeedProductTerms Describe(const char* name, const char* lotSize)
{
    nxFeedProductTerms description;
    description.name = name;
    EXPECT_TRUE(description.lotSize.SetFromString(lotSize).IsSuccess());
    return description;
}

TEST(nxFeedReaderTest, RowsBecomeEvents)
{
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"quote", Quotes + "@1,IBM,180.01,200,182.6200,100,,,\n",
         "@1 IBM bid 180.01 x200 ask 182.6200 x100\n"},
        {"trade without side", Quotes + "@1,IBM,,,,,180.5,3,\n", "@1 IBM last 180.5 x3 side unknown\n"},
        {"trade and quote in one", Quotes + "@1,A,1,2,3,4,5,6,BUY\n",
         "@1 A bid 1 x2 ask 3 x4 last 5 x6 BUY\n"},
        {"volume of an earlier bid", Quotes + "@1,A,1,2,,,,,\n@1,A,,0,,,,,\n", "@1 A bid 1 x2\n@1 A x0\n"},
        {"columns in another order, some left out", "side,last,time,lastVolume,product\nBUY,7.5,@1,3,A\n",
         "@1 A last 7.5 x3 BUY\n"},
        {"byte order mark, CRLF, blank lines, no last line end",
         "\xEF\xBB\xBF\r\nproduct,time,bid\r\n\r\nA,@1,5\r\n\n\r\nA,@2,6", "@1 A bid 5\n@2 A bid 6\n"},
        {"quoted names", "\"time\",\"product\",bid\n@1,\"A,\"\"B\"\"\",5\n@1,\"C\",6\n@1,C,7\n",
         "@1 A,\"B\" bid 5\n@1 C bid 6\n@1 C bid 7\n"},
        {"a name that begins another", Quotes + "@1,AB,1,1,,,,,\n@1,A,2,1,,,,,\n@1,AB,3,1,,,,,\n",
         "@1 AB bid 1 x1\n@1 A bid 2 x1\n@1 AB bid 3 x1\n"},
        {"bars by date", Bars + "19980102,AAPL,13.63,16.25,13.5,16.25,6315000\n",
         "883699200000000000 AAPL 13.63 16.25 13.5 16.25 x6315000\n"},
        {"depth: one time and product are one change",
         Depth + "@1,A,BUY,10,5\n@1,A,SELL,11,6\n@1,B,BUY,9,1\n@1,A,BUY,10,0\n@2,A,BUY,10,7\n",
         "@1 A bid 10 x5 ask 11 x6\n@1 B bid 9 x1\n@1 A bid 10 x0\n@2 A bid 10 x7\n"},
    };
    for (const auto& [name, content, events] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Read(content).text, Expand(events));
    }
}

TEST(nxFeedReaderTest, AnEventTellsItsRows)
{
    const nxFeedFile file(Expand(Depth + "\n@1,A,BUY,10,5\n@1,A,SELL,11,6\n@2,A,BUY,10,7\n"));
    nxFeedProductTable products;
    nxFeedReader reader(file.GetPath(), 3, products, {});
    ASSERT_TRUE(reader.Open());
    const std::pair<unsigned long long, unsigned int> expected[] = {{3, 2}, {5, 1}};
    for (const auto& [line, rows] : expected) {
        const nxFeedEvent* event = reader.Next();
        ASSERT_NE(event, nullptr);
        EXPECT_EQ(event->file, 3u);
        EXPECT_EQ(event->line, line);
        EXPECT_EQ(event->rows, rows);
    }
    EXPECT_EQ(reader.Next(), nullptr);
    EXPECT_EQ(reader.GetRowCount(), 3u);
    EXPECT_EQ(products.Get(0).GetRowCount(nxFeedKind::Depth), 3u);
}

TEST(nxFeedReaderTest, AChangeOfManyLevelsIsCutSoThatMemoryStaysFlat)
{
    std::string content = Depth;
    for (unsigned int i = 0; i <= nxFeedReader::MaxLevels; ++i)
        content += "1,A,BUY," + std::to_string(i) + ",1\n";
    const nxFeedFile file(content);
    nxFeed feed;
    ASSERT_TRUE(feed.Open({file.GetPath()}));
    const nxFeedEvent* event = feed.Next();
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(event->levels.size(), nxFeedReader::MaxLevels);
    event = feed.Next();
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(event->levels.size(), 1u);
    EXPECT_EQ(event->levels[0].price.GetAsString(), std::to_string(nxFeedReader::MaxLevels));
    EXPECT_EQ(feed.Next(), nullptr);
}

TEST(nxFeedReaderTest, RowsThatCrossTheBufferAreReadWhole)
{
    std::string content = Quotes;
    std::string expected;
    unsigned int row = 0;
    for (; content.size() < 3 * nxCsvBlock::Size; ++row) {
        const std::string price = std::to_string(row % 1013) + "." + std::to_string(row % 7);
        content += At(row) + ",P" + std::to_string(row % 11) + "," + price + ",1,,,,,\n";
        expected += At(row) + " P" + std::to_string(row % 11) + " bid " + price + " x1\n";
    }
    EXPECT_EQ(Read(content).text, expected);
}

TEST(nxFeedReaderTest, WrongFilesAreToldByPlaceAndReason)
{
    const std::string quoteColumns =
        "; the columns of quotes are time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n";
    const std::string noHeader =
        "FILE:1:1: no header row; known are time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side | "
        "time,product,side,price,volume | time,product,open,high,low,close,volume\n";
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"empty file", "", "FILE: no header row: the file is empty\n"},
        {"no header row", "@1,IBM,1,2,3,4,,,\n", noHeader},
        {"not text", std::string("PK\x03\x04\0\0,bid\n", 11),
         "FILE:1: no header row: the file is not text\n"},
        {"unknown column", "time,product,bid,size\n", "FILE:1:18: unknown column \"size\"" + quoteColumns},
        {"column given twice", "time,product,bid,bid\n",
         "FILE:1:18: column given twice: \"bid\"" + quoteColumns},
        {"no time", "product,bid\n", "FILE:1:1: missing column \"time\"" + quoteColumns},
    };
    for (const auto& [name, content, text] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Read(content).text, text);
    }
}

TEST(nxFeedReaderTest, BadRowsAreToldByPlaceAndReasonAfterWhatCameBefore)
{
    // The row stands behind a good one of its kind, on line 3.
    const std::string quote = Quotes + "@5,A,10.5,1,11,1,,,\n";
    const std::string quoteEvent = "@5 A bid 10.5 x1 ask 11 x1\n";
    const std::string depth = Depth + "@5,A,BUY,10,1\n";
    const std::string depthEvent = "@5 A bid 10 x1\n";
    const std::string bar = Bars + "20240808,A,2,2,2,2,5\n";
    const std::string barEvent = "1723075200000000000 A 2 2 2 2 x5\n";
    const struct
    {
        std::string before;
        std::string row;
        std::string event;
        std::string text;
    } rows[] = {
        {quote, "@6,A,1O.5,1,,,,,", quoteEvent, "FILE:3:23: bid: not a number: \"1O.5\""},
        {quote, "@6,A,.5,1,,,,,", quoteEvent, "FILE:3:23: bid: not a number: \".5\""},
        {quote, "@6,A,\"5\",1,,,,,", quoteEvent, "FILE:3:23: bid: not a number: \"\"5\"\""},
        {quote, "@6,B,,,,5,,,", quoteEvent, "FILE:3:26: askVolume: no row so far gave an ask of B"},
        {quote, "@6,A,,,,,,5,", quoteEvent, "FILE:3:28: lastVolume: no row so far gave a last of A"},
        {quote, "@6,A,5.,1,,,,,", quoteEvent, "FILE:3:23: bid: not a number: \"5.\""},
        {quote, "@6,A,1234567890.123456789,1,,,,,", quoteEvent,
         "FILE:3:23: bid: number with more than 18 digits: \"1234567890.123456789\""},
        {quote, "@6,A,10", quoteEvent, "FILE:3:25: too few cells: 3 instead of 9"},
        {quote, "@6,A,,,,,,,,", quoteEvent, "FILE:3:30: too many cells: 10 instead of 9"},
        {quote, "yesterday,A,,,,,,,", quoteEvent, "FILE:3:1: time: not a time: \"yesterday\""},
        {quote, "@4,A,,,,,,,", quoteEvent,
         "FILE:3:1: time: runs backwards: 20231114:22:13:20.000000004 after 20231114:22:13:20.000000005"},
        {quote, "@6,,10,1,,,,,", quoteEvent, "FILE:3:21: product: is empty"},
        {quote, "@6,\"A,10,1,,,,,", quoteEvent,
         "FILE:3:21: product: a quote that does not end with the cell"},
        {quote, "@6,A,,,,,10,1,Buy", quoteEvent, "FILE:3:32: side: neither BUY nor SELL: \"Buy\""},
        {quote, "@6,A,,,,,,,BUY", quoteEvent, "FILE:3:29: side: stands without last and lastVolume"},
        {quote, "@6,\"B,C\",,5,,,,,", quoteEvent, "FILE:3:28: bidVolume: no row so far gave a bid of B,C"},
        {quote, "@6,A,10,-5,,,,,", quoteEvent, "FILE:3:26: bidVolume: size -5 is negative"},
        {quote, "@6,A,10,2.507,,,,,", quoteEvent,
         "FILE:3:26: bidVolume: size 2.507 is not a whole number of lots of 1; lotSize = 0.001 would fit"},
        {depth, "@6,A,,10,1", depthEvent, "FILE:3:23: side: is empty"},
        {bar, "20240809,A,1,2,3,2,5", barEvent, "FILE:3:14: high: 2 is below the low 3"},
        {bar, "20240809,A,1,3,2,2,5", barEvent, "FILE:3:12: open: 1 is outside of the bar, 2 to 3"},
        {bar, "20240809,A,2,3,2,4,5", barEvent, "FILE:3:18: close: 4 is outside of the bar, 2 to 3"},
        {bar, "20240808,A,2,2,2,2,5", barEvent,
         "FILE:3:1: time: a second bar of A at 20240808:00:00:00.000000000"},
        {bar, "20240809,A,1,2,1,2,6000000000", barEvent,
         "FILE:3:20: volume: size 6000000000 is more than 4294967293 lots of 1; lotSize = 10 would fit"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.row);
        EXPECT_EQ(Read(row.before + row.row + "\n").text, Expand(row.event) + row.text + "\n");
        // The other way to treat it: the row is told, and what follows is read.
        const bool isBar = row.event == barEvent;  // of which there is one at a time
        const std::string after =
            isBar ? "20240810,A,2,2,2,2,5\n" : row.before.substr(row.before.find('\n') + 1);
        const std::string afterEvent = isBar ? "1723248000000000000 A 2 2 2 2 x5\n" : row.event;
        const Outcome lenient = Read(row.before + row.row + "\n" + after, true);
        EXPECT_THAT(lenient.badRows, testing::ElementsAre(row.text));
        EXPECT_THAT(lenient.remarks, testing::Contains("FILE: 1 bad row skipped"));
        const bool isOneChange = row.event == depthEvent;  // the two rows of depth are neighbours now
        EXPECT_EQ(lenient.text, Expand(isOneChange ? "@5 A bid 10 x1 bid 10 x1\n" : row.event + afterEvent));
    }
}

TEST(nxFeedReaderTest, AStartOfABarThatTellsNoEndIsRefused)
{
    const struct
    {
        std::string rows;
        const char* text;
    } cases[] = {
        {"20240108,A,2,2,2,2,5\n",
         "FILE:2:1: time: the end of the bar is not known: the first rows have no two bars of A; "
         "--bar-period A=PERIOD tells it, such as 1m\n"},
        {"@0,A,2,2,2,2,5\n@1,B,2,2,2,2,5\n@4,A,2,2,2,2,5\n@6,B,2,2,2,2,5\n",
         "@4 A 2 2 2 2 x5\n@6 B 2 2 2 2 x5\n@8 A 2 2 2 2 x5\n1700000000000000011 B 2 2 2 2 x5\n"},
        {"@0,A,2,2,2,2,5\n@3,B,2,2,2,2,5\n@4,B,2,2,2,2,5\n@8,A,2,2,2,2,5\n@0,A,,,,,\n",
         "@8 A 2 2 2 2 x5\n"
         "FILE:3:1: time: the bar ends before the one in front: 20231114:22:13:20.000000004 after "
         "20231114:22:13:20.000000008; give bars of different periods a file each\n"},
    };
    for (const auto& [rows, text] : cases)
        EXPECT_EQ(Read(Bars + rows, false, {}, true).text, Expand(text)) << rows;
    // Nothing is wrong with the first of them, so a lenient reader does not skip it.
    EXPECT_EQ(Read(Bars + cases[0].rows, true, {}, true).text, Expand(cases[0].text));
}

TEST(nxFeedReaderTest, AGivenPeriodGoesBeforeThatOfTheFirstRows)
{
    const nxFeedFile file(Expand(Bars + "@0,A,2,2,2,2,5\n@1,B,2,2,2,2,5\n@2,B,2,2,2,2,5\n"));
    nxFeed feed({.barsBearStart = true, .barPeriods = {{"", 7}, {"A", 5}}});
    ASSERT_TRUE(feed.Open({file.GetPath()}));
    EXPECT_EQ(ReadAll(feed), Expand("@5 A 2 2 2 2 x5\n@8 B 2 2 2 2 x5\n@9 B 2 2 2 2 x5\n"));
}

TEST(nxFeedReaderTest, ALenientReaderKeepsTheFirstBadRowsOnly)
{
    std::string content = Quotes;
    for (unsigned int i = 0; i < 1000; ++i)
        content += "bad\n";
    const Outcome outcome = Read(content, true);
    EXPECT_EQ(outcome.text, "");
    EXPECT_EQ(outcome.badRows.size(), nxFeedReader::MaxKeptErrors);
    EXPECT_THAT(outcome.remarks, testing::ElementsAre("FILE: 1000 bad rows skipped"));
}

TEST(nxFeedReaderTest, ARowLongerThanTheBufferEndsTheReading)
{
    const std::string before = Quotes + "@1,A,1,1,,,,,\n";
    for (const bool isLenient : {false, true})
        EXPECT_EQ(Read(before + std::string(nxCsvBlock::Size + 1, 'x') + "\n@2,A,1,1,,,,,\n", isLenient).text,
                  Expand("@1 A bid 1 x1\nFILE:3: row longer than 262144 bytes\n"));
}

TEST(nxFeedReaderTest, SizesBecomeLotsExactly)
{
    const struct
    {
        const char* lotSize;
        const char* size;
        std::string outcome;
    } rows[] = {
        {"0.001", "2.507", "x2507"},
        {"100", "300.00", "x3"},
        {"0.00000001", "42.94967293", "x4294967293"},
        {"0.000000000000000001", "0.000000000000000007", "x7"},
        {"0.002", "2.507", "size 2.507 is not a whole number of lots of 0.002; lotSize = 0.001 would fit"},
        {"0.00000001", "42.94967294",
         "size 42.94967294 is more than 4294967293 lots of 0.00000001; no lot size of a power of ten fits"},
        {"0.001", "5000000", "size 5000000 is more than 4294967293 lots of 0.001; lotSize = 1 would fit"},
        {"1000000000000", "0.000001",
         "size 0.000001 is not a whole number of lots of 1000000000000; lotSize = 0.000001 would fit"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.size) + " in lots of " + row.lotSize);
        const std::string outcome =
            Read("time,product,last,lastVolume\n1,A,9," + std::string(row.size) + "\n", false,
                 {Describe("A", row.lotSize)})
                .text;
        EXPECT_EQ(outcome, row.outcome[0] == 'x' ? "1000000000 A last 9 " + row.outcome + " side unknown\n"
                                                 : "FILE:2:7: lastVolume: " + row.outcome + "\n");
    }
}

TEST(nxFeedReaderTest, TheLotSizeToldFitsAllSizesSeenAhead)
{
    EXPECT_EQ(
        Read(Quotes + "1,A,5,0.5,6,1,,,\n2,A,5,0.125,6,1,,,\n").text,
        "FILE:2:7: bidVolume: size 0.5 is not a whole number of lots of 1; lotSize = 0.001 would fit\n");
}

TEST(nxFeedReaderTest, TheTickSizeIsKnownBeforeTheFirstEvent)
{
    const struct
    {
        const char* name;
        std::string prices;  // bids of one file, by blanks
        const char* tickSize;
    } rows[] = {
        {"the finest price counts", "5 5.1 5.125 5.2", "0.001"},
        {"quarters are multiples of a hundredth", "1676.75 1675.50", "0.01"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::string content = "time,product,bid\n";
        std::istringstream prices(row.prices);
        for (std::string price; prices >> price;)
            content += "1,A," + price + "\n";
        const nxFeedFile file(content);
        nxFeed feed;
        ASSERT_TRUE(feed.Open({file.GetPath()}));
        const nxFeedProduct* product = feed.GetProducts().Find("A");
        ASSERT_NE(product, nullptr);
        EXPECT_EQ(product->GetTickSize().GetAsString(), row.tickSize);
    }
}

TEST(nxFeedReaderTest, TheTickSizeFollowsFinerPricesBehindTheFirstRows)
{
    std::string content = "time,product,bid\n";
    for (unsigned int i = 0; i < nxFeedReader::PeekRows; ++i)
        content += "1,A,5.5\n";
    const nxFeedFile file(content + "1,A,5.25\n");
    nxFeed feed;
    ASSERT_TRUE(feed.Open({file.GetPath()}));
    EXPECT_EQ(feed.GetProducts().Get(0).GetTickSize().GetAsString(), "0.1");
    ReadAll(feed);
    EXPECT_EQ(feed.GetProducts().Get(0).GetTickSize().GetAsString(), "0.01");
}

TEST(nxFeedReaderTest, CrossedAndLockedQuotesAreDeliveredAndCounted)
{
    // A trade leaves the quote alone, so it is not counted again; each product has its own quote.
    const Outcome outcome = Read(Quotes +
                                 "1,A,10,1,11,1,,,\n"
                                 "1,A,11,1,,,,,\n"  // locked
                                 "1,B,50,1,60,1,,,\n"
                                 "1,A,,,,,11,1,\n"
                                 "1,A,,,10.5,1,,,\n"    // crossed
                                 "1,A,12.00,1,,,,,\n"   // crossed
                                 "1,A,,,12,1,,,\n"      // locked
                                 "1,A,12.5,1,,,,,\n");  // crossed
    EXPECT_EQ(std::ranges::count(outcome.text, '\n'), 8);
    EXPECT_THAT(outcome.remarks, testing::ElementsAre("A: 3 crossed quotes (bid above ask)",
                                                      "A: 2 locked quotes (bid equal to ask)"));
}

}  // namespace
