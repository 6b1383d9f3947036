#include "host/trial/nxRunWatch.h"

#include <poll.h>

#include <chrono>
#include <utility>

nxRunWatch::nxRunWatch(Options options, std::ostream& out, std::ostream& err)
    : _options(std::move(options)), _out(out), _err(err), _paths(_options.inputs, _options.outputs)
{
}

int nxRunWatch::Run()
{
    if (_paths.GetError()) {
        _err << *_paths.GetError() << "\n";
        return _status;
    }
    for (;;) {
        const End end = _RunOnce();
        if (end == End::Interrupted) return _status;
        if (end == End::Done) {
            _out << "--- watching; Ctrl-C ends" << std::endl;
            while (!_TakeChange()) {
                if (_IsInterrupted()) return _status;
                _Wait(-1);
            }
        }
    }
}

nxRunWatch::End nxRunWatch::_RunOnce()
{
    ++_number;
    if (_number > 1) _out << "\n--- run " << _number << ": " << _changed << " has changed" << std::endl;
    nxWatchedRun run(_options.make, _err);
    if (const auto error = run.Start()) {
        _err << *error << std::endl;
        return End::Done;
    }
    for (bool isInterrupted = false; run.Attend(); _Wait(run.GetPipe())) {
        if (_IsInterrupted() && !std::exchange(isInterrupted, true)) run.Interrupt();
        if (isInterrupted || !_TakeChange()) continue;
        _out << "--- run " << _number << " was ended" << std::endl;
        return End::Changed;
    }
    _status = run.GetStatus();
    _TellEnd(run);
    return _IsInterrupted() ? End::Interrupted : End::Done;
}

void nxRunWatch::_TellEnd(const nxWatchedRun& run)
{
    const bool hasFailed = !run.GetFailure().empty();
    const nxRunFigures* const figures = run.GetFigures();
    const bool isTelling = figures != nullptr && !(hasFailed && figures->IsEmpty());
    const bool isCompared = isTelling && _figured != 0;
    if (isCompared)
        _out << "--- run " << _number << " against run " << _figured << "\n";
    else if (hasFailed)
        _out << "--- run " << _number << "\n";
    if (hasFailed) _out << "failed: " << run.GetFailure() << "\n";
    if (isCompared) figures->WriteChanges(_out, _figures);
    if (isTelling) {
        _figures = *figures;
        _figured = _number;
    }
    _out.flush();
}

void nxRunWatch::_Wait(int pipe) const
{
    constexpr int longest = 500;  // milliseconds
    pollfd files[] = {{_paths.GetDescriptor(), POLLIN, 0}, {pipe, POLLIN, 0}};
    // A pipe whose writer has gone is readable until the process has been waited for.
    poll(files, 2, longest);
    if ((files[1].revents & POLLHUP) != 0) poll(nullptr, 0, 10);
}

bool nxRunWatch::_TakeChange()
{
    using namespace std::chrono_literals;
    constexpr auto quiet = 100ms, longest = 2000ms;
    const auto changed = _paths.Take();
    if (!changed) return false;
    _changed = *changed;
    const auto begin = std::chrono::steady_clock::now();
    for (auto last = begin, now = begin; now - last < quiet && now - begin < longest && !_IsInterrupted();
         now = std::chrono::steady_clock::now())
    {
        pollfd file{_paths.GetDescriptor(), POLLIN, 0};
        poll(&file, 1, static_cast<int>(quiet / 1ms));
        if (_paths.Take()) last = std::chrono::steady_clock::now();
    }
    return true;
}
