#include "api/nxProductCache.h"

#include <gtest/gtest.h>

#include <functional>

#include "base/records/nxStrategyDefinition.h"
#include "tests/api/nxMemoryDefinitionService.h"
#include "tests/support/nxRecordingLog.h"

namespace {

using Definition = nxProductDefinition;
using Owned = std::unique_ptr<Definition>;

constexpr unsigned int updates = 1;
constexpr unsigned int snapshot = 2;

nxGenericProductID Future(const std::string& name, const std::string& exchange = {})
{
    return nxGenericProductID(name, nxProductType_Future, exchange);
}

Definition Make(const nxGenericProductID& productID, const std::string& description)
{
    Definition definition;
    definition.SetGenericProductID(productID);
    definition.SetDescription(description);
    return definition;
}

// Writes "name:s..." for a snapshot and "name:u..." for an update into one text, then does what the test
// says.
class TestObserver : public nxProductObserver
{
public:
    TestObserver(std::string& told, const std::string& name) : _told(told), _name(name) {}
    std::function<void()> then = [] {};
    bool isDeaf = false;

    void OnDataObjectSnapshot(const nxErrorEnum& error, const Definition* object) override
    {
        const std::string text = object == nullptr ? "null" : object->GetDescription();
        _told += _name + ":s" + (error.IsSuccess() ? text : "failed") + " ";
        then();
    }
    void OnDataObjectUpdate(const Definition& object) override
    {
        _told += _name + ":u" + object.GetDescription() + " ";
        then();
    }
    bool ShouldProcessUpdate(const Definition&) override { return !isDeaf; }

private:
    std::string& _told;
    const std::string _name;
};

class TestMonitor : public nxProductCache::Monitor
{
public:
    explicit TestMonitor(std::string& told) : _told(told) {}
    std::function<void()> then = [] {};

    void OnCacheEntryAddition(const nxProductCacheEntry* entry, bool fromSnapshot) override
    {
        _told += (fromSnapshot ? "new-s:" : "new-u:") + entry->GetDataObject()->GetDescription() + " ";
    }
    void OnCacheUpdate(const Definition& object) override
    {
        _told += "monitor:" + object.GetDescription() + " ";
        then();
    }

private:
    std::string& _told;
};

// Under both kinds of locking.
class nxProductCacheTest : public testing::TestWithParam<bool>
{
protected:
    nxProductCacheTest() { cache.SetEnableEntryLevelLocking(GetParam()); }
    ~nxProductCacheTest() override
    {
        cache.Destroy();  // while the observers are there
        cache.SetEnableEntryLevelLocking(false);
    }

    std::string Told() { return std::exchange(service.told, {}); }
    std::string Ask(const nxGenericProductID& productID, bool populate = false)
    {
        Definition* copy = nullptr;
        const nxErrorEnum error = cache.GetCachedDataObjectCopy(productID, copy, populate, true);
        const Owned owned(copy);
        return (copy == nullptr ? "null" : copy->GetDescription()) + " " + std::to_string(error.GetValue());
    }
    void Snapshot(std::vector<Definition> objects, nxProductCacheEntry* requester = nullptr,
                  nxErrorEnum error = {})
    {
        std::vector<Definition*> pointers;
        for (Definition& object : objects)
            pointers.push_back(&object);
        cache.OnDataObjectSnapshot(error, pointers, requester);
    }
    void Update(const std::string& text) { service.Push(Make(Future("A"), text)); }
    unsigned int Attach(TestObserver& observer, unsigned int options, bool populate = false,
                        const std::string& name = "A")
    {
        return cache.AttachObserver(Future(name), observer, options, populate, false).GetValue();
    }
    // What is told of a snapshot "1", an update "2" and another snapshot "3" of A.
    std::string Bring()
    {
        Snapshot({Make(Future("A"), "1")});
        Update("2");
        Snapshot({Make(Future("A"), "3")});
        return Told();
    }

