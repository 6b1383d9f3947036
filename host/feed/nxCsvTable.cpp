#include "host/feed/nxCsvTable.h"

#include <algorithm>

#include "host/feed/nxInputStream.h"

bool nxCsvTable::_Refuse(unsigned int place, const std::string& reason)
{
    _error.column = place;
    _error.reason = reason;
    return false;
}

std::string nxCsvTable::_GetKnown() const
{
    std::string known;
    for (const Column& column : _columns)
        known += (known.empty() ? "; known are " : ",") + std::string(column.name);
    return known;
}

bool nxCsvTable::_SplitRow(std::string_view line)
{
    _cells.clear();
    for (std::size_t at = 0;; ++at) {
        Cell& cell = _cells.emplace_back(Cell{{}, static_cast<unsigned int>(at + 1)});
        if (at < line.size() && line[at] == '"') {
            // Two quotes inside are one.
            for (++at; at < line.size() && (line[at] != '"' || line.substr(at, 2) == "\"\""); ++at) {
                if (line[at] == '"') ++at;
                cell.text += line[at];
            }
            if (at == line.size()) return _Refuse(cell.place, "a quote is not closed");
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

bool nxCsvTable::_ReadHeader()
{
    for (const Cell& cell : _cells) {
        const auto known = std::ranges::find(_columns, cell.text, &Column::name);
        if (known == _columns.end())
            return _Refuse(cell.place, "unknown column \"" + cell.text + "\"" + _GetKnown());
        const auto column = static_cast<std::size_t>(known - _columns.begin());
        if (std::ranges::find(_order, column) != _order.end())
            return _Refuse(cell.place, "column given twice: \"" + cell.text + "\"");
        _order.push_back(column);
    }
    for (std::size_t i = 0; i < _columns.size(); ++i)
        if (_columns[i].isRequired && std::ranges::find(_order, i) == _order.end())
            return _Refuse(1, "missing column \"" + std::string(_columns[i].name) + "\"" + _GetKnown());
    return true;
}

bool nxCsvTable::_ReadRow()
{
    if (_cells.size() != _order.size())
        return _Refuse(_cells.back().place,
                       std::string(_cells.size() < _order.size() ? "too few" : "too many") + " cells: " +
                           std::to_string(_cells.size()) + " instead of " + std::to_string(_order.size()));
    for (std::size_t i = 0; i < _order.size(); ++i)
        _row[_order[i]] = _cells[i];
    return true;
}

bool nxCsvTable::Read(const std::string& path, const char* content, const std::function<bool()>& takeRow)
{
    _error = {path, 0, 0, {}};
    _order.clear();
    _row.assign(_columns.size(), {});
    std::string text;
    if (const auto failure = nxInputStream::ReadWhole(path, content, text)) return _Refuse(0, *failure);
    std::string_view rest = text;
    if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
    while (!rest.empty()) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        ++_error.line;
        if (line.empty()) continue;
        if (!_SplitRow(line)) return false;
        if (_order.empty() ? !_ReadHeader() : !(_ReadRow() && takeRow())) return false;
    }
    _error.line = 0;
    return !_order.empty() || _Refuse(0, "no header row" + _GetKnown());
}
