#include "host/feed/nxCsvReader.h"

#include <gtest/gtest.h>

#include "tests/host/nxFeedFixture.h"
#include "tests/host/nxNamedPipe.h"

namespace {

// Rows that fill that many blocks, one in a thousand of them a bad one.
std::string MakeRows(std::size_t blocks)
{
    std::string content = "time,product,bid\n";
    for (unsigned int row = 1; content.size() < blocks * nxCsvBlock::Size; ++row)
        content += std::to_string(row) + (row % 1000 == 0 ? ",A,bad\n" : ",\"A,\"\"B\"\"\",5.25\n");
    return content;
}

void ReadRowsOfManyBlocks(bool readsAhead, bool parsesInTurn = false)
{
    const nxFeedFile file(CompressGzip(MakeRows(9)));
    nxCsvReader reader(file.GetPath(), nullptr, {}, readsAhead);
    ASSERT_TRUE(reader.Open());
    if (parsesInTurn) reader.ParseInTurnIfEasy();
    unsigned long long line = 1;
    for (nxCsvReader::Result result; (result = reader.Next()) != nxCsvReader::Result::End;) {
        const unsigned long long row = line++;
        const nxCsvRow& read = reader.GetRow();
        ASSERT_EQ(read.line, line);
        ASSERT_EQ(result, row % 1000 == 0 ? nxCsvReader::Result::Bad : nxCsvReader::Result::Row);
        if (result == nxCsvReader::Result::Bad) {
            ASSERT_EQ(reader.GetError().line, line);
        } else {
            ASSERT_EQ(read.product, "A,\"B\"");
            ASSERT_EQ(reader.MakeError("bid", "x").column, std::to_string(row).size() + 12);
        }
    }
    EXPECT_GT(line, 90'000u);
    EXPECT_EQ(reader.GetBytesConsumed(), reader.GetBytesTotal());
    EXPECT_EQ(reader.Next(), nxCsvReader::Result::End);
}

}  // namespace

TEST(nxCsvReaderThread, RowsOfManyBlocksComeInOrderWithTheirPlaces)
{
    ReadRowsOfManyBlocks(true);
}

TEST(nxCsvReaderThread, WithoutAThreadOrWithOneThatUnpacksTheyComeAllTheSame)
{
    ReadRowsOfManyBlocks(false);
    ReadRowsOfManyBlocks(true, true);
}

TEST(nxCsvReaderThread, AReaderGoesWhileItsThreadsReadOrWait)
{
    const std::string text = MakeRows(20);
    for (const std::string& content : {text, CompressGzip(text)}) {
        const nxFeedFile file(content);
        for (const unsigned int rows : {1u, 20'000u, 60'000u}) {
            nxCsvReader reader(file.GetPath());
            ASSERT_TRUE(reader.Open());
            if (rows > 20'000) reader.ParseInTurnIfEasy();
            for (unsigned int i = 0; i < rows; ++i)
                ASSERT_NE(reader.Next(), nxCsvReader::Result::Failed);
        }
    }
}

TEST(nxCsvReaderThread, WaitingForAPipeEndsWhenInterruptedOrLeft)
{
    const std::string content = MakeRows(1);
    for (const bool isInterrupted : {true, false}) {
        nxNamedPipe pipe(content);
        std::atomic<bool> interrupted = false;
        nxCsvReader reader(pipe.GetPath(), &interrupted);
        ASSERT_TRUE(reader.Open());
        const std::size_t first = reader.GetFirstRows().size();
        for (std::size_t i = 0; i < first; ++i)
            ASSERT_NE(reader.Next(), nxCsvReader::Result::Failed);
        pipe.WaitUntilEmpty();
        if (!isInterrupted) continue;
        interrupted = true;
        nxCsvReader::Result result = reader.Next();
        while (result == nxCsvReader::Result::Row || result == nxCsvReader::Result::Bad)
            result = reader.Next();
        EXPECT_EQ(result, nxCsvReader::Result::Failed);
        EXPECT_EQ(reader.GetError().reason.substr(0, 12), "interrupted;");
    }
}
