#pragma once

#include "platform/discimage/volume/VolumeObject.h"

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// A moment by calendar and clock, in a zone that is `zoneMinutes` ahead of UTC. Absent when no such moment exists:
/// month 13, hour 25. A leap second counts as the first of the next minute.
[[nodiscard]] std::optional<VolumeTime> volumeTimeFromCalendar(int year, int month, int day, int hour, int minute,
                                                               int second, int zoneMinutes);

/// The 7 bytes of ECMA-119 9.1.5; absent when they do not make a date, such as all zeros.
[[nodiscard]] std::optional<VolumeTime> volumeTimeFromRecordingDate(const std::uint8_t *date);

/// The 17 bytes of ECMA-119 8.4.26.1, to a hundredth of a second; absent when they do not make a date.
[[nodiscard]] std::optional<VolumeTime> volumeTimeFromDigits(const std::uint8_t *digits);

} // namespace Tessaron
