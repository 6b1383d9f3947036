#pragma once

#include <ostream>
#include <string>
#include <vector>

// Writes rows of CSV: a cell is quoted where it holds a comma, a quote or a line end.
class nxCsvWriter
{
public:
    // The stream outlives it.
    explicit nxCsvWriter(std::ostream& out) : _out(out) {}

    void Write(const std::vector<std::string>& cells)
    {
        for (std::size_t i = 0; i < cells.size(); ++i)
            _out << (i == 0 ? "" : ",") << _GetCell(cells[i]);
        _out << "\n";
    }

private:
    static std::string _GetCell(const std::string& text)
    {
        if (text.find_first_of(",\"\n\r") == std::string::npos) return text;
        std::string quoted = "\"";
        for (const char character : text)
            quoted += character == '"' ? std::string("\"\"") : std::string(1, character);
        return quoted + "\"";
    }

    std::ostream& _out;
};
