#pragma once

#include <functional>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

#include "base/log/nxLogDevice.h"

// What a debugged run prints: gathered, and handed on with its place in all that it has printed there. A copy
// of the process goes on counting where it was made, so who shows it can leave out what has been shown.
class nxDebugOutput : private std::streambuf
{
public:
    using Take = std::function<void(unsigned long long place, const std::string& text)>;

    explicit nxDebugOutput(Take take) : _take(std::move(take)) {}

    std::ostream& GetStream() { return _stream; }
    unsigned long long GetPlace() const { return _place + _text.size(); }
    void Write(std::string_view text);
    void HandOn();

private:
    std::streamsize xsputn(const char* bytes, std::streamsize size) override;
    int_type overflow(int_type character) override;

    const Take _take;
    unsigned long long _place = 0;  // of what was handed on
    std::string _text;
    std::ostream _stream{this};
};

// The library's log among what a run prints to standard error.
class nxDebugLogDevice : public nxLogDevice
{
public:
    explicit nxDebugLogDevice(nxDebugOutput& output) : _output(output) {}

    nxErrorEnum Destroy() override { return {}; }
    void Write(const nxLog& log) override;
    void Flush() override {}

private:
    nxDebugOutput& _output;
};
