#pragma once

#include "platform/foundation/NSError.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// A word of a .toc file.
struct CdrdaoWord {
    QString text; ///< of a quoted word what stands between the quotes
    std::uint32_t line = 0;
    bool isQuoted = false;

    /// True for a word without quotes, which are never commands.
    [[nodiscard]] bool is(const char *word) const { return !isQuoted && text == QLatin1String(word); }
};

/// Cuts a .toc file into words; braces and commas are words of their own. Comments ("//" to the end of the line) are
/// left out. In quotes a backslash goes before a quote, a backslash, or the three octal digits of a byte of
/// ISO 8859-1; before anything else it stands for itself. A quote that is not closed ends with its line.
[[nodiscard]] std::vector<CdrdaoWord> cdrdaoWords(const QString &text);

/// Hands the words out one after another.
class CdrdaoWordReader
{
public:
    explicit CdrdaoWordReader(std::vector<CdrdaoWord> words);

    [[nodiscard]] bool isAtEnd() const { return m_next >= m_words.size(); }
    /// The next word; behind the end an empty one of the last line.
    [[nodiscard]] const CdrdaoWord &peek() const { return isAtEnd() ? m_end : m_words[m_next]; }
    /// The same, and goes on.
    const CdrdaoWord &take();

private:
    const std::vector<CdrdaoWord> m_words;
    CdrdaoWord m_end;
    std::size_t m_next = 0;
};

/// Says that a word, or the end of the file, stands where something else is expected.
[[nodiscard]] NSError misplacedWord(const CdrdaoWord &word);

/// A whole number in decimal digits; no value for anything else, or one beyond what a file can have.
[[nodiscard]] std::optional<std::uint64_t> cdrdaoNumber(QStringView text);

} // namespace Tessaron
