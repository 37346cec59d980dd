#pragma once

#include "platform/foundation/Export.h"

#include <QString>

#include <functional>

namespace Tessaron
{

/// Reads a text piece by piece, remembering where it stands. An operation that fails leaves the location and its out
/// argument as they were. By default white space and line ends are skipped before each piece.
///
/// Not thread-safe; a value with a position.
class TESSARON_EXPORT NSScanner
{
public:
    using CharacterTest = std::function<bool(QChar)>;

    explicit NSScanner(const QString &string);

    [[nodiscard]] QString string() const { return m_string; }
    [[nodiscard]] qsizetype scanLocation() const { return m_location; }
    void setScanLocation(qsizetype location);
    /// True when nothing is left but characters to be skipped.
    [[nodiscard]] bool isAtEnd() const;

    /// Which characters are skipped before a piece; an empty function skips none.
    void setCharactersToBeSkipped(CharacterTest test) { m_skipped = std::move(test); }
    [[nodiscard]] CharacterTest charactersToBeSkipped() const { return m_skipped; }

    /// Reads a run of characters that pass the test; false when the next one does not. `result` may be null.
    bool scanCharactersFromSet(const CharacterTest &set, QString *result);
    /// Reads up to the first character that passes the test, or to the end; false when nothing was read.
    bool scanUpToCharactersFromSet(const CharacterTest &set, QString *result);
    /// Reads the given text exactly (case-sensitive).
    bool scanLiteral(const QString &text);
    /// Reads a decimal integer with an optional sign; a value beyond 32 bits is clamped to the range of `int`.
    bool scanInt(int *result);

private:
    [[nodiscard]] qsizetype locationAfterSkipping() const;

    QString m_string;
    qsizetype m_location = 0;
    CharacterTest m_skipped;
};

} // namespace Tessaron
