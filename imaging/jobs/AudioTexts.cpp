#include "imaging/jobs/AudioTexts.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <array>
#include <memory>
#include <unicode/translit.h>
#include <unicode/unistr.h>

namespace Tessaron
{

namespace
{

using Tags = QMap<QString, QString>;

constexpr qsizetype longestText = 160;

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

/// The text that all tracks have; empty where two differ or one has none.
QString commonText(const std::vector<Tags> &tags, const char *name)
{
    QSet<QString> texts;
    for (const Tags &one : tags)
        texts.insert(one.value(QString::fromLatin1(name)).simplified());
    return texts.size() == 1 ? *texts.begin() : QString();
}

bool isLatin1(QChar character)
{
    return character.unicode() < 0x100;
}

/// Spells a text in Latin-1; what has no spelling becomes "?".
QString spelledInLatin1(const QString &text)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Transliterator> spelling(
        icu::Transliterator::createInstance("Any-Latin; NFC; [^\\u0000-\\u00FF] Latin-ASCII", UTRANS_FORWARD, status));
    QString result = text;
    if (U_SUCCESS(status)) {
        icu::UnicodeString spelled(reinterpret_cast<const UChar *>(text.utf16()), std::int32_t(text.size()));
        spelling->transliterate(spelled);
        result = QString(reinterpret_cast<const QChar *>(spelled.getBuffer()), spelled.length());
    }
    std::replace_if(
        result.begin(), result.end(), [](QChar one) { return !isLatin1(one); }, u'?');
    return result;
}

/// Makes texts fit, and notes what that costs.
class TextFitter
{
public:
    explicit TextFitter(AudioTexts &texts)
        : m_texts(texts)
    {
    }

    /// `where` says whose text it is, as in "track 3".
    QString fitted(const QString &text, const QString &where)
    {
        QString result = text;
        if (!std::all_of(text.begin(), text.end(), isLatin1))
            result = spelledInLatin1(text);
        const bool isUnspoken = result.count(u'?') > text.count(u'?');
        result.replace(u'"', u'\'');
        result = result.simplified();
        const bool isCut = result.size() > longestText;
        result.truncate(longestText);
        if (result == text)
            return result;
        m_texts.changes << QStringLiteral("%1: “%2” stands in the CD-TEXT as “%3”").arg(where, text, result);
        m_texts.isAnyLost = m_texts.isAnyLost || isCut || isUnspoken;
        return result;
    }

private:
    AudioTexts &m_texts;
};

QByteArray isrcOf(const Tags &tags, const QString &where, AudioTexts &texts)
{
    const QString given = firstOf(tags, std::array{"isrc", "tsrc"});
    QByteArray code = soundIsrc(given);
    if (code.isEmpty() && !given.isEmpty()) {
        texts.changes << QStringLiteral("%1: “%2” is no ISRC, and is left out").arg(where, given);
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

AudioTexts audioTextsOf(const std::vector<QMap<QString, QString>> &tags)
{
    AudioTexts result;
    TextFitter fitter(result);
    CDTextBlock block;
    const QString disc = QStringLiteral("the disc");
    const auto nameOf = [](std::size_t track) { return QStringLiteral("track %1").arg(track + 1); };
    for (const KindOfTag &kind : kinds) {
        std::vector<QString> texts(tags.size() + 1);
        for (std::size_t track = 0; track < tags.size(); ++track)
            texts[track + 1] = fitter.fitted(firstOf(tags[track], kind.names), nameOf(track));
        if (kind.kind == CDTextKind::Title)
            texts[0] = fitter.fitted(commonText(tags, "album"), disc);
        if (kind.kind == CDTextKind::Performer) {
            const QString ofAlbum = commonText(tags, "album_artist");
            texts[0] = fitter.fitted(ofAlbum.isEmpty() ? commonText(tags, "artist") : ofAlbum, disc);
        }
        if (std::any_of(texts.begin(), texts.end(), [](const QString &text) { return !text.isEmpty(); }))
            block.texts.emplace(kind.kind, std::move(texts));
    }
    for (std::size_t track = 0; track < tags.size(); ++track)
        result.isrcs.push_back(isrcOf(tags[track], nameOf(track), result));
    if (!block.texts.empty())
        result.text.blocks.push_back(std::move(block));
    return result;
}

} // namespace Tessaron
