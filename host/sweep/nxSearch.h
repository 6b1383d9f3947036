#pragma once

#include <vector>

// An adaptive search: it asks for the values of a generation of points and learns from them where to look
// next. A point is a share of the way through each dimension, from 0 to below 1 (nxPlanPoints::MakePoint).
// The same seed and values give the same points in whatever order the values of a generation come. One thread
// at a time.
class nxSearch
{
public:
    using Points = std::vector<std::vector<double>>;

    virtual ~nxSearch() = default;

    // The generation; the same one until all its values were told.
    const Points& Ask();
    // The value of a point of the generation by its index, the higher the better; not a number for one that
    // has none, such as a failed run, which counts as the worst.
    void Tell(std::size_t point, double value);

protected:
    nxSearch() = default;
    nxSearch(const nxSearch&) = default;
    nxSearch& operator=(const nxSearch&) = default;

    virtual Points _Propose() = 0;
    virtual void _Learn(const Points& points, const std::vector<double>& values) = 0;

    // The indices of values from the best to the worst; of equal ones the first first.
    static std::vector<std::size_t> _GetOrder(const std::vector<double>& values);

private:
    Points _points;
    std::vector<double> _values;
    std::vector<bool> _isTold;
    std::size_t _open = 0;
};
