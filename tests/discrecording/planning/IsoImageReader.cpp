#include "tests/discrecording/planning/IsoImageReader.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <set>
#include <sys/stat.h>

namespace Tessaron::Testing
{

namespace
{

std::uint32_t little32(std::span<const std::uint8_t> at)
{
    return at[0] | at[1] << 8 | at[2] << 16 | static_cast<std::uint32_t>(at[3]) << 24;
}

std::uint32_t big32(std::span<const std::uint8_t> at)
{
    return static_cast<std::uint32_t>(at[0]) << 24 | at[1] << 16 | at[2] << 8 | at[3];
}

QByteArray bytesOf(std::span<const std::uint8_t> span)
{
    return {reinterpret_cast<const char *>(span.data()), static_cast<qsizetype>(span.size())};
}

QString textOfUcs2(const QByteArray &bytes)
{
    QString text;
    for (qsizetype at = 0; at + 1 < bytes.size(); at += 2)
        text += QChar(static_cast<char16_t>(static_cast<unsigned char>(bytes[at]) << 8
                                            | static_cast<unsigned char>(bytes[at + 1])));
    return text;
}

/// Name and extension of an identifier, padded as 9.3 wants it for comparison.
std::pair<QByteArray, QByteArray> comparableParts(QByteArray identifier)
{
    identifier.truncate(identifier.lastIndexOf(';') < 0 ? identifier.size() : identifier.lastIndexOf(';'));
    const qsizetype dot = identifier.indexOf('.');
    const QByteArray name = dot < 0 ? identifier : identifier.left(dot);
    const QByteArray extension = dot < 0 ? QByteArray() : identifier.mid(dot + 1);
    return {name.leftJustified(40, ' '), extension.leftJustified(40, ' ')};
}

} // namespace

const IsoObject *IsoObject::child(const QString &wanted) const
{
    const auto found =
        std::find_if(children.begin(), children.end(), [&](const auto &object) { return object->name == wanted; });
    return found == children.end() ? nullptr : found->get();
}

IsoImageReader::IsoImageReader(const QString &path)
    : m_file(path)
{
    if (!m_file.open(QIODevice::ReadOnly) || m_file.size() == 0) {
        problem(QStringLiteral("no image"));
        return;
    }
    m_bytes = {m_file.map(0, m_file.size()), static_cast<std::size_t>(m_file.size())};
    if (m_bytes.size() % (std::size_t{32} * 1024) != 0)
        problem(QStringLiteral("the image is not a multiple of 32 KiB"));
    readDescriptors();
    checkExtents();
}

const IsoVolume *IsoImageReader::volumeOfType(int type) const
{
    for (const auto &volume : m_volumes) {
        if (volume->type == type)
            return volume.get();
    }
    return nullptr;
}

std::span<const std::uint8_t> IsoImageReader::block(std::uint64_t number, std::uint64_t bytes) const
{
    const std::uint64_t start = number * 2048;
    return start + bytes <= m_bytes.size() ? m_bytes.subspan(start, bytes) : std::span<const std::uint8_t>();
}

std::uint32_t IsoImageReader::bothEndian32(std::span<const std::uint8_t> at, const QString &what)
{
    if (little32(at) != big32(at.subspan(4)))
        problem(what + QStringLiteral(": both-endian number differs"));
    return little32(at);
}

std::uint16_t IsoImageReader::bothEndian16(std::span<const std::uint8_t> at, const QString &what)
{
    if (at[0] != at[3] || at[1] != at[2])
        problem(what + QStringLiteral(": both-endian number differs"));
    return static_cast<std::uint16_t>(at[0] | at[1] << 8);
}

void IsoImageReader::readDescriptors()
{
    takeExtent(0, std::uint64_t{16} * 2048, false, QStringLiteral("system area"));
    for (std::uint64_t number = 16;; ++number) {
        const auto descriptor = block(number);
        if (descriptor.empty() || bytesOf(descriptor.subspan(1, 5)) != "CD001" || descriptor[6] != 1) {
            problem(QStringLiteral("block %1 is not a volume descriptor").arg(number));
            return;
        }
        takeExtent(number, 2048, false, QStringLiteral("volume descriptor"));
        if (descriptor[0] == 255)
            return;
        readVolume(descriptor);
    }
}

void IsoImageReader::checkDate(std::span<const std::uint8_t> date, const QString &what)
{
    const QByteArray digits = bytesOf(date.first(16));
    if (std::any_of(digits.begin(), digits.end(), [](char digit) { return digit < '0' || digit > '9'; }))
        problem(what + QStringLiteral(": no digits in a date"));
    const bool isSet = digits != QByteArray(16, '0');
    const QDateTime time =
        QDateTime::fromString(QString::fromLatin1(digits.left(14)), QStringLiteral("yyyyMMddHHmmss"));
    if (isSet && !time.isValid())
        problem(what + QStringLiteral(": a date that is none"));
}

void IsoImageReader::readVolume(std::span<const std::uint8_t> descriptor)
{
    m_volumes.push_back(std::make_unique<IsoVolume>());
    IsoVolume &volume = *m_volumes.back();
    volume.type = descriptor[0];
    const QString what = QStringLiteral("volume descriptor of type %1").arg(volume.type);
    volume.isJoliet = volume.type == 2 && bytesOf(descriptor.subspan(88, 3)) == "%/E";
    if (volume.type == 2 && !volume.isJoliet)
        problem(what + QStringLiteral(": no escape sequence of Joliet"));
    volume.volumeName = bytesOf(descriptor.subspan(40, 32));
    volume.application = bytesOf(descriptor.subspan(574, 128));
    volume.creationDate = bytesOf(descriptor.subspan(813, 17));
    volume.blockCount = bothEndian32(descriptor.subspan(80), what);
    if (std::uint64_t{volume.blockCount} * 2048 != m_bytes.size())
        problem(what + QStringLiteral(": the size is not that of the image"));
    if (bothEndian16(descriptor.subspan(120), what) != 1 || bothEndian16(descriptor.subspan(124), what) != 1)
        problem(what + QStringLiteral(": not volume 1 of 1"));
    if (bothEndian16(descriptor.subspan(128), what) != 2048)
        problem(what + QStringLiteral(": wrong block size"));
    volume.pathTableSize = bothEndian32(descriptor.subspan(132), what);
    volume.littleEndianTable = little32(descriptor.subspan(140));
    volume.bigEndianTable = big32(descriptor.subspan(148));
    if (little32(descriptor.subspan(144)) != 0 || little32(descriptor.subspan(152)) != 0)
        problem(what + QStringLiteral(": optional path tables are not expected"));
    for (const std::size_t at : {813, 830, 847, 864})
        checkDate(descriptor.subspan(at, 17), what);
    if (descriptor[881] != 1)
        problem(what + QStringLiteral(": wrong file structure version"));
    readRootRecord(volume, descriptor.subspan(156, 34));
    readFolder(volume, volume.root, volume.root, QStringLiteral("/"));
    readPathTable(volume);
}

void IsoImageReader::readRootRecord(IsoVolume &volume, std::span<const std::uint8_t> record)
{
    if (record[0] != 34 || record[32] != 1 || record[33] != 0 || (record[25] & 2) == 0)
        problem(QStringLiteral("the root's record is wrong"));
    volume.root.isFolder = true;
    volume.root.extents.push_back({bothEndian32(record.subspan(2), QStringLiteral("root")),
                                   bothEndian32(record.subspan(10), QStringLiteral("root"))});
    volume.root.recordingTime = recordingTime(record.subspan(18), QStringLiteral("root"));
}

std::int64_t IsoImageReader::recordingTime(std::span<const std::uint8_t> date, const QString &what)
{
    const QDateTime time(QDate(1900 + date[0], date[1], date[2]), QTime(date[3], date[4], date[5]), QTimeZone::utc());
    if (!time.isValid())
        problem(what + QStringLiteral(": a recording date that is none"));
    return time.toSecsSinceEpoch() - std::int64_t{static_cast<std::int8_t>(date[6])} * 15 * 60;
}

std::unique_ptr<IsoObject> IsoImageReader::readRecord(const IsoVolume &volume, std::span<const std::uint8_t> record,
                                                      const QString &where)
{
    auto object = std::make_unique<IsoObject>();
    const std::size_t identifierSize = record[32];
    object->identifier = bytesOf(record.subspan(33, identifierSize));
    const QString what = where + QString::fromLatin1(object->identifier.toPercentEncoding());
    if (record.size() % 2 != 0 || record[1] != 0 || record[26] != 0 || record[27] != 0)
        problem(what + QStringLiteral(": odd or unexpected fields in a record"));
    if (bothEndian16(record.subspan(28), what) != 1)
        problem(what + QStringLiteral(": wrong volume"));
    object->isHidden = (record[25] & 1) != 0;
    object->isFolder = (record[25] & 2) != 0;
    if ((record[25] & 0x7C) != 0)
        problem(what + QStringLiteral(": unexpected flags"));
    object->extents.push_back({bothEndian32(record.subspan(2), what), bothEndian32(record.subspan(10), what)});
    object->size = object->extents[0].bytes;
    object->recordingTime = recordingTime(record.subspan(18), what);

    const std::size_t useStart = 33 + identifierSize + (identifierSize % 2 == 0 ? 1 : 0);
    const bool isSpecial = identifierSize == 1 && record[33] <= 1;
    const bool isRootItself = isSpecial && record[33] == 0 && where == QStringLiteral("/") && volume.type == 1;
    if (isRootItself)
        m_hasRockRidge = record.size() > useStart + 2 && record[useStart] == 'S' && record[useStart + 1] == 'P';
    if (m_hasRockRidge && volume.type == 1) {
        object->rockRidge.emplace();
        m_signatures.clear();
        readSystemUse(record.subspan(useStart), *object->rockRidge, isRootItself, what);
        for (const QString &wanted : {QStringLiteral("PX"), QStringLiteral("TF"), QStringLiteral("NM")}) {
            if (!m_signatures.contains(wanted) && !(isSpecial && wanted == QStringLiteral("NM")))
                problem(what + QStringLiteral(": no entry ") + wanted);
        }
        if (m_nameContinues || m_linkContinues || m_componentContinues)
            problem(what + QStringLiteral(": a name or link is not finished"));
    } else if (record.size() > useStart + useStart % 2) {
        problem(what + QStringLiteral(": bytes behind the identifier"));
    }
    return object;
}

void IsoImageReader::checkIdentifier(const IsoVolume &volume, const IsoObject &object, const QString &where)
{
    const QByteArray &identifier = object.identifier;
    const QString what = where + QString::fromLatin1(identifier.toPercentEncoding());
    if (volume.isJoliet) {
        const QString text = textOfUcs2(identifier);
        const bool isForbidden = std::any_of(text.begin(), text.end(), [](QChar character) {
            return character < u' ' || QStringLiteral("*/:;?\\").contains(character);
        });
        if (isForbidden || identifier.size() % 2 != 0 || identifier.isEmpty() || text.size() > 103)
            problem(what + QStringLiteral(": no name of Joliet"));
        return;
    }
    static const QByteArray dCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    QByteArray name = identifier;
    if (!object.isFolder) {
        if (!name.endsWith(";1"))
            problem(what + QStringLiteral(": no version"));
        name.chop(2);
        if (name.count('.') != 1 || name.size() > 31 || name.size() < 2)
            problem(what + QStringLiteral(": no file name of ISO 9660"));
        name.replace('.', "");
    }
    const bool isLegal = std::all_of(name.begin(), name.end(), [](char byte) { return dCharacters.contains(byte); });
    if (!isLegal || name.size() > 31 || name.isEmpty())
        problem(what + QStringLiteral(": forbidden characters in a name"));
}

void IsoImageReader::checkOrder(const IsoVolume &volume, const IsoObject &folder, const QString &where)
{
    for (std::size_t index = 1; index < folder.children.size(); ++index) {
        const QByteArray &before = folder.children[index - 1]->identifier;
        const QByteArray &after = folder.children[index]->identifier;
        // A shorter name of UCS-2 comes first, like one that is padded with zeros.
        const bool isRight = volume.isJoliet ? before < after : comparableParts(before) < comparableParts(after);
        if (!isRight)
            problem(where + QStringLiteral(": wrong order at ") + QString::fromLatin1(after.toPercentEncoding()));
    }
}

void IsoImageReader::readFolder(IsoVolume &volume, IsoObject &folder, const IsoObject &parent, const QString &path)
{
    const IsoObject::Extent extent = folder.extents.at(0);
    takeExtent(extent.block, extent.bytes, false, QStringLiteral("folder ") + path);
    const auto bytes = block(extent.block, extent.bytes);
    if (bytes.empty() || extent.bytes % 2048 != 0) {
        problem(path + QStringLiteral(": the folder's extent is not in the image"));
        return;
    }
    std::size_t number = 0;
    bool continues = false;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t size = bytes[at];
        const std::size_t rest = 2048 - at % 2048;
        if (size == 0) {
            const auto padding = bytes.subspan(at, rest);
            if (std::any_of(padding.begin(), padding.end(), [](std::uint8_t byte) { return byte != 0; }))
                problem(path + QStringLiteral(": rubbish behind the records of a block"));
            at += rest;
            continue;
        }
        if (size > rest || size < 34) {
            problem(path + QStringLiteral(": a record crosses a block"));
            return;
        }
        auto object = readRecord(volume, bytes.subspan(at, size), path);
        if (number < 2) {
            const IsoObject &meant = number == 0 ? folder : parent;
            if (object->identifier != QByteArray(1, static_cast<char>(number)) || !object->isFolder
                || object->extents != meant.extents)
                problem(path + QStringLiteral(": wrong record for the folder itself or its parent"));
            if (number == 1 && object->rockRidge)
                folder.belongsTo = object->rockRidge->parentBlock;
        } else if (continues) {
            IsoObject &whole = *folder.children.back();
            if (whole.identifier != object->identifier || object->isFolder)
                problem(path + QStringLiteral(": a file section without its file"));
            whole.extents.push_back(object->extents[0]);
            whole.size += object->size;
        } else {
            checkIdentifier(volume, *object, path);
            folder.children.push_back(std::move(object));
        }
        continues = (bytes[at + 25] & 0x80) != 0;
        if (continues && folder.children.back()->extents.back().bytes % 2048 != 0)
            problem(path + QStringLiteral(": a section that is not whole blocks"));
        ++number;
        at += size;
    }
    checkOrder(volume, folder, path);
    std::set<QByteArray> identifiers;
    for (const auto &child : folder.children) {
        if (!identifiers.insert(child->identifier).second)
            problem(path + QStringLiteral(": a name twice"));
        QByteArray plain = child->identifier;
        if (!child->isFolder && plain.endsWith(";1"))
            plain.chop(plain.endsWith(".;1") ? 3 : 2);
        child->name = volume.isJoliet ? textOfUcs2(child->identifier)
            : child->rockRidge        ? QString::fromUtf8(child->rockRidge->name)
                                      : QString::fromLatin1(plain);
        const QString childPath = path + child->name;
        if (child->isFolder) {
            readFolder(volume, *child, folder, childPath + u'/');
            continue;
        }
        for (std::size_t section = 0; section < child->extents.size(); ++section) {
            const IsoObject::Extent &part = child->extents[section];
            if (section > 0
                && part.block != child->extents[section - 1].block + child->extents[section - 1].bytes / 2048)
                problem(childPath + QStringLiteral(": sections apart"));
        }
        if (child->size > 0)
            takeExtent(child->extents[0].block, child->size, true, childPath);
    }
}

