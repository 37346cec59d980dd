#include "platform/discimage/volume/VolumeTimeFields.h"

#include <QDate>

namespace Tessaron
{

namespace
{

constexpr std::int64_t secondsPerMinute = 60;
constexpr std::int64_t secondsPerHour = 3600;
constexpr std::int64_t secondsPerDay = 86400;
constexpr int minutesPerZoneStep = 15; // ECMA-119 9.1.5: zones are counted in quarters of an hour

/// `count` digits as a number; -1 when one of them is not a digit.
int numberOf(const std::uint8_t *digits, int count)
{
    int number = 0;
    for (int index = 0; index < count; ++index) {
        if (digits[index] < '0' || digits[index] > '9')
            return -1;
        number = number * 10 + (digits[index] - '0');
    }
    return number;
}

} // namespace

std::optional<VolumeTime> volumeTimeFromCalendar(int year, int month, int day, int hour, int minute, int second,
                                                 int zoneMinutes)
{
    const QDate date(year, month, day);
    if (year < 1 || !date.isValid() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 60)
        return std::nullopt;
    const std::int64_t days = date.toJulianDay() - QDate(1970, 1, 1).toJulianDay();
    VolumeTime time;
    time.seconds = days * secondsPerDay + hour * secondsPerHour + (minute - zoneMinutes) * secondsPerMinute + second;
    return time;
}

std::optional<VolumeTime> volumeTimeFromRecordingDate(const std::uint8_t *date)
{
    return volumeTimeFromCalendar(1900 + date[0], date[1], date[2], date[3], date[4], date[5],
                                  std::int8_t(date[6]) * minutesPerZoneStep);
}

std::optional<VolumeTime> volumeTimeFromDigits(const std::uint8_t *digits)
{
    const int hundredths = numberOf(digits + 14, 2);
    std::optional<VolumeTime> time = volumeTimeFromCalendar(
        numberOf(digits, 4), numberOf(digits + 4, 2), numberOf(digits + 6, 2), numberOf(digits + 8, 2),
        numberOf(digits + 10, 2), numberOf(digits + 12, 2), std::int8_t(digits[16]) * minutesPerZoneStep);
    if (!time || hundredths < 0)
        return std::nullopt;
    time->nanoseconds = std::uint32_t(hundredths) * 10'000'000;
    time->granularity = 10'000'000;
    return time;
}

} // namespace Tessaron
