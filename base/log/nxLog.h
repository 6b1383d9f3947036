#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxLogLevelEnum.h"
#include "base/time/nxDateTime.h"
#include "base/time/nxTimeStamp.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"

// A text of known length; it need not end in a zero.
struct nxLogCharLenPair
{
    const char* text = nullptr;
    unsigned long long length = 0;
};

// One line of the log, built on the stack of the thread that writes it. Ask nxLogManager::ShouldLog first,
// stream the parts, end with an nxLogTerminator; what is streamed after that is dropped. The destructor hands
// the line, ended or not, to the entries queue. A log must not outlive the text of its source file name,
// which is a literal.
class nxLog
{
public:
    // Marks the end of the line.
    struct nxLogTerminator
    {
    };
    // The user a line is meant for; null for nobody in particular.
    struct nxLogDestinationUserID
    {
        nxVolume userID;
    };
    // The user a line is meant for and the application it comes from.
    struct nxLogSourceApplicationDestUserID
    {
        nxVolume userID;
        std::string sourceApplication;
    };

    // The time stamp is that of nxTimeSource now.
    nxLog(const nxLogLevelEnum& level, const char* sourceFile, unsigned int lineNumber);
    ~nxLog();
    nxLog(const nxLog&) = delete;
    nxLog& operator=(const nxLog&) = delete;

    nxLog& operator<<(std::string_view text);
    nxLog& operator<<(const char* text) { return *this << std::string_view(text); }
    nxLog& operator<<(const std::string& text) { return *this << std::string_view(text); }
    nxLog& operator<<(const nxLogCharLenPair& text)
    {
        return *this << std::string_view(text.text, text.length);
    }
    nxLog& operator<<(int value);
    nxLog& operator<<(unsigned int value);
    nxLog& operator<<(long value) { return *this << static_cast<long long>(value); }
    nxLog& operator<<(unsigned long value) { return *this << static_cast<unsigned long long>(value); }
    nxLog& operator<<(long long value);
    nxLog& operator<<(unsigned long long value);
    nxLog& operator<<(double value);
    // "true" or "false".
    nxLog& operator<<(bool value);
    nxLog& operator<<(const nxDateTime& value);
    nxLog& operator<<(const nxTimeStamp& value);
    // The name.
    nxLog& operator<<(const nxEnum& value);
    // The code and its long description.
    nxLog& operator<<(const nxErrorEnum& error);
    // As GetAsLogString gives it.
    nxLog& operator<<(const nxDecimal& value);
    template <class T, long long nullValue, long long noChangeValue>
    nxLog& operator<<(const nxValueWrapper<T, nullValue, noChangeValue>& value)
    {
        return *this << value.GetAsLogString();
    }
    nxLog& operator<<(const nxLogDestinationUserID& destination);
    nxLog& operator<<(const nxLogSourceApplicationDestUserID& destination);
    void operator<<(const nxLogTerminator&) { _ended = true; }

    const nxLogLevelEnum& GetLogLevel() const { return _level; }
    const char* GetSourceFile() const { return _sourceFile; }
    unsigned int GetLineNumber() const { return _lineNumber; }
    const nxTimeStamp& GetTimeStamp() const { return _timeStamp; }
    // The line so far, good until more is streamed.
    std::string_view GetLogEntry() const { return {_entry.data(), _entry.size()}; }
    const nxVolume& GetDestinationUserID() const { return _destinationUserID; }
    const std::string& GetSourceApplication() const { return _sourceApplication; }

private:
    const nxLogLevelEnum _level;
    const char* const _sourceFile;
    const unsigned int _lineNumber;
    const nxTimeStamp _timeStamp;
    nxVolume _destinationUserID;
    std::string _sourceApplication;
    fmt::memory_buffer _entry;
    bool _ended = false;
};
