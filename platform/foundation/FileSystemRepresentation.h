#pragma once

#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

namespace Tessaron
{

/// File names are bytes; people and programs see them as text. The two functions below convert without loss: bytes
/// that are not valid UTF-8 become lone low surrogates (0xDC80 for byte 0x80 to 0xDCFF for byte 0xFF), which no valid
/// text contains, and come back as the same bytes. Thread-safe.

/// Text of a name or path given as bytes.
[[nodiscard]] TESSARON_EXPORT QString stringWithFileSystemRepresentation(QByteArrayView bytes);

/// Bytes of a name or path given as text: UTF-8, undone surrogates as above. A surrogate that stands for no byte
/// becomes U+FFFD.
[[nodiscard]] TESSARON_EXPORT QByteArray fileSystemRepresentation(QStringView text);

/// True when the text holds a lone surrogate, that is, when the name it came from is not valid UTF-8.
[[nodiscard]] TESSARON_EXPORT bool holdsUndecodableBytes(QStringView text);

/// The text as a person or a UTF-8 file may see it: what cannot be decoded is shown as U+FFFD.
[[nodiscard]] TESSARON_EXPORT QString displayableText(QStringView text);

} // namespace Tessaron
