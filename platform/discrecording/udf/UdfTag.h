#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Tessaron
{

/// Which descriptor follows a tag (ECMA-167 3/7.2.1 and 4/7.2.1).
enum class UdfTag : std::uint16_t {
    PrimaryVolume = 1,
    AnchorVolumePointer = 2,
    ImplementationUseVolume = 4,
    Partition = 5,
    LogicalVolume = 6,
    UnallocatedSpace = 7,
    Terminating = 8,
    LogicalVolumeIntegrity = 9,
    FileSet = 256,
    FileIdentifier = 257,
    AllocationExtent = 258,
    FileEntry = 261,
    ExtendedAttributeHeader = 262,
};

/// Bytes of the tag that every descriptor begins with.
inline constexpr std::size_t udfTagSize = 16;

/// Checksum of ECMA-167 3/7.2.6: the polynomial x^16 + x^12 + x^5 + 1, begun with 0, highest bit first.
[[nodiscard]] std::uint16_t udfCrc(std::span<const std::uint8_t> bytes);

/// Writes the tag of a descriptor that is complete otherwise: its checksum covers all that follows the tag. `location`
/// is the block that the descriptor begins in: of the volume for volume structures, of the partition for all others.
void storeUdfTag(std::span<std::uint8_t> descriptor, UdfTag tag, std::uint32_t location);

} // namespace Tessaron
