#pragma once

#include <QString>

#include <cstdint>
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

} // namespace Tessaron
