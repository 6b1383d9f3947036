#pragma once

#include <array>
#include <deque>
#include <iterator>
#include <vector>

#include "host/results/nxRoundTrip.h"

// A list of round trips in 88 bytes each, less than half of what they are one by one: runs have millions. The
// few of amounts or volumes too large for that are kept whole. Reading makes values, exactly what was added.
class nxRoundTrips
{
public:
    class Iterator
    {
    public:
        using value_type = nxRoundTrip;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::forward_iterator_tag;

        Iterator() = default;
        Iterator(const nxRoundTrips& trips, std::size_t place) : _trips(&trips), _place(place) {}
        nxRoundTrip operator*() const { return (*_trips)[_place]; }
        Iterator& operator++()
        {
            ++_place;
            return *this;
        }
        Iterator operator++(int)
        {
            const Iterator before = *this;
            ++_place;
            return before;
        }
        bool operator==(const Iterator& other) const { return _place == other._place; }

    private:
        const nxRoundTrips* _trips = nullptr;
        std::size_t _place = 0;
    };

    void Add(const nxRoundTrip& trip);
    void Add(const nxRoundTrips& others);
    // Those of one time stay in the order in which they were added.
    void SortByExit();

    std::size_t GetCount() const { return _rows.size(); }
    nxRoundTrip operator[](std::size_t place) const;
    long long GetExitTime(std::size_t place) const { return _rows[place].exitTime; }
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, _rows.size()}; }

private:
    static constexpr std::size_t Amounts = 4;

    struct Row
    {
        long long entryTime, exitTime;
        double entryPrice, exitPrice;
        std::array<long long, Amounts> mantissas;
        std::array<unsigned char, Amounts> places;
        unsigned int product;
        unsigned int volume;  // of one that is kept whole: where
        unsigned int entryOrder, exitOrder;
        nxSide side;
        bool hasExcursions, isWhole;
    };
    static_assert(sizeof(Row) == 88);

    std::deque<Row> _rows;  // which takes no room twice as it grows
    std::vector<nxRoundTrip> _whole;
};
