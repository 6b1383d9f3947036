#pragma once

#include <cstddef>
#include <memory>
#include <string>

// Unpacks a compressed file piece by piece: gzip, zstd, xz, bzip2, and a zip that holds one file. Owned by an
// nxInputStream, used by one thread at a time. Nothing here throws but for want of memory.
class nxDecoder
{
public:
    static constexpr std::size_t MagicSize = 4;  // bytes that Make looks at

    // For a file that begins with these bytes; null: it is none of these.
    [[nodiscard]] static std::unique_ptr<nxDecoder> Make(const char* begin, std::size_t size);

    virtual ~nxDecoder() = default;

    // Takes compressed bytes from [in, inEnd) and puts plain ones to [out, outEnd), moving both starts.
    // False: `failure` tells why.
    virtual bool Decode(const char*& in, const char* inEnd, char*& out, char* outEnd,
                        std::string& failure) = 0;
    // Whether the data may end here.
    [[nodiscard]] virtual bool IsComplete() const = 0;
    [[nodiscard]] virtual const char* GetName() const = 0;
    // Of the file within, once its first byte was handed out; empty where it has none.
    [[nodiscard]] virtual std::string GetEntryName() const { return {}; }
};
