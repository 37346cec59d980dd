#pragma once

#include "platform/discimage/udf/UdfDescriptors.h"

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

// Where the fields of UDF's structures lie, in bytes from the start of their structure. The writer has a table of its
// own, so that a mistake in one of the two shows.

/// The tag that every descriptor begins with (ECMA-167 3/7.2).
namespace UdfTagField
{
inline constexpr std::size_t checksum = 4; // of the tag itself
inline constexpr std::size_t crc = 8;
inline constexpr std::size_t covered = 10; // how many bytes behind the tag the CRC covers
inline constexpr std::size_t place = 12;
inline constexpr std::size_t size = 16;
} // namespace UdfTagField

/// Timestamp (ECMA-167 1/7.3).
namespace UdfTimestampField
{
inline constexpr std::size_t typeAndZone = 0; // four bits of type above twelve of zone, in minutes, signed
inline constexpr int zoneMask = 0x0FFF;
inline constexpr int zoneSign = 0x0800;
inline constexpr std::size_t year = 2;
inline constexpr std::size_t month = 4;
inline constexpr std::size_t day = 5;
inline constexpr std::size_t hour = 6;
inline constexpr std::size_t minute = 7;
inline constexpr std::size_t second = 8;
inline constexpr std::size_t hundredths = 9; // of a second
inline constexpr std::size_t hundredsOfMicroseconds = 10;
inline constexpr std::size_t microseconds = 11;
} // namespace UdfTimestampField

/// Structures of the volume recognition area (ECMA-167 2/9.1).
namespace UdfRecognitionField
{
inline constexpr std::size_t type = 0;
inline constexpr std::size_t version = 6;
} // namespace UdfRecognitionField

/// An extent of the volume (ECMA-167 3/7.1).
namespace UdfExtentField
{
inline constexpr std::size_t length = 0;
inline constexpr std::size_t block = 4;
} // namespace UdfExtentField

/// Anchor volume descriptor pointer (ECMA-167 3/10.2).
namespace UdfAnchorField
{
inline constexpr std::size_t mainSequence = 16;
inline constexpr std::size_t reserveSequence = 24;
} // namespace UdfAnchorField

/// Primary volume descriptor (ECMA-167 3/10.1).
namespace UdfPrimaryField
{
inline constexpr std::size_t volumeSet = 72;
inline constexpr std::size_t volumeSetSize = 128;
inline constexpr std::size_t recordingTime = 376;
} // namespace UdfPrimaryField

/// Partition descriptor (ECMA-167 3/10.5).
namespace UdfPartitionField
{
inline constexpr std::size_t number = 22;
inline constexpr std::size_t start = 188;
inline constexpr std::size_t length = 192;
} // namespace UdfPartitionField

/// Logical volume descriptor (ECMA-167 3/10.6).
namespace UdfLogicalVolumeField
{
inline constexpr std::size_t name = 84;
inline constexpr std::size_t nameSize = 128;
inline constexpr std::size_t blockSize = 212;
inline constexpr std::size_t fileSetBlock = 252;
inline constexpr std::size_t fileSetPartition = 256;
inline constexpr std::size_t mapTableLength = 264;
inline constexpr std::size_t mapCount = 268;
inline constexpr std::size_t implementationUse = 304;
inline constexpr std::size_t integrity = 432;
inline constexpr std::size_t maps = 440;
} // namespace UdfLogicalVolumeField

/// Partition maps of type 1 (ECMA-167 3/10.7.2) and of type 2 (UDF 2.2.8 to 2.2.10), which names its kind.
namespace UdfPartitionMapField
{
inline constexpr std::size_t type = 0;
inline constexpr std::size_t length = 1;
inline constexpr std::size_t plainNumber = 4;
inline constexpr std::size_t plainSize = 6;
inline constexpr std::size_t identifier = 5;
inline constexpr std::size_t identifierSize = 23;
inline constexpr std::size_t otherNumber = 38;
inline constexpr std::size_t metadataFile = 40;
inline constexpr std::size_t metadataMirror = 44;
inline constexpr std::size_t sparingTableCount = 42;
inline constexpr std::size_t sparingTables = 48;
inline constexpr std::size_t otherSize = 64;
} // namespace UdfPartitionMapField

/// Sparing table (UDF 2.2.12).
namespace UdfSparingTableField
{
inline constexpr std::size_t identifier = 17;
inline constexpr std::size_t entryCount = 48;
inline constexpr std::size_t entries = 56;
inline constexpr std::size_t entrySize = 8;
} // namespace UdfSparingTableField

/// Unallocated space descriptor (ECMA-167 3/10.8).
namespace UdfUnallocatedField
{
inline constexpr std::size_t extentCount = 20;
inline constexpr std::size_t extents = 24;
inline constexpr std::size_t extentSize = 8;
} // namespace UdfUnallocatedField

