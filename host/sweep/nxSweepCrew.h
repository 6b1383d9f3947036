#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/sweep/nxSweepTable.h"
#include "host/sweep/nxSweepWorker.h"

// Makes runs in several processes at one time. A run that kills its process costs itself alone: the others of
// its batch are made again. Used by one thread of a process that has no other.
class nxSweepCrew
{
public:
    struct Options
    {
        unsigned int workers = 1;
        std::size_t largestBatch = 32;  // runs of a process
        unsigned long long memory = 0;  // bytes for all runs that go on at one time; 0: any
        nxWorkerOptions worker = {};
        const std::atomic<bool>* interrupted = nullptr;
    };
    // What a task is run with. Null, or what is wrong with it.
    using Make = std::function<std::optional<std::string>(const nxSweepTask&, nxRunOptions&)>;
    // Each task once, in any order.
    using Done = std::function<void(const nxSweepTask&, nxSweepOutcome)>;

    nxSweepCrew(Options options, Make make) : _options(std::move(options)), _make(std::move(make)) {}

    // Tasks in a row share their data where they can. tick() is called some ten times a second. Null: all are
    // done, or it was interrupted, by which those under way are lost; else what cannot be done.
    [[nodiscard]] std::optional<std::string> Run(const std::vector<nxSweepTask>& tasks, const Done& done,
                                                 const std::function<void()>& tick);
    // Bytes that a run takes, once there is one.
    void NoteMemory(unsigned long long ofRun) { _memoryOfRun = std::max(_memoryOfRun, ofRun); }

private:
    struct Member
    {
        std::unique_ptr<nxSweepWorker> worker;
        std::vector<nxSweepTask> tasks;
        std::vector<bool> isDone;
    };

    bool _IsInterrupted() const { return _options.interrupted != nullptr && _options.interrupted->load(); }
    std::size_t _GetBatchSize() const;
    std::optional<std::string> _Start();
    void _Wait() const;
    std::optional<std::string> _Attend(const Done& done);
    std::optional<std::string> _Leave(Member& member);

    const Options _options;
    const Make _make;
    unsigned long long _memoryOfRun = 0;
    std::deque<nxSweepTask> _waiting;
    std::vector<Member> _members;
    std::size_t _mostInBatch = _options.largestBatch;
};
