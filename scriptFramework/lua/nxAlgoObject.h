#pragma once

#include <string>

class nxAlgoJobInterface;

// Base of every class that scripts see: an object's way to the host. The interface is the host's and outlives
// the object; it is null for objects made without a job.
class nxAlgoObject
{
public:
    explicit nxAlgoObject(nxAlgoJobInterface* job) : _job(job) {}
    nxAlgoObject(const nxAlgoObject&) = default;
    nxAlgoObject& operator=(const nxAlgoObject&) = default;
    virtual ~nxAlgoObject() = default;

    // The text that begins each log line of the object; empty without a job.
    virtual const std::string& GetLogPrefix() const;
    nxAlgoJobInterface* GetJob() const { return _job; }

private:
    nxAlgoJobInterface* _job;
};
