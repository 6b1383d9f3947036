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
    const bool isOpen =
        _blocks == nullptr ? _feed.Open(paths, products) : _blocks->Open(_options, paths, products);
    if (!isOpen) {
        _isAtEnd = true;
        return false;
    }
    static_cast<void>(_Advance());
    if (_next != nullptr) _firstTime = _next->time;
    return _next != nullptr || !HasFailed();
}

bool nxRecordedEvents::_IsBefore(const nxFeedEvent& event, long long time,
                                 const nxFeedProductTable& products) const
{
    if (event.kind == nxFeedKind::Bar && !nxIsDailyBar(products.Get(event.product).GetBarPeriod()))
        return event.time <= time;
    return event.time < time;
}

bool nxRecordedEvents::_Advance()
{
    if (_blocks == nullptr)
        _next = _feed.Next();
    else if (!_TakeFromBlock())
        return false;
    _isAhead = true;
    if (_next != nullptr) _lastTime = _next->time;
    const bool hasEnd = _options.end != std::numeric_limits<long long>::max();
    if (hasEnd && _next != nullptr && !_IsBefore(*_next, _options.end, GetProducts())) _next = nullptr;
    return true;
}

bool nxRecordedEvents::_TakeFromBlock()
{
    if (_block != _blocks->GetNumber()) {
        _block = _blocks->GetNumber();
        _place = 0;
    }
    const std::span<const nxFeedEvent> events = _blocks->GetEvents();
    _isAtEnd = _place == events.size() && _blocks->IsLast();
    if (_place == events.size() && !_isAtEnd) return false;
    _next = _isAtEnd ? nullptr : &events[_place++];
    _taken += _next != nullptr ? 1 : 0;
    return true;
}

std::vector<std::string> nxRecordedEvents::GetRemarks()
{
    if (_blocks == nullptr) return _feed.GetRemarks();
    if (_isAtEnd) return _blocks->GetFeed().GetRemarks();
    nxFeed feed(_options);
    if (feed.Open(_paths, _terms))
        for (unsigned long long i = 0; i < _taken && feed.Next() != nullptr;)
            ++i;
    return feed.GetRemarks();
}

nxEventSource::Step nxRecordedEvents::Next(long long deadline, long long deadlineOfBars,
                                           const nxFeedEvent*& event)
{
    if (!Look()) return Step::Wait;
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
