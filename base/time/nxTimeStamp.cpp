#include "base/time/nxTimeStamp.h"

#include "base/time/nxTimeSource.h"

nxTimeStamp::nxTimeStamp() : nxTimeStamp(nxTimeSource::Now()) {}

nxTimeStamp nxTimeStamp::FromNanoseconds(long long sinceEpoch)
{
    long long seconds = sinceEpoch / nxTime::NanosecondsPerSecond;
    long long rest = sinceEpoch % nxTime::NanosecondsPerSecond;
    if (rest < 0) {
        rest += nxTime::NanosecondsPerSecond;
        --seconds;
    }
    return {seconds, static_cast<unsigned int>(rest)};
}

std::string nxTimeStamp::GetAsString() const
{
    std::string text = _time.GetAsString();
    if (text.empty()) return text;
    text.append(".000000000");
    unsigned int rest = _nanoseconds;
    for (std::size_t i = text.size() - 1; rest != 0; --i, rest /= 10)
        text[i] = static_cast<char>('0' + rest % 10);
    return text;
}
