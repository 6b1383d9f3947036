#pragma once

#include <deque>
#include <unordered_map>

#include "api/nxIndexedMapFieldIndex.h"

// Finds the entries with given values of all its fields at once. A pattern that binds only some of the fields
// costs a look at each bucket, but not at each entry.
template <class Entry, char separator>
class nxIndexedMapHashIndex : public nxIndexedMapFieldIndex<Entry, separator>
{
public:
    using Base = nxIndexedMapFieldIndex<Entry, separator>;
    using typename Base::Bucket;
    using typename Base::Visitor;

    explicit nxIndexedMapHashIndex(std::vector<unsigned int> fields, bool preferred = false)
        : Base(std::move(fields), preferred)
    {
    }

    void Clear() override
    {
        Base::Clear();
        _positions.clear();
        _buckets.clear();
    }

protected:
    Bucket& _GetBucket(const std::string& extract) override
    {
        const auto [found, isNew] = _positions.try_emplace(extract, _buckets.size());
        if (isNew) _buckets.emplace_back(extract, Bucket());
        return _buckets[found->second].second;
    }
    void _ForEachBucket(const std::string& pattern, int matchKind, const Visitor& visit) override
    {
        const std::string extract = this->_Extract(pattern);
        if (matchKind != nxIndexedMapMatch::PartBound) {
            const auto found = _positions.find(extract);
            if (found != _positions.end()) visit(_buckets[found->second].second);
            return;
        }
        // By position, since a bucket may be added under the walk.
        for (std::size_t i = 0; i < _buckets.size(); ++i)
            if (nxIndexedMapKey::Matches(extract, _buckets[i].first, separator) && !visit(_buckets[i].second))
                return;
    }

private:
    std::unordered_map<std::string, std::size_t> _positions;
    std::deque<std::pair<std::string, Bucket>> _buckets;  // in the order of their first entries
};
