#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <cstdint>

namespace Tessaron
{

/// Bytes of a recording date in a directory record and in a short time stamp.
inline constexpr std::size_t recordingDateSize = 7;
/// Bytes of a date in a volume descriptor.
inline constexpr std::size_t volumeDateSize = 17;

/// True when a recording date can say the time: the years 1900 to 2155.
[[nodiscard]] bool fitsRecordingDate(FileTime time);

/// Writes 7 bytes, in UTC (ECMA-119 9.1.5). A time out of range becomes the first or last that is in range.
void storeRecordingDate(std::uint8_t *to, FileTime time);

/// Writes 17 bytes, in UTC (ECMA-119 8.4.26.1): years 1 to 9999, others become the first or the last.
void storeVolumeDate(std::uint8_t *to, FileTime time);
/// Writes the 17 bytes that mean "not specified".
void storeNoVolumeDate(std::uint8_t *to);

} // namespace Tessaron
