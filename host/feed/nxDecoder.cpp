#include "host/feed/nxDecoder.h"

#include <bzlib.h>
#include <lzma.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <cstring>

#include "host/feed/nxZipDecoder.h"

namespace {

// What the libraries of several compressed parts in a row have in common: when one part is over, the next
// begins, and zeros between them and at the end, as tape-minded writers pad, are passed over.
template <class Library>
class PartsDecoder final : public nxDecoder
{
public:
    bool Decode(const char*& in, const char* inEnd, char*& out, char* outEnd, std::string& failure) override
    {
        if (_isComplete) {
            while (in != inEnd && *in == 0)
                ++in;
            if (in == inEnd) return true;
            _isComplete = false;
            _library.Begin();
        }
        auto& stream = _library.stream;
        stream.next_in = reinterpret_cast<decltype(stream.next_in)>(const_cast<char*>(in));
        stream.avail_in = static_cast<decltype(stream.avail_in)>(inEnd - in);
        stream.next_out = reinterpret_cast<decltype(stream.next_out)>(out);
        stream.avail_out = static_cast<decltype(stream.avail_out)>(outEnd - out);
        const char* const reason = _library.Step(_isComplete);
        in = inEnd - stream.avail_in;
        out = outEnd - stream.avail_out;
        if (reason == nullptr) return true;
        failure = std::string("damaged ") + Library::Name + " data: " + reason;
        return false;
    }

    [[nodiscard]] bool IsComplete() const override { return _isComplete; }
    [[nodiscard]] const char* GetName() const override { return Library::Name; }

private:
    Library _library;
    bool _isComplete = false;
};

struct Gzip
{
    static constexpr const char* Name = "gzip";
    Gzip() : isReady(inflateInit2(&stream, MAX_WBITS + 16) == Z_OK) {}
    ~Gzip() { inflateEnd(&stream); }
    Gzip(const Gzip&) = delete;
    Gzip& operator=(const Gzip&) = delete;

    void Begin() { inflateReset(&stream); }
    const char* Step(bool& isOver)
    {
        const int result = isReady ? inflate(&stream, Z_NO_FLUSH) : Z_MEM_ERROR;
        isOver = result == Z_STREAM_END;
        if (isOver || result == Z_OK || result == Z_BUF_ERROR) return nullptr;
        return stream.msg != nullptr ? stream.msg : zError(result);
    }

    z_stream stream{};
    bool isReady;
};

struct Bzip2
{
    static constexpr const char* Name = "bzip2";
    Bzip2() { Open(); }
    ~Bzip2() { BZ2_bzDecompressEnd(&stream); }
    Bzip2(const Bzip2&) = delete;
    Bzip2& operator=(const Bzip2&) = delete;

    void Begin()
    {
        BZ2_bzDecompressEnd(&stream);
        stream = {};
        Open();
    }
    void Open() { isReady = BZ2_bzDecompressInit(&stream, 0, 0) == BZ_OK; }
    const char* Step(bool& isOver)
    {
        const int result = isReady ? BZ2_bzDecompress(&stream) : BZ_MEM_ERROR;
        isOver = result == BZ_STREAM_END;
        if (isOver || result == BZ_OK) return nullptr;
        return result == BZ_MEM_ERROR ? "no memory" : "its checksum or its form is wrong";
    }

    bz_stream stream{};
    bool isReady = false;
};

struct Xz
{
    static constexpr const char* Name = "xz";
    Xz() { Begin(); }
    ~Xz() { lzma_end(&stream); }
    Xz(const Xz&) = delete;
    Xz& operator=(const Xz&) = delete;

    void Begin() { isReady = lzma_stream_decoder(&stream, UINT64_MAX, 0) == LZMA_OK; }
    const char* Step(bool& isOver)
    {
        const lzma_ret result = isReady ? lzma_code(&stream, LZMA_RUN) : LZMA_MEM_ERROR;
        isOver = result == LZMA_STREAM_END;
        if (isOver || result == LZMA_OK || result == LZMA_BUF_ERROR) return nullptr;
        return result == LZMA_MEM_ERROR ? "no memory" : "its checksum or its form is wrong";
    }

    lzma_stream stream = LZMA_STREAM_INIT;
    bool isReady = false;
};

class ZstdDecoder final : public nxDecoder
{
public:
    bool Decode(const char*& in, const char* inEnd, char*& out, char* outEnd, std::string& failure) override
    {
        if (_complete && in == inEnd) return true;  // an empty call would begin a further frame
        ZSTD_inBuffer input{in, static_cast<std::size_t>(inEnd - in), 0};
        ZSTD_outBuffer output{out, static_cast<std::size_t>(outEnd - out), 0};
        const std::size_t result = ZSTD_decompressStream(_stream.get(), &output, &input);
        in += input.pos;
        out += output.pos;
        _complete = result == 0;
        if (ZSTD_isError(result) == 0) return true;
        failure = std::string("damaged zstd data: ") + ZSTD_getErrorName(result);
        return false;
    }

    [[nodiscard]] bool IsComplete() const override { return _complete; }
    [[nodiscard]] const char* GetName() const override { return "zstd"; }

private:
    struct Free
    {
        void operator()(ZSTD_DStream* stream) const { ZSTD_freeDStream(stream); }
    };

    std::unique_ptr<ZSTD_DStream, Free> _stream{ZSTD_createDStream()};
    bool _complete = false;
};

}  // namespace

std::unique_ptr<nxDecoder> nxDecoder::Make(const char* begin, std::size_t size)
{
    const auto startsWith = [=](std::string_view magic) {
        return size >= magic.size() && std::memcmp(begin, magic.data(), magic.size()) == 0;
    };
    if (startsWith("\x1F\x8B")) return std::make_unique<PartsDecoder<Gzip>>();
    if (startsWith("\x28\xB5\x2F\xFD")) return std::make_unique<ZstdDecoder>();
    if (startsWith("\xFD"
                   "7zX"))
        return std::make_unique<PartsDecoder<Xz>>();
    if (startsWith("BZh")) return std::make_unique<PartsDecoder<Bzip2>>();
    if (startsWith("PK\x03\x04")) return std::make_unique<nxZipDecoder>();
    return nullptr;
}
