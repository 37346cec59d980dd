#include "platform/discrecording/iso9660/IsoDateFields.h"

#include <algorithm>
#include <chrono>

namespace Tessaron
{

namespace
{

/// The parts of a time in UTC.
struct CalendarTime {
    int year = 0;
    unsigned int month = 0;
    unsigned int day = 0;
    unsigned int hour = 0;
    unsigned int minute = 0;
    unsigned int second = 0;
};

constexpr std::int64_t secondsPerDay = 86400;

constexpr std::int64_t startOfYear(int year)
{
    using namespace std::chrono;
    return sys_days(std::chrono::year(year) / January / 1).time_since_epoch().count() * secondsPerDay;
}

constexpr std::int64_t firstRecordingSecond = startOfYear(1900);
constexpr std::int64_t lastRecordingSecond = startOfYear(2156) - 1;
constexpr std::int64_t firstVolumeSecond = startOfYear(1);
constexpr std::int64_t lastVolumeSecond = startOfYear(10000) - 1;

/// `seconds` must be in the range of a volume date.
CalendarTime calendarTime(std::int64_t seconds)
{
    using namespace std::chrono;
    std::int64_t dayNumber = seconds / secondsPerDay;
    std::int64_t rest = seconds % secondsPerDay;
    if (rest < 0) {
        rest += secondsPerDay;
        --dayNumber;
    }
    const year_month_day date{sys_days(days(dayNumber))};
    const auto second = static_cast<unsigned int>(rest);
    return {static_cast<int>(date.year()),
            static_cast<unsigned int>(date.month()),
            static_cast<unsigned int>(date.day()),
            second / 3600,
            second / 60 % 60,
            second % 60};
}

void storeDigits(std::uint8_t *to, unsigned int value, int digits)
{
    for (int at = digits - 1; at >= 0; --at, value /= 10)
        to[at] = static_cast<std::uint8_t>('0' + value % 10);
}

} // namespace

bool fitsRecordingDate(FileTime time)
{
    return time.seconds >= firstRecordingSecond && time.seconds <= lastRecordingSecond;
}

void storeRecordingDate(std::uint8_t *to, FileTime time)
{
    const CalendarTime parts = calendarTime(std::clamp(time.seconds, firstRecordingSecond, lastRecordingSecond));
    to[0] = static_cast<std::uint8_t>(parts.year - 1900);
    to[1] = static_cast<std::uint8_t>(parts.month);
    to[2] = static_cast<std::uint8_t>(parts.day);
    to[3] = static_cast<std::uint8_t>(parts.hour);
    to[4] = static_cast<std::uint8_t>(parts.minute);
    to[5] = static_cast<std::uint8_t>(parts.second);
    to[6] = 0;
}

void storeVolumeDate(std::uint8_t *to, FileTime time)
{
    const CalendarTime parts = calendarTime(std::clamp(time.seconds, firstVolumeSecond, lastVolumeSecond));
    storeDigits(to, static_cast<unsigned int>(parts.year), 4);
    storeDigits(to + 4, parts.month, 2);
    storeDigits(to + 6, parts.day, 2);
    storeDigits(to + 8, parts.hour, 2);
    storeDigits(to + 10, parts.minute, 2);
    storeDigits(to + 12, parts.second, 2);
    storeDigits(to + 14, time.nanoseconds / 10'000'000, 2);
    to[16] = 0;
}

void storeNoVolumeDate(std::uint8_t *to)
{
    std::fill_n(to, volumeDateSize - 1, static_cast<std::uint8_t>('0'));
    to[volumeDateSize - 1] = 0;
}

} // namespace Tessaron
