#include "api/nxIndexedMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <stdexcept>

#include "api/nxIndexedMapHashIndex.h"
#include "api/nxIndexedMapPrefixIndex.h"
#include "tests/support/nxRowFile.h"

namespace {

using Map = nxIndexedMap<const std::string, '.'>;
using Fields = std::vector<unsigned int>;
using HashIndex = nxIndexedMapHashIndex<const std::string, '.'>;
using PrefixIndex = nxIndexedMapPrefixIndex<const std::string, '.'>;

// Gathers the entries of a walk, up to a count.
class Gather : public nxIndexedMapAction<const std::string>
{
public:
    explicit Gather(std::size_t limit = SIZE_MAX) : _limit(limit) { _done = limit == 0; }
    void operator()(const std::string* entry) override
    {
        found.push_back(*entry);
        _done = found.size() >= _limit;
    }
    std::vector<std::string> found;

private:
    const std::size_t _limit;
};

std::string Walk(const Map& map, const std::string& pattern, std::size_t limit = SIZE_MAX)
{
    Gather gather(limit);
    map.Apply(pattern, gather);
    std::string text;
    for (const std::string& entry : gather.found)
        text += entry + ' ';
    return text;
}

TEST(nxIndexedMapKey, MakesKeysCanonicalAndHoldsThemToTheirFields)
{
    nxExpectRows("api/indices.txt", [](const std::string& row) {
        const auto words = nxGetWords(row);
        return nxIndexedMapKey::GetCanonical(words.size() > 3 ? words[3] : "", std::stoi(words[0]), '.');
    });
    EXPECT_THROW(nxIndexedMapKey::GetFieldMask(nxIndexedMapKey::GetCanonical("", 33, '.'), '.'),
                 std::out_of_range);
    EXPECT_FALSE(nxIndexedMapKey::Matches("A.*", "A.B.C", '.'));
    EXPECT_FALSE(nxIndexedMapKey::Matches("A.*.*", "A.B", '.'));
}

TEST(nxIndexedMap, WalksInOrderAndEndsWhenTheActionIsDone)
{
    Map map(3);
    const std::string entries[] = {"first", "second", "third", "fourth"};
    map.Insert("A.B", &entries[0]);
    map.Insert("B.B.C", &entries[1]);
    map.Insert("A.C.C.D", &entries[2]);
    EXPECT_EQ(Walk(map, ""), "first third second ");
    EXPECT_EQ(Walk(map, "..C"), "third second ");
    EXPECT_EQ(Walk(map, "..C", 1), "third ");
    EXPECT_EQ(Walk(map, "A.C.C") + Walk(map, "A.C.C", 0) + Walk(map, "A.X.C"), "third ");
    map.Insert("A.B.*", &entries[3]);  // the same key again
    EXPECT_EQ(Walk(map, "A"), "fourth third ");
    EXPECT_EQ(map.Find("A.B"), nullptr);  // as it stands
    EXPECT_EQ(map.Find("A.B.*"), &entries[3]);
}

Fields ReadFields(std::string text)
{
    Fields fields;
    std::ranges::replace(text, ',', ' ');
    for (const std::string& word : nxGetWords(text))
        fields.push_back(static_cast<unsigned int>(std::stoul(word)));
    return fields;
}

TEST(nxIndexedMap, ChoosesTheIndexThatSharesMost)
{
    nxExpectRows("api/indices.txt", [](const std::string& row) {
        Map map(4);
        Map::FieldMask bound;
        std::vector<Map::Index*> made;
        std::istringstream parts(row.substr(0, row.find("bound ")));
        for (std::string part; std::getline(parts, part, ';') && !nxGetWords(part).empty();) {
            const bool isPreferred = part.find("preferred") != part.npos;
            auto hash = std::make_unique<HashIndex>(ReadFields(nxGetWords(part).front()), isPreferred);
            made.push_back(hash.get());
            map.AddIndex(std::move(hash), part.find("direct") != part.npos);
        }
        for (const unsigned int field : ReadFields(nxGetWords(row).back()))
            bound.set(field);
        const Map::Choice choice = map.ChooseIndex(bound);
        const auto index = std::ranges::find(made, choice.index) - made.begin();
        return (choice.index == nullptr ? "none" : std::to_string(index)) + " " +
               std::to_string(choice.matchKind);
    });
}

TEST(nxIndexedMap, AnIndexLooksAtFewEntries)
{
    const std::string entry = "entry";
    HashIndex hash(Fields{0, 2});
    PrefixIndex prefix(Fields{2, 0});
    for (char type = 'A'; type < 'E'; ++type)
        for (char exchange = 'a'; exchange < 'k'; ++exchange)
            for (Map::Index* index : {static_cast<Map::Index*>(&hash), static_cast<Map::Index*>(&prefix)})
                index->Insert({type, '.', 'N', '.', exchange}, &entry);
    EXPECT_EQ(hash.GetEntryCount(), 40u);
    EXPECT_EQ(hash.CountCandidates("A.*.b", nxIndexedMapMatch::Bound), 1u);
    EXPECT_EQ(hash.CountCandidates("A.*.*", nxIndexedMapMatch::PartBound), 10u);
    EXPECT_EQ(prefix.CountCandidates("A.*.b", nxIndexedMapMatch::Bound), 1u);
    EXPECT_EQ(prefix.CountCandidates("*.*.b", nxIndexedMapMatch::PartBound), 4u);
    EXPECT_EQ(prefix.CountCandidates("A.*.*", nxIndexedMapMatch::PartBound), 40u);  // the first field is open
}

// Every walk of maps with random indices finds what a scan with the matcher finds, no more and no less.
TEST(nxIndexedMap, EveryWalkFindsWhatAScanFinds)
{
    constexpr int fieldCount = 4;
    std::mt19937 random(20240607);
    const auto below = [&](unsigned int limit) { return static_cast<unsigned int>(random() % limit); };
    const auto makeKey = [&](unsigned int wildcards) {
        const char* const values[] = {"A", "B", "AB", "C", "*"};
        std::string key;
        for (int i = 0; i < fieldCount; ++i)
            key += (i > 0 ? "." : "") + std::string(below(10) < wildcards ? "*" : values[below(5)]);
        return key;
    };
    const auto addIndex = [&](Map& map) {
        Fields fields;
        for (unsigned int field = 0; field < fieldCount; ++field)
            if (below(2) == 0) fields.push_back(field);
        if (fields.empty()) fields.push_back(below(fieldCount));
        std::shuffle(fields.begin(), fields.end(), random);
        const bool preferred = below(2) == 0;
        if (below(2) == 0)
            map.AddIndex(std::make_unique<HashIndex>(fields, preferred), below(3) == 0);
        else
            map.AddIndex(std::make_unique<PrefixIndex>(fields, preferred), below(3) == 0);
    };
    for (int round = 0; round < 60; ++round) {
        std::vector<std::unique_ptr<std::string>> entries;
        Map map(fieldCount);
        for (unsigned int i = below(4); i > 0; --i)
            addIndex(map);
        for (unsigned int i = below(150); i > 0; --i) {
            const std::string key = makeKey(1);
            if (below(6) == 0) {
                map.Remove(key);
                continue;
            }
            entries.push_back(std::make_unique<std::string>(key + "#" + std::to_string(i)));
            map.Insert(key, entries.back().get());
        }
        addIndex(map);  // one that comes late
        for (int walk = 0; walk < 60; ++walk) {
            const std::string pattern = makeKey(6);
            std::vector<std::string> expected;
            for (const auto& [key, entry] : map.GetMap())
                if (nxIndexedMapKey::Matches(pattern, key, '.')) expected.push_back(*entry);
            Gather all;
            map.Apply(pattern, all);
            std::sort(all.found.begin(), all.found.end());
            std::sort(expected.begin(), expected.end());
            ASSERT_EQ(all.found, expected) << "round " << round << ", " << pattern;
            const std::size_t limit = 1 + below(4);
            Gather some(limit);
            map.Apply(pattern, some);
            ASSERT_EQ(some.found.size(), std::min(limit, expected.size()))
                << "round " << round << ", " << pattern;
        }
        map.Clear();
        ASSERT_EQ(Walk(map, makeKey(6)), "");
    }
}

}  // namespace
