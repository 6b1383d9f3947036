#include "host/run/nxAdjustmentSchedule.h"

#include <fmt/format.h>

nxAdjustmentSchedule::nxAdjustmentSchedule(nxRunState& state, const nxRunClock& clock, nxMarkets& markets,
                                           nxTrading& trading, nxSchedule& schedule)
    : _state(state), _clock(clock), _markets(markets), _trading(trading), _schedule(schedule)
{
    _schedule.SetTask(nxDue::Adjustment, [this] { _Apply(); });
}

void nxAdjustmentSchedule::_Reschedule()
{
    const std::vector<nxAdjustment>& adjustments = _state.options.adjustments;
    _schedule.Set(nxDue::Adjustment, _next < adjustments.size() ? adjustments[_next].time : nxTime::Never);
}

void nxAdjustmentSchedule::_Apply()
{
    const nxAdjustment& adjustment = _state.options.adjustments[_next++];
    _Reschedule();
    if (nxMarket* const market = _markets.Find(adjustment.product, _clock.Get()))
        _trading.Adjust(*market, adjustment);
    else
        _unknown.insert(adjustment.product);
}

void nxAdjustmentSchedule::NoteUnmet()
{
    for (const std::string& product : _unknown)
        if (_markets.Find(product, _clock.Get()) == nullptr)
            _state.statistics.remarks.push_back("adjustments of " + product + ", which the data do not hold");
    if (const std::size_t left = _state.options.adjustments.size() - _next; left != 0)
        _state.statistics.remarks.push_back(
            fmt::format("{} adjustment{} after the end", left, left == 1 ? "" : "s"));
}
