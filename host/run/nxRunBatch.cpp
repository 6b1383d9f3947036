#include "host/run/nxRunBatch.h"

#include <algorithm>
#include <ctime>

#include "base/threads/nxStackThread.h"
#include "host/run/nxRun.h"

namespace {

double GetProcessorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// Fees, for one, may differ.
bool IsSameToFeed(const nxProductDescription& a, const nxProductDescription& b)
{
    return a.name == b.name && a.tickSize == b.tickSize && a.lotSize == b.lotSize && a.legs == b.legs &&
           a.priceOffset == b.priceOffset;
}

}  // namespace

nxRunBatch::nxRunBatch(std::size_t blockSize) : _blocks(blockSize) {}

nxRunBatch::~nxRunBatch() = default;

bool nxRunBatch::CanShare(const nxRunOptions& a, const nxRunOptions& b)
{
    return a.data == b.data && a.lenient == b.lenient && a.barsBearStart == b.barsBearStart &&
           a.barPeriods == b.barPeriods && a.form == b.form && a.roundsVolumes == b.roundsVolumes &&
           a.lotSizes == b.lotSizes && a.from == b.from && a.warmup == b.warmup && a.to == b.to &&
           std::ranges::equal(a.products, b.products, IsSameToFeed);
}

void nxRunBatch::Add(nxRunOptions options, std::ostream& out, std::ostream& err)
{
    options.blocks = &_blocks;
    _members.push_back({std::make_unique<nxRun>(std::move(options), out, err)});
}

// False: the run is over.
bool nxRunBatch::_GoOn(Member& member)
{
    const double begin = GetProcessorSeconds();
    const bool isBegun = std::exchange(member.isBegun, true) || member.run->Begin();
    const bool isMore = isBegun && member.run->Continue();
    member.seconds += GetProcessorSeconds() - begin;
    return isMore;
}

void nxRunBatch::Run(const std::function<void(std::size_t)>& onTurn,
                     const std::function<void(const End&)>& onEnd)
{
    nxStackThread::Run(nxStackThread::ForScripts, [&] {
        for (std::size_t open = _members.size(); open != 0;) {
            for (std::size_t i = 0; i < _members.size(); ++i) {
                Member& member = _members[i];
                if (member.run == nullptr) continue;
                onTurn(i);
                if (_GoOn(member)) continue;
                onEnd({i, *member.run, member.seconds});
                member.run.reset();
                --open;
            }
            if (open != 0) _blocks.Advance();
        }
    });
}
