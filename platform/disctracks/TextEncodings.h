#pragma once

#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

namespace Tessaron
{

/// What the bytes of a text file turned out to be.
enum class TextFileEncoding {
    Utf8,
    Utf16,
    ShiftJis,
    Windows1252,
};

struct DecodedText {
    QString text; ///< without a byte-order mark
    TextFileEncoding encoding = TextFileEncoding::Utf8;
};

/// Decodes a text that does not say what it is written in: by its byte-order mark where it has one, as UTF-8 where that
/// makes sense throughout, else as Shift-JIS where the pairs of bytes look Japanese, else as Windows-1252, which always
/// succeeds. Short texts in another encoding are taken for one of the last two.
[[nodiscard]] TESSARON_EXPORT DecodedText decodedText(QByteArrayView bytes);

/// Shift-JIS as Windows has it (code page 932). No value for what it cannot say, or when the system has no converter.
[[nodiscard]] TESSARON_EXPORT std::optional<QString> textOfShiftJis(QByteArrayView bytes);
[[nodiscard]] TESSARON_EXPORT std::optional<QByteArray> shiftJisOfText(const QString &text);

} // namespace Tessaron
