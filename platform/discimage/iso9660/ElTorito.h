#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"
#include "platform/foundation/Export.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// An image that a computer can be started from, as the boot catalog of El Torito (version 1.0) names it.
struct BootEntry {
    std::uint8_t platform = 0; ///< 0 for x86, 1 PowerPC, 2 Mac, 0xEF for EFI
    std::uint8_t emulation = 0; ///< 0 for none, 1 to 3 for floppies of 1.2, 1.44, 2.88 MB, 4 for a hard disk
    bool isBootable = false;
    std::uint16_t loadSegment = 0; ///< 0 for the usual one, 0x7C0
    std::uint32_t sectorCount = 0; ///< that are loaded, of 512 bytes
    std::uint64_t offset = 0; ///< of the boot image in the disc image, bytes

    friend bool operator==(const BootEntry &, const BootEntry &) = default;
};

struct BootCatalog {
    std::uint64_t recordOffset = 0; ///< of the boot record in the image
    std::uint64_t offset = 0; ///< of the catalog in the image
    QString maker; ///< who made it, often empty
    std::vector<BootEntry> entries; ///< the first is the one that is used without a choice
};

/// The boot catalog that a boot record among the volume descriptors leads to; absent without such a record, or when it
/// lies beyond the end of the image.
[[nodiscard]] TESSARON_EXPORT std::optional<BootCatalog> readBootCatalog(const DiscImageSource &source);

/// Looks at the checksum, marks and reserved bytes of the catalog, and whether the boot images lie in the disc image.
void checkBootCatalog(const DiscImageSource &source, std::uint64_t recordOffset, VolumeProblemReport &report);

/// "x86", "PowerPC", "Mac", "EFI", or the number.
[[nodiscard]] TESSARON_EXPORT QString bootPlatformName(std::uint8_t platform);
/// "no emulation", "floppy of 1.44 MB" …
[[nodiscard]] TESSARON_EXPORT QString bootEmulationName(std::uint8_t emulation);

} // namespace Tessaron
