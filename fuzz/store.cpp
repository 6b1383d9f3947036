// A damaged database of data stores: refused with its path and a reason, or each store is loaded or refused
// with a reason, and what is saved is what the next one loads.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "host/jobs/nxDataStores.h"

namespace {

const char* const Names[] = {"first", "second", "new"};

void Require(bool holds)
{
    if (!holds) std::abort();
}

using Rows = std::vector<nxAlgoDataStoreObject::Row>;

// What scripts do to a store, without one.
class Access : public nxAlgoDataStoreObject
{
public:
    static Rows Read(nxAlgoDataStoreObject& store)
    {
        Rows rows;
        for (const auto& row : store.*(&Access::_rows))
            rows.push_back(*row);
        return rows;
    }
    static void Change(nxAlgoDataStoreObject& store)
    {
        auto& rows = store.*(&Access::_rows);
        if (rows.size() > 1) rows.erase(rows.begin());
        rows.push_back(std::make_unique<Row>(Row{"added", ""}));
    }
};

// Null: there is none, or it is refused, which is the same each time.
nxAlgoDataStoreObject* Get(nxDataStores& stores, const char* name, bool create)
{
    std::string reason, again;
    nxAlgoDataStoreObject* const store = stores.Get(name, create, reason);
    Require(store != nullptr ? reason.empty() : !create || !reason.empty());
    Require(stores.Get(name, create, again) == store && again == reason);
    return store;
}

std::vector<Rows> ReadAll(nxDataStores& stores)
{
    std::vector<Rows> all;
    for (const char* name : Names)
        if (nxAlgoDataStoreObject* const store = Get(stores, name, false))
            all.push_back(Access::Read(*store));
    return all;
}

void Use(nxDataStores& stores)
{
    for (const char* name : Names)
        if (nxAlgoDataStoreObject* const store = Get(stores, name, true)) Access::Change(*store);
}

void TryDirectory(const std::string& directory)
{
    std::vector<Rows> saved;
    {
        nxDataStores stores;
        if (const auto refusal = stores.Open(directory)) return Require(refusal->starts_with(directory));
        static_cast<void>(ReadAll(stores));
        Use(stores);
        if (const auto refusal = stores.Save()) return Require(refusal->starts_with(directory));
        saved = ReadAll(stores);
    }
    nxDataStores stores;
    Require(!stores.Open(directory));
    Require(ReadAll(stores) == saved);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    nxDataStores image;
    if (const auto refusal = image.OpenImage(bytes)) {
        Require(refusal->find(": ") != std::string::npos);
    } else {
        Use(image);
        if (const auto failure = image.Save()) Require(!failure->empty());
    }
    char directory[] = "/tmp/nx_fuzz_XXXXXX";
    Require(mkdtemp(directory) != nullptr);
    std::ofstream(nxDataStores::GetFiles(directory).front(), std::ios::binary) << bytes;
    TryDirectory(directory);
    std::filesystem::remove_all(directory);
    return 0;
}
