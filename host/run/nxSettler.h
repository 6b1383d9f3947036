#pragma once

class nxJobRunner;

// Does what callbacks leave to do: news of jobs, answers of the venue, ends that were asked for.
class nxSettler
{
public:
    // After a callback of that job which left something.
    virtual void Settle(nxJobRunner& runner) = 0;
    // Whatever there is now, until nothing is left; nothing while it is held or already at it.
    virtual void Run() = 0;
    // While it is held everything waits. Answers what was before.
    virtual bool Hold(bool isHeld) = 0;

protected:
    ~nxSettler() = default;
};
