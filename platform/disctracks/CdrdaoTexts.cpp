#include "platform/disctracks/CdrdaoTexts.h"

#include "platform/disctracks/CDTextLanguages.h"
#include "platform/disctracks/CueSheetErrors.h"

#include <QStringList>

#include <algorithm>
#include <optional>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t mostLanguages = 8;

/// EBU's code for a language that is not known, or that is not told (EBU Tech 3264 annex 1).
constexpr std::uint8_t unknownLanguage = 0x00;

/// EBU's code of a language that cdrdao has a name for, of one of ISO 639-2, or of a number.
std::optional<std::uint8_t> languageCode(const QString &word)
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
    if (const std::optional<std::uint8_t> code = cdTextLanguage(word.toLower()))
        return code;
    const std::optional<std::uint64_t> number = cdrdaoNumber(word);
    return number && *number <= 0xFF ? std::optional(std::uint8_t(*number)) : std::nullopt;
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
    std::vector<CdrdaoWord> words;
    for (;;) {
        const CdrdaoWord &word = m_words.take();
        if (word.is("}"))
            break;
        if (word.isQuoted || word.text.isEmpty() || word.is("{"))
            return misplacedWord(word);
        for (const QString &part : word.text.split(u':', Qt::SkipEmptyParts))
            words.push_back({part, word.line});
    }
    for (std::size_t at = 0; at + 1 < words.size(); at += 2)
        takeLanguageName(words[at], words[at + 1]);
    return {};
}

/// One pair of the map. A language that is not known is noted, and its texts are kept without one.
void CdrdaoTexts::takeLanguageName(const CdrdaoWord &numberWord, const CdrdaoWord &name)
{
    const std::optional<std::uint64_t> number = cdrdaoNumber(numberWord.text);
    if (!number || *number >= mostLanguages) {
        m_notes.push_back({numberWord.line,
                           QStringLiteral("\"%1\" is not a number of a language from 0 to 7 and was passed over.")
                               .arg(numberWord.text)});
        return;
    }
    const std::optional<std::uint8_t> code = languageCode(name.text);
    if (!code)
        m_notes.push_back({name.line,
                           QStringLiteral("\"%1\" is not a language that is known; the texts of language %2 were taken "
                                          "without one.")
                               .arg(name.text)
                               .arg(*number)});
    m_languages[std::uint32_t(*number)] = code.value_or(unknownLanguage);
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

CDText CdrdaoTexts::cdText(std::size_t trackCount)
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
        if (language == m_languages.end())
            m_notes.push_back({0,
                               QStringLiteral("No LANGUAGE_MAP says which language number %1 is; its texts were taken "
                                              "without one.")
                                   .arg(number)});
        block.language = language == m_languages.end() ? unknownLanguage : language->second;
        block.encoding = isLatin ? CDTextEncoding::Latin1 : CDTextEncoding::ShiftJis;
    }
    return result;
}

} // namespace Tessaron
