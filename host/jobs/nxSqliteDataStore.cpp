#include "host/jobs/nxSqliteDataStore.h"

#include <algorithm>

#include "base/threads/nxMutexGuard.h"
#include "host/jobs/nxSqliteDatabase.h"

nxSqliteDataStore::nxSqliteDataStore(nxSqliteDatabase& database, std::string name)
    : nxAlgoDataStoreObject(nullptr),
      _database(database),
      _name(std::move(name)),
      _logPrefix("[store " + _name + "] ")
{
}

// Names and texts are blobs: a script's text is any bytes. Rows count from 0, and stand apart from their
// columns since there are some without any.
void nxSqliteDataStore::CreateTables(nxSqliteDatabase& database)
{
    database.Run("CREATE TABLE stores (store INTEGER PRIMARY KEY, name BLOB NOT NULL UNIQUE)");
    database.Run(
        "CREATE TABLE rows (store INTEGER NOT NULL, row INTEGER NOT NULL, PRIMARY KEY (store, row)) WITHOUT "
        "ROWID");
    database.Run(
        "CREATE TABLE columns (store INTEGER NOT NULL, row INTEGER NOT NULL, col INTEGER NOT NULL, "
        "value BLOB NOT NULL, PRIMARY KEY (store, row, col)) WITHOUT ROWID");
}

bool nxSqliteDataStore::Load()
{
    _database.Run("SELECT store FROM stores WHERE name = ?", {_name},
                  [this](const nxSqliteDatabase::Row& found) { _id = found.GetNumber(0); });
    if (_id != 0) _LoadSaved();
    if (_database.HasFailed()) {
        _SetInvalid();
        return true;
    }
    for (const Row& row : _saved)
        _LoadRow(row);
    return _id != 0;
}

// A save writes rows by their numbers, so what is not numbered as it was written is not taken for a store.
void nxSqliteDataStore::_LoadSaved()
{
    bool isInOrder = true;
    long long columns = 0;
    _database.Run(
        "SELECT rows.row, columns.col, columns.value FROM rows LEFT JOIN columns "
        "ON columns.store = rows.store AND columns.row = rows.row "
        "WHERE rows.store = ? ORDER BY rows.row, columns.col",
        {_id}, [&](const nxSqliteDatabase::Row& found) {
            const long long row = found.GetNumber(0);
            if (row == static_cast<long long>(_saved.size())) _saved.emplace_back();
            isInOrder = isInOrder && row + 1 == static_cast<long long>(_saved.size());
            if (!isInOrder || found.IsNull(1)) return;
            isInOrder = found.GetNumber(1) == static_cast<long long>(_saved.back().size());
            _saved.back().push_back(found.GetBytes(2));
            ++columns;
        });
    long long written = 0;
    _database.Run("SELECT count(*) FROM columns WHERE store = ?", {_id},
                  [&](const nxSqliteDatabase::Row& found) { written = found.GetNumber(0); });
    if (!isInOrder || columns != written) _database.Fail("its rows are not numbered as they should be");
}

bool nxSqliteDataStore::_HasChanged()
{
    const nxMutexGuard guard(_mutex);
    return _id == 0 || !std::ranges::equal(
                           _rows, _saved, {}, [](const auto& row) -> auto& { return *row; });
}

bool nxSqliteDataStore::_BeginPersist()
{
    if (!Valid() || _database.HasFailed() || !_HasChanged() || !_database.Begin()) return false;
    _position = 0;
    _refusals.clear();
    _newID = _id;
    if (_id == 0) {
        _database.Run("INSERT INTO stores (name) VALUES (?)", {_name});
        _newID = _database.GetLastID();
    }
    return true;
}

void nxSqliteDataStore::_PersistRow(const Row* row)
{
    const std::size_t place = _position++;
    if (place < _saved.size() && *row == _saved[place]) return;
    const auto number = static_cast<long long>(place);
    const bool isRefused = _IsRefused(*row);
    if (place < _saved.size()) {
        if (isRefused) return;  // the database keeps what it holds there
        _database.Run("DELETE FROM columns WHERE store = ? AND row = ?", {_newID, number});
    } else {
        _database.Run("INSERT INTO rows (store, row) VALUES (?, ?)", {_newID, number});
        if (isRefused) return;  // an empty row keeps its place
    }
    long long column = 0;
    for (const std::string& value : *row)
        _database.Run("INSERT INTO columns (store, row, col, value) VALUES (?, ?, ?, ?)",
                      {_newID, number, column++, value});
    _written.emplace_back(place, *row);
}

// A statement that fails would take the whole save with it.
bool nxSqliteDataStore::_IsRefused(const Row& row)
{
    const std::size_t most = _database.GetLargestValue();
    const auto tooLarge =
        std::ranges::find_if(row, [most](const auto& value) { return value.size() > most; });
    if (tooLarge == row.end()) return false;
    _refusals.push_back("row " + std::to_string(_position) + " of the store " + _name +
                        " cannot be saved: it has a value of " + std::to_string(tooLarge->size()) +
                        " bytes, and " + std::to_string(most) + " are the most");
    return true;
}

void nxSqliteDataStore::_EndPersist()
{
    if (_position >= _saved.size()) return;
    const auto first = static_cast<long long>(_position);
    _database.Run("DELETE FROM columns WHERE store = ? AND row >= ?", {_newID, first});
    _database.Run("DELETE FROM rows WHERE store = ? AND row >= ?", {_newID, first});
}

void nxSqliteDataStore::NoteCommit()
{
    if (_newID == 0) return;  // was not part of it
    _id = std::exchange(_newID, 0);
    _saved.resize(_position);
    for (auto& [place, row] : _written)
        _saved[place] = std::move(row);
    _written.clear();
}

void nxSqliteDataStore::NoteRollback()
{
    _newID = 0;
    _written.clear();
}
