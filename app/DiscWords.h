#pragma once

#include <QString>

#include <cstdint>
#include <platform/discrecording/drives/DriveDescription.h>

namespace Tessaron::Desktop
{

// What is said of drives and of the discs in them, in the user's language.

/// "ASUS DRW-24D5MT (/dev/sr0)"; of a file in the place of a drive its path.
[[nodiscard]] QString driveText(const DriveDescription &drive);

/// "DVD+R, blank, 4.7 GB free", a sentence where there is more to say. `isAddedTo`: what is on it will stay.
[[nodiscard]] QString discText(const DiscDescription &disc, bool isAddedTo = false);

/// "8× (11.1 MB/s)" of a speed in thousands of bytes a second.
[[nodiscard]] QString speedText(std::uint32_t speed, std::uint32_t profile);

/// What stopping the writing does to a disc of the family.
[[nodiscard]] QString spoiledText(DiscFamily family);

} // namespace Tessaron::Desktop
