#pragma once

#include <string>
#include <utility>
#include <vector>

#include "scriptFramework/analytics/nxAlgoDataStoreObject.h"

class nxSqliteDatabase;

// A data store that lives in a database. Owned by nxDataStores, shared by all jobs that ask for its name, so
// it belongs to none of them: GetJob() is null, and its log lines begin with its own name.
//
// It remembers what the database holds, and of a save writes only the rows that are others now.
class nxSqliteDataStore : public nxAlgoDataStoreObject
{
public:
    nxSqliteDataStore(nxSqliteDatabase& database, std::string name);

    const std::string& GetLogPrefix() const override { return _logPrefix; }

    // Makes the tables that all stores of a database share.
    static void CreateTables(nxSqliteDatabase& database);

    // Reads it whole, once. False: the database has no such store. Where it cannot be read it is invalid,
    // never written, and the database knows why.
    [[nodiscard]] bool Load();
    // How the transaction ended in which the store was persisted.
    void NoteCommit();
    void NoteRollback();
    // The rows that the latest save left out, each as a text that tells why.
    const std::vector<std::string>& GetRefusals() const { return _refusals; }

protected:
    // Begins the database's transaction, unless another store has. False when nothing has changed.
    bool _BeginPersist() override;
    void _PersistRow(const Row* row) override;
    void _EndPersist() override;

private:
    void _LoadSaved();
    bool _HasChanged();
    bool _IsRefused(const Row& row);

    nxSqliteDatabase& _database;
    const std::string _name;
    const std::string _logPrefix;
    long long _id = 0;        // in the database; 0: it is not there
    std::vector<Row> _saved;  // as the database holds it
    // Of the transaction that is under way.
    long long _newID = 0;
    std::size_t _position = 0;  // rows so far
    std::vector<std::string> _refusals;
    std::vector<std::pair<std::size_t, Row>> _written;  // those that were others, by their place from 0
};
