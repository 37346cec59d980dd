#pragma once

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

// Where the fields of ISO 9660's structures lie, in bytes from the start of their structure. Numbers with two byte
// orders begin with the little-endian one; the big-endian one follows at once. The writer has a table of its own, so
// that a mistake in one of the two shows.

/// Primary and supplementary volume descriptors (ECMA-119 8.4 and 8.5); the first three are those of all descriptors.
namespace IsoDescriptorField
{
inline constexpr std::size_t type = 0;
inline constexpr std::size_t identifier = 1;
inline constexpr std::size_t version = 6;
inline constexpr std::size_t flags = 7; // unused in a primary descriptor
inline constexpr std::size_t systemIdentifier = 8;
inline constexpr std::size_t volumeName = 40;
inline constexpr std::size_t shortTextSize = 32; // of these two
inline constexpr std::size_t unused = 72;
inline constexpr std::size_t unusedSize = 8;
inline constexpr std::size_t blockCount = 80;
inline constexpr std::size_t escape = 88;
inline constexpr std::size_t escapeSize = 32;
inline constexpr std::size_t setSize = 120;
inline constexpr std::size_t sequenceNumber = 124;
inline constexpr std::size_t blockSize = 128;
inline constexpr std::size_t pathTableLength = 132;
inline constexpr std::size_t littleEndianTables = 140; // two
inline constexpr std::size_t bigEndianTables = 148; // two
inline constexpr std::size_t rootRecord = 156;
inline constexpr std::size_t texts = 190; // seven
inline constexpr std::size_t fileNames = 702; // the last three of them
inline constexpr std::size_t dates = 813; // four: made, modified, expires, effective
inline constexpr std::size_t dateSize = 17;
inline constexpr std::size_t creationDate = dates;
inline constexpr std::size_t modificationDate = dates + dateSize;
inline constexpr std::size_t structureVersion = 881;
inline constexpr std::size_t applicationUse = 883;
/// Of images of this system, in the use of applications (docs/damage.md).
inline constexpr std::size_t contentsRecord = applicationUse + 64;
inline constexpr std::size_t reserved = 1395;
} // namespace IsoDescriptorField

/// The boot record of El Torito (ECMA-119 8.2, El Torito 2.0).
namespace IsoBootRecordField
{
inline constexpr std::size_t systemIdentifier = 7;
inline constexpr std::size_t catalog = 71;
inline constexpr std::size_t unused = 75;
} // namespace IsoBootRecordField

/// Directory records (ECMA-119 9.1).
namespace IsoRecordField
{
inline constexpr std::size_t length = 0;
inline constexpr std::size_t attributeLength = 1; // blocks of the extended attribute record in front of the extent
inline constexpr std::size_t block = 2;
inline constexpr std::size_t dataLength = 10;
inline constexpr std::size_t date = 18;
inline constexpr std::size_t dateSize = 7;
inline constexpr std::size_t flags = 25;
inline constexpr std::size_t unitSize = 26;
inline constexpr std::size_t gapSize = 27;
inline constexpr std::size_t volumeNumber = 28;
inline constexpr std::size_t identifierLength = 32;
inline constexpr std::size_t identifier = 33;
} // namespace IsoRecordField

/// Extended attribute records (ECMA-119 9.5).
namespace IsoAttributeField
{
inline constexpr std::size_t owner = 0;
inline constexpr std::size_t group = 4;
inline constexpr std::size_t version = 180;
} // namespace IsoAttributeField

/// Records of a path table (ECMA-119 9.4).
namespace IsoPathTableField
{
inline constexpr std::size_t identifierLength = 0;
inline constexpr std::size_t attributeLength = 1;
inline constexpr std::size_t block = 2;
inline constexpr std::size_t parent = 6;
inline constexpr std::size_t identifier = 8;
} // namespace IsoPathTableField

/// The head of every system use entry (SUSP 4.2).
namespace SystemUseField
{
inline constexpr std::size_t signature = 0; // two letters
inline constexpr std::size_t length = 2;
inline constexpr std::size_t version = 3;
inline constexpr std::size_t data = 4;
} // namespace SystemUseField

/// CE (SUSP 5.1).
namespace ContinuationField
{
inline constexpr std::size_t block = 4;
inline constexpr std::size_t offset = 12;
inline constexpr std::size_t length = 20;
inline constexpr std::size_t size = 28;
} // namespace ContinuationField

/// SP (SUSP 5.3).
namespace SharingProtocolField
{
inline constexpr std::size_t checkBytes = 4; // these two
inline constexpr std::uint8_t firstCheckByte = 0xBE;
inline constexpr std::uint8_t secondCheckByte = 0xEF;
inline constexpr std::size_t skippedBytes = 6;
inline constexpr std::size_t size = 7;
} // namespace SharingProtocolField

/// ER (SUSP 5.5).
namespace ExtensionField
{
inline constexpr std::size_t identifierLength = 4;
inline constexpr std::size_t descriptionLength = 5;
inline constexpr std::size_t sourceLength = 6;
inline constexpr std::size_t texts = 8;
} // namespace ExtensionField

/// PX (IEEE P1282 4.1.1). Its older form ends before the serial number.
namespace PosixField
{
inline constexpr std::size_t mode = 4;
inline constexpr std::size_t userId = 20;
inline constexpr std::size_t groupId = 28;
inline constexpr std::size_t serialNumber = 36;
inline constexpr std::size_t size = 44;
} // namespace PosixField

/// The device number of Rock Ridge (IEEE P1282 4.1.2).
namespace DeviceField
{
inline constexpr std::size_t high = 4;
inline constexpr std::size_t low = 12;
inline constexpr std::size_t size = 20;
} // namespace DeviceField

/// What the flags of TF say (IEEE P1282 4.1.6): a bit for each time that the entry holds, and how they are recorded.
namespace TimesFlag
{
inline constexpr std::uint8_t creation = 1u << 0;
inline constexpr std::uint8_t modification = 1u << 1;
inline constexpr std::uint8_t longForm = 1u << 7; // digits (ECMA-119 8.4.26.1)
} // namespace TimesFlag

/// What the flags of NM say (IEEE P1282 4.1.4).
namespace NameFlag
{
inline constexpr std::uint8_t continues = 1u << 0;
inline constexpr std::uint8_t current = 1u << 1;
inline constexpr std::uint8_t parent = 1u << 2;
inline constexpr std::uint8_t host = 1u << 5;
} // namespace NameFlag

/// What the flags of a link target's component say (IEEE P1282 4.1.3.1); SL itself has the first alone.
namespace LinkComponentFlag
{
inline constexpr std::uint8_t continues = 1u << 0;
inline constexpr std::uint8_t current = 1u << 1;
inline constexpr std::uint8_t parent = 1u << 2;
inline constexpr std::uint8_t root = 1u << 3;
} // namespace LinkComponentFlag

/// NM, SL and TF (IEEE P1282 4.1.3, 4.1.4 and 4.1.6): flags, then a text, components or times.
namespace RockRidgeField
{
inline constexpr std::size_t flags = 4;
inline constexpr std::size_t content = 5;
} // namespace RockRidgeField

/// A component of a link's target (IEEE P1282 4.1.3.1), from its start.
namespace LinkComponentField
{
inline constexpr std::size_t flags = 0;
inline constexpr std::size_t length = 1;
inline constexpr std::size_t text = 2;
} // namespace LinkComponentField

/// CL (IEEE P1282 4.1.5.1).
namespace ChildLinkField
{
inline constexpr std::size_t block = 4;
inline constexpr std::size_t size = 12;
} // namespace ChildLinkField

} // namespace Tessaron
