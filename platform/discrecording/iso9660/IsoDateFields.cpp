#include "platform/discrecording/iso9660/IsoDateFields.h"

#include "platform/discrecording/image/CalendarTime.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

// Fields of a recording date (ECMA-119 9.1.5), one byte each, counted from 0.
namespace RecordingDate
{
constexpr std::size_t yearsSince1900 = 0;
constexpr std::size_t month = 1;
constexpr std::size_t day = 2;
constexpr std::size_t hour = 3;
constexpr std::size_t minute = 4;
constexpr std::size_t second = 5;
constexpr std::size_t zone = 6;
} // namespace RecordingDate
static_assert(RecordingDate::zone + 1 == recordingDateSize);

// Fields of a volume date (8.4.26.1): digits, but for the zone.
namespace VolumeDate
{
constexpr std::size_t year = 0;
constexpr std::size_t month = 4;
constexpr std::size_t day = 6;
constexpr std::size_t hour = 8;
constexpr std::size_t minute = 10;
constexpr std::size_t second = 12;
constexpr std::size_t hundredths = 14;
constexpr std::size_t zone = 16;
} // namespace VolumeDate
static_assert(VolumeDate::zone + 1 == volumeDateSize);

/// Quarters of an hour that the local time is ahead: all dates are written in UTC.
constexpr std::uint8_t zoneOfUtc = 0;
constexpr int firstRecordingYear = 1900;

constexpr std::int64_t firstRecordingSecond = startOfYear(firstRecordingYear);
constexpr std::int64_t lastRecordingSecond = startOfYear(2156) - 1;
constexpr std::int64_t firstVolumeSecond = startOfYear(1);
constexpr std::int64_t lastVolumeSecond = startOfYear(10000) - 1;

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
    to[RecordingDate::yearsSince1900] = static_cast<std::uint8_t>(parts.year - firstRecordingYear);
    to[RecordingDate::month] = static_cast<std::uint8_t>(parts.month);
    to[RecordingDate::day] = static_cast<std::uint8_t>(parts.day);
    to[RecordingDate::hour] = static_cast<std::uint8_t>(parts.hour);
    to[RecordingDate::minute] = static_cast<std::uint8_t>(parts.minute);
    to[RecordingDate::second] = static_cast<std::uint8_t>(parts.second);
    to[RecordingDate::zone] = zoneOfUtc;
}

void storeVolumeDate(std::uint8_t *to, FileTime time)
{
    const CalendarTime parts = calendarTime(std::clamp(time.seconds, firstVolumeSecond, lastVolumeSecond));
    storeDigits(to + VolumeDate::year, static_cast<unsigned int>(parts.year), 4);
    storeDigits(to + VolumeDate::month, parts.month, 2);
    storeDigits(to + VolumeDate::day, parts.day, 2);
    storeDigits(to + VolumeDate::hour, parts.hour, 2);
    storeDigits(to + VolumeDate::minute, parts.minute, 2);
    storeDigits(to + VolumeDate::second, parts.second, 2);
    storeDigits(to + VolumeDate::hundredths, time.nanoseconds / 10'000'000, 2);
    to[VolumeDate::zone] = zoneOfUtc;
}

void storeNoVolumeDate(std::uint8_t *to)
{
    std::fill_n(to, VolumeDate::zone, static_cast<std::uint8_t>('0'));
    to[VolumeDate::zone] = zoneOfUtc;
}

} // namespace Tessaron
