#include "host/sweep/nxSweepStore.h"

#include <fmt/format.h>

#include <cstring>
#include <nlohmann/json.hpp>

#include "host/feed/nxFeedTime.h"
#include "host/report/nxResultText.h"
#include "host/results/nxMeasures.h"

namespace {

using Value = nxSqliteDatabase::Value;
using Text = nxSqliteDatabase::Text;
using Row = nxSqliteDatabase::Row;

long long ToNumber(std::size_t number)
{
    return static_cast<long long>(number);
}

template <class Number>
std::string_view GetBytes(const std::vector<Number>& numbers)
{
    return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number)};
}

template <class Number>
std::vector<Number> MakeNumbers(std::string_view bytes)
{
    std::vector<Number> numbers(bytes.size() / sizeof(Number));
    if (!numbers.empty()) std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(Number));
    return numbers;
}

// The measures' columns, each with that in front.
std::string ListMeasures(const char* separator, const char* type)
{
    std::string text;
    for (const nxMeasure& measure : nxMeasure::GetAll())
        text += fmt::format("{}\"{}\"{}", separator, measure.name, type);
    return text;
}

constexpr const char* RunColumns =
    "point, part, failure, ended, seconds, memory, books, bars, calendar, profits";

std::optional<long long> FindDay(const std::string& text)
{
    long long time = 0;
    if (nxFeedTime::SetFromText(text, time) != nullptr) return std::nullopt;
    // A number would be a time, too.
    const long long day = time / nxTime::NanosecondsPerDay;
    return nxResultText::GetDate(day) == text ? std::optional(day) : std::nullopt;
}

}  // namespace

std::optional<std::string> nxSweepStore::Open(const std::string& path, int patience)
{
    _path = path;
    std::optional<std::string> failure = _Prepare(patience);
    if (!failure) failure = Save();
    return failure;
}

std::optional<std::string> nxSweepStore::_Prepare(int patience)
{
    if (!_database.Open(_path, patience)) {
        const char* const reason = _database.IsHeld()      ? "is in use by another program"
                                   : _database.IsDamaged() ? "is damaged"
                                   : _database.IsForeign() ? "is no results file of a sweep"
                                                           : "cannot be opened";
        return fmt::format("{}: {}: {}", _path, reason, _database.GetFailure());
    }
    if (const auto stranger = _database.FindStranger(Kind)) return _path + ": " + *stranger;
    _isNew = _database.IsEmpty();
    if (_isNew) _MakeTables();
    _points = _database.GetNumber("SELECT count(*) FROM points");
    _parts = _database.GetNumber("SELECT count(*) FROM parts");
    return std::nullopt;
}

void nxSweepStore::_MakeTables()
{
    _database.Run("CREATE TABLE facts (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID");
    _database.Run(
        "CREATE TABLE points (point INTEGER PRIMARY KEY, number INTEGER NOT NULL, parameters TEXT NOT NULL)");
    _database.Run(
        "CREATE TABLE parts (part INTEGER PRIMARY KEY, role TEXT NOT NULL, split INTEGER, first TEXT, last "
        "TEXT, "
        "name TEXT NOT NULL)");
    _database.Run("CREATE TABLE calendars (calendar INTEGER PRIMARY KEY, days BLOB NOT NULL)");
    _database.Run(
        "CREATE TABLE runs (point INTEGER NOT NULL, part INTEGER NOT NULL, failure TEXT, ended TEXT NOT "
        "NULL, "
        "seconds REAL NOT NULL, memory INTEGER NOT NULL, books INTEGER NOT NULL, bars INTEGER NOT NULL, "
        "calendar INTEGER, profits BLOB" +
        ListMeasures(", ", " REAL") + ", PRIMARY KEY (point, part)) WITHOUT ROWID");
    _database.SetKind(Kind);
}

std::map<std::string, std::string> nxSweepStore::GetFacts()
{
    std::map<std::string, std::string> facts;
    _database.Run("SELECT name, value FROM facts", {},
                  [&facts](const Row& row) { facts[row.GetBytes(0)] = row.GetBytes(1); });
    return facts;
}

void nxSweepStore::SetFact(const std::string& name, const std::string& value)
{
    _database.Begin();
    _database.Run("INSERT OR REPLACE INTO facts VALUES (?, ?)", {Text{name}, Text{value}});
}

void nxSweepStore::AddPoint(const nxPlanPoint& point, const nxPlan& plan)
{
    auto values = nlohmann::ordered_json::object();
    for (std::size_t i = 0; i < point.values.size(); ++i)
        values[plan.GetDimensions()[i].GetName()] = point.values[i];
    const std::string text = values.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    _database.Begin();
    _database.Run("INSERT INTO points VALUES (?, ?, ?)",
                  {_points++, static_cast<long long>(point.number), Text{text}});
}

void nxSweepStore::AddPart(const nxSweepPart& part)
{
    const auto getDay = [&](long long day) { return part.span.IsEmpty() ? "" : nxResultText::GetDate(day); };
    const std::string first = getDay(part.span.from), last = getDay(part.span.to - 1);
    _database.Begin();
    _database.Run("INSERT INTO parts VALUES (?, ?, ?, ?, ?, ?)",
                  {_parts++, Text{nxSweepPart::GetRoleName(part.role)}, ToNumber(part.split), Text{first},
                   Text{last}, Text{part.name}});
}

