#pragma once

#include <QByteArray>
#include <QString>

#include <utility>

namespace Tessaron
{

/// Makes text of UTF-8 that comes in pieces, cut anywhere. What is not valid UTF-8 becomes U+FFFD; a byte-order mark is
/// a character as any other.
class Utf8Pieces
{
public:
    /// The text up to the last whole character, with what earlier pieces left.
    [[nodiscard]] QString add(const QByteArray &piece);
    /// What is left at the end: U+FFFD for a character that was cut off, else an empty text.
    [[nodiscard]] QString finish();
    /// The bytes that wait for the rest of their character, for one who wants bytes from now on.
    [[nodiscard]] QByteArray takeRest() { return std::exchange(m_rest, {}); }

private:
    QByteArray m_rest; ///< the begin of a character, at most 3 bytes
};

} // namespace Tessaron
