#pragma once

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

// Decides when a call into a script has taken too long, from what is seen of the run's pulse now and then:
// because it is beyond the limit, or because the run was interrupted and it does not return. First it is to
// be stopped; where that does not help, since the script is inside a function that nothing interrupts, it is
// to be killed with its process. For one thread.
class nxCallDeadline
{
public:
    using Clock = std::chrono::steady_clock;
    using Duration = Clock::duration;

    enum class Verdict { Fine, Stop, Kill };
    // After an interruption a call may take so long; both are below two seconds, which is what the person
    // who pressed Ctrl-C waits.
    static constexpr Duration InterruptedToStop = std::chrono::milliseconds(1000);
    static constexpr Duration InterruptedToKill = std::chrono::milliseconds(1700);
    // From the stop on, where the limit is what was overrun.
    static constexpr Duration OverrunToKill = std::chrono::milliseconds(1500);

    static constexpr Duration MostBetweenLooks = std::chrono::seconds(1);

    // A limit of 0 is none.
    explicit nxCallDeadline(Duration limit) : _limit(limit) {}

    // call: as in nxRunPulse. isWaiting: for who reads the run's output, which is not the script's time.
    Verdict Look(unsigned long long call, bool isInterrupted, bool isWaiting, Clock::time_point now)
    {
        // Who looks was held up itself, as by Ctrl-Z, and the script most likely with it.
        if (const Duration gap = now - std::exchange(_looked, now); gap > MostBetweenLooks) {
            _since += gap;
            _entered += gap;
        }
        if (call != _call || call == 0) {
            _call = call;
            _since = _entered = now;
        }
        if (isWaiting) _since = now;
        if (!isInterrupted) {
            _interrupted.reset();
        } else if (!_interrupted) {
            _interrupted = now;
        }
        if (call == 0) return Verdict::Fine;
        const Duration own = now - _since;
        const Duration asked = _interrupted ? now - std::max(*_interrupted, _entered) : Duration::zero();
        const bool isOver = _limit > Duration::zero() && own >= _limit;
        if ((isOver && own >= _limit + OverrunToKill) || asked >= InterruptedToKill) return Verdict::Kill;
        return isOver || asked >= InterruptedToStop ? Verdict::Stop : Verdict::Fine;
    }
    // How long the call that was seen last has run, as a person is told: the limit where it is beyond that,
    // or whole seconds.
    std::chrono::duration<double> GetToldTime(Clock::time_point now) const
    {
        if (_limit > Duration::zero() && now - _since >= _limit) return _limit;
        return std::chrono::floor<std::chrono::seconds>(now - _entered);
    }

private:
    const Duration _limit;
    unsigned long long _call = 0;
    Clock::time_point _entered, _since;  // since: without what it waited
    Clock::time_point _looked = Clock::now();
    std::optional<Clock::time_point> _interrupted;
};
