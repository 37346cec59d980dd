#include "platform/quicktime/MovieMetadata.h"

#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/NSStringEncoding.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr std::size_t mostItems = 1000;
constexpr std::size_t mostKeys = 1000;
constexpr std::int64_t longestValue = 64 << 10;
constexpr qsizetype mostBytes = 1 << 20; ///< of all items together
constexpr std::int64_t longestKey = 1024;
constexpr std::int64_t sizeOfVersion = 4;

constexpr std::uint32_t udta = fourCharacterCode("udta"), meta = fourCharacterCode("meta"),
                        keys = fourCharacterCode("keys"), ilst = fourCharacterCode("ilst"),
                        data = fourCharacterCode("data"), mean = fourCharacterCode("mean"),
                        name = fourCharacterCode("name"), covr = fourCharacterCode("covr"),
                        freeItem = fourCharacterCode("----");

constexpr std::uint32_t copyrightSign = 0xa9; ///< the first character of the names of texts

/// Texts of 3GPP files.
constexpr std::array textsOfPhones = {fourCharacterCode("titl"), fourCharacterCode("perf"), fourCharacterCode("auth"),
                                      fourCharacterCode("albm"), fourCharacterCode("gnre"), fourCharacterCode("dscp"),
                                      fourCharacterCode("yrrc")};

// Well-known types of values.
constexpr std::uint32_t typeIsUtf8 = 1, typeIsUtf16 = 2, typeIsGif = 12, typeIsJpeg = 13, typeIsPng = 14,
                        typeIsBmp = 27;

