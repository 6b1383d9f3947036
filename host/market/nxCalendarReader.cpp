#include "host/market/nxCalendarReader.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/time/nxTime.h"
#include "base/values/nxTextStream.h"
#include "host/feed/nxFeedTime.h"

namespace {

constexpr std::array<std::string_view, 4> Keys{"tradingHours", "zone", "holidays", "shortDays"};

}  // namespace

bool nxCalendarReader::IsKey(const std::string& key)
{
    return key == "calendar" || std::ranges::find(Keys, key) != Keys.end();
}

void nxCalendarReader::ReadCalendars(const toml::node& calendars)
{
    const char* const complaint = "calendar is no table of tables; write [calendar.NAME]";
    for (const auto& [name, table] : _file.GetEntries(calendars, complaint)) {
        for (const auto& [key, value] : _file.GetEntries(*table, complaint))
            if (key == "calendar" || !IsKey(key))
                _file.RefuseKey(*value, key, "tradingHours, zone, holidays, shortDays");
        if (!_file.Find(*table, "tradingHours")) _file.Refuse(*table, "calendar without tradingHours");
        _calendars.emplace(name, _Read(*table));
    }
}

nxTradingHours nxCalendarReader::GetHours(const toml::node& product) const
{
    const toml::node* const value = _file.Find(product, "calendar");
    const auto hasKey = [&](std::string_view key) { return _file.Find(product, key) != nullptr; };
    if (value == nullptr) return std::ranges::any_of(Keys, hasKey) ? _Read(product) : nxTradingHours();
    for (const std::string_view key : Keys)
        if (const toml::node* own = _file.Find(product, key))
            _file.Refuse(*own, "calendar has " + std::string(key) + " already; write one of them");
    const std::string& wanted = _file.GetText(*value, "calendar");
    const auto found = _calendars.find(wanted);
    if (found != _calendars.end()) return found->second;
    std::string known;
    for (const auto& [name, hours] : _calendars)
        known += (known.empty() ? "; known are " : ", ") + name;
    _file.Refuse(*value, "unknown calendar \"" + wanted + "\"" +
                             (known.empty() ? "; the file has no [calendar.NAME]" : known));
}

nxTradingHours nxCalendarReader::_Read(const toml::node& table) const
{
    nxTradingCalendar calendar;
    for (const auto& [key, value] : _file.GetEntries(table, {})) {
        if (key == "tradingHours") {
            if (const char* reason = nxTradingCalendar::SetFromText(_file.GetText(*value, key), calendar))
                _file.Refuse(*value, key + ": " + reason);
        } else if (key == "zone") {
            std::string reason;
            auto zone = nxTimeZone::Find(_file.GetText(*value, key), reason);
            if (zone == nullptr) _file.Refuse(*value, reason);
            calendar.SetZone(std::move(zone));
        } else if (key == "holidays") {
            _ReadHolidays(*value, calendar);
        }
        if (IsKey(key) && !_file.Find(table, "tradingHours"))
            _file.Refuse(*value, key + " without tradingHours");
    }
    // At last, since they depend on the others.
    if (const toml::node* days = _file.Find(table, "shortDays"))
        for (const toml::node& day : _GetList(*days, "shortDays is no list of tables { date, close }"))
            _ReadShortDay(day, calendar);
    return nxTradingHours(std::move(calendar));
}

void nxCalendarReader::_ReadHolidays(const toml::node& days, nxTradingCalendar& calendar) const
{
    for (const toml::node& day : _GetList(days, "holidays is no list of dates")) {
        const std::string reason = calendar.AddHoliday(_GetDay(day, "holidays"));
        if (!reason.empty()) _file.Refuse(day, "holidays: " + reason);
    }
}

void nxCalendarReader::_ReadShortDay(const toml::node& table, nxTradingCalendar& calendar) const
{
    const toml::node* date = nullptr;
    const toml::node* close = nullptr;
    for (const auto& [key, value] : _file.GetEntries(table, "a short day is no table { date, close }")) {
        if (key == "date")
            date = value;
        else if (key == "close")
            close = value;
        else
            _file.RefuseKey(*value, key, "date, close");
    }
    if (date == nullptr || close == nullptr)
        _file.Refuse(table, date == nullptr ? "short day without a date" : "short day without a close");
    const long long day = _GetDay(*date, "date");
    const long long time = nxTradingCalendar::ReadTimeOfDay(_file.GetText(*close, "close"));
    if (time < 0)
        _file.Refuse(*close, "close is no time of day, HH:MM: \"" + close->as_string()->get() + "\"");
    const std::string reason = calendar.AddShortDay(day, time);
    if (!reason.empty()) _file.Refuse(*close, "short day: " + reason);
}

const toml::array& nxCalendarReader::_GetList(const toml::node& value, const std::string& complaint) const
{
    if (!value.is_array()) _file.Refuse(value, complaint);
    return *value.as_array();
}

long long nxCalendarReader::_GetDay(const toml::node& value, const std::string& key) const
{
    nxTextStream text;
    if (value.is_date())
        text << value.as_date()->get();
    else if (value.is_string())
        text << value.as_string()->get();
    // A time of day or a number of seconds is a time of the data, but no date.
    constexpr std::string_view form = "YYYY-MM-DD";
    long long time = 0;
    if (text.str().size() != form.size() || text.str()[4] != '-' ||
        nxFeedTime::SetFromText(text.str(), time) != nullptr)
        _file.Refuse(value, key + ": a date is " + std::string(form) +
                                (text.str().empty() ? "" : ", not \"" + text.str() + "\""));
    return time / nxTime::NanosecondsPerDay;
}