/// Logical volume integrity descriptor (ECMA-167 3/10.10).
namespace UdfIntegrityField
{
inline constexpr std::size_t recordingTime = 16;
inline constexpr std::size_t type = 28;
inline constexpr std::size_t nextExtent = 32;
inline constexpr std::size_t nextUniqueId = 40;
inline constexpr std::size_t partitionCount = 72;
inline constexpr std::size_t useLength = 76;
inline constexpr std::size_t tables = 80; // free blocks of each partition, then the sizes of each
} // namespace UdfIntegrityField

/// The use of implementations behind the tables of an integrity descriptor (UDF 2.2.6.4), from its own start.
namespace UdfIntegrityUseField
{
inline constexpr std::size_t fileCount = 32;
inline constexpr std::size_t folderCount = 36;
inline constexpr std::size_t countsEnd = 40;
} // namespace UdfIntegrityUseField

/// File set descriptor (ECMA-167 4/14.1).
namespace UdfFileSetField
{
inline constexpr std::size_t rootBlock = 404;
inline constexpr std::size_t rootPartition = 408;
} // namespace UdfFileSetField

/// File identifier descriptor (ECMA-167 4/14.4).
namespace UdfIdentifierField
{
inline constexpr std::size_t version = 16;
inline constexpr std::size_t characteristics = 18;
inline constexpr std::size_t nameLength = 19;
inline constexpr std::size_t icbLength = 20;
inline constexpr std::size_t block = 24;
inline constexpr std::size_t partition = 28;
inline constexpr std::size_t uniqueId = 32; // in the use of implementations of the address (UDF 2.3.4.3)
inline constexpr std::size_t useLength = 36;
inline constexpr std::size_t headSize = 38;
/// The use of implementations and the name at their longest, and padding.
inline constexpr std::size_t greatestSize = headSize + 255 + 65535 + 3;
} // namespace UdfIdentifierField

/// File entry and extended file entry (ECMA-167 4/14.9 and 4/14.17): the fields that lie alike in both.
namespace UdfEntryField
{
inline constexpr std::size_t icbType = 27;
inline constexpr std::size_t icbFlags = 34;
inline constexpr std::uint16_t allocationMask = 7; // of these flags: the kind of allocation descriptors (4/14.6.8)
inline constexpr std::uint16_t setsUserId = 1u << 6;
inline constexpr std::uint16_t setsGroupId = 1u << 7;
inline constexpr std::uint16_t isSticky = 1u << 8;
inline constexpr std::size_t permissions = 44;
inline constexpr std::size_t linkCount = 48;
inline constexpr std::size_t informationLength = 56;
} // namespace UdfEntryField

/// One of the two forms, with the fields in which they differ.
struct UdfEntryForm {
    UdfDescriptorKind kind;
    std::size_t blocksRecorded;
    std::size_t modificationTime;
    std::size_t uniqueId;
    std::size_t attributesLength;
    std::size_t allocationLength;
    std::size_t headSize; ///< what comes before the extended attributes
};
inline constexpr UdfEntryForm udfPlainEntry = {UdfDescriptorKind::FileEntry, 64, 84, 160, 168, 172, 176};
inline constexpr UdfEntryForm udfExtendedEntry = {UdfDescriptorKind::ExtendedFileEntry, 72, 92, 200, 208, 212, 216};

/// The form that the tag of a file entry states; the plain one for anything else.
[[nodiscard]] inline const UdfEntryForm &udfEntryForm(std::span<const std::uint8_t> entry)
{
    return udfDescriptorKind(entry) == udfExtendedEntry.kind ? udfExtendedEntry : udfPlainEntry;
}

/// Allocation descriptors, short and long (ECMA-167 4/14.14.1 and 4/14.14.2).
namespace UdfAllocationField
{
inline constexpr std::size_t length = 0; // its two highest bits are the type of the extent
inline constexpr unsigned int typeShift = 30;
inline constexpr std::uint32_t lengthMask = (std::uint32_t{1} << typeShift) - 1;
inline constexpr std::size_t block = 4;
inline constexpr std::size_t partition = 8; // of a long one
inline constexpr std::size_t shortSize = 8;
inline constexpr std::size_t longSize = 16;
} // namespace UdfAllocationField

/// Allocation extent descriptor (ECMA-167 4/14.5).
namespace UdfAllocationExtentField
{
inline constexpr std::size_t descriptorsLength = 20;
inline constexpr std::size_t descriptors = 24;
} // namespace UdfAllocationExtentField

/// A component of a link's target (ECMA-167 4/14.16.1).
namespace UdfPathComponentField
{
inline constexpr std::size_t type = 0;
inline constexpr std::size_t nameLength = 1;
inline constexpr std::size_t name = 4;
} // namespace UdfPathComponentField

} // namespace Tessaron
