#include "host/sweep/nxSweepCrew.h"

#include <poll.h>

#include <algorithm>

#include "host/run/nxRunBatch.h"

namespace {

using Fault = std::optional<std::string>;

}  // namespace

Fault nxSweepCrew::Run(const std::vector<nxSweepTask>& tasks, const Done& done,
                       const std::function<void()>& tick)
{
    _waiting.assign(tasks.begin(), tasks.end());
    Fault fault;
    while (!fault && !_IsInterrupted() && !(_waiting.empty() && _members.empty())) {
        while (!fault && !_waiting.empty() && _members.size() < _options.workers)
            fault = _Start();
        _Wait();
        if (!fault) fault = _Attend(done);
        tick();
    }
    _members.clear();
    return fault;
}

// So many that all processes have work to the end, and what is lost by a kill is little.
std::size_t nxSweepCrew::_GetBatchSize() const
{
    constexpr std::size_t rounds = 3;
    std::size_t size = (_waiting.size() + rounds * _options.workers - 1) / (rounds * _options.workers);
    size = std::min(size, _mostInBatch);
    if (_options.memory != 0 && _memoryOfRun != 0)
        size = std::min<std::size_t>(size, _options.memory / _memoryOfRun / _options.workers);
    return std::max<std::size_t>(size, 1);
}

Fault nxSweepCrew::_Start()
{
    const std::size_t most = _GetBatchSize();
    Member member;
    std::vector<nxRunOptions> runs;
    while (!_waiting.empty() && runs.size() < most) {
        nxRunOptions options;
        if (Fault fault = _make(_waiting.front(), options)) return fault;
        if (!runs.empty() && !nxRunBatch::CanShare(runs.front(), options)) break;
        runs.push_back(std::move(options));
        member.tasks.push_back(_waiting.front());
        _waiting.pop_front();
    }
    member.isDone.resize(runs.size());
    member.worker = std::make_unique<nxSweepWorker>(std::move(runs), _options.worker);
    if (Fault fault = member.worker->Start()) return fault;
    _members.push_back(std::move(member));
    return std::nullopt;
}

void nxSweepCrew::_Wait() const
{
    constexpr int interval = 50;  // milliseconds
    std::vector<pollfd> pipes;
    for (const Member& member : _members)
        pipes.push_back({member.worker->GetPipe(), POLLIN, 0});
    // A signal wakes it, too.
    poll(pipes.data(), pipes.size(), interval);
}

Fault nxSweepCrew::_Attend(const Done& done)
{
    Fault fault;
    std::erase_if(_members, [&](Member& member) {
        const bool isAlive = member.worker->Attend([&](std::size_t index, nxSweepOutcome outcome) {
            member.isDone[index] = true;
            NoteMemory(outcome.memory);
            done(member.tasks[index], std::move(outcome));
        });
        if (!isAlive && !fault) fault = _Leave(member);
        return !isAlive;
    });
    return fault;
}

// What its process had not done is to be done by another one.
Fault nxSweepCrew::_Leave(Member& member)
{
    if (!member.worker->GetFault().empty()) return member.worker->GetFault();
    if (std::ranges::none_of(member.isDone, std::identity())) return "a worker ended without a result";
    if (member.worker->WasShortOfMemory()) _mostInBatch = std::max<std::size_t>(1, member.tasks.size() / 2);
    for (std::size_t i = member.tasks.size(); i-- > 0;)
        if (!member.isDone[i]) _waiting.push_front(member.tasks[i]);
    return std::nullopt;
}
