#include "platform/discimage/volume/VolumeTimeFields.h"

#include <QDate>

namespace Tessaron
{

namespace
{

// Fields of a recording date (ECMA-119 9.1.5), one byte each, counted from 0.
namespace RecordingDateField
{
constexpr std::size_t yearsSince1900 = 0;
constexpr std::size_t month = 1;
constexpr std::size_t day = 2;
constexpr std::size_t hour = 3;
constexpr std::size_t minute = 4;
constexpr std::size_t second = 5;
constexpr std::size_t zone = 6;
} // namespace RecordingDateField

// Fields of a date in digits (8.4.26.1); the zone is a byte.
namespace DigitsField
{
constexpr std::size_t year = 0;
constexpr std::size_t month = 4;
constexpr std::size_t day = 6;
constexpr std::size_t hour = 8;
constexpr std::size_t minute = 10;
constexpr std::size_t second = 12;
constexpr std::size_t hundredths = 14;
constexpr std::size_t zone = 16;
} // namespace DigitsField

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
    namespace Field = RecordingDateField;
    return volumeTimeFromCalendar(1900 + date[Field::yearsSince1900], date[Field::month], date[Field::day],
                                  date[Field::hour], date[Field::minute], date[Field::second],
                                  std::int8_t(date[Field::zone]) * minutesPerZoneStep);
}

std::optional<VolumeTime> volumeTimeFromDigits(const std::uint8_t *digits)
{
    namespace Field = DigitsField;
    const int hundredths = numberOf(digits + Field::hundredths, 2);
    std::optional<VolumeTime> time = volumeTimeFromCalendar(
        numberOf(digits + Field::year, 4), numberOf(digits + Field::month, 2), numberOf(digits + Field::day, 2),
        numberOf(digits + Field::hour, 2), numberOf(digits + Field::minute, 2), numberOf(digits + Field::second, 2),
        std::int8_t(digits[Field::zone]) * minutesPerZoneStep);
    if (!time || hundredths < 0)
        return std::nullopt;
    time->nanoseconds = std::uint32_t(hundredths) * 10'000'000;
    time->granularity = 10'000'000;
    return time;
}

} // namespace Tessaron
