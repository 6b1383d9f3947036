#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/jobs/nxSqliteDataStore.h"
#include "host/jobs/nxSqliteDatabase.h"

// The data stores of one server, in one database in a directory of their own: DIRECTORY/stores.sqlite. The
// directory is held from Open until the end, so that no second server saves over this one. Used on the
// server's thread; it outlives the scripts that hold its stores.
class nxDataStores
{
public:
    static constexpr nxSqliteDatabase::Kind Kind = {0x6e785354, 1};  // "nxST"

    // The files that it may write to, or remove, in a directory.
    static std::vector<std::string> GetFiles(const std::string& directory);

    // Makes the directory, though not the one that it is in, and the database where there are none. Null, or
    // why it cannot be used, with its path.
    [[nodiscard]] std::optional<std::string> Open(const std::string& directory);
    // In place of it: stores that begin as those of the image, and are kept nowhere.
    [[nodiscard]] std::optional<std::string> OpenImage(const std::string& image);
    // The stores of a directory as they lie there; empty where there are none or they cannot be used.
    static std::string TakeImage(const std::string& directory);
    // Rows with values of more bytes are not saved; without it SQLite's own limit holds, some 10^9.
    void SetLargestValue(std::size_t bytes) { _database.SetLargestValue(bytes); }
    bool IsOpen() const { return _isOpen; }

    // The one store of that name, loaded whole when it is asked for first. Null when there is none and it is
    // not to be created, and when it cannot be read; then `failure` gets the reason, with the path.
    nxAlgoDataStoreObject* Get(const std::string& name, bool create, std::string& failure);

    // Writes all stores that changed, in one transaction. Null, or why not: then the database holds what it
    // held, of the rows that the text names or of all, and the next save tries again.
    [[nodiscard]] std::optional<std::string> Save();

private:
    std::optional<std::string> _Prepare(const std::string& directory);
    std::optional<std::string> _PrepareTables();
    std::optional<std::string> _Write();

    std::string _path;
    nxSqliteDatabase _database;
    bool _isOpen = false;
    std::map<std::string, std::unique_ptr<nxSqliteDataStore>> _stores;
    // Why stores cannot be read. They are not tried again: one must not be created over what is left of it.
    std::map<std::string, std::string> _unreadable;
};
