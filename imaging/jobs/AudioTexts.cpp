#include "imaging/jobs/AudioTexts.h"

#include "platform/disctracks/CDTextLanguages.h"
#include "platform/disctracks/CDTextPacks.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <unicode/translit.h>
#include <unicode/unistr.h>
#include <utility>

namespace Tessaron
{

namespace
{

using Tags = QMap<QString, QString>;
using TextsByKind = std::map<CDTextKind, QString>;

/// Tried one after the other until the packs fit.
constexpr std::array longestTexts = {160, 120, 90, 60, 45, 30, 20, 10};
constexpr std::uint8_t japanese = 0x69;
constexpr std::size_t mostLanguages = 8;

/// The names under which formats keep what a track has of a kind, the likeliest first.
struct KindOfTag {
    CDTextKind kind;
    std::array<const char *, 4> names;
};
constexpr std::array kinds = {KindOfTag{CDTextKind::Title, {"title", "", "", ""}},
                              KindOfTag{CDTextKind::Performer, {"artist", "performer", "album_artist", ""}},
                              KindOfTag{CDTextKind::Songwriter, {"songwriter", "lyricist", "writer", "text"}},
                              KindOfTag{CDTextKind::Composer, {"composer", "", "", ""}},
                              KindOfTag{CDTextKind::Arranger, {"arranger", "", "", ""}}};

/// The tags without a language, and those of each language under their names alone.
struct TagsByLanguage {
    Tags plain;
    std::map<std::uint8_t, Tags> others;
};

TagsByLanguage byLanguage(const Tags &tags)
{
    TagsByLanguage result;
    for (auto tag = tags.begin(); tag != tags.end(); ++tag) {
        const qsizetype dash = tag.key().lastIndexOf(u'-');
        const std::optional<std::uint8_t> language =
            dash > 0 ? cdTextLanguage(QStringView(tag.key()).sliced(dash + 1)) : std::nullopt;
        if (language)
            result.others[*language].insert(tag.key().first(dash), tag.value());
        else
            result.plain.insert(tag.key(), tag.value());
    }
    return result;
}

template <std::size_t count>
QString firstOf(const Tags &tags, const std::array<const char *, count> &names)
{
    for (const char *const name : names) {
        QString text = tags.value(QString::fromLatin1(name)).simplified();
        if (!text.isEmpty())
            return text;
    }
    return {};
}

TextsByKind textsOfTrack(const Tags &tags)
{
    TextsByKind texts;
    for (const KindOfTag &kind : kinds) {
        QString text = firstOf(tags, kind.names);
        if (!text.isEmpty())
            texts.emplace(kind.kind, std::move(text));
    }
    return texts;
}

/// The text that all tracks have; empty where two differ or one has none.
QString commonText(const std::vector<Tags> &tags, const char *name)
{
    QSet<QString> texts;
    for (const Tags &one : tags)
        texts.insert(one.value(QString::fromLatin1(name)).simplified());
    return texts.size() == 1 ? *texts.begin() : QString();
}

TextsByKind textsOfDisc(const std::vector<Tags> &tags)
{
    TextsByKind texts;
    const QString album = commonText(tags, "album");
    if (!album.isEmpty())
        texts.emplace(CDTextKind::Title, album);
    const QString ofAlbum = commonText(tags, "album_artist");
    const QString performer = ofAlbum.isEmpty() ? commonText(tags, "artist") : ofAlbum;
    if (!performer.isEmpty())
        texts.emplace(CDTextKind::Performer, performer);
    return texts;
}

/// The texts of one language, the disc's first, then those of the tracks.
using TextsOfLanguage = std::vector<TextsByKind>;

/// All that is known, by language. What is said elsewhere goes before tags, and tags with a language before those
/// without.
std::map<std::uint8_t, TextsOfLanguage> textsByLanguage(const AudioTextSources &sources)
{
    const std::size_t count = sources.tags.size();
    std::vector<TagsByLanguage> tags(count);
    std::transform(sources.tags.begin(), sources.tags.end(), tags.begin(), byLanguage);
    std::set<std::uint8_t> languages = {CDTextBlock::english};
    for (const TagsByLanguage &one : tags) {
        for (const auto &[language, texts] : one.others) {
            if (!textsOfTrack(texts).empty() || texts.contains(QStringLiteral("album")))
                languages.insert(language);
        }
    }
    for (const auto &[language, texts] : sources.disc)
        languages.insert(language);
    for (const SpokenTexts &track : sources.tracks) {
        for (const auto &[language, texts] : track)
            languages.insert(language);
    }
    std::map<std::uint8_t, TextsOfLanguage> result;
    for (const std::uint8_t language : languages) {
        const auto spoken = [language](const SpokenTexts &texts) {
            const auto found = texts.find(language);
            return found == texts.end() ? TextsByKind() : found->second;
        };
        TextsOfLanguage &texts = result[language];
        std::vector<Tags> all(count);
        texts.push_back(spoken(sources.disc));
        for (std::size_t track = 0; track < count; ++track) {
            all[track] = tags[track].plain;
            if (const auto own = tags[track].others.find(language); own != tags[track].others.end())
                all[track].insert(own->second);
            texts.push_back(sources.tracks.empty() ? TextsByKind() : spoken(sources.tracks[track]));
            texts.back().merge(textsOfTrack(all[track]));
        }
        texts.front().merge(textsOfDisc(all));
    }
    // What a sheet says in no language stands for what another one lacks, too.
    const TextsOfLanguage english = result[CDTextBlock::english];
    for (auto &[language, texts] : result) {
        for (std::size_t place = 0; place < texts.size(); ++place) {
            TextsByKind others = english[place];
            texts[place].merge(others);
        }
    }
    return result;
}

/// Spells scripts in Latin letters and these without the accents that Latin-1 lacks, as far as `rule` says.
class Spelling
{
public:
    explicit Spelling(const char *rule)
    {
        UErrorCode status = U_ZERO_ERROR;
        m_rule.reset(icu::Transliterator::createInstance(rule, UTRANS_FORWARD, status));
    }

