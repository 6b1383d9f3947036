// The product definition cache: lookups by its size, walks by a pattern, updates to observers, and threads
// that meet.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "api/nxIndexedMapHashIndex.h"
#include "api/nxProductCache.h"

namespace {

constexpr int exchangeCount = 100;

nxGenericProductID Product(int number)
{
    return nxGenericProductID("PRODUCT" + std::to_string(number), nxProductType_Future,
                              "EX" + std::to_string(number % exchangeCount));
}

nxProductDefinition Make(int number)
{
    nxProductDefinition definition;
    definition.SetGenericProductID(Product(number));
    definition.SetName("PRODUCT" + std::to_string(number));
    definition.SetTickSize(nxDecimal(1, 100, 2));
    return definition;
}

nxProductCache& FilledCache(int count)
{
    nxProductCache& cache = nxProductCache::GetInstance();
    if (static_cast<int>(cache.GetProductDefinitions(nxGenericProductID()).size()) == count) return cache;
    cache.Destroy();
    for (int number = 0; number < count; ++number) {
        nxProductDefinition definition = Make(number);
        std::vector<nxProductDefinition*> definitions = {&definition};
        cache.OnDataObjectSnapshot({}, definitions, nullptr);
    }
    return cache;
}

void Lookup(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    nxProductCache& cache = FilledCache(count);
    std::vector<nxGenericProductID> asked;
    for (int i = 0; i < 1024; ++i)
        asked.push_back(Product(static_cast<int>(i * 7919LL % count)));
    std::size_t next = 0;
    for (auto _ : state)
        delete cache.GetCachedDataObjectCopy(asked[next++ % asked.size()], true, false);
}
BENCHMARK(Lookup)->Name("nxProductCache/lookup")->Arg(1)->Arg(1'000)->Arg(100'000);

class CountAction : public nxIndexedMapAction<int>
{
public:
    void operator()(int*) override { ++count; }
    int count = 0;
};

// One exchange of a hundred, among 100,000 keys.
void Walk(benchmark::State& state, bool isIndexed)
{
    nxIndexedMap<int, '.'> map(9);
    if (isIndexed) map.AddIndex(std::make_unique<nxIndexedMapHashIndex<int, '.'>>(std::vector{2u}));
    int entry = 0;
    for (int number = 0; number < 100'000; ++number)
        map.Insert(Product(number).GetAsIndexedMapKey(), &entry);
    const std::string pattern = nxGenericProductID("*", {}, "EX7").GetAsIndexedMapKey();
    for (auto _ : state) {
        CountAction action;
        map.Apply(pattern, action);
        if (action.count != 1'000) state.SkipWithError("wrong count");
    }
}
BENCHMARK_CAPTURE(Walk, index, true)->Name("nxIndexedMap/walk_index");
BENCHMARK_CAPTURE(Walk, scan, false)->Name("nxIndexedMap/walk_scan");

class CountObserver : public nxProductObserver
{
public:
    void OnDataObjectSnapshot(const nxErrorEnum&, const nxProductDefinition*) override {}
    void OnDataObjectUpdate(const nxProductDefinition&) override { ++count; }
    long long count = 0;
};

void FanOut(benchmark::State& state)
{
    nxProductCache& cache = FilledCache(1);
    std::vector<CountObserver> observers(static_cast<std::size_t>(state.range(0)));
    for (CountObserver& observer : observers)
        static_cast<void>(cache.AttachObserver(Product(0), observer, nxDataObjectCacheObserverOption::Updates,
                                               false, false));
    nxProductDefinition definition = Make(0);
    std::vector<nxProductDefinition*> definitions = {&definition};
    for (auto _ : state)
        cache.DeliverUpdates(definitions);
    if (!observers.empty() && observers.back().count == 0) state.SkipWithError("not told");
    for (CountObserver& observer : observers)
        cache.DetachObserver(observer);
}
BENCHMARK(FanOut)->Name("nxProductCache/update_observers")->Arg(0)->Arg(1)->Arg(1'000);

// Each thread in turn brings a snapshot, brings an update and takes two copies, of one product of a thousand.
void Contend(benchmark::State& state, bool entryLevelLocking)
{
    static nxProductCache* cache = nullptr;
    if (state.thread_index() == 0) {
        cache = &FilledCache(1'000);
        cache->SetEnableEntryLevelLocking(entryLevelLocking);
    }
    int number = state.thread_index() * 250;
    for (auto _ : state) {
        number = (number + 37) % 1'000;
        nxProductDefinition definition = Make(number);
        std::vector<nxProductDefinition*> definitions = {&definition};
        cache->OnDataObjectSnapshot({}, definitions, nullptr);
        cache->DeliverUpdates(definitions);
        for (int i = 0; i < 2; ++i)
            delete cache->GetCachedDataObjectCopy(definition.GetGenericProductID(), false, false);
    }
    state.SetItemsProcessed(state.iterations() * 4);
    if (state.thread_index() == 0) cache->SetEnableEntryLevelLocking(false);
}
BENCHMARK_CAPTURE(Contend, cache, false)
    ->Name("nxProductCache/contend_cache_lock")
    ->Threads(1)
    ->Threads(4)
    ->UseRealTime();
BENCHMARK_CAPTURE(Contend, entry, true)
    ->Name("nxProductCache/contend_entry_lock")
    ->Threads(1)
    ->Threads(4)
    ->UseRealTime();

}  // namespace
