#pragma once

#include <bitset>
#include <string>
#include <string_view>
#include <vector>

// The keys of an indexed map: texts of fields joined by a separator. A canonical key has exactly the map's
// count of fields, with "*" where a field is not given; as a pattern its "*" stands for any value.
namespace nxIndexedMapKey {

// Bit i stands for field i.
using FieldMask = std::bitset<32>;

// The canonical form of `key`: empty fields become "*", further fields are dropped, missing ones are "*".
// Empty when fieldCount is not positive.
std::string GetCanonical(std::string_view key, int fieldCount, char separator);

// The fields of a canonical key that are given. Throws std::out_of_range for a field beyond the mask.
FieldMask GetFieldMask(std::string_view canonicalKey, char separator);

// True when each field of the pattern is "*" or the same bytes as the key's, and both have the same count of
// fields. A "*" in `key` is a value like any other.
bool Matches(std::string_view pattern, std::string_view key, char separator);

// The named fields of a canonical key in the order of `fields`, each followed by the separator, so that a
// beginning of the list gives a beginning of the text. A field that the key does not have is left out.
std::string Extract(std::string_view canonicalKey, const std::vector<unsigned int>& fields, char separator);

}  // namespace nxIndexedMapKey