    [[nodiscard]] QString of(const QString &text) const
    {
        if (!m_rule)
            return text;
        icu::UnicodeString spelled(reinterpret_cast<const UChar *>(text.utf16()), std::int32_t(text.size()));
        m_rule->transliterate(spelled);
        return QString(reinterpret_cast<const QChar *>(spelled.getBuffer()), spelled.length());
    }

private:
    std::unique_ptr<icu::Transliterator> m_rule; ///< null where the system lacks its data
};

/// Spells a text in Latin-1; what has no spelling becomes "?".
QString spelledInLatin1(const QString &text)
{
    thread_local const Spelling spelling("Any-Latin; NFC; [^\\u0000-\\u00FF] Latin-ASCII");
    QString result = spelling.of(text);
    for (QChar &character : result) {
        if (!canBeCDText(character, CDTextEncoding::Latin1))
            character = u'?';
    }
    return result;
}

/// The characters of a text, one or two units each.
QStringList charactersOf(const QString &text)
{
    QStringList characters;
    const QList<uint> points = text.toUcs4();
    for (const uint point : points)
        characters << QStringView(QChar::fromUcs4(point)).toString();
    return characters;
}

bool isInShiftJis(const QString &character)
{
    return canBeCDText(character, CDTextEncoding::ShiftJis);
}

/// Spells characters that Shift-JIS lacks in Latin letters; what has no spelling becomes "?".
QString spelledWithinShiftJis(const QString &text)
{
    thread_local const Spelling spelling("Any-Latin; NFC; Latin-ASCII");
    QStringList characters = charactersOf(spelling.of(text));
    for (QString &character : characters) {
        if (!isInShiftJis(character))
            character = QStringLiteral("?");
    }
    return characters.join(QString());
}

/// Changes what Shift-JIS lacks, and nothing else: into the same character in another form, such as a wide one, where
/// there is one, else into Latin letters.
QString changedForShiftJis(const QString &text)
{
    QStringList characters = charactersOf(text.normalized(QString::NormalizationForm_C));
    for (QString &character : characters) {
        if (!isInShiftJis(character))
            character = character.normalized(QString::NormalizationForm_KC);
    }
    QString result;
    QString lacked; // together, since how a letter is spelled may depend on its neighbours
    characters = charactersOf(characters.join(QString()).normalized(QString::NormalizationForm_C));
    for (const QString &character : std::as_const(characters)) {
        if (!isInShiftJis(character))
            lacked += character;
        else
            result += spelledWithinShiftJis(std::exchange(lacked, {})) + character;
    }
    return result + spelledWithinShiftJis(lacked);
}

/// Makes the block of a language of texts that fit, and notes what that costs.
class BlockMaker
{
public:
    BlockMaker(std::uint8_t language, std::uint32_t firstTrack, CDTextEncoding encoding, qsizetype longest)
        : m_longest(longest)
    {
        m_made.block.firstTrack = firstTrack;
        m_made.block.language = language;
        m_made.block.encoding = encoding;
    }

    struct Made {
        CDTextBlock block;
        QStringList changes;
        bool isAnyLost = false;
    };

