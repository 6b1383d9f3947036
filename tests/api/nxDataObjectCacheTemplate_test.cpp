#include "api/nxDataObjectCacheTemplate.h"

#include <gtest/gtest.h>

#include <functional>

#include "api/nxProductCache.h"
#include "tests/support/nxRecordingLog.h"

namespace {

using Definition = nxProductDefinition;
using Entry = nxProductCacheEntry;
using Owned = std::unique_ptr<Definition>;

constexpr unsigned updates = 1;
constexpr unsigned snapshot = 2;

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

// A cache whose subscriptions do and answer what the test says, and tell what they are asked.
class TestCache : public nxProductBasedCache<Definition, Entry, nxProductObserver>
{
public:
    ~TestCache() override { Destroy(); }  // subscriptions write into `told`

    std::string told;
    nxErrorEnum subscribeError;
    nxErrorEnum snapshotError;
    std::function<void(Entry*)> onGetSnapshot = [](Entry*) {};

    void Snapshot(std::vector<Definition> objects, Entry* requester = nullptr, nxErrorEnum error = {})
    {
        auto pointers = _Point(objects);
        OnDataObjectSnapshot(error, pointers, requester);
    }
    void Update(std::vector<Definition> objects)
    {
        auto pointers = _Point(objects);
        if (GetEnableEntryLevelLocking())
            OnDataObjectUpdate_FineGrained(pointers);
        else
            OnDataObjectUpdate(pointers);
    }
    std::string Ask(const nxGenericProductID& productID, bool populate = false)
    {
        Definition* copy = nullptr;
        const nxErrorEnum error = GetCachedDataObjectCopy(productID, copy, populate, true);
        const Owned owned(copy);
        return (copy == nullptr ? "null" : copy->GetDescription()) + " " + std::to_string(error.GetValue());
    }

    std::string GetIndexedMapKeyForDataObject(const Definition& object) override
    {
        return object.GetGenericProductID().GetAsIndexedMapKey();
    }
    bool IsWildcardDataObject(const Definition& object) override
    {
        return object.GetGenericProductID().GetName().empty();
    }
    bool ShouldCacheDataObject(const Definition& object) override
    {
        return object.GetDescription() != "ignored";
    }
    nxDataObjectCacheSubscription* CreateSubscription(const nxGenericProductID& productID) override
    {
        return new Subscription(*this, productID.GetName());
    }

private:
    class Subscription : public nxDataObjectCacheSubscription
    {
    public:
        Subscription(TestCache& cache, const std::string& name) : _cache(cache), _name(name) {}
        nxErrorEnum Subscribe() override
        {
            _cache.told += "+" + _name + " ";
            return _cache.subscribeError;
        }
        nxErrorEnum Unsubscribe() override
        {
            _cache.told += "-" + _name + " ";
            return {};
        }
        nxErrorEnum GetSnapshot(nxDataObjectCacheEntry* requester, bool flag) override
        {
            _cache.told += "?" + _name + (flag ? "! " : " ");
            _cache.onGetSnapshot(static_cast<Entry*>(requester));
            return _cache.snapshotError;
        }

    private:
        TestCache& _cache;
        const std::string _name;
    };

    static std::vector<Definition*> _Point(std::vector<Definition>& objects)
    {
        std::vector<Definition*> pointers;
        for (Definition& object : objects)
            pointers.push_back(&object);
        return pointers;
    }
};

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
        _Tell("s", error.IsSuccess() ? text : "failed");
    }
    void OnDataObjectUpdate(const Definition& object) override { _Tell("u", object.GetDescription()); }
    bool ShouldProcessUpdate(const Definition&) override { return !isDeaf; }

private:
    void _Tell(const std::string& kind, const std::string& text)
    {
        _told += _name + ":" + kind + text + " ";
        then();
    }

    std::string& _told;
    const std::string _name;
};

