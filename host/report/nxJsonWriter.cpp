#include "host/report/nxJsonWriter.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "base/values/nxStringHelper.h"

std::string nxJsonWriter::GetNumber(double number)
{
    if (!std::isfinite(number)) return "null";
    return number == 0.0 ? "0" : nxStringHelper::GetAsString(number);  // and no -0
}

std::string nxJsonWriter::GetText(std::string_view text)
{
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

nxJsonWriter& nxJsonWriter::Key(std::string_view name)
{
    _Separate();
    _out << '"' << name << "\":";
    _needsComma = false;
    return *this;
}

void nxJsonWriter::Text(std::string_view text)
{
    _Write(GetText(text));
}

void nxJsonWriter::Number(double number)
{
    _Write(GetNumber(number));
}

void nxJsonWriter::Count(unsigned long long count)
{
    _Write(nxStringHelper::GetAsString(count));
}

void nxJsonWriter::_Separate()
{
    if (_needsComma) _out << ',';
    _needsComma = true;
}

void nxJsonWriter::_Open(char bracket)
{
    _Separate();
    _out << bracket;
    _needsComma = false;
}

void nxJsonWriter::_Close(char bracket)
{
    _out << bracket;
    _needsComma = true;
}

void nxJsonWriter::_Write(std::string_view json)
{
    _Separate();
    _out << json;
}