long long nxSweepStore::_GetCalendar(const std::vector<long long>& days)
{
    if (const auto known = _calendars.find(GetBytes(days)); known != _calendars.end()) return known->second;
    _database.Run("INSERT INTO calendars (days) VALUES (?)", {GetBytes(days)});
    return _calendars[std::string(GetBytes(days))] = _database.GetLastID();
}

void nxSweepStore::AddRun(const nxSweepTask& task, const nxSweepOutcome& outcome)
{
    static const std::string sql = "INSERT INTO runs (" + (RunColumns + ListMeasures(", ", "")) +
                                   ") VALUES (?1, ?2, nullif(?3, ''), ?4, ?5, ?6, ?7, ?8, ?9, ?10" +
                                   [] {
                                       std::string places;
                                       for (std::size_t i = 0; i < nxMeasure::GetAll().size(); ++i)
                                           places += fmt::format(", ?{}", 11 + i);
                                       return places;
                                   }() +
                                   ")";
    _database.Begin();
    std::vector<Value> values = {ToNumber(task.point),
                                 ToNumber(task.part),
                                 Text{outcome.failure},
                                 Text{outcome.end},
                                 outcome.seconds,
                                 static_cast<long long>(outcome.memory),
                                 static_cast<long long>(outcome.hasBooks),
                                 static_cast<long long>(outcome.hasBars),
                                 _GetCalendar(outcome.days),
                                 GetBytes(outcome.profits)};
    for (std::size_t i = 0; i < nxMeasure::GetAll().size(); ++i)
        values.emplace_back(i < outcome.measures.size() ? outcome.measures[i]
                                                        : std::numeric_limits<double>::quiet_NaN());
    _database.RunWith(sql, values);
}

std::optional<std::string> nxSweepStore::Read(nxSweepTable& table)
{
    const std::vector<nxDimension>& dimensions = table.plan.GetDimensions();
    _database.Run("SELECT number, parameters FROM points ORDER BY point", {}, [&](const Row& row) {
        nxPlanPoint& point = table.points.emplace_back();
        point.number = static_cast<unsigned long long>(row.GetNumber(0));
        const auto values = nlohmann::json::parse(row.GetBytes(1), nullptr, false);
        for (const nxDimension& dimension : dimensions) {
            const bool isThere = values.is_object() && values.contains(dimension.GetName());
            point.values.push_back(isThere ? values[dimension.GetName()].get<std::string>() : std::string());
        }
    });
    _database.Run("SELECT role, split, first, last, name FROM parts ORDER BY part", {}, [&](const Row& row) {
        nxSweepPart& part = table.parts.emplace_back();
        for (const auto role : {nxSweepPart::Role::Whole, nxSweepPart::Role::Train, nxSweepPart::Role::Test,
                                nxSweepPart::Role::Holdout, nxSweepPart::Role::Variant})
            if (row.GetBytes(0) == nxSweepPart::GetRoleName(role)) part.role = role;
        part.split = static_cast<std::size_t>(row.GetNumber(1));
        const auto first = FindDay(row.GetBytes(2)), last = FindDay(row.GetBytes(3));
        if (first && last) part.span = {*first, *last + 1};
        part.name = row.GetBytes(4);
    });
    _ReadRuns(table);
    if (_database.HasFailed()) return fmt::format("{}: cannot be read: {}", _path, _database.GetFailure());
    return std::nullopt;
}

void nxSweepStore::_ReadRuns(nxSweepTable& table)
{
    std::map<long long, std::vector<long long>> calendars;
    _database.Run("SELECT calendar, days FROM calendars", {}, [&](const Row& row) {
        const std::string bytes = row.GetBytes(1);
        _calendars[bytes] = row.GetNumber(0);
        calendars[row.GetNumber(0)] = MakeNumbers<long long>(bytes);
    });
    static const std::string sql = "SELECT " + (RunColumns + ListMeasures(", ", "")) + " FROM runs";
    _database.Run(sql, {}, [&](const Row& row) {
        nxSweepOutcome& outcome = table.outcomes[{static_cast<std::size_t>(row.GetNumber(0)),
                                                  static_cast<std::size_t>(row.GetNumber(1))}];
        outcome.failure = row.GetBytes(2);
        outcome.end = row.GetBytes(3);
        outcome.seconds = row.GetReal(4);
        outcome.memory = static_cast<unsigned long long>(row.GetNumber(5));
        outcome.hasBooks = row.GetNumber(6) != 0;
        outcome.hasBars = row.GetNumber(7) != 0;
        outcome.days = calendars[row.GetNumber(8)];
        outcome.profits = MakeNumbers<double>(row.GetBytes(9));
        for (std::size_t i = 0; i < nxMeasure::GetAll().size() && !outcome.HasFailed(); ++i)
            outcome.measures.push_back(row.GetReal(static_cast<int>(10 + i)));
        if (!outcome.IsSound()) _database.Fail("days and profits of a run do not go together");
    });
}

void nxSweepStore::ForgetFailures()
{
    _database.Begin();
    _database.Run("DELETE FROM runs WHERE failure IS NOT NULL");
}

std::optional<std::string> nxSweepStore::Save()
{
    if (_database.IsInTransaction()) _database.Commit();
    if (_database.HasFailed()) return fmt::format("{}: cannot be written: {}", _path, _database.GetFailure());
    return std::nullopt;
}

void nxSweepStore::Clear()
{
    _database.Begin();
    for (const char* table : {"facts", "points", "parts", "runs", "calendars"})
        _database.Run(fmt::format("DELETE FROM {}", table));
    _database.Commit();
    _database.Run("VACUUM");
    _points = _parts = 0;
    _calendars.clear();
    _isNew = true;
}
