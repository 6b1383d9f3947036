#include "scriptFramework/analytics/nxAlgoDataStoreObject.h"

#include <algorithm>

#include "base/log/nxLogMessage.h"
#include "base/threads/nxMutexGuard.h"

using Self = nxAlgoDataStoreObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"add", &Self::add},     {"set", &Self::set}, {"get", &Self::get},
    {"clear", &Self::clear}, {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"count", &Self::Get_count, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

namespace {

constexpr unsigned int MostColumns = 100;
constexpr unsigned int MostRows = 10000;

// Raises what is neither text nor number, so it comes before any lock.
Self::Row ReadColumns(nxLuaParameters& parameters, unsigned int first)
{
    Self::Row row;
    for (unsigned int i = first; i <= parameters.Count(); ++i)
        row.emplace_back(parameters.Parameter(i).GetString());
    return row;
}

std::size_t GetBytes(const Self::Row& row)
{
    std::size_t bytes = sizeof row + sizeof(void*);
    for (const std::string& column : row)
        bytes += sizeof column + column.size();
    return bytes;
}

}  // namespace

bool nxAlgoDataStoreObject::add(nxLuaParameters& parameters, nxLuaResults& results)
{
    const unsigned int count = parameters.Count();
    if (count < 1) return results.Fail("dataStore:add requires at least one argument");
    if (count > MostColumns) {
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(),
                     "dataStore:add exceeded max number of columns : ", MostColumns, " adding ", count,
                     " columns");
        return results.Fail("dataStore:add exceeded max number of columns");
    }
    bool isFull = false;
    {
        const nxMutexGuard guard(_mutex);
        // Lets one row more in than it says, which is kept: stores of that size are about.
        isFull = _rows.size() > MostRows;
    }
    if (isFull) {
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(),
                     "dataStore:add exceeded max number of rows: ", MostRows);
        return results.Fail("dataStore:add exceeded max number of rows");
    }
    const Row row = ReadColumns(parameters, 1);
    if (!_Charge(results, row, 0)) return false;
    _LoadRow(row);
    return true;
}

bool nxAlgoDataStoreObject::set(nxLuaParameters& parameters, nxLuaResults& results)
{
    const unsigned int count = parameters.Count();
    // One argument will do, whatever the text says, and is kept: scripts empty a row so.
    if (count < 1) return results.Fail("dataStore:set requires at least two arguments ");
    if (count > MostColumns + 1) {
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(),
                     "dataStore:set exceeded max number of columns : ", MostColumns, " adding ", count - 1,
                     " columns");
        return results.Fail("dataStore:set exceeded max number of columns");
    }
    const unsigned int index = parameters.Parameter(1).GetUnsigned();
    if (_HasRow(index)) {
        Row row = ReadColumns(parameters, 2);
        if (!_Charge(results, row, _GetRowBytes(index))) return false;
        const nxMutexGuard guard(_mutex);
        // Another thread's clear may have come between.
        if (index <= _rows.size()) {
            *_rows[index - 1] = std::move(row);
            return true;
        }
    }
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "dataStore:set invalid index : ", index);
    return results.Fail("dataStore:set invalid index");
}

bool nxAlgoDataStoreObject::get(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("dataStore:get requires one argument [index]");
    const unsigned int index = parameters.Parameter(1).GetUnsigned();
    Row row;
    bool isThere = false;
    {
        const nxMutexGuard guard(_mutex);
        isThere = index != 0 && index <= _rows.size();
        if (isThere) row = *_rows[index - 1];
    }
    if (!isThere) {
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "dataStore:get invalid index : ", index);
        return results.Fail("dataStore:get invalid index");
    }
    results.Reserve(row.size());
    for (const std::string& column : row)
        results.Add(column);
    return true;
}

bool nxAlgoDataStoreObject::clear(nxLuaParameters&, nxLuaResults&)
{
    const nxMutexGuard guard(_mutex);
    _rows.clear();
    _charges.clear();
    return true;
}

bool nxAlgoDataStoreObject::Get_count(nxLuaResults& results)
{
    std::size_t count = 0;
    {
        const nxMutexGuard guard(_mutex);
        count = _rows.size();
    }
    results.Add(static_cast<double>(count));
    return true;
}

bool nxAlgoDataStoreObject::Persist()
{
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Persist DataStore");
    if (!_BeginPersist()) return true;
    const nxMutexGuard guard(_mutex);
    for (const auto& row : _rows)
        _PersistRow(row.get());
    _EndPersist();
    return true;
}

void nxAlgoDataStoreObject::_LoadRow(const Row& row)
{
    auto copy = std::make_unique<Row>(row);
    const nxMutexGuard guard(_mutex);
    _rows.push_back(std::move(copy));
}

bool nxAlgoDataStoreObject::_HasRow(unsigned int index)
{
    const nxMutexGuard guard(_mutex);
    return index != 0 && index <= _rows.size();
}

std::size_t nxAlgoDataStoreObject::_GetRowBytes(unsigned int index)
{
    const nxMutexGuard guard(_mutex);
    return index <= _rows.size() ? GetBytes(*_rows[index - 1]) : 0;
}

// A row that is replaced may be another script's, or the host's: nobody gets back more than was charged.
bool nxAlgoDataStoreObject::_Charge(nxLuaResults& results, const Row& row, std::size_t before)
{
    const nxScriptCharge::Account& account = results.GetAccount();
    const nxMutexGuard guard(_mutex);
    auto charge = std::ranges::find(_charges, account, &nxScriptCharge::GetAccount);
    if (charge == _charges.end()) charge = _charges.emplace(charge, account);
    const std::size_t charged = charge->GetBytes() + GetBytes(row);
    return results.Sets(*charge, charged - std::min(before, charged));
}
