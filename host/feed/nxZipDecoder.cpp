#include "host/feed/nxZipDecoder.h"

#include <algorithm>

namespace {

constexpr std::size_t HeaderSize = 30;
constexpr unsigned long LocalHeader = 0x04034B50, Descriptor = 0x08074B50;

}  // namespace

nxZipDecoder::nxZipDecoder() : _isReady(inflateInit2(&_stream, -MAX_WBITS) == Z_OK) {}

nxZipDecoder::~nxZipDecoder()
{
    inflateEnd(&_stream);
}

bool nxZipDecoder::Decode(const char*& in, const char* inEnd, char*& out, char* outEnd, std::string& failure)
{
    const char* reason = nullptr;
    while (reason == nullptr && in != inEnd && out != outEnd && _state != State::Over) {
        switch (_state) {
            case State::Header:
                reason = _ReadHeader(in, inEnd);
                break;
            case State::Stored:
                reason = _CopyStored(in, inEnd, out, outEnd);
                break;
            case State::Deflated:
                reason = _Inflate(in, inEnd, out, outEnd);
                break;
            case State::Descriptor:
                reason = _ReadDescriptor(in, inEnd);
                break;
            case State::Over:
                break;
        }
    }
    if (_state == State::Over) in = inEnd;  // the directory
    if (reason != nullptr) failure = std::string("zip: ") + reason;
    return reason == nullptr;
}

// True once the head has that many bytes.
bool nxZipDecoder::_Gather(const char*& in, const char* inEnd, std::size_t size)
{
    const std::size_t count =
        std::min(size - std::min(size, _head.size()), static_cast<std::size_t>(inEnd - in));
    _head.append(in, count);
    in += count;
    return _head.size() >= size;
}

unsigned long long nxZipDecoder::_Get(std::size_t at, std::size_t bytes) const
{
    unsigned long long value = 0;
    for (std::size_t i = bytes; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(_head[at + i]);
    return value;
}

const char* nxZipDecoder::_ReadHeader(const char*& in, const char* inEnd)
{
    if (!_Gather(in, inEnd, 4)) return nullptr;
    if (_Get(0, 4) != LocalHeader) {
        if (!_hasFile) return "it holds no file";
        _state = State::Over;
        return nullptr;
    }
    if (!_Gather(in, inEnd, HeaderSize)) return nullptr;
    if (!_Gather(in, inEnd, HeaderSize + _Get(26, 2) + _Get(28, 2))) return nullptr;
    return _BeginEntry();
}

const char* nxZipDecoder::_BeginEntry()
{
    const std::string name = _head.substr(HeaderSize, _Get(26, 2));
    const unsigned long long flags = _Get(6, 2), method = _Get(8, 2), size = _Get(18, 4);
    const bool isFolder = name.ends_with('/');
    if (_hasFile && !isFolder) return "it holds more than one file; unpack it and name the files";
    if ((flags & 1) != 0) return "it is encrypted";
    if (method != 0 && method != Z_DEFLATED) return "its method of compression is not known; pack it anew";
    _hasDescriptor = (flags & 8) != 0;
    if (method == 0 && (_hasDescriptor || size == 0xFFFFFFFF))
        return "a file that is not compressed, without its size in front; unpack it";
    if (!isFolder) {
        _hasFile = true;
        _name = name;
    }
    _wantedSum = static_cast<unsigned long>(_Get(14, 4));
    _sum = 0;
    _left = size;
    _head.clear();
    _state = method == 0 ? State::Stored : State::Deflated;
    if (_state == State::Deflated) inflateReset(&_stream);
    return _state == State::Stored && _left == 0 ? _EndEntry() : nullptr;
}

const char* nxZipDecoder::_CopyStored(const char*& in, const char* inEnd, char*& out, char* outEnd)
{
    const auto count = std::min(
        {_left, static_cast<unsigned long long>(inEnd - in), static_cast<unsigned long long>(outEnd - out)});
    out = std::copy_n(in, count, out);
    _sum = crc32(_sum, reinterpret_cast<const Bytef*>(in), static_cast<uInt>(count));
    in += count;
    _left -= count;
    return _left == 0 ? _EndEntry() : nullptr;
}

const char* nxZipDecoder::_Inflate(const char*& in, const char* inEnd, char*& out, char* outEnd)
{
    _stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in));
    _stream.avail_in = static_cast<uInt>(inEnd - in);
    _stream.next_out = reinterpret_cast<Bytef*>(out);
    _stream.avail_out = static_cast<uInt>(outEnd - out);
    const int result = _isReady ? inflate(&_stream, Z_NO_FLUSH) : Z_MEM_ERROR;
    char* const begin = out;
    in = inEnd - _stream.avail_in;
    out = outEnd - _stream.avail_out;
    _sum = crc32(_sum, reinterpret_cast<const Bytef*>(begin), static_cast<uInt>(out - begin));
    if (result != Z_STREAM_END && result != Z_OK && result != Z_BUF_ERROR)
        return _stream.msg != nullptr ? _stream.msg : zError(result);
    if (result != Z_STREAM_END) return nullptr;
    if (!_hasDescriptor) return _EndEntry();
    _state = State::Descriptor;
    return nullptr;
}

// The sum, with or without a mark in front, then two sizes of four or eight bytes: what follows them tells.
const char* nxZipDecoder::_ReadDescriptor(const char*& in, const char* inEnd)
{
    if (!_Gather(in, inEnd, 4)) return nullptr;
    const std::size_t sumAt = _Get(0, 4) == Descriptor ? 4 : 0;
    if (!_Gather(in, inEnd, sumAt + 4 + 8 + 2)) return nullptr;
    const bool isShort = _head.compare(sumAt + 12, 2, "PK") == 0;
    const std::size_t size = sumAt + 4 + (isShort ? 8 : 16);
    if (!_Gather(in, inEnd, size)) return nullptr;
    _wantedSum = static_cast<unsigned long>(_Get(sumAt, 4));
    const std::string rest = _head.substr(size);
    const char* const reason = _EndEntry();
    _head = rest;
    return reason;
}

const char* nxZipDecoder::_EndEntry()
{
    _state = State::Header;
    _head.clear();
    return _sum == _wantedSum ? nullptr : "its checksum is wrong; the file is damaged";
}
