#include "host/jobs/nxSqliteDatabase.h"

#include <sqlite3.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>

namespace {

constexpr int BesideValue = 64;  // bytes of a record that are its key and its sizes

}  // namespace

bool nxSqliteDatabase::Row::IsNull(int column) const
{
    return sqlite3_column_type(_statement, column) == SQLITE_NULL;
}

long long nxSqliteDatabase::Row::GetNumber(int column) const
{
    return sqlite3_column_int64(_statement, column);
}

double nxSqliteDatabase::Row::GetReal(int column) const
{
    return IsNull(column) ? std::numeric_limits<double>::quiet_NaN()
                          : sqlite3_column_double(_statement, column);
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

bool nxSqliteDatabase::Open(const std::string& path, int patience)
{
    const int code =
        sqlite3_open_v2(path.c_str(), &_database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    if (!_Check(code)) return false;
    sqlite3_busy_timeout(_database, patience);
    return _Begin();
}

bool nxSqliteDatabase::_Begin()
{
    sqlite3_extended_result_codes(_database, 1);
    // The lock that the first transaction takes is kept from then on. A rollback journal and not a log that
    // is written ahead: a save is one transaction now and then that nobody reads beside, and a directory at
    // rest holds one file, to be copied as it is. FULL: the journal is on the disk before the database
    // changes.
    return Run("PRAGMA locking_mode = EXCLUSIVE") && Run("PRAGMA synchronous = FULL") &&
           Run("BEGIN EXCLUSIVE");
}

std::string nxSqliteDatabase::GetImage()
{
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, void (*)(void*)> bytes(
        sqlite3_serialize(_database, "main", &size, 0), sqlite3_free);
    if (bytes == nullptr) return {};
    return {reinterpret_cast<const char*>(bytes.get()), static_cast<std::size_t>(size)};
}

bool nxSqliteDatabase::OpenImage(const std::string& image)
{
    if (!_Check(sqlite3_open_v2(":memory:", &_database, SQLITE_OPEN_READWRITE, nullptr))) return false;
    if (image.empty()) return _Begin();
    auto* const bytes = static_cast<unsigned char*>(sqlite3_malloc64(image.size()));
    if (bytes == nullptr) return _Check(SQLITE_NOMEM);
    std::memcpy(bytes, image.data(), image.size());
    const auto size = static_cast<sqlite3_int64>(image.size());
    // It is the database's from here on, whatever becomes of the call.
    return _Check(sqlite3_deserialize(_database, "main", bytes, size, size,
                                      SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE)) &&
           _Begin();
}

std::size_t nxSqliteDatabase::GetLargestValue() const
{
    const int most = sqlite3_limit(_database, SQLITE_LIMIT_LENGTH, -1);
    return static_cast<std::size_t>(std::max(0, most - BesideValue));
}

void nxSqliteDatabase::SetLargestValue(std::size_t bytes)
{
    constexpr std::size_t largest = INT_MAX - BesideValue;
    sqlite3_limit(_database, SQLITE_LIMIT_LENGTH, static_cast<int>(std::min(bytes, largest)) + BesideValue);
}

void nxSqliteDatabase::Close()
{
    _statements.clear();
    sqlite3_close(_database);
    _database = nullptr;
}

std::optional<std::string> nxSqliteDatabase::FindStranger(const Kind& kind)
{
    const long long application = GetNumber("PRAGMA application_id");
    const long long version = GetNumber("PRAGMA user_version");
    const bool isNew = IsEmpty();
    if (HasFailed()) return std::nullopt;
    if (application != kind.application && !(isNew && application == 0 && version == 0))
        return "is a database of another program";
    if (!isNew && version > kind.version)
        return "was written by a newer program: it has layout version " + std::to_string(version) +
               ", and this one knows " + std::to_string(kind.version);
    return std::nullopt;
}

void nxSqliteDatabase::SetKind(const Kind& kind)
{
    Run("PRAGMA application_id = " + std::to_string(kind.application));
    Run("PRAGMA user_version = " + std::to_string(kind.version));
}

bool nxSqliteDatabase::IsReadOnly() const
{
    return sqlite3_db_readonly(_database, "main") == 1;
}

bool nxSqliteDatabase::HasMoved() const
{
    int moved = 0;  // stays so for one in memory
    sqlite3_file_control(_database, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
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

int nxSqliteDatabase::_Bind(sqlite3_stmt* statement, int place, const Value& value)
{
    if (const auto* number = std::get_if<long long>(&value))
        return sqlite3_bind_int64(statement, place, *number);
    // One that is none is bound as null.
    if (const auto* real = std::get_if<double>(&value)) return sqlite3_bind_double(statement, place, *real);
    const auto get = [](std::string_view bytes) { return bytes.data() == nullptr ? "" : bytes.data(); };
    if (const auto* text = std::get_if<Text>(&value))
        return sqlite3_bind_text64(statement, place, get(text->text), text->text.size(), SQLITE_STATIC,
                                   SQLITE_UTF8);
    // A null address would bind a null.
    const auto& bytes = std::get<std::string_view>(value);
    return sqlite3_bind_blob64(statement, place, get(bytes), bytes.size(), SQLITE_STATIC);
}

bool nxSqliteDatabase::Run(std::string_view sql, std::initializer_list<Value> values,
                           const std::function<void(const Row&)>& take)
{
    return RunWith(sql, {values.begin(), values.size()}, take);
}

bool nxSqliteDatabase::RunWith(std::string_view sql, std::span<const Value> values,
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
        if (!_Check(_Bind(statement, ++place, value))) return false;
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

void nxSqliteDatabase::Fail(const char* what)
{
    if (HasFailed()) return;
    _code = SQLITE_CORRUPT;
    _failure = what;
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
