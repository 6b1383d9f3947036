#include "host/feed/nxFeedReader.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <sstream>

#include "tests/host/nxFeedFixture.h"
#include "tests/support/nxRowFile.h"

namespace {

const std::string Quotes = "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n";
const std::string Depth = "time,product,side,price,volume\n";
const std::string Bars = "time,product,open,high,low,close,volume\n";
const std::string Rows = "host/reader.txt";
constexpr long long Base = 1'700'000'000'000'000'000;

// A time of 19 digits, as recordings have it.
std::string At(unsigned int nanoseconds)
{
    return std::to_string(Base + nanoseconds);
}

// The times in a text, where "@7" stands for At(7), and back.
std::string Expand(std::string text)
{
    for (std::size_t at = 0; (at = text.find('@', at)) != std::string::npos;)
        text.replace(at, 2, At(static_cast<unsigned int>(text[at + 1] - '0')));
    return text;
}

std::string Contract(std::string text)
{
    const std::string front = At(0).substr(0, 18);
    for (std::size_t at = 0; (at = text.find(front, at)) != std::string::npos;)
        text.replace(at, front.size(), "@");
    return text;
}

// The content of a file as tests/data/host/reader.txt writes it.
std::string MakeContent(const std::string& text)
{
    for (const auto& [name, header] : {std::pair("quotes\n", Quotes), {"depth\n", Depth}, {"bars\n", Bars}})
        if (text.starts_with(name)) return header + text.substr(std::strlen(name)) + "\n";
    return text + "\n";
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
    nxExpectRows(Rows, [](const std::string& text) { return Contract(Read(MakeContent(text)).text); });
    // With byte order mark, CRLF, blank lines and no last line end.
    EXPECT_EQ(Read("\xEF\xBB\xBF\r\nproduct,time,bid\r\n\r\nA,@1,5\r\n\n\r\nA,@2,6").text,
              Expand("@1 A bid 5\n@2 A bid 6\n"));
}

// Rows of columns in the listed order are read at once where they can be, and cell by cell otherwise; those
// of another order always cell by cell.
TEST(nxFeedReaderTest, RowsAreTheSameInWhateverOrderTheirColumnsStand)
{
    std::mt19937 random(7);
    const auto oneOf = [&](const std::vector<std::string>& cells) { return cells[random() % cells.size()]; };
    const std::vector<std::string> names = {"A", "AB", "ABCDEFGH", "ABCDEFGHI", "\"A,B\"", "\"A\""};
    const std::vector<std::string> odd = {"",    "-1", "+2", "x",  "0.5",      "BUY",          "buy",
                                          "\"A", "5 ", "5.", ".5", "12345678", "123456789.25", "1234567.8"};
    for (const std::string& header : {Quotes, Depth, Bars}) {
        std::string listed = header;
        std::string other = "product,time" + header.substr(std::strlen("time,product"));
        std::string name = "A";
        for (unsigned int row = 0; row < 3000; ++row) {
            if (random() % 50 == 0) name = oneOf(names);
            std::vector<std::string> cells = {At(row), name};
            if (header == Quotes)
                for (const char* cell : {"5.25", "2", "5.5", "3", "", "", ""})
                    cells.emplace_back(cell);
            if (header == Depth) cells.insert(cells.end(), {oneOf({"BUY", "SELL"}), "5.25", "7"});
            if (header == Bars) cells.insert(cells.end(), {"5", "7.5", "4", "6", "70000"});
            if (random() % 4 == 0) cells[random() % cells.size()] = oneOf(odd);
            if (random() % 40 == 0) cells.pop_back();
            if (random() % 40 == 0) cells.emplace_back("1");
            const std::string end = random() % 5 == 0 ? "\r\n" : "\n";
            const auto write = [&](std::string& content) {
                for (const std::string& cell : cells)
                    content += cell + (&cell == &cells.back() ? end : ",");
            };
            write(listed);
            std::swap(cells[0], cells[1]);
            write(other);
        }
        const Outcome read = Read(listed, true);
        EXPECT_EQ(read.text, Read(other, true).text);
        EXPECT_GT(std::ranges::count(read.text, '\n'), 2000);
        EXPECT_EQ(read.remarks, Read(other, true).remarks);
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
    nxExpectRows(Rows, [](const std::string& text) { return Contract(Read(MakeContent(text)).text); });
    EXPECT_EQ(Read("").text, "FILE: no header row: the file is empty\n");
    EXPECT_EQ(Read(std::string("PE\x03\x04\0\0,bid\n", 11)).text,
              "FILE:1: no header row: the file is not text\n");
}

TEST(nxFeedReaderTest, BadRowsAreToldByPlaceAndReasonAfterWhatCameBefore)
{
    const struct
    {
        const char* part;
        std::string header, good, event;
        std::string next, nextEvent;  // the row after the bad one, where it is told and what follows is read
    } kinds[] = {
        {"of quotes", Quotes, "@5,A,10.5,1,11,1,,,\n", "@5 A bid 10.5 x1 ask 11 x1\n",
         "@5,A,10.5,1,11,1,,,\n", "@5 A bid 10.5 x1 ask 11 x1\n"},
        // The two good rows are neighbours then, and one change.
        {"of depth", Depth, "@5,A,BUY,10,1\n", "@5 A bid 10 x1", "@5,A,BUY,10,1\n", " bid 10 x1\n"},
        {"of bars", Bars, "20240808,A,2,2,2,2,5\n", "1723075200000000000 A 2 2 2 2 x5\n",
         "20240810,A,2,2,2,2,5\n", "1723248000000000000 A 2 2 2 2 x5\n"},
    };
    for (const auto& kind : kinds) {
        const auto ask = [&](const std::string& row) {
            const std::string bad = kind.header + kind.good + row + "\n";
            const std::vector<nxFeedProductTerms> described = {Describe("A", "1")};
            const std::string text = Contract(Read(bad, false, described).text);
            const std::size_t error = text.find("FILE");
            EXPECT_EQ(nxTrim(text.substr(0, error)), nxTrim(kind.event));
            const Outcome lenient = Read(bad + kind.next, true, described);
            EXPECT_EQ(lenient.badRows.at(0) + "\n", text.substr(error));
            EXPECT_THAT(lenient.remarks, testing::Contains("FILE: 1 bad row skipped"));
            EXPECT_EQ(Contract(lenient.text), kind.event + kind.nextEvent);
            return text.substr(error);
        };
        nxExpectRows(Rows, ask, kind.part);
    }
}

TEST(nxFeedReaderTest, AStartOfABarThatTellsNoEndIsRefused)
{
    // The first has nothing wrong with it, so a lenient reader does not skip it.
    nxExpectRows(Rows, [](const std::string& text) {
        const std::string content = MakeContent(text);
        const std::string told = Read(content, false, {}, true).text;
        if (told.find("is not known") != std::string::npos) {
            EXPECT_EQ(Read(content, true, {}, true).text, told);
        }
        return Contract(told);
    });
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
    nxExpectRows(Rows, [](const std::string& text) {
        const auto words = nxGetWords(text);
        const std::string told = Read("time,product,last,lastVolume\n1,A,9," + words.front() + "\n", false,
                                      {Describe("A", words.back().c_str())})
                                     .text;
        for (const std::string front : {"1000000000 A last 9 ", "FILE:2:7: lastVolume: "})
            if (told.starts_with(front)) return told.substr(front.size());
        return told;
    });
}

TEST(nxFeedReaderTest, ALotFitsAllSizesSeenAheadUnlessTheProductIsDescribed)
{
    const std::string content = Quotes + "1,A,5,0.5,6,1,,,\n2,A,5,0.125,6,1,,,\n";
    EXPECT_EQ(
        Read(content, false, {Describe("A", "1")}).text,
        "FILE:2:7: bidVolume: size 0.5 is not a whole number of lots of 1; lotSize = 0.001 would fit\n");
    EXPECT_EQ(Read(content).text,
              "1000000000 A bid 5 x500 ask 6 x1000\n2000000000 A bid 5 x125 ask 6 x1000\n");
}

TEST(nxFeedReaderTest, TheTickSizeIsKnownBeforeTheFirstEvent)
{
    nxExpectRows(Rows, [](const std::string& prices) {
        std::string content = "time,product,bid\n";
        for (const std::string& price : nxGetWords(prices))
            content += "1,A," + price + "\n";
        const nxFeedFile file(content);
        nxFeed feed;
        EXPECT_TRUE(feed.Open({file.GetPath()}));
        return feed.GetProducts().Get(0).GetTickSize().GetAsString();
    });
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
