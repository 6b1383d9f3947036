#pragma once

#include <algorithm>

#include "api/nxIndexedMapFieldIndex.h"

// Finds the entries with given values of its first fields: of all, or of as many as the pattern binds without
// a gap.
template <class Entry, char separator>
class nxIndexedMapPrefixIndex : public nxIndexedMapFieldIndex<Entry, separator>
{
public:
    using Base = nxIndexedMapFieldIndex<Entry, separator>;
    using typename Base::Bucket;
    using typename Base::Visitor;

    explicit nxIndexedMapPrefixIndex(std::vector<unsigned int> fields, bool preferred = false)
        : Base(std::move(fields), preferred)
    {
    }

    void Clear() override
    {
        Base::Clear();
        _buckets.clear();
    }

protected:
    Bucket& _GetBucket(const std::string& extract) override { return _buckets[extract]; }
    void _ForEachBucket(const std::string& pattern, int, const Visitor& visit) override
    {
        const auto bound = nxIndexedMapKey::GetFieldMask(pattern, separator);
        const auto gap = std::find_if(this->_fields.begin(), this->_fields.end(),
                                      [&](unsigned int field) { return !bound[field]; });
        const std::string prefix = nxIndexedMapKey::Extract(pattern, {this->_fields.begin(), gap}, separator);
        for (auto at = _buckets.lower_bound(prefix); at != _buckets.end() && at->first.starts_with(prefix);
             ++at)
            if (!visit(at->second)) return;
    }

private:
    std::map<std::string, Bucket> _buckets;
};
