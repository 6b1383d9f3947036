#pragma once

#include <cstddef>
#include <string>

#include "api/nxIndexedMapAction.h"
#include "api/nxIndexedMapKey.h"

// How an index meets a pattern.
namespace nxIndexedMapMatch {
inline constexpr int Bound = 1;      // the index was asked for: the pattern binds all its fields
inline constexpr int Overlap = 2;    // the same, and the pattern binds others too
inline constexpr int PartBound = 3;  // the pattern binds some fields of the index
}  // namespace nxIndexedMapMatch

// A second way into an indexed map, by some fields of its keys. The map owns it, fills it and asks it; it
// views the entries. Not for several threads at a time.
template <class Entry>
class nxIndexedMapIndex
{
public:
    using FieldMask = nxIndexedMapKey::FieldMask;

    // Wins over an index that shares as many fields with the pattern and is not preferred.
    virtual bool IsPreferred() = 0;
    // Replaces the entry of the key.
    virtual void Insert(const std::string& key, Entry* entry) = 0;
    virtual void Remove(const std::string& key) = 0;
    virtual void Clear() = 0;
    virtual std::size_t GetEntryCount() const = 0;
    // How many entries Apply would look at for this pattern.
    virtual std::size_t CountCandidates(const std::string& key, int matchKind) = 0;
    // Calls the action on each entry whose key the pattern `key` matches, until the action is done.
    virtual void Apply(const std::string& key, int matchKind, nxIndexedMapAction<Entry>& action) = 0;
    virtual ~nxIndexedMapIndex() = default;

    // The fields that the index goes by.
    const FieldMask& GetFieldMask() const { return _fieldMask; }

protected:
    explicit nxIndexedMapIndex(const FieldMask& fieldMask) : _fieldMask(fieldMask) {}

    const FieldMask _fieldMask;
};
