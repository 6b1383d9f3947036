#include "base/log/nxLog.h"

#include "base/log/nxLogEntriesQueue.h"
#include "base/log/nxLogManager.h"
#include "base/time/nxTimeSource.h"
#include "base/values/nxStringHelper.h"

nxLog::nxLog(const nxLogLevelEnum& level, const char* sourceFile, unsigned int lineNumber)
    : _level(level), _sourceFile(sourceFile), _lineNumber(lineNumber), _timeStamp(nxTimeSource::Now())
{
}

nxLog::~nxLog()
{
    nxLogManager::GetLogEntriesQueue().Push(*this);
}

nxLog& nxLog::operator<<(std::string_view text)
{
    if (!_ended) _entry.append(text.data(), text.data() + text.size());
    return *this;
}

nxLog& nxLog::operator<<(int value)
{
    return *this << static_cast<long long>(value);
}

nxLog& nxLog::operator<<(unsigned int value)
{
    return *this << static_cast<unsigned long long>(value);
}

nxLog& nxLog::operator<<(long long value)
{
    const fmt::format_int text(value);
    return *this << std::string_view(text.data(), text.size());
}

nxLog& nxLog::operator<<(unsigned long long value)
{
    const fmt::format_int text(value);
    return *this << std::string_view(text.data(), text.size());
}

nxLog& nxLog::operator<<(double value)
{
    return *this << nxStringHelper::GetAsString(value);
}

nxLog& nxLog::operator<<(bool value)
{
    return *this << (value ? "true" : "false");
}

nxLog& nxLog::operator<<(const nxDateTime& value)
{
    if (value.IsNull()) return *this << nxNullText;
    if (value.IsNoChange()) return *this << nxNoChangeText;
    return *this << value.GetAsString();
}

nxLog& nxLog::operator<<(const nxTimeStamp& value)
{
    return *this << value.GetAsString();
}

nxLog& nxLog::operator<<(const nxEnum& value)
{
    return *this << value.GetAsString();
}

nxLog& nxLog::operator<<(const nxErrorEnum& error)
{
    return *this << error.GetValue() << " " << error.GetLongDescription();
}

nxLog& nxLog::operator<<(const nxDecimal& value)
{
    return *this << value.GetAsLogString();
}

nxLog& nxLog::operator<<(const nxLogDestinationUserID& destination)
{
    _destinationUserID = destination.userID;
    return *this;
}

nxLog& nxLog::operator<<(const nxLogSourceApplicationDestUserID& destination)
{
    _destinationUserID = destination.userID;
    _sourceApplication = destination.sourceApplication;
    return *this;
}
