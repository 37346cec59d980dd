#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeObject.h"
#include "platform/foundation/NSError.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Tessaron
{

/// Kinds of descriptors that a tag names (ECMA-167 3/7.2.1, 4/7.2.1).
enum class UdfDescriptorKind : std::uint16_t {
    PrimaryVolume = 1,
    Anchor = 2,
    VolumePointer = 3,
    ImplementationUse = 4,
    Partition = 5,
    LogicalVolume = 6,
    UnallocatedSpace = 7,
    Terminator = 8,
    Integrity = 9,
    FileSet = 256,
    FileIdentifier = 257,
    AllocationExtent = 258,
    FileEntry = 261,
    ExtendedFileEntry = 266,
};

/// The null error when the bytes begin with a whole descriptor of this kind: the kind and the checksums of its tag are
/// right, and so is its place when `block` is given. `offset`, the place in the image, is for the error.
[[nodiscard]] NSError checkUdfDescriptor(std::span<const std::uint8_t> bytes, UdfDescriptorKind kind,
                                         std::optional<std::uint32_t> block, std::uint64_t offset);

/// Kind that the tag states, checked or not.
[[nodiscard]] UdfDescriptorKind udfDescriptorKind(std::span<const std::uint8_t> bytes);

/// Text in OSTA compressed Unicode (UDF 2.1.1); absent for an unknown compression or half a character.
[[nodiscard]] std::optional<QString> udfText(std::span<const std::uint8_t> recorded);

/// Text in a field of fixed size, whose last byte is the length (ECMA-167 1/7.2.12). Empty when it makes no sense.
[[nodiscard]] QString udfFieldText(std::span<const std::uint8_t> field);

/// The 12 bytes of ECMA-167 1/7.3; absent when they do not make a date.
[[nodiscard]] std::optional<VolumeTime> udfTime(const std::uint8_t *timestamp);

} // namespace Tessaron
