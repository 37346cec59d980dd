#include "platform/disctracks/CdrdaoWords.h"

#include "platform/disctracks/CueSheetErrors.h"

#include <QStringView>

#include <algorithm>

namespace Tessaron
{

namespace
{

bool isOctal(QChar digit)
{
    return digit >= u'0' && digit <= u'7';
}

/// What stands behind a backslash, which is passed over too; null when it has no meaning there.
QString takeEscaped(QStringView text, qsizetype *at)
{
    const QStringView rest = text.sliced(*at + 1);
    if (rest.startsWith(u'"') || rest.startsWith(u'\\')) {
        *at += 2;
        return rest.first(1).toString();
    }
    if (rest.size() < 3 || !isOctal(rest[0]) || !isOctal(rest[1]) || !isOctal(rest[2]))
        return {};
    *at += 4;
    return QString(QChar(char16_t(rest.first(3).toString().toUInt(nullptr, 8) & 0xFF)));
}

/// The text behind an opening quote; `at` goes behind the closing one, or to the line's end.
QString takeQuoted(QStringView text, qsizetype *at)
{
    QString word(QStringLiteral(""));
    while (*at < text.size() && text[*at] != u'\n') {
        if (text[*at] == u'"') {
            ++*at;
            break;
        }
        const QString escaped = text[*at] == u'\\' ? takeEscaped(text, at) : QString();
        if (escaped.isNull())
            word += text[(*at)++];
        else
            word += escaped;
    }
    return word;
}

bool endsWord(QChar character)
{
    return character.isSpace() || character == u'"' || character == u'{' || character == u'}' || character == u',';
}

} // namespace

std::vector<CdrdaoWord> cdrdaoWords(const QString &text)
{
    std::vector<CdrdaoWord> words;
    std::uint32_t line = 1;
    const QStringView view(text);
    for (qsizetype at = 0; at < view.size();) {
        const QChar character = view[at];
        if (character == u'\n')
            ++line;
        if (character.isSpace()) {
            ++at;
        } else if (view.sliced(at).startsWith(QStringLiteral("//"))) {
            const qsizetype end = view.indexOf(u'\n', at);
            at = end < 0 ? view.size() : end;
        } else if (character == u'"') {
            words.push_back({takeQuoted(view, &++at), line, true});
        } else if (endsWord(character)) {
            words.push_back({QString(character), line, false});
            ++at;
        } else {
            const qsizetype begin = at;
            while (at < view.size() && !endsWord(view[at]) && !view.sliced(at).startsWith(QStringLiteral("//")))
                ++at;
            words.push_back({view.sliced(begin, at - begin).toString(), line, false});
        }
    }
    return words;
}

CdrdaoWordReader::CdrdaoWordReader(std::vector<CdrdaoWord> words)
    : m_words(std::move(words))
{
    m_end.line = m_words.empty() ? 1 : m_words.back().line;
}

const CdrdaoWord &CdrdaoWordReader::take()
{
    return isAtEnd() ? m_end : m_words[m_next++];
}

NSError misplacedWord(const CdrdaoWord &word)
{
    if (word.text.isEmpty() && !word.isQuoted)
        return cdrdaoError(word.line, QStringLiteral("The file ends too early."));
    return cdrdaoError(word.line, QStringLiteral("\"%1\" does not belong here.").arg(word.text));
}

std::optional<std::uint64_t> cdrdaoNumber(QStringView text)
{
    constexpr std::uint64_t most = std::uint64_t(1) << 48; // sums of a file's worth of them stay far below 2^63
    const bool areDigits =
        !text.isEmpty() && std::ranges::all_of(text, [](QChar digit) { return digit >= u'0' && digit <= u'9'; });
    bool isNumber = false;
    const std::uint64_t number = text.toULongLong(&isNumber);
    return areDigits && isNumber && number <= most ? std::optional(number) : std::nullopt;
}

} // namespace Tessaron
