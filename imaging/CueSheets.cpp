#include "platform/foundation/NSScanner.h"
#include <TessaronClasses/CueSheets.h>

#include <utility>

namespace Tessaron
{

namespace
{

bool isQuote(QChar character)
{
    return character == u'"';
}

bool isColon(QChar character)
{
    return character == u':';
}

bool isBlankOrTab(QChar character)
{
    return character == u' ' || character == u'\t';
}

bool isSpaceOrLineEnd(QChar character)
{
    return character.isSpace();
}

/// Sets what a scanner skips, for as long as it lives.
class SkippedCharacters
{
public:
    SkippedCharacters(NSScanner &scanner, NSScanner::CharacterTest test)
        : m_scanner(scanner)
        , m_before(scanner.charactersToBeSkipped())
    {
        scanner.setCharactersToBeSkipped(std::move(test));
    }
    ~SkippedCharacters() { m_scanner.setCharactersToBeSkipped(std::move(m_before)); }
    SkippedCharacters(const SkippedCharacters &) = delete;
    SkippedCharacters &operator=(const SkippedCharacters &) = delete;

private:
    NSScanner &m_scanner;
    NSScanner::CharacterTest m_before;
};

QString lastPathComponent(const QString &path)
{
    qsizetype end = path.size();
    while (end > 1 && path[end - 1] == u'/')
        --end;
    const QStringView trimmed = QStringView(path).first(end);
    return trimmed == u"/" ? path.first(1) : trimmed.sliced(trimmed.lastIndexOf(u'/') + 1).toString();
}

} // namespace

QString standardCueSheetForFile(const QString &path)
{
    if (path.isNull())
        return {};
    return QStringLiteral("FILE \"") + lastPathComponent(path)
        + QStringLiteral("\" BINARY\r\n"
                         "  TRACK 01 MODE1/2048\r\n"
                         "    INDEX 01 00:00:00\r\n");
}

bool scanQuotedString(NSScanner &scanner, QString *result)
{
    // A quote anywhere makes this a quoted text, also one before the place where the scanner stands.
    if (!scanner.string().contains(u'"'))
        return scanString(scanner, result);
    scanner.scanUpToCharactersFromSet(isQuote, nullptr);
    if (!scanner.scanCharactersFromSet(isQuote, nullptr))
        return false;
    const bool hasText = scanner.scanUpToCharactersFromSet(isQuote, result);
    scanner.scanCharactersFromSet(isQuote, nullptr);
    return hasText;
}

bool scanString(NSScanner &scanner, QString *result)
{
    QString word;
    while (scanner.scanUpToCharactersFromSet(isSpaceOrLineEnd, &word)) {
        if (word.isEmpty())
            continue;
        if (result)
            *result = word;
        return true;
    }
    return false;
}

bool scanMinutes(NSScanner &scanner, int *minutes, int *seconds, int *frames)
{
    const SkippedCharacters skipped(scanner, isBlankOrTab);
    return scanner.scanInt(minutes) && scanner.scanCharactersFromSet(isColon, nullptr) && scanner.scanInt(seconds)
        && scanner.scanCharactersFromSet(isColon, nullptr) && scanner.scanInt(frames);
}

} // namespace Tessaron
