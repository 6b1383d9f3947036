#include "host/jobs/nxSqliteDatabase.h"

#include <sqlite3.h>

bool nxSqliteDatabase::Row::IsNull(int column) const
{
    return sqlite3_column_type(_statement, column) == SQLITE_NULL;
}

long long nxSqliteDatabase::Row::GetNumber(int column) const
{
    return sqlite3_column_int64(_statement, column);
}

std::string nxSqliteDatabase::Row::GetBytes(int column) const
{
    const void* bytes = sqlite3_column_blob(_statement, column);
    const int size = sqlite3_column_bytes(_statement, column);
    return bytes == nullptr ? std::string()
                            : std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

void nxSqliteDatabase::Finalizer::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

nxSqliteDatabase::nxSqliteDatabase() = default;

nxSqliteDatabase::~nxSqliteDatabase()
{
    Close();
}

bool nxSqliteDatabase::Open(const std::string& path)
{
    const int code =
        sqlite3_open_v2(path.c_str(), &_database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    if (!_Check(code)) return false;
    sqlite3_extended_result_codes(_database, 1);
    // The lock that the first transaction takes is kept from then on. A rollback journal and not a log that
    // is written ahead: a save is one transaction now and then that nobody reads beside, and a directory at
    // rest holds one file, to be copied as it is. FULL: the journal is on the disk before the database
    // changes.
    return Run("PRAGMA locking_mode = EXCLUSIVE") && Run("PRAGMA synchronous = FULL") &&
           Run("BEGIN EXCLUSIVE");
}

void nxSqliteDatabase::Close()
{
    _statements.clear();
    sqlite3_close(_database);
    _database = nullptr;
}

bool nxSqliteDatabase::IsReadOnly() const
{
    return sqlite3_db_readonly(_database, "main") == 1;
}

bool nxSqliteDatabase::_Check(int code)
{
    if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE) return true;
    if (HasFailed()) return false;
    _code = code & 0xff;  // without what extends it
    _failure = _database == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(_database);
    // What the operating system said is lost by then; the long code tells at least what was tried.
    if (_code == SQLITE_IOERR) _failure += " (SQLite " + std::to_string(code) + ")";
    return false;
}

bool nxSqliteDatabase::Run(std::string_view sql, std::initializer_list<Value> values,
                           const std::function<void(const Row&)>& take)
{
    if (HasFailed()) return false;
    auto prepared = _statements.find(sql);
    if (prepared == _statements.end()) {
        sqlite3_stmt* made = nullptr;
        if (!_Check(sqlite3_prepare_v2(_database, sql.data(), static_cast<int>(sql.size()), &made, nullptr)))
            return false;
        prepared = _statements.emplace(sql, made).first;
    }
    sqlite3_stmt* const statement = prepared->second.get();
    int place = 0;
    for (const Value& value : values) {
        ++place;
        const auto* bytes = std::get_if<std::string_view>(&value);
        const int code = bytes == nullptr ? sqlite3_bind_int64(statement, place, std::get<long long>(value))
                                          // A null address would bind a null.
                                          : sqlite3_bind_blob64(statement, place,
                                                                bytes->data() == nullptr ? "" : bytes->data(),
                                                                bytes->size(), SQLITE_STATIC);
        if (!_Check(code)) return false;
    }
    int code = sqlite3_step(statement);
    for (; code == SQLITE_ROW; code = sqlite3_step(statement))
        if (take) take(Row(statement));
    const bool succeeded = _Check(code);
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    return succeeded;
}

long long nxSqliteDatabase::GetNumber(std::string_view sql)
{
    long long number = 0;
    Run(sql, {}, [&number](const Row& row) { number = row.GetNumber(0); });
    return number;
}

long long nxSqliteDatabase::GetLastID() const
{
    return sqlite3_last_insert_rowid(_database);
}

bool nxSqliteDatabase::Begin()
{
    return IsInTransaction() ? !HasFailed() : Run("BEGIN IMMEDIATE");
}

bool nxSqliteDatabase::IsInTransaction() const
{
    return _database != nullptr && sqlite3_get_autocommit(_database) == 0;
}

void nxSqliteDatabase::Rollback()
{
    _failure.clear();
    _code = SQLITE_OK;
    // After some failures SQLite has done it by itself. One that fails here will be told by the next
    // statement.
    if (IsInTransaction()) sqlite3_exec(_database, "ROLLBACK", nullptr, nullptr, nullptr);
}

bool nxSqliteDatabase::IsHeld() const
{
    return _code == SQLITE_BUSY || _code == SQLITE_LOCKED;
}

bool nxSqliteDatabase::IsForeign() const
{
    return _code == SQLITE_NOTADB;
}

bool nxSqliteDatabase::IsDamaged() const
{
    return _code == SQLITE_CORRUPT;
}
