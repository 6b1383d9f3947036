#include "host/feed/nxRecordedEvents.h"

#include <algorithm>
#include <filesystem>
#include <limits>

#include "host/feed/nxBarPeriod.h"

bool nxRecordedEvents::Open(const std::vector<std::string>& paths,
                            const std::vector<nxFeedProductTerms>& products)
{
    _paths = paths;
    _terms = products;
    if (_feed.Open(paths, products)) _Advance();
    if (_next != nullptr) _firstTime = _next->time;
    return _next != nullptr || !_feed.HasFailed();
}

bool nxRecordedEvents::_IsBefore(const nxFeedEvent& event, long long time,
                                 const nxFeedProductTable& products) const
{
    if (event.kind == nxFeedKind::Bar && !nxIsDailyBar(products.Get(event.product).GetBarPeriod()))
        return event.time <= time;
    return event.time < time;
}

void nxRecordedEvents::_Advance()
{
    _isAhead = true;
    _next = _feed.Next();
    if (_next != nullptr) _lastTime = _next->time;
    if (_next != nullptr && !_IsBefore(*_next, _options.end, _feed.GetProducts())) _next = nullptr;
}

bool nxRecordedEvents::HasNextBefore(long long time)
{
    if (!_isAhead) _Advance();
    return _next != nullptr && _IsBefore(*_next, time, _feed.GetProducts());
}

nxEventSource::Step nxRecordedEvents::Next(long long deadline, long long deadlineOfBars,
                                           const nxFeedEvent*& event)
{
    if (!_isAhead) _Advance();
    if (_next == nullptr) return Step::End;
    if ((_next->kind == nxFeedKind::Bar ? deadlineOfBars : deadline) <= _next->time) return Step::Deadline;
    _isAhead = false;
    event = _next;
    return Step::Event;
}

long long nxRecordedEvents::GetHorizon() const
{
    return _isAhead && _next != nullptr ? _next->time : std::numeric_limits<long long>::min();
}

const std::string* nxRecordedEvents::FindReadOnce() const
{
    const auto found = std::ranges::find_if(_paths, [](const std::string& path) {
        std::error_code ignored;
        return !std::filesystem::is_regular_file(path, ignored);
    });
    return found == _paths.end() ? nullptr : &*found;
}

void nxRecordedEvents::ReadAgain(
    unsigned long long count,
    const std::function<void(const nxFeedEvent& event, const std::string& product)>& take) const
{
    nxFeedOptions options = _options;
    options.interrupted = nullptr;
    nxFeed feed(options);
    if (!feed.Open(_paths, _terms)) return;
    for (unsigned long long i = 0; i < count; ++i) {
        const nxFeedEvent* const event = feed.Next();
        if (event == nullptr) return;
        if (_IsBefore(*event, _options.begin, feed.GetProducts())) continue;
        take(*event, feed.GetProducts().Get(event->product).GetName());
    }
}
