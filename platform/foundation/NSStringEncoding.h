#pragma once

#include "platform/foundation/Export.h"

#include <QByteArrayView>
#include <QString>

#include <cstdint>

namespace Tessaron
{

/// How the bytes of a text stand for characters.
enum class NSStringEncoding : std::uint8_t {
    ASCII,
    UTF8,
    ISOLatin1,
    Windows1252,
    MacOSRoman,
    ShiftJIS,
    UTF16BigEndian,
    UTF16LittleEndian,
};

/// The text that the bytes are; a null text when they are not valid in the encoding. Empty bytes are an empty text.
/// Thread-safe.
[[nodiscard]] TESSARON_EXPORT QString stringWithBytes(QByteArrayView bytes, NSStringEncoding encoding);

} // namespace Tessaron
