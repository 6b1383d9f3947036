#include "host/results/nxMarkouts.h"

#include <algorithm>

void nxMarkouts::_Settle(long long time, const nxDecimal& mid)
{
    _next = nxTime::Never;
    for (std::size_t i = 0; i < nxMarkout::Count; ++i) {
        std::deque<Waiting>& waiting = _waiting[i];
        for (; !waiting.empty() && waiting.front().due < time; waiting.pop_front()) {
            const Waiting& fill = waiting.front();
            if (!mid.IsValid()) continue;
            nxMarkout& markout = fill.data->markouts[i];
            const long long lots = nxGetSigned(fill.side, fill.volume);
            markout.sum +=
                nxExactAmount(mid, lots, _pointValue) - nxExactAmount(fill.price, lots, _pointValue);
            markout.volume += fill.volume;
            ++markout.fills;
        }
        if (!waiting.empty()) _next = std::min(_next, waiting.front().due);
    }
}
