#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "tests/api/nxMemoryDefinitionService.h"

namespace {

constexpr int productCount = 6;
constexpr int rounds = 400;

nxGenericProductID Product(int number)
{
    return nxGenericProductID("P" + std::to_string(number), nxProductType_Future,
                              number % 2 == 0 ? "X" : "Y");
}

// Tells by itself whether it is whole: name, description and lot size say the same.
nxProductDefinition Make(int product, int version)
{
    nxProductDefinition definition;
    definition.SetGenericProductID(Product(product));
    definition.SetDescription(std::to_string(version));
    definition.SetLotSize(nxDecimal::FromMantissa(version, 0));
    return definition;
}

int GetVersion(const nxProductDefinition& definition)
{
    const int version = std::stoi(definition.GetDescription());
    EXPECT_EQ(definition.GetLotSize(), nxDecimal::FromMantissa(version, 0));
    return version;
}

class Observer : public nxProductObserver
{
public:
    // Whom it detaches in its callback, now and then.
    std::atomic<Observer*> victim{nullptr};
    std::atomic<bool> isDetached{false};

    void OnDataObjectSnapshot(const nxErrorEnum&, const nxProductDefinition* definition) override
    {
        _Hear(definition);
    }
    void OnDataObjectUpdate(const nxProductDefinition& definition) override { _Hear(&definition); }

private:
    void _Hear(const nxProductDefinition* definition)
    {
        EXPECT_FALSE(isDetached);
        if (definition == nullptr) return;
        const int version = GetVersion(*definition);
        EXPECT_GE(version, _version);  // one thread pushes a product's updates
        _version = version;
        Observer* other = victim;
        if (other != nullptr && version % 3 == 0) nxProductCache::GetInstance().DetachObserver(*other);
    }

    int _version = 0;
};

struct Monitor : nxProductCache::Monitor
{
    std::atomic<int> additions{0};
    std::atomic<int> updates{0};
    void OnCacheEntryAddition(const nxProductCacheEntry*, bool) override { ++additions; }
    void OnCacheUpdate(const nxProductDefinition&) override { ++updates; }
};

using nxProductCacheThread = testing::TestWithParam<bool>;
INSTANTIATE_TEST_SUITE_P(CacheAndEntryLocks, nxProductCacheThread, testing::Bool());

// Services push, consumers ask, watch and go, and observers of one product detach themselves and each other.
TEST_P(nxProductCacheThread, ServicesConsumersAndObserversMeet)
{
    nxProductCache& cache = nxProductCache::GetInstance();
    cache.SetEnableEntryLevelLocking(GetParam());
    nxMemoryDefinitionService service;
    for (int product = 0; product < productCount; ++product)
        service.Add(Make(product, 0));
    Monitor monitor;
    cache.AddEntryMonitor(monitor);
    cache.AddUpdateMonitor(monitor);
    Observer quarrelling[productCount][2];
    const auto attach = [&](int product, Observer& observer, unsigned int options) {
        EXPECT_TRUE(cache.AttachObserver(Product(product), observer, options, true, false).IsSuccess());
    };
    for (auto& [one, other] : quarrelling) {
        one.victim = &other;
        other.victim = &other;
    }

    nxProductDefinition forMany[2];
    for (const int first : {0, 1}) {
        forMany[first].SetGenericProductID(
            nxGenericProductID("*", nxProductType_Future, first == 0 ? "X" : "Y"));
        forMany[first].SetTickSize(nxDecimal(1, 4, 2));
        service.Add(forMany[first]);
    }
    const auto push = [&](int first) {
        for (int version = 1; version <= rounds; ++version) {
            for (int product = first; product < productCount; product += 2)
                service.Push(Make(product, version));
            service.Push(forMany[first]);
        }
    };
    const auto consume = [&](unsigned int seed) {
        std::mt19937 random(seed);
        for (int round = 0; round < rounds; ++round) {
            const int product = static_cast<int>(random() % productCount);
            const std::unique_ptr<nxProductID> productID(Product(product).GetAsProductID());
            const std::unique_ptr<nxProductDefinition> copy(
                cache.GetProductDefinition(*productID, true, false));
            ASSERT_NE(copy, nullptr);
            GetVersion(*copy);
            Observer passing;
            attach(product, passing, 1 + static_cast<unsigned int>(random() % 3));
            const std::unique_ptr<nxProductDefinition> watched(passing.GetCachedDataObjectCopy());
            ASSERT_NE(watched, nullptr);
            EXPECT_GE(GetVersion(*watched), GetVersion(*copy));
            for (Observer& observer : quarrelling[product])
                attach(product, observer, 3);
            if (round % 16 == 0)
                for (const auto& definition : cache.GetProductDefinitions(nxGenericProductID("", {}, "X")))
                    GetVersion(*definition);
            cache.DetachObserver(passing);
            passing.isDetached = true;
        }
    };
    std::vector<std::thread> threads;
    for (const int first : {0, 1})
        threads.emplace_back(push, first);
    for (const unsigned int seed : {1u, 2u})
        threads.emplace_back(consume, seed);
    for (std::thread& thread : threads)
        thread.join();

    cache.RemoveMonitor(monitor);
    EXPECT_EQ(monitor.additions, productCount);
    EXPECT_GE(monitor.updates, productCount * rounds);
    EXPECT_EQ(std::count(service.told.begin(), service.told.end(), '?'), productCount);
    for (int product = 0; product < productCount; ++product) {
        const auto found = cache.GetProductDefinitions(Product(product));
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(GetVersion(*found[0]), rounds);
    }
    cache.Destroy();  // while the observers are there
    cache.SetEnableEntryLevelLocking(false);
}

}  // namespace
