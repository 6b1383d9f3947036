#include "base/time/nxTimeStamp.h"

#include "base/time/nxTimeSource.h"

namespace {

constexpr long long nanosecondsPerSecond = 1000000000;

}  // namespace

nxTimeStamp::nxTimeStamp() : nxTimeStamp(nxTimeSource::Now()) {}

nxTimeStamp nxTimeStamp::FromNanoseconds(long long sinceEpoch)
{
    long long seconds = sinceEpoch / nanosecondsPerSecond;
    long long rest = sinceEpoch % nanosecondsPerSecond;
    if (rest < 0) {
        rest += nanosecondsPerSecond;
        --seconds;
    }
    return {seconds, static_cast<unsigned>(rest)};
}

std::string nxTimeStamp::GetAsString() const
{
    std::string text = _time.GetAsString();
    if (text.empty()) return text;
    text.append(".000000000");
    unsigned rest = _nanoseconds;
    for (std::size_t i = text.size() - 1; rest != 0; --i, rest /= 10)
        text[i] = static_cast<char>('0' + rest % 10);
    return text;
}
