#include "media/jobs/Id3Tag.h"

#include "platform/foundation/ByteOrder.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cstdint>

namespace Tessaron
{

namespace
{

constexpr qsizetype longestTag = (qsizetype(1) << 28) - 1; // the header has 28 bits for it
constexpr char frontCover = 3;
constexpr char latin1 = 0, utf16 = 1; ///< how a text is encoded

struct FrameOfKey {
    const char *key;
    const char *frame;
};
constexpr FrameOfKey frames[] = {
    {"title", "TIT2"},      {"\251nam", "TIT2"},    {"artist", "TPE1"},         {"\251ART", "TPE1"},
    {"album", "TALB"},      {"\251alb", "TALB"},    {"album_artist", "TPE2"},   {"aART", "TPE2"},
    {"composer", "TCOM"},   {"\251wrt", "TCOM"},    {"\251com", "TCOM"},        {"author", "TEXT"},
    {"\251aut", "TEXT"},    {"lyricist", "TEXT"},   {"performer", "TPE3"},      {"conductor", "TPE3"},
    {"genre", "TCON"},      {"\251gen", "TCON"},    {"track", "TRCK"},          {"tracknumber", "TRCK"},
    {"disc", "TPOS"},       {"discnumber", "TPOS"}, {"date", "TYER"},           {"year", "TYER"},
    {"\251day", "TYER"},    {"copyright", "TCOP"},  {"cprt", "TCOP"},           {"\251cpy", "TCOP"},
    {"publisher", "TPUB"},  {"label", "TPUB"},      {"isrc", "TSRC"},           {"tsrc", "TSRC"},
    {"bpm", "TBPM"},        {"tbpm", "TBPM"},       {"grouping", "TIT1"},       {"\251grp", "TIT1"},
    {"encoded_by", "TENC"}, {"language", "TLAN"},   {"comment", "COMM"},        {"\251cmt", "COMM"},
    {"lyrics", "USLT"},     {"\251lyr", "USLT"},    {"unsyncedlyrics", "USLT"},
};

/// Of the file that the texts come from, or wrong for another encoding of the same sound.
constexpr const char *keysOfFile[] = {
    "encoder",       "encoder_options",   "\251too",       "\251enc",      "major_brand",
    "minor_version", "compatible_brands", "creation_time", "handler_name", "vendor_id",
    "itunsmpb",      "itunnorm",          "duration",      "tlen",         "metadata_block_picture"};

QByteArray comparable(const QByteArray &key)
{
    // Four characters of QuickTime are as they are; names are written in any case.
    return key.startsWith('\251') || key == "aART" ? key : key.toLower();
}

bool isOfFile(const QByteArray &key)
{
    return std::any_of(std::begin(keysOfFile), std::end(keysOfFile), [&key](const char *one) { return key == one; });
}

/// Empty for a key without a frame of its own.
QByteArray frameOf(const QByteArray &key)
{
    const auto found =
        std::find_if(std::begin(frames), std::end(frames), [&key](const FrameOfKey &one) { return key == one.key; });
    if (found != std::end(frames))
        return found->frame;
    return key.startsWith("lyrics-") ? QByteArray("USLT") : QByteArray();
}

/// A text as frames hold it, with the byte that says how it is encoded in front of it where `encoding` is null.
class EncodedText
{
public:
    explicit EncodedText(std::initializer_list<QString> texts)
    {
        for (const QString &text : texts)
            m_isLatin1 =
                m_isLatin1 && std::all_of(text.begin(), text.end(), [](QChar one) { return one.unicode() < 0x100; });
    }
    [[nodiscard]] char encoding() const { return m_isLatin1 ? latin1 : utf16; }
    [[nodiscard]] QByteArray bytes(const QString &text) const
    {
        if (m_isLatin1)
            return text.toLatin1();
        QByteArray result("\xFF\xFE");
        for (const QChar one : text) {
            std::uint8_t unit[2];
            storeLittleEndian<std::uint16_t>(unit, one.unicode());
            result.append(reinterpret_cast<const char *>(unit), sizeof unit);
        }
        return result;
    }
    [[nodiscard]] QByteArray terminated(const QString &text) const
    {
        return bytes(text) + QByteArray(m_isLatin1 ? 1 : 2, '\0');
    }

private:
    bool m_isLatin1 = true; ///< all that stands in one frame is encoded alike
};

QByteArray frame(const QByteArray &name, const QByteArray &content)
{
    std::uint8_t size[4];
    storeBigEndian<std::uint32_t>(size, std::uint32_t(content.size()));
    return name + QByteArray(reinterpret_cast<const char *>(size), sizeof size) + QByteArray(2, '\0') + content;
}

QByteArray textFrame(const QByteArray &name, const QString &text)
{
    const EncodedText encoded{text};
    return frame(name, encoded.encoding() + encoded.bytes(text));
}

/// COMM and USLT: a language, a description, and the text, which may have several lines.
QByteArray longTextFrame(const QByteArray &name, const QString &text)
{
    const EncodedText encoded{text};
    return frame(name, encoded.encoding() + QByteArray("XXX") + encoded.terminated({}) + encoded.bytes(text));
}

QByteArray ownTextFrame(const QString &description, const QString &text)
{
    const EncodedText encoded{description, text};
    return frame("TXXX", encoded.encoding() + encoded.terminated(description) + encoded.bytes(text));
}

/// The year in TYER and, where the text has them, day and month in TDAT.
QByteArray dateFrames(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{4})(?:-(\\d{2})-(\\d{2}))?"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return ownTextFrame(QStringLiteral("date"), text);
    QByteArray result = textFrame("TYER", match.captured(1));
    if (match.hasCaptured(2))
        result += textFrame("TDAT", match.captured(3) + match.captured(2));
    return result;
}

QByteArray frameOfTexts(const QByteArray &name, const QString &text)
{
    if (name == "TYER")
        return dateFrames(text);
    if (name == "COMM" || name == "USLT")
        return longTextFrame(name, text);
    return textFrame(name, text);
}

/// Null for a picture of no kind that players know.
const char *typeOfPicture(const QByteArray &picture)
{
    if (picture.startsWith("\xFF\xD8\xFF"))
        return "image/jpeg";
    if (picture.startsWith("\x89PNG\r\n"))
        return "image/png";
    if (picture.startsWith("GIF8"))
        return "image/gif";
    return picture.startsWith("BM") ? "image/bmp" : nullptr;
}

QByteArray header(qsizetype size)
{
    QByteArray result("ID3\3\0\0", 6);
    for (int shift = 21; shift >= 0; shift -= 7)
        result += char(size >> shift & 0x7F);
    return result;
}

/// The texts of one frame together; frames in the order in which their first texts come.
struct FrameTexts {
    QByteArray name; ///< empty for TXXX
    QByteArray key;
    QStringList values;
};

std::vector<FrameTexts> gathered(const std::vector<SoundText> &texts)
{
    std::vector<FrameTexts> result;
    for (const SoundText &text : texts) {
        const QByteArray key = comparable(text.key);
        const QString value = text.value.trimmed();
        if (value.isEmpty() || isOfFile(key))
            continue;
        const QByteArray name = frameOf(key);
        const auto same = std::find_if(result.begin(), result.end(), [&](const FrameTexts &one) {
            return one.name == name && (!name.isEmpty() || one.key == key);
        });
        if (same == result.end())
            result.push_back({name, key, {value}});
        else if (!same->values.contains(value) && name != "TYER")
            same->values << value;
    }
    return result;
}

} // namespace

QByteArray id3Tag(const std::vector<SoundText> &texts, const QByteArray &cover, bool *isCoverLeftOut)
{
    QByteArray content;
    for (const FrameTexts &one : gathered(texts)) {
        const QString text = one.values.join(u'/');
        content += one.name.isEmpty() ? ownTextFrame(QString::fromUtf8(one.key), text) : frameOfTexts(one.name, text);
    }
    const char *const type = typeOfPicture(cover);
    const bool fits = type && content.size() + cover.size() + 64 <= longestTag;
    if (isCoverLeftOut)
        *isCoverLeftOut = !cover.isEmpty() && !fits;
    if (fits)
        content += frame("APIC", QByteArray(1, latin1) + type + '\0' + frontCover + '\0' + cover);
    return content.isEmpty() || content.size() > longestTag ? QByteArray() : header(content.size()) + content;
}

} // namespace Tessaron
