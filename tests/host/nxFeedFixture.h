#pragma once

#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <string>

#include "host/feed/nxFeed.h"

// A file that lives as long as the test needs it.
class nxFeedFile
{
public:
    explicit nxFeedFile(const std::string& content)
    {
        static std::atomic<unsigned int> count = 0;
        _path = ::testing::TempDir() + "nxFeed_" + std::to_string(getpid()) + "_" + std::to_string(count++) +
                ".csv";
        std::ofstream(_path, std::ios::binary) << content;
    }
    ~nxFeedFile() { std::remove(_path.c_str()); }
    nxFeedFile(const nxFeedFile&) = delete;
    nxFeedFile& operator=(const nxFeedFile&) = delete;

    const std::string& GetPath() const { return _path; }

    // The text without the path wherever it stands.
    std::string Hide(std::string text) const
    {
        for (std::size_t at; (at = text.find(_path)) != std::string::npos;)
            text.replace(at, _path.size(), "FILE");
        return text;
    }

private:
    std::string _path;
};

inline std::string CompressGzip(const std::string& text)
{
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string packed(deflateBound(&stream, text.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

inline std::string CompressZstd(const std::string& text)
{
    std::string packed(ZSTD_compressBound(text.size()), '\0');
    packed.resize(ZSTD_compress(packed.data(), packed.size(), text.data(), text.size(), 3));
    return packed;
}

// An event as a line: what it gives, in the order of the columns; no-change is left out.
inline std::string Show(const nxFeedEvent& event, const nxFeedProductTable& products)
{
    std::string text = std::to_string(event.time) + " " + products.Get(event.product).GetName();
    const auto price = [&text](const char* name, const nxDecimal& value) {
        if (!value.IsNoChange()) text += std::string(" ") + name + value.GetAsLogString();
    };
    const auto volume = [&text](const char* name, const nxVolume& value) {
        if (!value.IsNoChange()) text += name + value.GetAsLogString();
    };
    switch (event.kind) {
        case nxFeedKind::Quote:
            price("bid ", event.quote.bid);
            volume(" x", event.quote.bidVolume);
            price("ask ", event.quote.ask);
            volume(" x", event.quote.askVolume);
            price("last ", event.quote.last);
            volume(" x", event.quote.lastVolume);
            if (event.quote.side == nxBuySell_Buy) text += " BUY";
            if (event.quote.side == nxBuySell_Sell) text += " SELL";
            if (event.quote.side == nxEnum_Undefined) text += " side unknown";
            break;
        case nxFeedKind::Depth:
            for (const nxFeedLevel& level : event.levels) {
                price(level.side == nxSide::Buy ? "bid " : "ask ", level.price);
                volume(" x", level.volume);
            }
            break;
        case nxFeedKind::Bar:
            for (const nxDecimal& value : {event.bar.open, event.bar.high, event.bar.low, event.bar.close})
                price("", value);
            volume(" x", event.bar.volume);
    }
    return text;
}

// All that a feed gives: a line for each event, then a line with the error if there is one.
inline std::string ReadAll(nxFeed& feed)
{
    std::string text;
    while (const nxFeedEvent* event = feed.Next())
        text += Show(*event, feed.GetProducts()) + "\n";
    return text + (feed.HasFailed() ? feed.GetError().GetText() + "\n" : "");
}
