#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// A primary or supplementary volume descriptor whose fields were looked at.
struct CheckedIsoDescriptor {
    static constexpr std::size_t size = 2048;
    static constexpr std::size_t rootRecordSize = 34;

    VolumeKind kind = VolumeKind::ISO9660; ///< or Joliet
    std::uint64_t offset = 0; ///< in the image
    std::uint32_t blockSize = 0; ///< bytes
    std::uint32_t blockCount = 0;
    std::uint32_t pathTableLength = 0; ///< bytes
    std::array<std::uint32_t, 2> littleEndianTables{}; ///< blocks; the second, an optional copy, may be 0
    std::array<std::uint32_t, 2> bigEndianTables{};
    std::array<std::uint8_t, rootRecordSize> rootRecord{};
    bool hasContentsRecord = false; ///< the image is of this system
};

struct CheckedIsoDescriptors {
    std::vector<CheckedIsoDescriptor> trees; ///< that can be walked
    std::optional<std::uint64_t> bootRecordOffset; ///< of El Torito
};

/// Looks at the volume recognition area (ECMA-119 6.7.1 and ECMA-167 2/8): that the descriptors stand in a row, that
/// none of them lost its identifier or type, and all fields with a copy, a second byte order or a fixed value.
[[nodiscard]] CheckedIsoDescriptors checkIsoDescriptors(const DiscImageSource &source, VolumeProblemReport &report);

} // namespace Tessaron