class TestMonitor : public TestCache::Monitor
{
public:
    explicit TestMonitor(std::string& told) : _told(told) {}
    std::function<void()> then = [] {};

    void OnCacheEntryAddition(const Entry* entry, bool fromSnapshot) override
    {
        _told += (fromSnapshot ? "new-s:" : "new-u:") + entry->GetDataObject()->GetDescription() + " ";
        then();
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
class nxDataObjectCacheTemplateTest : public testing::TestWithParam<bool>
{
protected:
    nxDataObjectCacheTemplateTest() { cache.SetEnableEntryLevelLocking(GetParam()); }

    std::string Told() { return std::exchange(cache.told, {}); }
    nxErrorEnum Attach(TestObserver& observer, unsigned options, bool populate = false)
    {
        return cache.AttachObserver(Future("A"), observer, options, populate, false);
    }
    // Told by a snapshot "1", an update "2" and another snapshot "3" of A.
    std::string Bring()
    {
        cache.Snapshot({Make(Future("A"), "1")});
        cache.Update({Make(Future("A"), "2")});
        cache.Snapshot({Make(Future("A"), "3")});
        return Told();
    }

    TestCache cache;
    TestObserver a{cache.told, "a"};
    TestObserver b{cache.told, "b"};
};
INSTANTIATE_TEST_SUITE_P(CacheAndEntryLocks, nxDataObjectCacheTemplateTest, testing::Bool());

TEST_P(nxDataObjectCacheTemplateTest, PopulatesOnceForASubscriptionKey)
{
    nxRecordingLog log;
    cache.onGetSnapshot = [&](Entry* requester) {
        EXPECT_EQ(requester, nullptr);
        cache.Snapshot({Make(Future("A"), "one"), Make(Future("A", "X"), "other")});
    };
    EXPECT_EQ(cache.Ask(Future("A")), "null 0");
    EXPECT_EQ(Told() + log.TakeLines(), "");
    EXPECT_EQ(cache.Ask(Future("A"), true), "one 0");
    EXPECT_EQ(cache.Ask(Future("A", "X"), true), "other 0");
    EXPECT_EQ(cache.Ask(Future("A", "Y"), true), "null 0");  // of the same key, and not there
    EXPECT_EQ(Told(), "+A ?A! ");
    EXPECT_EQ(log.TakeLines(),
              "31 Added Subscriptions and requested snapshot in data object cache. Key: F.A\n");
    for (const auto& productID : {nxGenericProductID("A"), Future(""), Future("*")})
        EXPECT_EQ(cache.Ask(productID, true), "null 1000002");
    EXPECT_EQ(Told() + log.TakeLines(), "");
    cache.Destroy();
    EXPECT_EQ(Told(), "-A ");
    EXPECT_EQ(cache.Ask(Future("A")), "null 0");
}

TEST_P(nxDataObjectCacheTemplateTest, AFailedSubscriptionIsTriedAgain)
{
    nxRecordingLog log;
    const std::string line = "37 Failed to add subscription in data object cache. Key: F.A, Error: 1000010";
    cache.subscribeError = nxError_NotANumber;
    EXPECT_EQ(cache.Ask(Future("A"), true), "null 1000010");
    EXPECT_EQ(Told(), "+A ");
    EXPECT_EQ(log.TakeLines().substr(0, line.size()), line);
    cache.subscribeError = {};
    cache.snapshotError = nxError_NotANumber;
    EXPECT_EQ(Attach(a, snapshot, true).GetValue(), 1000010u);
    EXPECT_EQ(Told(), "+A ?A -A ");
    cache.snapshotError = {};
    EXPECT_EQ(cache.Ask(Future("A"), true), "null 0");  // the failed attach is not in its way
    EXPECT_EQ(Told(), "+A ?A! ");
    EXPECT_EQ(Bring(), "");  // a was detached
}

TEST_P(nxDataObjectCacheTemplateTest, OptionsDecideWhatAnObserverHears)
{
    const struct
    {
        unsigned options;
        const char* early;  // attached before there is data
        const char* late;   // attached when 3 is there
    } rows[] = {
        {0, "", ""},
        {updates, "a:u2 ", "a:u2 "},
        {snapshot, "a:s1 ", "a:s3 "},
        {updates | snapshot, "a:s1 a:u2 a:s3 ", "a:s3 a:s1 a:u2 a:s3 "},
    };
    for (const auto& row : rows) {
        cache.Destroy();
        ASSERT_TRUE(Attach(a, row.options).IsSuccess());
        EXPECT_EQ(Owned(a.GetCachedDataObjectCopy()), nullptr);
        EXPECT_EQ(Bring(), row.early) << row.options;
        ASSERT_TRUE(Attach(a, row.options).IsSuccess());
        EXPECT_EQ(Told() + Bring(), row.late) << row.options;
        EXPECT_EQ(Owned(a.GetCachedDataObjectCopy())->GetDescription(), "3");
        cache.DetachObserver(a);
        EXPECT_EQ(Bring(), "");
    }
    ASSERT_TRUE(Attach(a, updates).IsSuccess());
    cache.Destroy();
    EXPECT_EQ(a.GetCachedDataObject(), nullptr);  // the entry is gone
}

TEST_P(nxDataObjectCacheTemplateTest, ADetachInACallbackWaitsForTheEndOfTheWalk)
{
    TestObserver& first = std::less<>()(&a, &b) ? a : b;
    TestObserver& second = &first == &a ? b : a;
    ASSERT_TRUE(Attach(first, updates).IsSuccess());
    ASSERT_TRUE(Attach(second, updates).IsSuccess());
    first.then = [&] {
        cache.DetachObserver(first);
        cache.DetachObserver(second);
    };
    cache.Update({Make(Future("A"), "1")});
    const std::string both = Told();
    EXPECT_EQ(both.size(), std::string("a:u1 b:u1 ").size()) << both;
    cache.Update({Make(Future("A"), "2")});
    EXPECT_EQ(Told(), "");
}

TEST_P(nxDataObjectCacheTemplateTest, AWalkInsideAWalkLeavesTheOuterOneWhole)
{
    ASSERT_TRUE(Attach(a, updates | snapshot).IsSuccess());
    ASSERT_TRUE(Attach(b, updates | snapshot).IsSuccess());
    bool isInner = false;
    a.then = b.then = [&] {
        if (std::exchange(isInner, true)) return;
        a.GetObservedCacheEntry()->Detach(a);
        a.GetObservedCacheEntry()->Detach(b);
        static_cast<Entry*>(a.GetObservedCacheEntry())
            ->NotifyObserversOfDataObjectUpdate(Make(Future("A"), "2"));
    };
    cache.Snapshot({Make(Future("A"), "1")});
    const std::string told = Told();
    EXPECT_EQ(std::count(told.begin(), told.end(), '1'), 2) << told;
    EXPECT_EQ(std::count(told.begin(), told.end(), '2'), 2) << told;
    EXPECT_EQ(Bring(), "");
}

TEST_P(nxDataObjectCacheTemplateTest, ARequesterHearsOfWhatIsNotThere)
{
    const struct
    {
        std::vector<Definition> objects;
        nxErrorEnum error;
        const char* told;
        const char* afterwards;
    } rows[] = {
        {{}, {}, "a:snull ", "a:s1 a:u2 a:s3 "},
        {{}, nxError_NotANumber, "a:sfailed ", ""},  // detached
        {{Make(Future("A"), "x")}, nxError_NotANumber, "a:sfailed ", ""},
        {{Make(Future("A"), "ignored")}, {}, "", "a:s1 a:u2 a:s3 "},
        {{Make(Future("B"), "x")}, {}, "", "a:s1 a:u2 a:s3 "},
        {{Make(Future("A"), "x")}, {}, "a:sx ", "a:s1 a:u2 a:s3 "},
    };
    for (const auto& row : rows) {
        cache.Destroy();
        Told();
        Entry* requester = nullptr;
        cache.onGetSnapshot = [&](Entry* entry) { requester = entry; };
        ASSERT_TRUE(Attach(a, updates | snapshot, true).IsSuccess());
        EXPECT_EQ(Told(), "+A ?A ");
        ASSERT_EQ(requester, a.GetObservedCacheEntry());
        cache.Snapshot(row.objects, requester, row.error);
        EXPECT_EQ(Told(), row.told);
        EXPECT_EQ(Bring(), row.afterwards);
    }
}

TEST_P(nxDataObjectCacheTemplateTest, MonitorsHearOfNewEntriesAndOfUpdates)
{
    TestMonitor monitor(cache.told);
    TestMonitor once(cache.told);
    cache.AddEntryMonitor(monitor);
    cache.AddUpdateMonitor(monitor);
    cache.Snapshot({Make(Future("A"), "1"), Make(Future("B"), "ignored"), Make(Future("C"), "2")});
    EXPECT_EQ(Told(), "new-s:1 new-s:2 ");
    cache.Update({Make(Future("D"), "3"), Make(Future("A"), "4"), Make(Future("B"), "ignored")});
    EXPECT_EQ(Told(), "monitor:3 monitor:4 new-u:3 ");
    ASSERT_TRUE(Attach(a, updates).IsSuccess());
    a.isDeaf = true;
    cache.AddUpdateMonitor(once);
    monitor.then = once.then = [&] { cache.RemoveMonitor(once); };
    cache.Update({Make(Future("A"), "5")});
    Told();
    cache.Update({Make(Future("A"), "6")});
    EXPECT_EQ(Told(), "monitor:6 ");
    cache.RemoveMonitor(monitor);
    cache.Update({Make(Future("E"), "6")});
    EXPECT_EQ(Told(), "");
}

TEST_P(nxDataObjectCacheTemplateTest, AWildcardUpdateReachesWhatItsKeyMatches)
{
    const auto option = nxGenericProductID("A", nxProductType_Option, "X");
    cache.Snapshot({Make(Future("A", "X"), "1"), Make(Future("B", "X"), "2"), Make(Future("A", "Y"), "3"),
                    Make(option, "4")});
    ASSERT_TRUE(cache.AttachObserver(Future("B", "X"), b, updates, false, false).IsSuccess());
    cache.Update({Make(Future("", "X"), "all")});
    EXPECT_EQ(Told(), "b:uall ");
    EXPECT_EQ(cache.Ask(Future("A", "X")) + cache.Ask(Future("B", "X")), "all 0all 0");
    EXPECT_EQ(cache.Ask(Future("A", "Y")) + cache.Ask(option), "3 04 0");
}

// Only where callbacks run under the cache's lock may they call it.
TEST(nxDataObjectCacheTemplate, ACallbackMayCallTheCacheButNotPopulate)
{
    TestCache cache;
    TestObserver a(cache.told, "a");
    TestObserver b(cache.told, "b");
    ASSERT_TRUE(cache.AttachObserver(Future("A"), a, snapshot, false, false).IsSuccess());
    a.then = [&] {
        cache.told += cache.Ask(Future("A")) + " " + cache.Ask(Future("B"), true) + " ";
        EXPECT_EQ(cache.AttachObserver(Future("B"), b, snapshot, true, false).GetValue(), nxError_LockFailed);
        EXPECT_TRUE(cache.AttachObserver(Future("C"), b, updates, false, false).IsSuccess());
        cache.Update({Make(Future("C"), "3")});
    };
    cache.Snapshot({Make(Future("A"), "1")});
    cache.Snapshot({Make(Future("B"), "2")});
    EXPECT_EQ(cache.told, "a:s1 1 0 null 1000020 b:u3 ");
}

}  // namespace
