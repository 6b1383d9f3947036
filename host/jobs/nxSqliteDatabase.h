#pragma once

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

// One open SQLite database, held exclusively until it is closed: no other process or connection can read or
// write it meanwhile. For one thread at a time.
//
// The first failure sticks: what is asked afterwards does nothing and fails, until Rollback. So a series of
// calls can be checked once, at its end, and nothing is ever written behind a statement that went wrong.
class nxSqliteDatabase
{
public:
    // Text that other programs may read as such, and which they take for nothing else.
    struct Text
    {
        std::string_view text;
    };
    // A number, a real one (null, where it is none), bytes, or a text.
    using Value = std::variant<long long, double, std::string_view, Text>;

    // A row that a query gave; good until its function returns.
    class Row
    {
    public:
        explicit Row(sqlite3_stmt* statement) : _statement(statement) {}
        bool IsNull(int column) const;
        long long GetNumber(int column) const;
        // Not a number for null.
        double GetReal(int column) const;
        std::string GetBytes(int column) const;

    private:
        sqlite3_stmt* _statement;
    };

    nxSqliteDatabase();
    ~nxSqliteDatabase();

    // Opens or creates the file, and begins a transaction that holds it; where another one does, waits so
    // many milliseconds for it. False: GetFailure() tells why.
    [[nodiscard]] bool Open(const std::string& path, int patience = 0);
    // Files of one kind bear its two numbers, so that who reads one later can tell whose it is, and how old.
    struct Kind
    {
        long long application, version;
    };
    // Once it is open. Null, or why it is none of that kind, or of a version that this program does not know.
    std::optional<std::string> FindStranger(const Kind& kind);
    bool IsEmpty() { return GetNumber("SELECT count(*) FROM sqlite_schema") == 0; }
    void SetKind(const Kind& kind);
    // Ends what is under way without keeping it, and lets go of the file.
    void Close();
    bool IsReadOnly() const;
    // Its path leads to another file by now, or to none: what is committed is lost with this object.
    bool HasMoved() const;

    // Bytes that a value may have, some 10^9; and less from now on.
    std::size_t GetLargestValue() const;
    void SetLargestValue(std::size_t bytes);

    // All that it holds, as the bytes of a file. Empty on a failure.
    std::string GetImage();
    // In place of Open: a database in memory that begins with these bytes, or with nothing where there are
    // none, and goes with this object.
    [[nodiscard]] bool OpenImage(const std::string& image);

    // One statement; its rows go to `take`. It is kept compiled.
    bool Run(std::string_view sql, std::initializer_list<Value> values = {},
             const std::function<void(const Row&)>& take = {});
    bool RunWith(std::string_view sql, std::span<const Value> values,
                 const std::function<void(const Row&)>& take = {});
    // What the statement gives in its first row and column.
    long long GetNumber(std::string_view sql);
    long long GetLastID() const;

    // Of a transaction that is begun already, nothing.
    bool Begin();
    bool IsInTransaction() const;
    bool Commit() { return Run("COMMIT"); }
    // Also ends a failure.
    void Rollback();

    // What it holds is not what its user wrote: a failure as any other.
    void Fail(const char* what);
    bool HasFailed() const { return !_failure.empty(); }
    const std::string& GetFailure() const { return _failure; }
    // What failed is that another one holds the database, that it is none, or that it is damaged.
    bool IsHeld() const;
    bool IsForeign() const;
    bool IsDamaged() const;

private:
    struct Finalizer
    {
        void operator()(sqlite3_stmt* statement) const;
    };

    static int _Bind(sqlite3_stmt* statement, int place, const Value& value);
    bool _Check(int code);
    bool _Begin();

    sqlite3* _database = nullptr;
    std::map<std::string, std::unique_ptr<sqlite3_stmt, Finalizer>, std::less<>>
        _statements;  // by their text
    int _code = 0;    // of the failure
    std::string _failure;
};
