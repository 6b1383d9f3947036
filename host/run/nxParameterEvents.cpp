#include "host/run/nxParameterEvents.h"

#include <algorithm>
#include <array>

#include "host/feed/nxFeedTime.h"
#include "host/feed/nxInputStream.h"
#include "host/run/nxParameterText.h"

namespace {

constexpr std::array<std::string_view, 4> ColumnNames = {"time", "parameter", "value", "tag"};
constexpr const char* Header = "time,parameter,value,tag";

}  // namespace

bool nxParameterEvents::_Refuse(unsigned int column, const std::string& reason)
{
    _error.column = column;
    _error.reason = reason;
    return false;
}

bool nxParameterEvents::_SplitRow(std::string_view line, std::vector<Cell>& cells)
{
    cells.clear();
    for (std::size_t at = 0;; ++at) {
        Cell& cell = cells.emplace_back(Cell{{}, static_cast<unsigned int>(at + 1)});
        if (at < line.size() && line[at] == '"') {
            // Two quotes inside are one.
            for (++at; at < line.size() && (line[at] != '"' || line.substr(at, 2) == "\"\""); ++at) {
                if (line[at] == '"') ++at;
                cell.text += line[at];
            }
            if (at == line.size()) return _Refuse(cell.column, "a quote is not closed");
            if (++at < line.size() && line[at] != ',')
                return _Refuse(static_cast<unsigned int>(at + 1), "text behind the closing quote");
        } else {
            const std::size_t end = std::min(line.find(',', at), line.size());
            cell.text = line.substr(at, end - at);
            at = end;
        }
        if (at >= line.size()) return true;
    }
}

bool nxParameterEvents::_ReadHeader(const std::vector<Cell>& cells, std::vector<Column>& columns)
{
    for (const Cell& cell : cells) {
        const auto known = std::ranges::find(ColumnNames, cell.text);
        if (known == ColumnNames.end())
            return _Refuse(cell.column, "unknown column \"" + cell.text + "\"; known are " + Header);
        const auto column = static_cast<Column>(known - ColumnNames.begin());
        if (std::ranges::find(columns, column) != columns.end())
            return _Refuse(cell.column, "column given twice: \"" + cell.text + "\"");
        columns.push_back(column);
    }
    for (const Column column : {Time, Parameter, Value})
        if (std::ranges::find(columns, column) == columns.end())
            return _Refuse(
                1, "missing column \"" + std::string(ColumnNames[column]) + "\"; known are " + Header);
    return true;
}

bool nxParameterEvents::_ReadRow(const std::vector<Cell>& cells, const std::vector<Column>& columns)
{
    if (cells.size() != columns.size())
        return _Refuse(cells.back().column,
                       std::string(cells.size() < columns.size() ? "too few" : "too many") + " cells: " +
                           std::to_string(cells.size()) + " instead of " + std::to_string(columns.size()));
    std::array<Cell, ColumnCount> row;
    for (std::size_t i = 0; i < cells.size(); ++i)
        row[columns[i]] = cells[i];
    Placed placed;
    if (const char* reason = nxFeedTime::SetFromText(row[Time].text, placed.change.time))
        return _Refuse(row[Time].column, std::string("time: ") + reason + ": \"" + row[Time].text + "\"");
    nxParameterName name;
    if (const auto reason = name.SetFromText(row[Parameter].text, _jobs))
        return _Refuse(row[Parameter].column, "parameter: " + *reason);
    placed.change.job = name.job;
    placed.change.name = name.name;
    placed.change.value = row[Value].text;
    placed.change.tag = row[Tag].text;
    placed.place = _error;
    placed.place.column = row[Value].column;
    _changes.push_back(std::move(placed));
    return true;
}

bool nxParameterEvents::AddFile(const std::string& path)
{
    _error = {path, 0, 0, {}};
    std::string text;
    if (const auto failure = nxInputStream::ReadWhole(path, "file of parameter changes", text))
        return _Refuse(0, *failure);
    std::string_view rest = text;
    if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
    std::vector<Column> columns;
    std::vector<Cell> cells;
    while (!rest.empty()) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        ++_error.line;
        if (line.empty()) continue;
        if (!_SplitRow(line, cells)) return false;
        if (columns.empty() ? !_ReadHeader(cells, columns) : !_ReadRow(cells, columns)) return false;
    }
    if (!columns.empty()) return true;
    _error.line = 0;
    return _Refuse(0, std::string("no header row; known are ") + Header);
}

bool nxParameterEvents::Add(const std::string& time, const std::string& text)
{
    _error = {"--at " + time + " " + text, 0, 0, {}};
    Placed placed;
    if (const char* reason = nxFeedTime::SetFromText(time, placed.change.time))
        return _Refuse(0, std::string("time: ") + reason + ": \"" + time + "\"");
    nxParameterText parameter;
    if (const auto reason = parameter.SetFromText(text, _jobs)) return _Refuse(0, *reason);
    if (!parameter.type.empty()) return _Refuse(0, "names a type; a parameter keeps the one that it has");
    placed.change.job = parameter.name.job;
    placed.change.name = parameter.name.name;
    placed.change.value = parameter.value;
    placed.place = _error;
    _changes.push_back(std::move(placed));
    return true;
}

bool nxParameterEvents::Finish(std::vector<nxParameterChange>& changes)
{
    std::ranges::stable_sort(_changes, {}, [](const Placed& placed) { return placed.change.time; });
    std::vector<nxParameterSet> parameters;
    for (const nxJobOptions& job : _jobs)
        parameters.push_back(job.parameters);
    for (const Placed& placed : _changes) {
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            if (placed.change.job && *placed.change.job != i) continue;
            if (const auto reason = parameters[i].Change(placed.change.name, placed.change.value)) {
                _error = placed.place;
                _error.reason = *reason;
                return false;
            }
        }
        changes.push_back(placed.change);
    }
    return true;
}
