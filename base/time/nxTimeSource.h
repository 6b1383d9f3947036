#pragma once

#include "base/time/nxTimeStamp.h"

// Where "now" comes from. Every current time in the library, the log's time stamps included, is asked of
// Now(): the source that the calling thread has installed, else the system clock. A replay installs one that
// follows the recorded time.
class nxTimeSource
{
public:
    virtual ~nxTimeSource() = default;
    virtual nxTimeStamp GetNow() const = 0;

    static nxTimeStamp Now();

    // Makes `source` the calling thread's source until the end of its scope, then restores the earlier one.
    // Lives on one thread; installations end in the reverse order of their beginning; `source` must outlive
    // its own.
    class Installation
    {
    public:
        explicit Installation(const nxTimeSource& source);
        ~Installation();
        Installation(const Installation&) = delete;
        Installation& operator=(const Installation&) = delete;

    private:
        const nxTimeSource* _earlier;
    };
};
