#pragma once

// A length of time in whole seconds; may be negative.
class nxDateTimeSpan
{
public:
    nxDateTimeSpan() = default;
    nxDateTimeSpan(const nxDateTimeSpan&) = default;
    nxDateTimeSpan& operator=(const nxDateTimeSpan&) = default;
    virtual ~nxDateTimeSpan() = default;

    void SetSeconds(long long seconds) { _seconds = seconds; }
    long long GetTotalSeconds() const { return _seconds; }

private:
    long long _seconds = 0;
};
