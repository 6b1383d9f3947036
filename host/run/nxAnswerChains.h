#pragma once

#include <unordered_map>
#include <vector>

// Tells scripts that send orders upon the answers to their orders without end, which would hold the recorded
// time for ever. What counts is requests that were sent upon an answer at the same recorded time: 1,000 of
// them one after the other, or 100,000 of one job in all.
class nxAnswerChains
{
public:
    static constexpr unsigned int MostInRow = 1000;
    static constexpr unsigned int MostInAll = 100'000;

    // An answer is about to be told to its owner. False: there is no end.
    [[nodiscard]] bool Begin(unsigned int order, unsigned int owner, long long now)
    {
        if (now != _time) {
            _time = now;
            _rows.clear();
            _requests.clear();
        }
        const auto row = _rows.find(order);
        _row = row == _rows.end() ? 0 : row->second;
        _isAnswering = true;
        return _row <= MostInRow && _GetRequests(owner) <= MostInAll;
    }
    void End() { _isAnswering = false; }
    // A request for the order was sent.
    void NoteRequest(unsigned int order, unsigned int owner)
    {
        if (!_isAnswering) return;
        _rows[order] = _row + 1;
        ++_GetRequests(owner);
    }

private:
    unsigned int& _GetRequests(unsigned int owner)
    {
        if (owner >= _requests.size()) _requests.resize(owner + 1);
        return _requests[owner];
    }

    long long _time = 0;
    bool _isAnswering = false;
    unsigned int _row = 0;                                 // that the answer in hand ends
    std::unordered_map<unsigned int, unsigned int> _rows;  // by order: answers that led to its latest request
    std::vector<unsigned int> _requests;                   // by owner
};
