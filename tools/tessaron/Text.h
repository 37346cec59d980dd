#pragma once

#include "platform/foundation/MessageTexts.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace Tessaron::Tool
{

/// Text that holds file names, made fit for a terminal, as UTF-8: control characters, characters that reverse the
/// writing direction, and bytes that are not UTF-8 appear as \n, \t, \xNN or \u{N}. A name can so neither move the
/// cursor nor pass for another.
[[nodiscard]] QByteArray printable(QStringView text);
/// The same for a name or path given as bytes.
[[nodiscard]] QByteArray printable(const QByteArray &bytes);

/// A size for people, in the library's units: "1.0 kB".
[[nodiscard]] QString sizeText(std::uint64_t bytes);

/// The bytes with everything but unreserved characters and "/" percent-encoded (RFC 3986 2.3), so that a name of any
/// bytes fits in plain text and can be had back.
[[nodiscard]] QByteArray percentEncoded(const QByteArray &bytes);

/// True when the bytes are valid UTF-8.
[[nodiscard]] bool isUtf8(const QByteArray &bytes);

} // namespace Tessaron::Tool
