#include "host/report/nxResultText.h"

#include <fmt/format.h>

#include <chrono>

#include "base/time/nxTime.h"

std::string nxResultText::GetDate(long long day)
{
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{day}}};
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()));
}

std::string nxResultText::GetTime(long long time)
{
    const auto since = std::chrono::nanoseconds(time);
    const auto day = std::chrono::floor<std::chrono::days>(since);
    const std::chrono::hh_mm_ss clock(since - day);
    std::string text = fmt::format("{}T{:02}:{:02}:{:02}", GetDate(day.count()), clock.hours().count(),
                                   clock.minutes().count(), clock.seconds().count());
    if (const long long rest = clock.subseconds().count(); rest != 0) {
        text += fmt::format(".{:09}", rest);
        text.resize(text.find_last_not_of('0') + 1);
    }
    return text + "Z";
}

double nxResultText::GetMilliseconds(long long time)
{
    // To microseconds first, which a double holds exactly.
    const long long micros = time / 1000;
    return static_cast<double>(micros) / 1000.0;
}
