#pragma once

#include <zlib.h>

#include "host/feed/nxDecoder.h"

// A zip of one file, read front to back, so that a pipe serves as well: folders in front of the file are
// passed over, a second file is refused, and the directory at the end is not needed. Plain and deflated
// entries, not encrypted ones. As nxDecoder.
class nxZipDecoder final : public nxDecoder
{
public:
    nxZipDecoder();
    ~nxZipDecoder() override;
    nxZipDecoder(const nxZipDecoder&) = delete;
    nxZipDecoder& operator=(const nxZipDecoder&) = delete;

    bool Decode(const char*& in, const char* inEnd, char*& out, char* outEnd, std::string& failure) override;
    [[nodiscard]] bool IsComplete() const override { return _state == State::Over; }
    [[nodiscard]] const char* GetName() const override { return "zip"; }
    [[nodiscard]] std::string GetEntryName() const override { return _name; }

private:
    enum class State { Header, Stored, Deflated, Descriptor, Over };

    bool _Gather(const char*& in, const char* inEnd, std::size_t size);
    unsigned long long _Get(std::size_t at, std::size_t bytes) const;
    const char* _ReadHeader(const char*& in, const char* inEnd);
    const char* _BeginEntry();
    const char* _CopyStored(const char*& in, const char* inEnd, char*& out, char* outEnd);
    const char* _Inflate(const char*& in, const char* inEnd, char*& out, char* outEnd);
    const char* _ReadDescriptor(const char*& in, const char* inEnd);
    const char* _EndEntry();

    State _state = State::Header;
    std::string _head;  // what of a header has come
    std::string _name;
    bool _hasFile = false;
    bool _hasDescriptor = false;   // the sum of the entry stands after it
    unsigned long long _left = 0;  // of a stored entry
    unsigned long _wantedSum = 0;
    unsigned long _sum = 0;
    z_stream _stream{};
    bool _isReady;
};
