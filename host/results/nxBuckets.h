#pragma once

#include <cstddef>
#include <utility>
#include <vector>

// A series of any length in bounded memory. A bucket is made of the same count of samples, one at first; when
// all are full, neighbours merge in pairs and each holds twice as many. Bucket has Merge(later), which takes
// another one in. A value.
template <class Bucket, std::size_t Most = 8192>
class nxBuckets
{
public:
    nxBuckets() = default;
    // As they were; nothing is added any more.
    explicit nxBuckets(std::vector<Bucket> buckets) : _buckets(std::move(buckets)) {}

    void Add(const Bucket& sample)
    {
        if (_count == _size) {
            if (_buckets.size() == Most) _Halve();
            _buckets.push_back(sample);
            _count = 1;
        } else {
            _buckets.back().Merge(sample);
            ++_count;
        }
    }
    bool IsEmpty() const { return _buckets.empty(); }
    const std::vector<Bucket>& Get() const { return _buckets; }

private:
    void _Halve()
    {
        for (std::size_t i = 0; i < Most / 2; ++i) {
            _buckets[i] = _buckets[2 * i];
            _buckets[i].Merge(_buckets[2 * i + 1]);
        }
        _buckets.resize(Most / 2);
        _size *= 2;
    }

    std::vector<Bucket> _buckets;
    std::size_t _size = 1;   // samples of a full bucket
    std::size_t _count = 1;  // of the last one
};

// What a price or a line did in the time of one bucket, up to `time`.
struct nxPriceBucket
{
    long long time = 0;
    double low = 0.0, high = 0.0, close = 0.0;

    void Merge(const nxPriceBucket& later)
    {
        time = later.time;
        low = later.low < low ? later.low : low;
        high = later.high > high ? later.high : high;
        close = later.close;
    }
};

// The same of a profit, with the farthest that it was below its highest, and the exposure at the end.
struct nxEquityBucket : nxPriceBucket
{
    double drawdown = 0.0, exposure = 0.0;

    void Merge(const nxEquityBucket& later)
    {
        nxPriceBucket::Merge(later);
        drawdown = later.drawdown > drawdown ? later.drawdown : drawdown;
        exposure = later.exposure;
    }
};
