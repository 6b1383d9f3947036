#include "host/feed/nxFeed.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

#include "tests/host/nxFeedFixture.h"
#include "tests/support/nxRowFile.h"

namespace {

const std::string Header = "time,product,last,lastVolume\n";

// Rows of one product with these times; the volume counts them.
std::string MakeRows(const char* product, const std::vector<int>& times)
{
    std::string text = Header;
    unsigned int count = 0;
    for (const int time : times)
        text += std::to_string(time) + "," + product + ",1," + std::to_string(++count) + "\n";
    return text;
}

std::string ReadOne(const std::string& content, std::string* badEnd = nullptr)
{
    const nxFeedFile file(content);
    nxFeed feed;
    if (!feed.Open({file.GetPath()})) return file.Hide(feed.GetError().GetText());
    const std::string text = ReadAll(feed);
    if (badEnd != nullptr) *badEnd = file.Hide(feed.GetError().GetText());
    return text;
}

TEST(nxFeedTest, FilesAreMergedByTimeTheEarlierNamedFirst)
{
    nxExpectRows("host/reader.txt", [](const std::string& row) {
        std::vector<std::vector<int>> times(1);
        for (const std::string& word : nxGetWords(row)) {
            if (word == "/") {
                times.emplace_back();
            } else {
                times.back().push_back(std::stoi(word));
            }
        }
        std::vector<std::unique_ptr<nxFeedFile>> files;
        std::vector<std::string> paths;
        for (const auto& ofFile : times)
            paths.push_back(
                files.emplace_back(std::make_unique<nxFeedFile>(MakeRows("A", ofFile)))->GetPath());
        nxFeed feed;
        EXPECT_TRUE(feed.Open(paths));
        std::string order;
        while (const nxFeedEvent* event = feed.Next())
            order += static_cast<char>('a' + event->file) + event->quote.lastVolume.GetAsString() + " ";
        EXPECT_EQ(feed.Next(), nullptr);
        EXPECT_FALSE(feed.HasFailed());
        return order;
    });
}

TEST(nxFeedTest, AnErrorInOneFileEndsTheFeedAfterWhatCameBefore)
{
    const nxFeedFile good(MakeRows("A", {1, 2, 5}));
    const nxFeedFile bad(MakeRows("B", {1, 3}) + "4,B,x,1\n");
    nxFeed feed;
    ASSERT_TRUE(feed.Open({good.GetPath(), bad.GetPath()}));
    EXPECT_EQ(bad.Hide(ReadAll(feed)),
              "1000000000 A last 1 x1 side unknown\n1000000000 B last 1 x1 side unknown\n"
              "2000000000 A last 1 x2 side unknown\n3000000000 B last 1 x2 side unknown\n"
              "FILE:4:5: last: not a number: \"x\"\n");
    EXPECT_EQ(feed.Next(), nullptr);
}

TEST(nxFeedTest, DescribedProductsComeFirstAndKeepTheirTickSize)
{
    const nxFeedFile file("time,product,last\n1,A,1.5\n1,B,1.25\n");
    nxFeedProductTerms described;
    described.name = "B";
    described.tickSize = nxDecimal::FromMantissa(25, 2);
    nxFeed feed;
    ASSERT_TRUE(feed.Open({file.GetPath()}, {described}));
    ASSERT_EQ(feed.GetProducts().GetCount(), 2u);
    EXPECT_EQ(feed.GetProducts().Get(0).GetName(), "B");
    EXPECT_EQ(feed.GetProducts().Get(0).GetTickSize().GetAsString(), "0.25");
    EXPECT_EQ(feed.GetProducts().Get(1).GetTickSize().GetAsString(), "0.1");
    EXPECT_EQ(feed.GetProducts().Find("C"), nullptr);
}

TEST(nxFeedTest, AFileWithoutRowsOrWithoutAnEndIsRemarked)
{
    const std::string whole = MakeRows("A", {1});
    std::string large = MakeRows("C", {1});
    while (large.size() < 3 * nxCsvBlock::Size)
        large += large.substr(large.find('\n') + 1);
    const nxFeedFile full(whole), empty(Header), cut("time,product,last\n1,B,1"),
        largeCut(large.substr(0, large.size() - 1));
    nxFeed feed;
    ASSERT_TRUE(feed.Open({full.GetPath(), empty.GetPath(), cut.GetPath(), largeCut.GetPath()}));
    ReadAll(feed);
    const char* const cutText = "FILE: the last line has no end; the file may be cut";
    ASSERT_EQ(feed.GetRemarks().size(), 3u);
    EXPECT_EQ(empty.Hide(feed.GetRemarks()[0]), "FILE: no rows");
    EXPECT_EQ(cut.Hide(feed.GetRemarks()[1]), cutText);
    EXPECT_EQ(largeCut.Hide(feed.GetRemarks()[2]), cutText);
}

TEST(nxFeedTest, RowsThatTwoFilesHoldAreRemarked)
{
    const std::map<std::string, std::pair<std::string, std::string>> kinds = {
        {"bars", {"time,product,open,high,low,close,volume\n", ",1,1,1,1,1\n"}},
        {"quotes", {"time,product,bid,bidVolume\n", ",1,1\n"}},
        {"trades", {Header, ",1,1\n"}}};
    nxExpectRows("host/reader.txt", [&](const std::string& row) {
        std::string files[2];
        std::string* content = files;
        const std::pair<std::string, std::string>* kind = nullptr;
        for (const std::string& word : nxGetWords(row)) {
            if (const auto named = kinds.find(word); named != kinds.end()) {
                kind = &named->second;
                *content = kind->first;
            } else if (word == "/") {
                ++content;
            } else {
                *content += word.substr(0, 1) + "," + word.substr(1) + kind->second;
            }
        }
        const nxFeedFile first(files[0]), second(files[1]);
        nxFeed feed;
        EXPECT_TRUE(feed.Open({first.GetPath(), second.GetPath()}));
        ReadAll(feed);
        std::string remarks;
        for (std::string remark : feed.GetRemarks()) {
            if (remark.find("among") == remark.npos) continue;
            remark.replace(remark.find(first.GetPath()), first.GetPath().size(), "a");
            remarks += remark.replace(remark.find(second.GetPath()), second.GetPath().size(), "b") + "\n";
        }
        return remarks;
    });
}

// Long enough for several buffers, and not too easy to compress.
std::string MakeLongFile()
{
    std::string text = Header;
    unsigned int number = 1;
    for (unsigned int i = 0; i < 15000; ++i) {
        number = number * 1103515245 + 12345;
        text += std::to_string(1'700'000'000 + i) + ",A," + std::to_string(number % 100000) + ".5," +
                std::to_string(number % 97) + "\n";
    }
    return text;
}

TEST(nxFeedTest, CompressedFilesReadAsPlainOnes)
{
    const std::string text = MakeLongFile();
    const std::string plain = ReadOne(text);
    const std::string front = text.substr(0, 300'001);
    const std::string rest = text.substr(300'001);
    const std::pair<const char*, std::string> rows[] = {
        {"gzip of several members", CompressGzip(front) + CompressGzip("") + CompressGzip(rest)},
        {"gzip padded with zeros", CompressGzip(text) + std::string(512, '\0')},
        {"zstd of several frames", CompressZstd(front) + CompressZstd("") + CompressZstd(rest)},
    };
    for (const auto& [name, content] : rows) {
        SCOPED_TRACE(name);
        std::string end = "not read";
        EXPECT_TRUE(ReadOne(content, &end) == plain);
        EXPECT_EQ(end, nxFeedError().GetText());
    }
}

TEST(nxFeedTest, TruncatedCompressedFilesAreReadAsFarAsTheyGo)
{
    const std::string text = MakeLongFile();
    const std::string plain = ReadOne(text);
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"gzip, second member", CompressGzip(text.substr(0, 300'001)) + CompressGzip(text.substr(300'001)),
         "truncated gzip data: the file stops before its end"},
        {"zstd", CompressZstd(text), "truncated zstd data: the file stops before its end"},
    };
    for (const auto& [name, content, reason] : rows) {
        for (const std::size_t size : {content.size() * 3 / 4, content.size() - 1}) {
            SCOPED_TRACE(name + (" " + std::to_string(size)));
            std::string end;
            std::string events = ReadOne(content.substr(0, size), &end);
            events.resize(events.rfind('\n', events.size() - 2) + 1);  // the error's line
            EXPECT_FALSE(events.empty());
            EXPECT_TRUE(plain.starts_with(events));
            const std::string lines = std::to_string(1 + std::ranges::count(events, '\n'));
            EXPECT_EQ(end, "FILE:" + lines + ": " + reason + "; line " + lines + " is the last whole one");
        }
        EXPECT_EQ(ReadOne(content.substr(0, 4)), "FILE: " + reason);
    }
}

TEST(nxFeedTest, DamagedCompressedFilesAreTold)
{
    std::string gzip = CompressGzip(MakeRows("A", {1, 2}));
    gzip[gzip.size() - 6] ^= 1;  // within the checksum
    std::string zstd = CompressZstd(MakeRows("A", {1, 2}));
    zstd[5] = '\xFF';
    std::string end;
    ReadOne(gzip, &end);
    EXPECT_EQ(end, "FILE:3: damaged gzip data: incorrect data check; line 3 is the last whole one");
    EXPECT_THAT(ReadOne(zstd), testing::StartsWith("FILE: damaged zstd data: "));
}

TEST(nxFeedTest, ProgressCountsTheBytesOnTheDisk)
{
    const std::string packed = CompressGzip(MakeLongFile());
    const nxFeedFile first(packed);
    const nxFeedFile second(MakeRows("B", {1}));
    const unsigned long long total = packed.size() + MakeRows("B", {1}).size();
    nxFeed feed;
    ASSERT_TRUE(feed.Open({first.GetPath(), second.GetPath()}));
    EXPECT_EQ(feed.GetBytesTotal(), total);
    unsigned long long last = feed.GetBytesConsumed();
    EXPECT_LT(last, total);
    while (feed.Next() != nullptr) {
        EXPECT_GE(feed.GetBytesConsumed(), last);
        last = feed.GetBytesConsumed();
    }
    EXPECT_EQ(last, total);
}

}  // namespace
