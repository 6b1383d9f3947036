#include "api/nxIndexedMapKey.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr std::string_view Wildcard = "*";

// Hands the fields of a key out one after the other. An empty key has one field, which is empty.
class Fields
{
public:
    Fields(std::string_view key, char separator) : _rest(key), _separator(separator) {}

    bool Next(std::string_view& field)
    {
        if (_ended) return false;
        const std::size_t end = _rest.find(_separator);
        field = _rest.substr(0, end);
        _ended = end == std::string_view::npos;
        if (!_ended) _rest.remove_prefix(end + 1);
        return true;
    }

private:
    std::string_view _rest;
    const char _separator;
    bool _ended = false;
};

}  // namespace

std::string nxIndexedMapKey::GetCanonical(std::string_view key, int fieldCount, char separator)
{
    std::string canonical;
    canonical.reserve(key.size() + 2 * static_cast<std::size_t>(std::max(fieldCount, 0)));
    Fields fields(key, separator);
    for (int i = 0; i < fieldCount; ++i) {
        std::string_view field;
        fields.Next(field);
        if (i > 0) canonical += separator;
        canonical += field.empty() ? Wildcard : field;
    }
    return canonical;
}

nxIndexedMapKey::FieldMask nxIndexedMapKey::GetFieldMask(std::string_view canonicalKey, char separator)
{
    FieldMask mask;
    Fields fields(canonicalKey, separator);
    std::string_view field;
    for (std::size_t i = 0; fields.Next(field); ++i) {
        if (i >= mask.size()) throw std::out_of_range("invalid bitset position");
        mask[i] = field != Wildcard;
    }
    return mask;
}

bool nxIndexedMapKey::Matches(std::string_view pattern, std::string_view key, char separator)
{
    Fields patterns(pattern, separator);
    Fields values(key, separator);
    std::string_view wanted;
    std::string_view value;
    while (patterns.Next(wanted)) {
        if (!values.Next(value)) return false;
        if (wanted != Wildcard && wanted != value) return false;
    }
    return !values.Next(value);
}

std::string nxIndexedMapKey::Extract(std::string_view canonicalKey, const std::vector<unsigned int>& fields,
                                     char separator)
{
    std::vector<std::string_view> all;
    Fields split(canonicalKey, separator);
    for (std::string_view field; split.Next(field);)
        all.push_back(field);
    std::string extract;
    for (const unsigned int field : fields) {
        if (field >= all.size()) continue;
        extract += all[field];
        extract += separator;
    }
    return extract;
}