QByteArray textOfCode(std::uint32_t code)
{
    std::array<std::uint8_t, 4> bytes = {};
    storeBigEndian<std::uint32_t>(bytes.data(), code);
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

QByteArray utf8OfUtf16(const QByteArray &value, NSStringEncoding encoding)
{
    const QString text = stringWithBytes(value, encoding);
    return text.isNull() ? value : text.toUtf8();
}

/// Texts of user data may be UTF-16 with a mark in front.
QByteArray utf8OfMarkedText(const QByteArray &value)
{
    if (value.startsWith("\xfe\xff"))
        return utf8OfUtf16(value.sliced(2), NSStringEncoding::UTF16BigEndian);
    if (value.startsWith("\xff\xfe"))
        return utf8OfUtf16(value.sliced(2), NSStringEncoding::UTF16LittleEndian);
    return value;
}

const char *extensionOfPicture(std::uint32_t type, QByteArrayView begin)
{
    if (type == typeIsJpeg || begin.startsWith("\xff\xd8\xff"))
        return "jpg";
    if (type == typeIsPng || begin.startsWith("\x89PNG"))
        return "png";
    if (type == typeIsGif || begin.startsWith("GIF8"))
        return "gif";
    return type == typeIsBmp || begin.startsWith("BM") ? "bmp" : nullptr;
}

class MetadataReader
{
public:
    explicit MetadataReader(const MovieTree &tree)
        : m_source(*tree.source)
        , m_isInFile(!tree.inflated)
    {
    }

    void readUserData(const Atom &atom);
    void readMetadata(const Atom &atom);

    MovieMetadata result;

private:
    void add(const QByteArray &key, const QByteArray &value);
    void readText(const Atom &atom);
    void readTextOfPhones(const Atom &atom);
    void readItems(const Atom &list, const std::vector<QByteArray> &names);
    void readItem(const Atom &item, QByteArray key);
    void readCover(const Atom &value, std::uint32_t type);
    [[nodiscard]] std::vector<QByteArray> readKeys(const Atom &atom);
    [[nodiscard]] QByteArray content(const Atom &atom, std::int64_t from, std::int64_t most);

    AtomSource &m_source;
    const bool m_isInFile;
    qsizetype m_room = mostBytes;
};

void MetadataReader::add(const QByteArray &key, const QByteArray &value)
{
    m_room -= key.size() + value.size();
    if (m_room >= 0 && result.items.size() < mostItems)
        result.items.push_back({key, value});
}

QByteArray MetadataReader::content(const Atom &atom, std::int64_t from, std::int64_t most)
{
    return contentOfAtom(m_source, Atom{atom.type, atom.begin, atom.content + from, atom.end}, most);
}

void MetadataReader::readUserData(const Atom &atom)
{
    AtomWalk walk(m_source, atom);
    while (const std::optional<Atom> child = walk.next()) {
        if (child->type == meta)
            readMetadata(*child);
        else if (child->type >> 24 == copyrightSign)
            readText(*child);
        else if (std::find(textsOfPhones.begin(), textsOfPhones.end(), child->type) != textsOfPhones.end())
            readTextOfPhones(*child);
    }
}

/// One text or more in different languages, each behind its length and its language; the first one is taken. Where
/// the length makes no sense, programs have written an item of MP4 or the bare text.
void MetadataReader::readText(const Atom &atom)
{
    const QByteArrayView head = m_source.bytesAt(atom.content, std::min<std::int64_t>(atom.end - atom.content, 8));
    if (head.size() < 4)
        return;
    const auto *const bytes = reinterpret_cast<const std::uint8_t *>(head.data());
    const std::int64_t length = loadBigEndian<std::uint16_t>(bytes);
    if (head.size() == 8 && loadBigEndian<std::uint32_t>(bytes + 4) == data)
        return readItem(atom, textOfCode(atom.type));
    if (length <= atom.end - atom.content - 4)
        add(textOfCode(atom.type), utf8OfMarkedText(content(atom, 4, length)));
}

/// Behind version, flags and language, up to a zero byte; a year is a number (3GPP TS 26.244, 8).
void MetadataReader::readTextOfPhones(const Atom &atom)
{
    if (atom.type == fourCharacterCode("yrrc")) {
        const QByteArray year = content(atom, sizeOfVersion, 2);
        if (year.size() == 2)
            add(textOfCode(atom.type),
                QByteArray::number(
                    loadBigEndian<std::uint16_t>(reinterpret_cast<const std::uint8_t *>(year.constData()))));
        return;
    }
    QByteArray text = content(atom, sizeOfVersion + 2, longestValue);
    const bool isMarked = text.startsWith("\xfe\xff") || text.startsWith("\xff\xfe");
    if (!isMarked && text.contains('\0'))
        text.truncate(text.indexOf('\0'));
    add(textOfCode(atom.type),
        utf8OfMarkedText(isMarked && text.endsWith(QByteArrayView("\0\0", 2)) ? text.chopped(2) : text));
}

/// In MP4 files, version and flags come before the atoms inside of "meta"; in QuickTime files they do not.
void MetadataReader::readMetadata(const Atom &atom)
{
    for (const std::int64_t skipped : {sizeOfVersion, std::int64_t(0)}) {
        const Atom inside{meta, atom.begin, atom.content + skipped, atom.end};
        const std::optional<Atom> list = atomOnWay(m_source, inside, {ilst});
        if (!list)
            continue;
        const std::optional<Atom> names = atomOnWay(m_source, inside, {keys});
        return readItems(*list, names ? readKeys(*names) : std::vector<QByteArray>());
    }
}

std::vector<QByteArray> MetadataReader::readKeys(const Atom &atom)
{
    std::vector<QByteArray> names;
    // Version and number of entries, and then each with its size and its namespace in front, as an atom has it.
    AtomWalk walk(m_source, atom.content + 8, atom.end);
    while (names.size() < mostKeys) {
        const std::optional<Atom> key = walk.next();
        if (!key)
            break;
        names.push_back(content(*key, 0, longestKey));
    }
    return names;
}

void MetadataReader::readItems(const Atom &list, const std::vector<QByteArray> &names)
{
    AtomWalk walk(m_source, list);
    while (const std::optional<Atom> item = walk.next()) {
        const bool isNumbered = item->type > 0 && item->type <= names.size();
        readItem(*item, isNumbered ? names[item->type - 1] : textOfCode(item->type));
    }
}

void MetadataReader::readItem(const Atom &item, QByteArray key)
{
    QByteArray space;
    AtomWalk walk(m_source, item);
    while (const std::optional<Atom> child = walk.next()) {
        if (item.type == freeItem && child->type == mean)
            space = content(*child, sizeOfVersion, longestKey);
        else if (item.type == freeItem && child->type == name)
            key = space + ':' + content(*child, sizeOfVersion, longestKey);
        if (child->type != data || child->end - child->content < 8)
            continue;
        // Type and language come before the value.
        const std::uint32_t type = m_source.numberAt(child->content) & 0xffffff;
        if (item.type == covr)
            readCover(*child, type);
        else if (type == typeIsUtf8)
            add(key, content(*child, 8, longestValue));
        else if (type == typeIsUtf16)
            add(key, utf8OfUtf16(content(*child, 8, longestValue), NSStringEncoding::UTF16BigEndian));
    }
}

void MetadataReader::readCover(const Atom &value, std::uint32_t type)
{
    const std::int64_t offset = value.content + 8, length = value.end - offset;
    const char *const extension = extensionOfPicture(type, m_source.bytesAt(offset, std::min<std::int64_t>(length, 4)));
    if (m_isInFile && !result.cover && extension && length > 0)
        result.cover = MovieCover{extension, offset, length};
}

} // namespace

MovieMetadata metadataOfMovie(const MovieTree &tree)
{
    MetadataReader reader(tree);
    AtomWalk walk(*tree.source, tree.movie);
    while (const std::optional<Atom> child = walk.next()) {
        if (child->type == udta)
            reader.readUserData(*child);
        else if (child->type == meta)
            reader.readMetadata(*child);
    }
    return std::move(reader.result);
}

} // namespace Tessaron
