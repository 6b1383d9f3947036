#pragma once

#include <algorithm>
#include <deque>
#include <utility>

#include "base/time/nxTime.h"

// Messages on one line: none overtakes the one before it, whatever its own way would have taken. A message
// has a `due`, the time at which it comes in.
template <class Message>
class nxMessageLine
{
public:
    Message& Send(Message&& message, long long due)
    {
        message.due = _messages.empty() ? due : std::max(due, _messages.back().due);
        return _messages.emplace_back(std::move(message));
    }
    // nxTime::Never where nothing is on its way.
    long long GetNextTime() const { return _messages.empty() ? nxTime::Never : _messages.front().due; }
    bool IsDue(long long time) const { return !_messages.empty() && _messages.front().due <= time; }
    // The next one, where there is one.
    Message Pop()
    {
        Message next = std::move(_messages.front());
        _messages.pop_front();
        return next;
    }

private:
    std::deque<Message> _messages;
};