void IsoImageReader::takeExtent(std::uint64_t blockNumber, std::uint64_t bytes, bool isFile, const QString &what)
{
    if (bytes == 0)
        return;
    const std::uint64_t count = (bytes + 2047) / 2048;
    if (blockNumber == 0 && isFile)
        problem(what + QStringLiteral(": contents without a place"));
    if ((blockNumber + count) * 2048 > m_bytes.size())
        problem(what + QStringLiteral(": lies beyond the image"));
    m_extents.push_back({blockNumber, count, isFile, what});
}

void IsoImageReader::checkExtents()
{
    std::sort(m_extents.begin(), m_extents.end(), [](const TakenExtent &one, const TakenExtent &other) {
        return one.block != other.block ? one.block < other.block : one.blockCount < other.blockCount;
    });
    for (std::size_t index = 1; index < m_extents.size(); ++index) {
        const TakenExtent &before = m_extents[index - 1];
        const TakenExtent &after = m_extents[index];
        const bool isSameFile =
            before.isFile && after.isFile && before.block == after.block && before.blockCount == after.blockCount;
        if (!isSameFile && before.block + before.blockCount > after.block)
            problem(before.what + QStringLiteral(" and ") + after.what + QStringLiteral(" share blocks"));
    }
}

const IsoObject *IsoImageReader::objectAt(const IsoVolume &volume, const QString &path)
{
    const IsoObject *object = &volume.root;
    for (const QString &name : path.split(u'/', Qt::SkipEmptyParts)) {
        object = object->child(name);
        if (!object)
            return nullptr;
    }
    return object;
}

QByteArray IsoImageReader::contents(const IsoObject &file) const
{
    QByteArray result;
    for (const IsoObject::Extent &extent : file.extents)
        result += bytesOf(block(extent.block, extent.bytes));
    return result;
}

QStringList differencesBetween(const IsoVolume &primary, const IsoVolume &joliet)
{
    struct Walk {
        static void add(const IsoObject &folder, const QString &depth, QStringList &into)
        {
            for (const auto &child : folder.children) {
                if (child->isFolder) {
                    into.append(depth + QStringLiteral("folder"));
                    add(*child, depth + u'/', into);
                } else if (!child->rockRidge || S_ISREG(child->rockRidge->mode)) {
                    into.append(depth + QStringLiteral("%1+%2").arg(child->extents[0].block).arg(child->size));
                }
            }
        }
    };
    QStringList one;
    QStringList other;
    Walk::add(primary.root, {}, one);
    Walk::add(joliet.root, {}, other);
    one.sort();
    other.sort();
    QStringList result;
    std::set_symmetric_difference(one.begin(), one.end(), other.begin(), other.end(), std::back_inserter(result));
    return result;
}

} // namespace Tessaron::Testing
