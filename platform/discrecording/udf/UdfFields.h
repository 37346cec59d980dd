#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Tessaron
{

/// The small fields that UDF descriptors are made of. All expect zeroed room of the right size.

/// The revision of OSTA UDF that is written, as entity identifiers and the integrity descriptor have it.
inline constexpr std::uint16_t udfRevision = 0x0102;

inline constexpr std::size_t udfTimestampSize = 12;
inline constexpr std::size_t udfEntityIdentifierSize = 32;
inline constexpr std::size_t udfCharacterSetSize = 64;
inline constexpr std::size_t udfLongDescriptorSize = 16;

/// True when a timestamp can say the time: the years 1 to 9999.
[[nodiscard]] bool fitsUdfTimestamp(FileTime time);
/// Writes a timestamp (ECMA-167 1/7.3) in UTC, its zone said to be 0, to the microsecond. A time out of range becomes
/// the first or last that is in range.
void storeUdfTimestamp(std::uint8_t *to, FileTime time);

/// Writes the character set that all texts are in: "OSTA Compressed Unicode" (UDF 2.1.2).
void storeUdfCharacterSet(std::uint8_t *to);

/// Writes a text into a field of fixed size (UDF 2.1.3): compressed Unicode, its length in the last byte. A text that
/// is too long is cut, never inside a surrogate pair; one without characters leaves all zero.
void storeUdfText(std::span<std::uint8_t> field, std::u16string_view text);

/// What follows the name in an entity identifier (UDF 2.1.4.3).
enum class UdfIdentifierSuffix : std::uint8_t {
    None,
    Domain, ///< the revision, and flags, which are 0: they would state a protection against writing
    Udf, ///< the revision and the kind of system
    Implementation, ///< the kind of system
};
/// Writes an entity identifier (ECMA-167 1/7.4).
void storeUdfEntityIdentifier(std::uint8_t *to, std::string_view identifier, UdfIdentifierSuffix suffix);
/// The same for this system as the maker of a structure.
void storeUdfImplementation(std::uint8_t *to);

/// Writes where something lies in the volume (extent_ad, ECMA-167 3/7.1): bytes, and the first block. 8 bytes.
void storeUdfVolumeExtent(std::uint8_t *to, std::uint32_t bytes, std::uint32_t block);
/// Writes where something lies in the partition (short_ad, ECMA-167 4/14.14.1). 8 bytes.
void storeUdfShortDescriptor(std::uint8_t *to, std::uint32_t bytes, std::uint32_t block);
/// The same with the partition's number, which is 0 (long_ad, ECMA-167 4/14.14.2).
void storeUdfLongDescriptor(std::uint8_t *to, std::uint32_t bytes, std::uint32_t block);

} // namespace Tessaron
