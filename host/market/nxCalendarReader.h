#pragma once

#include <map>
#include <string>

#include "host/feed/nxTomlFile.h"
#include "host/market/nxTradingHours.h"

// Reads when markets are open out of a file of products: from the keys of a product, or from those of a table
// `calendar.NAME` that several products share. What is wrong is refused through the file, which outlives the
// reader.
class nxCalendarReader
{
public:
    explicit nxCalendarReader(const nxTomlFile& file) : _file(file) {}

    // Of a product: one of those below, or `calendar` itself.
    static bool IsKey(const std::string& key);
    // The table `calendar`; before the products are read.
    void ReadCalendars(const toml::node& calendars);
    // Those of a product; empty where it has none of the keys.
    nxTradingHours GetHours(const toml::node& product) const;

private:
    nxTradingHours _Read(const toml::node& table) const;
    void _ReadHolidays(const toml::node& days, nxTradingCalendar& calendar) const;
    void _ReadShortDay(const toml::node& table, nxTradingCalendar& calendar) const;
    const toml::array& _GetList(const toml::node& value, const std::string& complaint) const;
    // Days since 1970.
    long long _GetDay(const toml::node& value, const std::string& key) const;

    const nxTomlFile& _file;
    std::map<std::string, nxTradingHours> _calendars;
};
