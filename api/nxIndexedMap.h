#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "api/nxIndexedMapIndex.h"

// A map from keys of fields to entries, which can be walked by a pattern with wildcards. It views the entries
// and owns its indices. It takes no lock: whoever holds it guards it.
template <class Entry, char separator>
class nxIndexedMap
{
public:
    using Index = nxIndexedMapIndex<Entry>;
    using FieldMask = nxIndexedMapKey::FieldMask;
    struct Choice
    {
        Index* index = nullptr;
        int matchKind = 0;
    };

    // fieldCount is that of every key, at most 32.
    explicit nxIndexedMap(int fieldCount) : _fieldCount(fieldCount) {}

    // A direct index is asked before all others. What the map holds already is put into it.
    void AddIndex(std::unique_ptr<Index> index, bool direct = false);

    // Stores the entry under the canonical form of the key, in place of what was there.
    void Insert(const std::string& key, Entry* entry);
    // Takes the entry of an exact key out; null when there is none.
    Entry* Remove(const std::string& canonicalKey);
    void Clear();
    // The entry of an exact key, or null. The key is taken as it stands.
    Entry* Find(const std::string& canonicalKey) const;

    // Calls the action on every entry that the key or pattern selects, until the action is done: in the order
    // of the keys, or in that of the index that serves the pattern.
    void Apply(const std::string& key, nxIndexedMapAction<Entry>& action) const;

    // Which index serves a pattern that binds these fields; none when no index has one of them.
    Choice ChooseIndex(const FieldMask& bound) const;
    std::string GetCanonicalKey(const std::string& key) const
    {
        return nxIndexedMapKey::GetCanonical(key, _fieldCount, separator);
    }
    const std::map<std::string, Entry*>& GetMap() const { return _map; }

private:
    std::map<std::string, Entry*> _map;
    std::vector<std::unique_ptr<Index>> _indices;
    std::vector<Index*> _directIndices;  // some of _indices
    int _fieldCount;
};

template <class Entry, char separator>
void nxIndexedMap<Entry, separator>::AddIndex(std::unique_ptr<Index> index, bool direct)
{
    for (const auto& [key, entry] : _map)
        index->Insert(key, entry);
    if (direct) _directIndices.push_back(index.get());
    _indices.push_back(std::move(index));
}

template <class Entry, char separator>
void nxIndexedMap<Entry, separator>::Insert(const std::string& key, Entry* entry)
{
    const std::string canonicalKey = GetCanonicalKey(key);
    _map[canonicalKey] = entry;
    for (const auto& index : _indices)
        index->Insert(canonicalKey, entry);
}

template <class Entry, char separator>
Entry* nxIndexedMap<Entry, separator>::Remove(const std::string& canonicalKey)
{
    const auto found = _map.find(canonicalKey);
    if (found == _map.end()) return nullptr;
    Entry* entry = found->second;
    for (const auto& index : _indices)
        index->Remove(canonicalKey);
    _map.erase(found);
    return entry;
}

template <class Entry, char separator>
void nxIndexedMap<Entry, separator>::Clear()
{
    _map.clear();
    for (const auto& index : _indices)
        index->Clear();
}

template <class Entry, char separator>
Entry* nxIndexedMap<Entry, separator>::Find(const std::string& canonicalKey) const
{
    const auto found = _map.find(canonicalKey);
    return found == _map.end() ? nullptr : found->second;
}

template <class Entry, char separator>
void nxIndexedMap<Entry, separator>::Apply(const std::string& key, nxIndexedMapAction<Entry>& action) const
{
    const std::string pattern = GetCanonicalKey(key);
    if (pattern.find('*') == std::string::npos) {
        Entry* entry = Find(pattern);
        if (entry != nullptr && !action.IsDone()) action(entry);
        return;
    }
    const FieldMask bound = nxIndexedMapKey::GetFieldMask(pattern, separator);
    if (bound.any()) {
        if (const Choice choice = ChooseIndex(bound); choice.index != nullptr) {
            choice.index->Apply(pattern, choice.matchKind, action);
            return;
        }
    }
    for (const auto& [entryKey, entry] : _map) {
        if (action.IsDone()) return;
        if (bound.none() || nxIndexedMapKey::Matches(pattern, entryKey, separator)) action(entry);
    }
}

template <class Entry, char separator>
typename nxIndexedMap<Entry, separator>::Choice nxIndexedMap<Entry, separator>::ChooseIndex(
    const FieldMask& bound) const
{
    for (Index* index : _directIndices)
        if ((index->GetFieldMask() & ~bound).none()) return {index, nxIndexedMapMatch::Bound};
    Choice best;
    std::size_t bestCount = 0;
    for (const auto& index : _indices) {
        const FieldMask& fields = index->GetFieldMask();
        if (fields == bound) return {index.get(), nxIndexedMapMatch::Bound};
        const std::size_t count = (bound & fields).count();
        if (count == 0 || count < bestCount) continue;
        if (count == bestCount && (best.index->IsPreferred() || !index->IsPreferred())) continue;
        bestCount = count;
        best = {index.get(),
                count == fields.count() ? nxIndexedMapMatch::Overlap : nxIndexedMapMatch::PartBound};
    }
    return best;
}
