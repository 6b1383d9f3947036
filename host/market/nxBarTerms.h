#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "base/enums/nxTickDataPeriodEnum.h"
#include "base/values/nxDecimal.h"

// What a bar counts. Multiple: seconds, from the multiples of that length in UTC on; Clock: seconds, from the
// opening of the session on; Session: all of it, whatever the count. Trading days, and weeks and months of
// them, hold whole sessions. The last three end with a trade: by their number, by their lots, or by the
// distance of high and low.
enum class nxBarUnit { Multiple, Clock, Session, Day, Week, Month, Trade, Lot, Price };

// Where one bar ends and the next one begins. A value.
struct nxBarTerms
{
    nxBarUnit unit = nxBarUnit::Session;
    long long count = 1;  // of the unit
    nxDecimal distance;   // in place of it, for Price

    // One of the six that every script knows.
    explicit nxBarTerms(const nxTickDataPeriodEnum& period);
    nxBarTerms() = default;
    // "15 minutes", "week", "3 months", "500 trades", "10000 lots", "2.5 points". Null when it was read, else
    // why not; then the terms stay as it was.
    [[nodiscard]] static const char* SetFromText(std::string_view text, nxBarTerms& terms);

    bool IsMadeOfTrades() const { return unit >= nxBarUnit::Trade; }
    // Of trading days.
    bool IsOfDays() const { return unit >= nxBarUnit::Day && unit <= nxBarUnit::Month; }
};

// By the name that scripts ask for.
using nxNamedBars = std::map<std::string, nxBarTerms, std::less<>>;
