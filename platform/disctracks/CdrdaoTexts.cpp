#include "platform/disctracks/CdrdaoTexts.h"

#include "platform/disctracks/CueSheetErrors.h"

#include <QStringList>

#include <algorithm>
#include <optional>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t mostLanguages = 8;

/// EBU's code of a language that cdrdao has a name for, or of a number.
std::uint8_t languageCode(const QString &word)
{
    static const std::map<QString, std::uint8_t> codes = {
        {QStringLiteral("EN"), CDTextBlock::english},
        {QStringLiteral("DE"), 0x08},
        {QStringLiteral("FR"), 0x0F},
        {QStringLiteral("ES"), 0x0A},
        {QStringLiteral("IT"), 0x15},
        {QStringLiteral("NL"), 0x1D},
    };
    if (const auto found = codes.find(word.toUpper()); found != codes.end())
        return found->second;
    const std::optional<std::uint64_t> number = cdrdaoNumber(word);
    return number && *number <= 0xFF ? std::uint8_t(*number) : CDTextBlock::english;
}

std::optional<CDTextKind> textKind(const CdrdaoWord &word)
{
    static const std::map<QString, CDTextKind> kinds = {
        {QStringLiteral("TITLE"), CDTextKind::Title},
        {QStringLiteral("PERFORMER"), CDTextKind::Performer},
        {QStringLiteral("SONGWRITER"), CDTextKind::Songwriter},
        {QStringLiteral("COMPOSER"), CDTextKind::Composer},
        {QStringLiteral("ARRANGER"), CDTextKind::Arranger},
        {QStringLiteral("MESSAGE"), CDTextKind::Message},
        {QStringLiteral("DISC_ID"), CDTextKind::DiscIdentification},
        {QStringLiteral("UPC_EAN"), CDTextKind::Codes},
        {QStringLiteral("ISRC"), CDTextKind::Codes},
    };
    const auto found = kinds.find(word.text);
    return word.isQuoted || found == kinds.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

CdrdaoTexts::CdrdaoTexts(CdrdaoWordReader *words, std::vector<CueNote> *notes)
    : m_words(*words)
    , m_notes(*notes)
{
}

NSError CdrdaoTexts::skipBraces()
{
    if (!m_words.peek().is("{"))
        return misplacedWord(m_words.peek());
    std::size_t depth = 0;
    do {
        const CdrdaoWord &word = m_words.take();
        if (word.is("{"))
            ++depth;
        else if (word.is("}"))
            --depth;
        else if (m_words.isAtEnd())
            return misplacedWord(m_words.peek());
    } while (depth > 0);
    return {};
}

/// { LANGUAGE_MAP { … } LANGUAGE n { … } … }
NSError CdrdaoTexts::take(std::size_t place)
{
    if (const CdrdaoWord &brace = m_words.take(); !brace.is("{"))
        return misplacedWord(brace);
    while (!m_words.isAtEnd()) {
        const CdrdaoWord &word = m_words.take();
        if (word.is("}"))
            return {};
        NSError error;
        if (word.is("LANGUAGE_MAP"))
            error = takeLanguageMap();
        else if (word.is("LANGUAGE"))
            error = takeLanguage(place);
        else
            error = misplacedWord(word);
        if (error)
            return error;
    }
    return misplacedWord(m_words.peek());
}

/// { 0 : EN  1: 8 … }, the colon with blanks around it or without.
NSError CdrdaoTexts::takeLanguageMap()
{
    if (const CdrdaoWord &brace = m_words.take(); !brace.is("{"))
        return misplacedWord(brace);
    QString pairs;
    for (;;) {
        const CdrdaoWord &word = m_words.take();
        if (word.is("}"))
            break;
        if (word.isQuoted || word.text.isEmpty() || word.is("{"))
            return misplacedWord(word);
        pairs += word.text + u' ';
    }
    const QStringList words = pairs.replace(u':', u' ').split(u' ', Qt::SkipEmptyParts);
    for (qsizetype at = 0; at + 1 < words.size(); at += 2) {
        const std::optional<std::uint64_t> number = cdrdaoNumber(words[at]);
        if (number && *number < mostLanguages)
            m_languages[std::uint32_t(*number)] = languageCode(words[at + 1]);
    }
    return {};
}

/// n { TITLE "…" PERFORMER "…" SIZE_INFO { … } }
NSError CdrdaoTexts::takeLanguage(std::size_t place)
{
    const CdrdaoWord &numberWord = m_words.take();
    const std::optional<std::uint64_t> number = cdrdaoNumber(numberWord.text);
    if (numberWord.isQuoted || !number || *number >= mostLanguages)
        return cdrdaoError(numberWord.line, QStringLiteral("LANGUAGE needs a number from 0 to 7."));
    if (const CdrdaoWord &brace = m_words.take(); !brace.is("{"))
        return misplacedWord(brace);
    while (!m_words.isAtEnd()) {
        const CdrdaoWord word = m_words.take();
        if (word.is("}"))
            return {};
        if (m_words.peek().is("{")) { // bytes
            if (!word.is("SIZE_INFO")) // which is made anew
                m_notes.push_back({word.line, QStringLiteral("The bytes of %1 were passed over.").arg(word.text)});
            if (NSError error = skipBraces())
                return error;
            continue;
        }
        const CdrdaoWord &text = m_words.take();
        if (word.isQuoted || !text.isQuoted)
            return misplacedWord(text.isQuoted ? word : text);
        const std::optional<CDTextKind> kind = textKind(word);
        if (!kind) {
            m_notes.push_back({word.line, QStringLiteral("%1 is not known and was passed over.").arg(word.text)});
            continue;
        }
        std::vector<QString> &texts = m_blocks[std::uint32_t(*number)].texts[*kind];
        texts.resize(std::max(texts.size(), place + 1));
        texts[place] = text.text;
    }
    return misplacedWord(m_words.peek());
}

CDText CdrdaoTexts::cdText(std::size_t trackCount) const
{
    CDText result;
    for (const auto &[number, read] : m_blocks) {
        if (read.texts.empty())
            continue;
        CDTextBlock &block = result.blocks.emplace_back(read);
        bool isLatin = true;
        for (auto &[kind, texts] : block.texts) {
            texts.resize(trackCount + 1);
            for (const QString &text : texts)
                isLatin &= std::ranges::all_of(text, [](QChar character) { return character.unicode() <= 0xFF; });
        }
        const auto language = m_languages.find(number);
        block.language = language == m_languages.end() ? CDTextBlock::english : language->second;
        block.encoding = isLatin ? CDTextEncoding::Latin1 : CDTextEncoding::ShiftJis;
    }
    return result;
}

} // namespace Tessaron
