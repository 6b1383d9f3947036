#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <ostream>
#include <vector>

#include "host/feed/nxFeedBlocks.h"
#include "host/run/nxRunOptions.h"

class nxRun;

// Several runs over one reading of their data: each takes a block of events, then the next run takes the same
// one. All that a run has is its own, so each comes to what it would come to alone, to the byte. Callbacks
// are not watched here: the runs' process is to be guarded from outside where one may not return.
class nxRunBatch
{
public:
    // What a run has come to, while all that it was made of is still there.
    struct End
    {
        std::size_t index;  // in the order of Add
        const nxRun& run;
        double seconds;  // of processor time, without the reading of the data
    };

    explicit nxRunBatch(std::size_t blockSize = nxFeedBlocks::UsualSize);
    ~nxRunBatch();
    nxRunBatch(const nxRunBatch&) = delete;
    nxRunBatch& operator=(const nxRunBatch&) = delete;

    // Whether they can be in one batch: what they read as data, and how, is the same.
    static bool CanShare(const nxRunOptions& a, const nxRunOptions& b);

    // Those that can share. The streams outlive the batch.
    void Add(nxRunOptions options, std::ostream& out, std::ostream& err);
    // Once. onTurn: it is the turn of the run with that index. onEnd: it is over. Both on a thread of their
    // own.
    void Run(const std::function<void(std::size_t)>& onTurn, const std::function<void(const End&)>& onEnd);

private:
    struct Member
    {
        std::unique_ptr<nxRun> run;  // null: it is over
        double seconds = 0.0;
        bool isBegun = false;
    };

    bool _GoOn(Member& member);

    nxFeedBlocks _blocks;
    std::vector<Member> _members;
};
