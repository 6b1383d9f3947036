#include "host/jobs/nxDataStores.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

std::vector<std::string> nxDataStores::GetFiles(const std::string& directory)
{
    const std::string database = (std::filesystem::path(directory) / "stores.sqlite").string();
    return {database, database + "-journal"};
}

std::optional<std::string> nxDataStores::Open(const std::string& directory)
{
    std::error_code error;
    if (!std::filesystem::is_directory(directory, error)) {
        if (std::filesystem::exists(directory, error)) return directory + ": is no directory for data stores";
        if (!std::filesystem::create_directory(directory, error) && error)
            return directory + ": the directory for data stores cannot be made: " + error.message();
    }
    _path = GetFiles(directory).front();
    std::optional<std::string> failure = _Prepare(directory);
    if (failure) {
        _database.Close();
    } else {
        _isOpen = true;
    }
    return failure;
}

std::optional<std::string> nxDataStores::_Prepare(const std::string& directory)
{
    std::error_code error;
    if (std::filesystem::is_directory(_path, error))
        return _path + ": is a directory, not a database of stores";
    if (!_database.Open(_path)) {
        if (_database.IsHeld())
            return directory +
                   ": these data stores are in use: another server, or a program that looks into " + _path +
                   ", holds them";
        if (_database.IsDamaged()) return _path + ": is damaged: " + _database.GetFailure();
        if (_database.IsForeign()) return _path + ": is not a database of stores";
        return _path + ": cannot be opened: " + _database.GetFailure();
    }
    if (const auto stranger = _database.FindStranger(Kind)) return _path + ": " + *stranger;
    // A save needs its journal beside the file, of which the database hears only then.
    if (!_database.HasFailed() &&
        (_database.IsReadOnly() || faccessat(AT_FDCWD, directory.c_str(), W_OK, AT_EACCESS) != 0))
        return _path + ": cannot be written: it, or its directory, is read-only";
    return _PrepareTables();
}

// Makes those of a new database, and looks whether an old one is whole.
std::optional<std::string> nxDataStores::_PrepareTables()
{
    if (_database.IsEmpty()) {
        nxSqliteDataStore::CreateTables(_database);
        _database.SetKind(Kind);
    }
    std::string damage;
    // Not quick_check, which takes rows out of their order for good.
    _database.Run("PRAGMA integrity_check(1)", {},
                  [&damage](const nxSqliteDatabase::Row& row) { damage = row.GetBytes(0); });
    if (!_database.HasFailed() && damage != "ok") return _path + ": is damaged: " + damage;
    _database.Commit();
    if (_database.HasFailed()) return _path + ": cannot be used: " + _database.GetFailure();
    return std::nullopt;
}

std::string nxDataStores::TakeImage(const std::string& directory)
{
    std::error_code error;
    nxDataStores stores;
    // Not made where there are none: the directory is that of another run.
    if (!std::filesystem::exists(GetFiles(directory).front(), error) || stores.Open(directory)) return {};
    return stores._database.GetImage();
}

std::optional<std::string> nxDataStores::OpenImage(const std::string& image)
{
    _path = "copy of the stores";
    if (!_database.OpenImage(image)) return _path + ": cannot be used: " + _database.GetFailure();
    std::optional<std::string> failure = _PrepareTables();
    _isOpen = !failure;
    return failure;
}

nxAlgoDataStoreObject* nxDataStores::Get(const std::string& name, bool create, std::string& failure)
{
    if (const auto known = _stores.find(name); known != _stores.end()) return known->second.get();
    if (const auto known = _unreadable.find(name); known != _unreadable.end()) {
        failure = known->second;
        return nullptr;
    }
    auto store = std::make_unique<nxSqliteDataStore>(_database, name);
    const bool isThere = store->Load();
    if (!store->Valid()) {
        failure = _path + ": the store " + name + " cannot be read: " + _database.GetFailure();
        _unreadable[name] = failure;
        _database.Rollback();
        return nullptr;
    }
    if (!isThere && !create) return nullptr;
    return (_stores[name] = std::move(store)).get();
}

std::optional<std::string> nxDataStores::Save()
{
    std::optional<std::string> failure = _Write();
    // Also of earlier saves, so when there is nothing to write now.
    if (_database.HasMoved())
        return _path + ": the data stores are lost: it was removed or replaced during the run";
    return failure;
}

std::optional<std::string> nxDataStores::_Write()
{
    for (const auto& [name, store] : _stores)
        static_cast<void>(store->Persist());
    if (_database.IsInTransaction()) _database.Commit();
    if (!_database.HasFailed()) {
        std::string refusals;
        for (const auto& [name, store] : _stores) {
            store->NoteCommit();
            for (const std::string& refusal : store->GetRefusals())
                refusals += (refusals.empty() ? "" : "\n") + _path + ": " + refusal;
        }
        return refusals.empty() ? std::nullopt : std::optional(refusals);
    }
    const std::string failure = _path + ": the data stores cannot be saved: " + _database.GetFailure();
    _database.Rollback();
    for (const auto& [name, store] : _stores)
        store->NoteRollback();
    return failure;
}
