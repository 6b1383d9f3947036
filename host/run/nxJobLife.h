#pragma once

#include <string>

#include "host/run/nxJobList.h"
#include "host/run/nxJobNews.h"
#include "host/run/nxRunStores.h"
#include "host/run/nxRunTimers.h"
#include "host/run/nxTrading.h"

// How the jobs of a run begin and end, and what their callbacks leave to do in between: jobs that are to end,
// positions, answers of the venue and news of other jobs, in this order, until nothing is left. Used on the
// run's thread.
class nxJobLife : public nxSettler
{
public:
    // All outlive it.
    nxJobLife(nxRunState& state, nxRunOutput& output, nxJobList& jobs, nxJobNews& news, nxTrading& trading,
              nxRunTimers& timers, nxRunStores& stores, const nxEventSource& source);

    void Load(nxJobRunner& runner);
    void Start(nxJobRunner& runner);
    // isEarly: others go on, or would have.
    void End(nxJobRunner& runner, const std::string& reason, bool isEarly);
    // At the end of the run all end at one moment, so none is told of another's end. What was on its way to
    // them counts, and comes before their end in the record.
    void EndAll(const std::string& reason, bool isEarly);

    void Settle(nxJobRunner& runner) override;
    void Run() override;
    bool Hold(bool isHeld) override { return std::exchange(_isHeld, isHeld); }

private:
    void _EndAsked();
    void _RecordEnd(nxJobRunner& runner);
    // Delivers one thing that is to be told; false when there is none.
    bool _DeliverNext(std::size_t& news);

    nxRunState& _state;
    nxRunOutput& _output;
    nxJobList& _jobs;
    nxJobNews& _news;
    nxTrading& _trading;
    nxRunTimers& _timers;
    nxRunStores& _stores;
    const nxEventSource& _source;
    std::size_t _jobsToGo;  // that have not ended
    bool _isHeld = false;
    bool _isAllEnding = false;
};
