#pragma once

#include "platform/foundation/Export.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace Tessaron
{

// Sizes and times for people, with the unit words of the framework's own table. The units change at decimal thresholds,
// the numbers are divided by powers of 1024: 1000 bytes already read as "0.98 kB". Any thread.

/// A number of bytes with two decimals: "4.66 GB", "999.00 Bytes". Null for no number.
[[nodiscard]] TESSARON_EXPORT QString sizeFormatForNumber(std::optional<std::uint64_t> bytes);

/// The same with one decimal: "1.0 kB". Null for a null pointer.
[[nodiscard]] TESSARON_EXPORT QString sizeFormatForUnsignedLongLong(const unsigned long long *bytes);

/// A number of bytes in a coarser style: "999 Bytes", "1.5 kB". Kilobytes are counted from hundreds of bytes.
[[nodiscard]] TESSARON_EXPORT QString komogo(std::uint64_t bytes);

/// Seconds as "h:mm:ss": "1:02:05". Hides ::time() in this namespace.
[[nodiscard]] TESSARON_EXPORT QString time(int seconds);

} // namespace Tessaron
