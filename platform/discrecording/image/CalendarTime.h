#pragma once

#include <chrono>
#include <cstdint>

namespace Tessaron
{

/// The parts of a time in UTC, as dates on discs have them.
struct CalendarTime {
    int year = 0;
    unsigned int month = 0; ///< from 1
    unsigned int day = 0; ///< from 1
    unsigned int hour = 0;
    unsigned int minute = 0;
    unsigned int second = 0;
};

inline constexpr std::int64_t secondsPerDay = 86400;

/// Seconds from 1970 to the first one of a year, 1 to 10000; negative for years before 1970.
[[nodiscard]] constexpr std::int64_t startOfYear(int year)
{
    using namespace std::chrono;
    return sys_days(std::chrono::year(year) / January / 1).time_since_epoch().count() * secondsPerDay;
}

/// `seconds` since 1970, within the years 1 to 9999.
[[nodiscard]] CalendarTime calendarTime(std::int64_t seconds);

} // namespace Tessaron
