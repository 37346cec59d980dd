#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSFileHandle.h"
#include "platform/foundation/NSStringEncoding.h"
#include "platform/foundation/OSStatus.h"

#include <QString>

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

// Readers of binary structures at a file handle's offset. Each takes exactly the bytes that it names and returns 0;
// where the file has fewer it returns eofErr (-39), the only error, with the destination untouched and the offset
// behind what there was.

[[nodiscard]] TESSARON_EXPORT OSStatus readChar(NSFileHandle &handle, char *value);
[[nodiscard]] TESSARON_EXPORT OSStatus readBigUnsignedShort(NSFileHandle &handle, std::uint16_t *value);
[[nodiscard]] TESSARON_EXPORT OSStatus readBigSignedShort(NSFileHandle &handle, std::int16_t *value);
[[nodiscard]] TESSARON_EXPORT OSStatus readBigUnsignedInt(NSFileHandle &handle, std::uint32_t *value);
[[nodiscard]] TESSARON_EXPORT OSStatus readBigSignedInt(NSFileHandle &handle, std::int32_t *value);
[[nodiscard]] TESSARON_EXPORT OSStatus readLittleUnsignedShort(NSFileHandle &handle, std::uint16_t *value);
[[nodiscard]] TESSARON_EXPORT OSStatus readLittleSignedShort(NSFileHandle &handle, std::int16_t *value);
[[nodiscard]] TESSARON_EXPORT OSStatus readLittleUnsignedInt(NSFileHandle &handle, std::uint32_t *value);
[[nodiscard]] TESSARON_EXPORT OSStatus readLittleSignedInt(NSFileHandle &handle, std::int32_t *value);
/// A negative length is a shortfall, too.
[[nodiscard]] TESSARON_EXPORT OSStatus readBytes(NSFileHandle &handle, void *bytes, std::int32_t length);

/// A text of `length` bytes. Bytes that are not valid in the encoding give a null text, and still 0.
[[nodiscard]] TESSARON_EXPORT OSStatus readString(NSFileHandle &handle, QString *string, NSStringEncoding encoding,
                                                  std::int32_t length);
/// A text behind a byte with its length. A length of 0 leaves the text as it is. From 128 on the length byte counts as
/// negative: then eofErr, with the rest of the file read.
[[nodiscard]] TESSARON_EXPORT OSStatus readPascalString(NSFileHandle &handle, QString *string,
                                                        NSStringEncoding encoding);
/// Moves the offset forward by `count` bytes, whether the file has them or not.
TESSARON_EXPORT void skipBytes(NSFileHandle &handle, std::uint64_t count);
/// One read(2): the bytes read, 0 at the end, -1 on an error.
[[nodiscard]] TESSARON_EXPORT std::ptrdiff_t readBytesOfLength(NSFileHandle &handle, void *bytes, std::size_t length);

/// Decodes PackBits data until `totalLength` bytes are made, or more: the last run is written whole, so `output` needs
/// room for 128 bytes more. A control byte of -128 is a run of 129 bytes. The data is read ahead: the handle's offset
/// afterwards is of no use. eofErr when it ends too early.
[[nodiscard]] TESSARON_EXPORT OSStatus unpackBits(NSFileHandle &handle, void *output, std::uint64_t totalLength);

/// Where the pattern next stands, in bytes from the offset at the call; 0 when it is not found, or stands right there.
/// The search ends with the first candidate at or behind `maxOffset`. It does not go back: bytes that were compared are
/// not looked at again, so "aab" is not found in "aaab". The handle's offset afterwards is of no use.
[[nodiscard]] TESSARON_EXPORT std::uint64_t offsetOfBytesWithBuffer(NSFileHandle &handle, const void *pattern,
                                                                    std::uint32_t length, std::uint64_t maxOffset);

} // namespace Tessaron