    [[nodiscard]] Made make(const TextsOfLanguage &texts)
    {
        for (std::size_t place = 0; place < texts.size(); ++place) {
            for (const auto &[kind, text] : texts[place]) {
                std::vector<QString> &all = m_made.block.texts[kind];
                all.resize(texts.size());
                all[place] = fitted(text, place);
            }
        }
        return std::move(m_made);
    }

private:
    /// `place` is 0 for the disc, else that of the track among those with sound.
    [[nodiscard]] QString fitted(const QString &text, std::size_t place)
    {
        const CDTextEncoding encoding = m_made.block.encoding;
        QString result = text;
        if (!canBeCDText(text, encoding))
            result = encoding == CDTextEncoding::ShiftJis ? changedForShiftJis(text) : spelledInLatin1(text);
        const bool isUnspoken = result.count(u'?') > text.count(u'?');
        result.replace(u'"', u'\'');
        result = result.simplified();
        const bool isCut = result.size() > m_longest;
        result.truncate(m_longest);
        if (result == text)
            return result;
        const QString where = place == 0 ? QStringLiteral("the disc")
                                         : QStringLiteral("track %1").arg(place - 1 + m_made.block.firstTrack);
        m_made.changes << QStringLiteral("%1: “%2” stands in the CD-TEXT as “%3”").arg(where, text, result);
        m_made.isAnyLost = m_made.isAnyLost || isCut || isUnspoken;
        return result;
    }

    const qsizetype m_longest;
    Made m_made;
};

bool fits(const CDTextBlock &block, std::size_t lastTrack)
{
    return cdTextPacks(CDText{{block}}, std::uint32_t(lastTrack)).hasValue();
}

/// The block with texts as long as there is room for. Short texts in Japanese tell more than long ones in a spelling,
/// which is for a disc with more tracks than the wide characters have room for at all.
BlockMaker::Made madeBlock(std::uint8_t language, std::uint32_t firstTrack, const TextsOfLanguage &texts)
{
    const std::size_t lastTrack = firstTrack + texts.size() - 2;
    std::vector<CDTextEncoding> encodings = {CDTextEncoding::Latin1};
    if (language == japanese)
        encodings.insert(encodings.begin(), CDTextEncoding::ShiftJis);
    BlockMaker::Made made;
    for (const CDTextEncoding encoding : encodings) {
        for (const int longest : longestTexts) {
            made = BlockMaker(language, firstTrack, encoding, longest).make(texts);
            if (fits(made.block, lastTrack))
                return made;
        }
    }
    return made;
}

QByteArray isrcOf(const Tags &tags, std::size_t number, AudioTexts &texts)
{
    const QString given = firstOf(tags, std::array{"isrc", "tsrc"});
    QByteArray code = soundIsrc(given);
    if (code.isEmpty() && !given.isEmpty()) {
        texts.changes << QStringLiteral("track %1: “%2” is not an ISRC, and is left out").arg(number).arg(given);
        texts.isAnyLost = true;
    }
    return code;
}

} // namespace

QByteArray soundIsrc(const QString &code)
{
    static const QRegularExpression form(QStringLiteral("^[A-Z]{2}[A-Z0-9]{3}[0-9]{7}$"));
    const QString plain = QString(code).remove(u'-').remove(u' ').toUpper();
    return form.match(plain).hasMatch() ? plain.toLatin1() : QByteArray();
}

AudioTexts audioTextsOf(const AudioTextSources &sources)
{
    AudioTexts result;
    std::map<std::uint8_t, TextsOfLanguage> languages = textsByLanguage(sources);
    const auto add = [&](std::uint8_t language, const TextsOfLanguage &texts) {
        BlockMaker::Made made = madeBlock(language, sources.firstTrack, texts);
        if (made.block.texts.empty())
            return;
        for (const QString &change : made.changes) {
            if (!result.changes.contains(change))
                result.changes << change;
        }
        result.isAnyLost = result.isAnyLost || made.isAnyLost;
        result.text.blocks.push_back(std::move(made.block));
    };
    add(CDTextBlock::english, languages[CDTextBlock::english]);
    languages.erase(CDTextBlock::english);
    for (const auto &[language, texts] : languages) {
        if (result.text.blocks.size() == mostLanguages) {
            result.changes << QStringLiteral("texts in more than eight languages are left out of the CD-TEXT");
            result.isAnyLost = true;
            break;
        }
        add(language, texts);
    }
    for (std::size_t track = 0; track < sources.tags.size(); ++track)
        result.isrcs.push_back(isrcOf(sources.tags[track], track + sources.firstTrack, result));
    return result;
}

} // namespace Tessaron