    nxProductCache& cache = nxProductCache::GetInstance();
    nxMemoryDefinitionService service;
    TestObserver a{service.told, "a"};
    TestObserver b{service.told, "b"};
};
INSTANTIATE_TEST_SUITE_P(CacheAndEntryLocks, nxProductCacheTest, testing::Bool());

TEST_P(nxProductCacheTest, PopulatesOnceForASubscriptionKey)
{
    nxRecordingLog log;
    service.Add(Make(Future("A"), "one"));
    EXPECT_EQ(Ask(Future("A")), "null 0");
    EXPECT_EQ(Told() + log.TakeLines(), "");
    EXPECT_EQ(Ask(Future("A"), true) + " " + Ask(Future("A"), true), "one 0 one 0");
    EXPECT_EQ(Ask(Future("A", "X"), true), "null 0");  // of the same key, and not there
    EXPECT_EQ(Told(), "+A ?A! ");
    EXPECT_EQ(log.TakeLines(),
              "31 Added Subscriptions and requested snapshot in data object cache. Key: F.A\n");
    for (const auto& productID : {nxGenericProductID("A"), Future(""), Future("*")})
        EXPECT_EQ(Ask(productID, true), "null 1000002");
    EXPECT_EQ(Told() + log.TakeLines(), "");
    cache.SetDefinitionService(nullptr);
    EXPECT_EQ(Told(), "-A ");
    EXPECT_EQ(Owned(cache.GetProductDefinition(nxProductID("B", nxProductType_Future), true, 0)), nullptr);
    EXPECT_EQ(Ask(Future("A"), true) + log.TakeLines(), "one 0");
}

TEST_P(nxProductCacheTest, AFailedSubscriptionIsTriedAgain)
{
    nxRecordingLog log;
    const std::string line = "37 Failed to add subscription in data object cache. Key: F.A, Error: 1000010";
    service.subscribeError = nxError_NotANumber;
    EXPECT_EQ(Ask(Future("A"), true), "null 1000010");
    EXPECT_EQ(Told(), "+A ");
    EXPECT_EQ(log.TakeLines().substr(0, line.size()), line);
    service.subscribeError = {};
    service.snapshotError = nxError_NotANumber;
    EXPECT_EQ(Attach(a, snapshot, true), 1000010u);
    EXPECT_EQ(Told(), "+A ?A -A ");
    service.snapshotError = {};
    EXPECT_EQ(Ask(Future("A"), true), "null 0");  // the failed attach is not in its way
    EXPECT_EQ(Told(), "+A ?A! ");
    EXPECT_EQ(Bring(), "");  // a was detached
}

TEST_P(nxProductCacheTest, OptionsDecideWhatAnObserverHears)
{
    // Attached before there is data, and when 3 is there.
    const std::tuple<unsigned int, const char*, const char*> rows[] = {
        {0, "", ""},
        {updates, "a:u2 ", "a:u2 "},
        {snapshot, "a:s1 ", "a:s3 "},
        {updates | snapshot, "a:s1 a:u2 a:s3 ", "a:s3 a:s1 a:u2 a:s3 "},
    };
    for (const auto& [options, early, late] : rows) {
        cache.Destroy();
        Attach(a, options);
        EXPECT_EQ(Owned(a.GetCachedDataObjectCopy()), nullptr);
        EXPECT_EQ(Bring(), early) << options;
        Attach(a, options);
        EXPECT_EQ(Told() + Bring(), late) << options;
        EXPECT_EQ(Owned(a.GetCachedDataObjectCopy())->GetDescription(), "3");
        cache.DetachObserver(a);
        EXPECT_EQ(Bring(), "");
    }
    Attach(a, updates);
    cache.Destroy();
    EXPECT_EQ(a.GetCachedDataObject(), nullptr);  // the entry is gone
}

TEST_P(nxProductCacheTest, ADetachInACallbackWaitsForTheEndOfTheWalk)
{
    Attach(a, updates);
    Attach(b, updates);
    a.then = b.then = [&] {  // whoever comes first
        cache.DetachObserver(a);
        cache.DetachObserver(b);
    };
    Update("1");
    EXPECT_EQ(Told().size(), std::string("a:u1 b:u1 ").size());
    Update("2");
    EXPECT_EQ(Told(), "");
}

TEST_P(nxProductCacheTest, AWalkInsideAWalkLeavesTheOuterOneWhole)
{
    Attach(a, updates | snapshot);
    Attach(b, updates | snapshot);
    bool isInner = false;
    a.then = b.then = [&] {
        if (std::exchange(isInner, true)) return;
        auto* entry = static_cast<nxProductCacheEntry*>(a.GetObservedCacheEntry());
        entry->Detach(a);
        entry->Detach(b);
        entry->NotifyObserversOfDataObjectUpdate(Make(Future("A"), "2"));
    };
    Snapshot({Make(Future("A"), "1")});
    const std::string told = Told();
    EXPECT_EQ(std::count(told.begin(), told.end(), '1'), 2) << told;
    EXPECT_EQ(std::count(told.begin(), told.end(), '2'), 2) << told;
    EXPECT_EQ(Bring(), "");
}

TEST_P(nxProductCacheTest, AnObserverThatThrowsIsStillLetGo)
{
    Attach(a, updates);
    Attach(b, updates);
    a.then = [&] {
        cache.DetachObserver(a);
        cache.DetachObserver(b);
        throw std::runtime_error("a");
    };
    EXPECT_THROW(Update("1"), std::runtime_error);
    Told();
    Update("2");
    EXPECT_EQ(Told(), "");
    b.then = [&] { cache.DetachObserver(b); };  // put off to the end of its own walk, no further
    Attach(b, updates);
    Update("3");
    Update("4");
    EXPECT_EQ(Told(), "b:u3 ");
}

TEST_P(nxProductCacheTest, ARequesterHearsOfWhatIsNotThere)
{
    // What is told of the snapshot, and of what follows.
    const std::tuple<std::vector<Definition>, nxErrorEnum, const char*, const char*> rows[] = {
        {{}, {}, "a:snull ", "a:s1 a:u2 a:s3 "},
        {{}, nxError_NotANumber, "a:sfailed ", ""},  // detached
        {{Make(Future("A"), "x")}, nxError_NotANumber, "a:sfailed ", ""},
        {{Make({}, "without identity, ignored")}, {}, "", "a:s1 a:u2 a:s3 "},
        {{Make(Future("B"), "x")}, {}, "", "a:s1 a:u2 a:s3 "},
        {{Make(Future("A"), "x")}, {}, "a:sx ", "a:s1 a:u2 a:s3 "},
    };
    service.isSilent = true;
    for (const auto& [objects, error, told, afterwards] : rows) {
        cache.Destroy();
        Told();
        EXPECT_EQ(Attach(a, updates | snapshot, true), 0u);
        EXPECT_EQ(Told(), "+A ?A ");
        ASSERT_EQ(service.requester, a.GetObservedCacheEntry());
        Snapshot(objects, service.requester, error);
        EXPECT_EQ(Told(), told);
        EXPECT_EQ(Bring(), afterwards);
    }
}

TEST_P(nxProductCacheTest, MonitorsHearOfNewEntriesAndOfUpdates)
{
    TestMonitor monitor(service.told);
    TestMonitor once(service.told);
    cache.AddEntryMonitor(monitor);
    cache.AddUpdateMonitor(monitor);
    Snapshot({Make(Future("B"), "1"), Make({}, "ignored"), Make(Future("C"), "2")});
    EXPECT_EQ(Told(), "new-s:1 new-s:2 ");
    Update("3");
    EXPECT_EQ(Told(), "monitor:3 new-u:3 ");
    cache.AddUpdateMonitor(once);
    monitor.then = once.then = [&] { cache.RemoveMonitor(once); };
    Attach(a, updates);
    a.isDeaf = true;
    Update("4");
    Told();
    Update("5");
    EXPECT_EQ(Told(), "monitor:5 ");
    cache.RemoveMonitor(monitor);
    Update("6");
    EXPECT_EQ(Told(), "");
}

TEST_P(nxProductCacheTest, ADefinitionWithoutANameChangesWhatItGives)
{
    const nxProductID strategyID("S", nxProductType_Strategy, "X");
    nxStrategyDefinition strategy;
    strategy.SetName("spread");
    strategy.AddStrategyLeg(nxStrategyLeg());
    for (const char* description : {"0", "1"}) {  // as a snapshot, as an update
        strategy.SetDescription(description);
        cache.SetProductDefinition(strategyID, strategy);
    }
    Snapshot({Make(Future("A", "X"), "2"), Make(Future("A", "Y"), "3")});
    cache.AttachObserver(Future("A", "X"), a, updates, false, false).IsSuccess();
    Definition forMany = Make(nxGenericProductID("", {}, "X"), "x");
    forMany.SetTickSize(nxDecimal(1, 4, 2));
    service.Push(forMany);
    service.Push(Make({}, "ignored"));
    const Owned changed(cache.GetProductDefinition(strategyID, false, 0));
    EXPECT_EQ(changed->GetName() + changed->GetDescription(), "spreadx");
    EXPECT_EQ(changed->GetTickSize(), forMany.GetTickSize());
    EXPECT_EQ(dynamic_cast<nxStrategyDefinition&>(*changed).GetStrategyLegCount(), 1u);
    service.Push(Make(Future("*"), "f"));
    EXPECT_EQ(Told(), "a:ux a:uf ");
    const std::pair<nxGenericProductID, const char*> rows[] = {
        {{}, "ffx"},        {Future("*", "X"), "f"}, {nxGenericProductID("", {}, "X"), "fx"},
        {Future(""), "ff"}, {Future("A"), "ff"},     {Future("B"), ""}};
    for (const auto& [pattern, expected] : rows) {
        std::string found;
        for (const Owned& definition : cache.GetProductDefinitions(pattern))
            found += definition->GetDescription();
        EXPECT_EQ(found, expected) << pattern.GetAsIndexedMapKey();
    }
}

TEST_P(nxProductCacheTest, ACallbackMayCallTheCacheButNotPopulate)
{
    cache.SetEnableEntryLevelLocking(false);  // only under the cache's lock
    Attach(a, snapshot);
    a.then = [&] {
        service.told += Ask(Future("A")) + " " + Ask(Future("B"), true) + " ";
        EXPECT_EQ(Attach(b, snapshot, true, "B"), nxError_LockFailed);
        EXPECT_EQ(Attach(b, updates, false, "C"), 0u);
        service.Push(Make(Future("C"), "3"));
    };
    Snapshot({Make(Future("A"), "1")});
    Snapshot({Make(Future("B"), "2")});
    EXPECT_EQ(Told(), "a:s1 1 0 null 1000020 b:u3 ");
}

}  // namespace
