#pragma once

#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/PrintableText.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace Tessaron::Tool
{

/// A size for people, in the library's units: "1.0 kB".
[[nodiscard]] QString sizeText(std::uint64_t bytes);

/// The bytes with everything but unreserved characters and "/" percent-encoded (RFC 3986 2.3), so that a name of any
/// bytes fits in plain text and can be had back.
[[nodiscard]] QByteArray percentEncoded(const QByteArray &bytes);

/// True when the bytes are valid UTF-8.
[[nodiscard]] bool isUtf8(const QByteArray &bytes);

} // namespace Tessaron::Tool
