#include "host/feed/nxInputStream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

constexpr std::size_t InputSize = 128 * 1024;

std::string GetSystemText(int error)
{
    return std::generic_category().message(error);
}

}  // namespace

// Takes compressed bytes from [in, inEnd) and puts plain ones to [out, outEnd), moving both starts.
class nxInputStream::Decoder
{
public:
    virtual ~Decoder() = default;
    virtual bool Decode(const char*& in, const char* inEnd, char*& out, char* outEnd,
                        std::string& failure) = 0;
    // Whether the data may end here.
    [[nodiscard]] virtual bool IsComplete() const = 0;
    [[nodiscard]] virtual const char* GetName() const = 0;
};

class nxInputStream::GzipDecoder final : public Decoder
{
public:
    GzipDecoder() { _ready = inflateInit2(&_stream, MAX_WBITS + 16) == Z_OK; }
    ~GzipDecoder() override { inflateEnd(&_stream); }
    GzipDecoder(const GzipDecoder&) = delete;
    GzipDecoder& operator=(const GzipDecoder&) = delete;

    bool Decode(const char*& in, const char* inEnd, char*& out, char* outEnd, std::string& failure) override
    {
        if (_complete) {
            // Between the members, and behind the last one, tape-minded writers pad with zeros.
            while (in != inEnd && *in == 0)
                ++in;
            if (in == inEnd) return true;
            _complete = false;
            inflateReset(&_stream);
        }
        _stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in));
        _stream.avail_in = static_cast<uInt>(inEnd - in);
        _stream.next_out = reinterpret_cast<Bytef*>(out);
        _stream.avail_out = static_cast<uInt>(outEnd - out);
        const int result = _ready ? inflate(&_stream, Z_NO_FLUSH) : Z_MEM_ERROR;
        in = inEnd - _stream.avail_in;
        out = outEnd - _stream.avail_out;
        _complete = result == Z_STREAM_END;
        if (_complete || result == Z_OK || result == Z_BUF_ERROR) return true;
        failure =
            std::string("damaged gzip data: ") + (_stream.msg != nullptr ? _stream.msg : zError(result));
        return false;
    }

    [[nodiscard]] bool IsComplete() const override { return _complete; }
    [[nodiscard]] const char* GetName() const override { return "gzip"; }

private:
    z_stream _stream{};
    bool _ready = false;
    bool _complete = false;
};

class nxInputStream::ZstdDecoder final : public Decoder
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

nxInputStream::nxInputStream(std::function<bool()> givesUp) : _givesUp(std::move(givesUp)) {}

nxInputStream::~nxInputStream()
{
    if (_file > STDIN_FILENO) close(_file);
}

bool nxInputStream::Open(const std::string& path, const char* content)
{
    _file = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    if (_file < 0 || fstat(_file, &status) != 0) {
        _failure = "cannot open: " + GetSystemText(errno);
        return false;
    }
    if (S_ISDIR(status.st_mode)) {
        _failure = std::string("is a directory, not a ") + content;
        return false;
    }
    _mayHaveToWait = !S_ISREG(status.st_mode);
    if (!_mayHaveToWait) _bytesTotal = static_cast<unsigned long long>(status.st_size);
    _input.resize(InputSize);
    // A pipe may hand out the first bytes one by one; the magic number needs four.
    while (!_inputOver && _inputEnd < 4) {
        if (!_FillInput()) return false;
    }
    const auto startsWith = [this](const char* magic, std::size_t size) {
        return _inputEnd >= size && std::memcmp(_input.data(), magic, size) == 0;
    };
    if (startsWith("\x1F\x8B", 2)) _decoder = std::make_unique<GzipDecoder>();
    if (startsWith("\x28\xB5\x2F\xFD", 4)) _decoder = std::make_unique<ZstdDecoder>();
    return true;
}

std::optional<std::string> nxInputStream::ReadWhole(const std::string& path, const char* content,
                                                    std::string& text)
{
    nxInputStream stream;
    if (!stream.Open(path, content)) return stream._failure;
    std::vector<char> buffer(InputSize);
    for (;;) {
        const long long count = stream.Read(buffer.data(), buffer.size());
        if (count < 0) return stream._failure;
        if (count == 0) return std::nullopt;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

long long nxInputStream::Read(char* to, std::size_t size)
{
    if (!_failure.empty()) return -1;
    if (!_decoder) {
        if (_inputBegin == _inputEnd) return _inputOver ? 0 : _ReadFile(to, size);
        const std::size_t count = std::min(size, _inputEnd - _inputBegin);
        std::memcpy(to, _input.data() + _inputBegin, count);
        _inputBegin += count;
        return static_cast<long long>(count);
    }
    char* out = to;
    while (out == to) {
        if (_inputBegin == _inputEnd && !_inputOver && !_FillInput()) return -1;
        const char* in = _input.data() + _inputBegin;
        const bool fine = _decoder->Decode(in, _input.data() + _inputEnd, out, to + size, _failure);
        _inputBegin = static_cast<std::size_t>(in - _input.data());
        if (!fine) {
            if (out == to) return -1;
            break;
        }
        if (out == to && _inputOver && _inputBegin == _inputEnd) {
            if (_decoder->IsComplete()) return 0;
            _failure =
                std::string("truncated ") + _decoder->GetName() + " data: the file stops before its end";
            return -1;
        }
    }
    return out - to;
}

// Called with nothing left in the buffer, or at the start to reach the magic number.
bool nxInputStream::_FillInput()
{
    if (_inputBegin == _inputEnd) _inputBegin = _inputEnd = 0;
    const long long count = _ReadFile(_input.data() + _inputEnd, _input.size() - _inputEnd);
    if (count < 0) return false;
    _inputEnd += static_cast<std::size_t>(count);
    return true;
}

// False: given up.
bool nxInputStream::_WaitForBytes()
{
    constexpr int interval = 50;  // milliseconds
    pollfd file{_file, POLLIN, 0};
    // An error of poll is left to the read, which tells it better.
    for (int ready = 0; ready == 0 || (ready < 0 && errno == EINTR);) {
        if (_givesUp && _givesUp()) {
            _failure = "interrupted";
            return false;
        }
        ready = poll(&file, 1, interval);
    }
    return true;
}

long long nxInputStream::_ReadFile(char* to, std::size_t size)
{
    if (_mayHaveToWait && !_WaitForBytes()) return -1;
    ssize_t count = 0;
    do
        count = read(_file, to, size);
    while (count < 0 && errno == EINTR);
    if (count < 0)
        _failure = "cannot read: " + GetSystemText(errno);
    else if (count == 0)
        _inputOver = true;
    else
        _bytesRead += static_cast<unsigned long long>(count);
    return count;
}
