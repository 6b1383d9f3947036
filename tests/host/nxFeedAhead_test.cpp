#include "host/feed/nxFeedAhead.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "tests/host/nxFeedFixture.h"
#include "tests/host/nxNamedPipe.h"

namespace {

constexpr int Seconds = 9000;
constexpr int Late = 6500;  // behind the rows that are looked at in front
constexpr int Never = Seconds;

std::string GetTime(int second)
{
    return std::to_string(1'700'000'000 + second) + ",";
}

// Quotes of A, B and, late, C, some of them crossed or locked, and trades of B. Prices become finer late.
std::string MakeQuotes(int firstBad)
{
    std::string text = "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n";
    for (int i = 0; i < Seconds; ++i) {
        const std::string product = i % 3 == 0 ? "A," : i < Late ? "B," : "C,";
        const std::string bid = std::to_string(100 + i % 5) + (i > Late && i % 7 == 0 ? ".25" : "");
        text += GetTime(i) + product + bid + ",5," + std::to_string(102 + i % 4) + ",6,,,\n";
        if (i % 4 == 0) text += GetTime(i) + "B,,,,,101,1.5,BUY\n";
        if (i >= firstBad && i % 50 == 49)
            text += GetTime(i) + "A,x,1,,,,,,\n" + GetTime(i - 9) + "A,1,1,,,,,,\n";
    }
    return text;
}

std::string MakeDepth()
{
    std::string text = "time,product,side,price,volume\n";
    for (int i = 0; i < Seconds; i += 2)
        for (int level = 0; level <= i % 9; ++level)
            text += GetTime(i) + "A,BUY," + std::to_string(100 - level) + ",7\n";
    return text;
}

// With gaps, and a last line that has no end.
std::string MakeBars()
{
    std::string text = "time,product,open,high,low,close,volume\n";
    for (int i = 0; i < Seconds; i += i % 700 == 0 ? 300 : 10)
        text += GetTime(i) + "D,1,2,1,1.5,10.5\n";
    text.pop_back();
    return text;
}

class nxFeedAheadThread : public ::testing::Test
{
protected:
    // Sizes of B are to be rounded; S is a strategy, of which there are no rows.
    void Write(int firstBad, bool isLenient)
    {
        for (const std::string& content :
             {MakeQuotes(firstBad), CompressGzip(MakeQuotes(Never)), MakeDepth(), MakeBars()})
            _paths.push_back(_files.emplace_back(std::make_unique<nxFeedFile>(content))->GetPath());
        _options.isLenient = isLenient;
        _options.roundsVolumes = true;
        _terms = {{"S", {}, {}}, {"B", {}, nxDecimalOne}};
    }

    template <class Feed>
    void Open(Feed& feed)
    {
        ASSERT_TRUE(feed.Open(_paths, _terms));
    }

    // What the next event is, and what is known of the products then.
    template <class Feed>
    static std::string Take(Feed& feed, std::size_t place)
    {
        // As a strategy does whose legs come to another tick; and as no row of A does yet.
        if (place == 1200) feed.NotePrice("S", nxDecimal::FromMantissa(125, 3));
        if (place == 1300) feed.NotePrice("A", nxDecimal::FromMantissa(5, 1));
        const nxFeedEvent* const event = feed.Next();
        std::string text = ShowProducts(feed.GetProducts());
        if (event == nullptr) return text + (feed.HasFailed() ? feed.GetError().GetText() : "the end");
        EXPECT_FALSE(feed.HasFailed());
        return text + std::to_string(event->file) + ":" + std::to_string(event->line) + " " +
               Show(*event, feed.GetProducts());
    }

    static std::string ShowProducts(const nxFeedProductTable& products)
    {
        std::string text;
        for (unsigned int i = 0; i < products.GetCount(); ++i) {
            const nxFeedProduct& product = products.Get(i);
            text += product.GetName() + " " + product.GetTickSize().GetAsString() + " " +
                    product.GetLotSize().GetAsString() + " " + std::to_string(product.GetBarPeriod()) + " ";
            for (const bool is :
                 {product.HasFoundLots(), product.DoBarsBearStart(), product.HasQuoteColumns(),
                  product.HasBid(), product.HasAsk(), product.HasLast(), product.Has(nxFeedKind::Quote),
                  product.Has(nxFeedKind::Depth), product.Has(nxFeedKind::Bar)})
                text += is ? "1" : "0";
            text += "\n";
        }
        return text;
    }

    // Holds a feed that is read ahead against one on this thread alone, at each event; how many there were.
    std::size_t CompareEvents()
    {
        nxFeedOptions inTurn = _options;
        inTurn.readsAhead = false;
        nxFeed alone(inTurn);
        nxFeedAhead ahead(_options);
        Open(alone);
        Open(ahead);
        std::size_t count = 0;
        for (std::string expected, known; _end.empty(); ++count) {
            expected = Take(alone, count);
            const std::string read = Take(ahead, count);
            EXPECT_EQ(read, expected) << "at event " << count;
            if (read != expected) break;
            const std::string products = ShowProducts(alone.GetProducts());
            _knownChanges += std::exchange(known, products) != products ? 1 : 0;
            if (expected.ends_with("the end") || alone.HasFailed()) _end = expected.substr(products.size());
        }
        EXPECT_EQ(ahead.GetRemarks(), alone.GetRemarks());
        return count;
    }

    // The remarks of a run that ends after so many events.
    template <class Feed>
    std::vector<std::string> GetRemarks(const nxFeedOptions& options, std::size_t events)
    {
        Feed feed(options);
        Open(feed);
        for (std::size_t i = 0; i < events; ++i)
            static_cast<void>(feed.Next());
        return feed.GetRemarks();
    }

    nxFeedOptions _options;
    std::vector<std::unique_ptr<nxFeedFile>> _files;
    std::vector<std::string> _paths;
    std::vector<nxFeedProductTerms> _terms;
    std::string _end;
    unsigned int _knownChanges = 0;
};

TEST_F(nxFeedAheadThread, ARunKnowsAtEachEventWhatItWouldKnowAlone)
{
    Write(0, true);
    EXPECT_GT(CompareEvents(), 25'000u);
    EXPECT_EQ(_end, "the end");
    EXPECT_GE(_knownChanges, 5u);
}

TEST_F(nxFeedAheadThread, AnErrorComesBehindTheEventsBeforeIt)
{
    Write(Late, false);
    EXPECT_GT(CompareEvents(), 18'000u);
    EXPECT_TRUE(_end.starts_with(_paths[0] + ":")) << _end;
}

TEST_F(nxFeedAheadThread, RemarksAreOfTheEventsThatWereGiven)
{
    Write(0, true);
    nxFeedOptions inTurn = _options;
    inTurn.readsAhead = false;
    std::set<std::vector<std::string>> told;
    std::vector<std::string> remarks;
    for (const std::size_t events : {0u, 1u, 2u, 511u, 512u, 513u, 2047u, 2048u, 5000u, 19'001u, 40'000u}) {
        remarks = GetRemarks<nxFeed>(inTurn, events);
        EXPECT_EQ(GetRemarks<nxFeedAhead>(_options, events), remarks) << "after " << events;
        told.insert(remarks);
        nxFeedAhead left(_options);  // with its thread at work
        Open(left);
        for (std::size_t i = 0; i < events; ++i)
            static_cast<void>(left.Next());
    }
    EXPECT_GE(told.size(), 8u);
    EXPECT_GE(remarks.size(), 9u);
}

TEST_F(nxFeedAheadThread, ThePipesRowsAreGivenAsTheyCome)
{
    const std::string content = MakeQuotes(Never).substr(0, nxCsvBlock::Size + 100);
    const nxNamedPipe pipe(content);
    _paths = {pipe.GetPath()};
    nxFeedAhead feed(_options);
    Open(feed);
    // All that stand in a whole block; the writer keeps its end open.
    const auto rows = std::count(content.begin(), content.begin() + nxCsvBlock::Size, '\n') - 1;
    for (long row = 0; row < rows; ++row)
        ASSERT_NE(feed.Next(), nullptr);
}

}  // namespace
