#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "api/nxIndexedMapIndex.h"

// What the indices over some fields share: entries with the same values of these fields stand in one bucket,
// sorted by their keys.
template <class Entry, char separator>
class nxIndexedMapFieldIndex : public nxIndexedMapIndex<Entry>
{
public:
    using Base = nxIndexedMapIndex<Entry>;
    using Action = nxIndexedMapAction<Entry>;

    bool IsPreferred() override { return _preferred; }
    std::size_t GetEntryCount() const override { return _entryCount; }
    void Apply(const std::string& key, int matchKind, Action& action) override
    {
        // A bucket found by all that the pattern binds holds nothing else.
        const bool exact = nxIndexedMapKey::GetFieldMask(key, separator) == this->_fieldMask;
        _ForEachBucket(key, matchKind, [&](const Bucket& bucket) {
            for (const auto& [entryKey, entry] : bucket) {
                if (action.IsDone()) return false;
                if (exact || nxIndexedMapKey::Matches(key, entryKey, separator)) action(entry);
            }
            return !action.IsDone();
        });
    }
    std::size_t CountCandidates(const std::string& key, int matchKind) override
    {
        std::size_t count = 0;
        _ForEachBucket(key, matchKind, [&](const Bucket& bucket) {
            count += bucket.size();
            return true;
        });
        return count;
    }
    void Insert(const std::string& key, Entry* entry) override
    {
        _entryCount += _GetBucket(_Extract(key)).insert_or_assign(key, entry).second;
    }
    void Remove(const std::string& key) override { _entryCount -= _GetBucket(_Extract(key)).erase(key); }
    void Clear() override { _entryCount = 0; }

protected:
    using Bucket = std::map<std::string, Entry*>;
    // False ends the walk.
    using Visitor = std::function<bool(const Bucket&)>;

    // The fields in the order by which the index sorts.
    nxIndexedMapFieldIndex(std::vector<unsigned int> fields, bool preferred)
        : Base(_GetMask(fields)), _fields(std::move(fields)), _preferred(preferred)
    {
    }

    virtual Bucket& _GetBucket(const std::string& extract) = 0;
    // The buckets that may hold what the pattern selects. Buckets may be added meanwhile.
    virtual void _ForEachBucket(const std::string& pattern, int matchKind, const Visitor& visit) = 0;

    std::string _Extract(const std::string& key) const
    {
        return nxIndexedMapKey::Extract(key, _fields, separator);
    }

    const std::vector<unsigned int> _fields;

private:
    static nxIndexedMapKey::FieldMask _GetMask(const std::vector<unsigned int>& fields)
    {
        nxIndexedMapKey::FieldMask mask;
        for (const unsigned int field : fields)
            mask.set(field);
        return mask;
    }

    const bool _preferred;
    std::size_t _entryCount = 0;
};
