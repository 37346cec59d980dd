#include "tests/discrecording/udf/UdfImageReader.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <algorithm>

namespace Tessaron::Testing
{

namespace
{

constexpr std::uint64_t blockSize = 2048;

int number8(const QByteArray &bytes, qsizetype at)
{
    return static_cast<unsigned char>(bytes.at(at));
}

std::uint16_t number16(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<std::uint16_t>(bytes.constData() + at);
}

std::uint32_t number32(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<std::uint32_t>(bytes.constData() + at);
}

std::uint64_t number64(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<std::uint64_t>(bytes.constData() + at);
}

/// Bit by bit, as ECMA-167 3/7.2.6 words it.
std::uint16_t checksumOf(const QByteArray &bytes)
{
    unsigned int value = 0;
    for (const char byte : bytes) {
        value ^= static_cast<unsigned int>(static_cast<unsigned char>(byte)) << 8;
        for (int bit = 0; bit < 8; ++bit)
            value = ((value << 1) ^ ((value & 0x8000u) != 0 ? 0x1021u : 0u)) & 0xFFFFu;
    }
    return static_cast<std::uint16_t>(value);
}

bool isCharacterSet(const QByteArray &bytes, qsizetype at)
{
    return bytes.mid(at, 64) == QByteArray("\0OSTA Compressed Unicode", 24).append(40, '\0');
}

QString fixedText(const QByteArray &bytes, qsizetype at, qsizetype size)
{
    return decodedUdfText(bytes.mid(at, number8(bytes, at + size - 1)));
}

} // namespace

QString decodedUdfText(const QByteArray &recorded)
{
    if (recorded.isEmpty())
        return {};
    if (recorded.at(0) == 8)
        return QString::fromLatin1(recorded.mid(1));
    QString text;
    for (qsizetype at = 1; at + 1 < recorded.size(); at += 2)
        text += QChar(static_cast<char16_t>(number8(recorded, at) << 8 | number8(recorded, at + 1)));
    return text;
}

UdfImageReader::UdfImageReader(const QString &path)
    : m_file(path)
{
    if (!m_file.open(QIODevice::ReadOnly)) {
        problem(QStringLiteral("the image cannot be opened"));
        return;
    }
    m_blockCount = static_cast<std::uint64_t>(m_file.size()) / blockSize;
    expect(static_cast<std::uint64_t>(m_file.size()) % 32768 == 0,
           QStringLiteral("the size is not a multiple of 32 KiB"));
    readRecognition();
    readAnchors();
    checkWhole();
}

void UdfImageReader::expect(bool isRight, const QString &what)
{
    if (!isRight)
        problem(what);
}

QByteArray UdfImageReader::block(std::uint64_t number)
{
    return bytesOf({{number, blockSize}});
}

QByteArray UdfImageReader::bytesOf(const std::vector<UdfExtent> &extents)
{
    QByteArray bytes;
    for (const UdfExtent &extent : extents) {
        m_file.seek(static_cast<qint64>(extent.block) * blockSize);
        bytes += m_file.read(static_cast<qint64>(extent.bytes));
    }
    return bytes;
}

QByteArray UdfImageReader::contents(const QByteArray &path)
{
    return bytesOf(m_objects.at(path).extents);
}

QByteArray UdfImageReader::digest(const QByteArray &path)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    constexpr std::uint64_t step = std::uint64_t(16) << 20;
    for (const UdfExtent &extent : m_objects.at(path).extents) {
        m_file.seek(static_cast<qint64>(extent.block) * blockSize);
        for (std::uint64_t done = 0; done < extent.bytes; done += step)
            hash.addData(m_file.read(static_cast<qint64>(std::min(step, extent.bytes - done))));
    }
    return hash.result();
}

void UdfImageReader::checkTag(const QByteArray &bytes, int identifier, std::uint32_t location, const QString &where)
{
    expect(number16(bytes, 0) == identifier, where + QStringLiteral(": wrong tag %1").arg(number16(bytes, 0)));
    expect(number16(bytes, 2) == 2, where + QStringLiteral(": wrong version of the tag"));
    int sum = 0;
    for (int at = 0; at < 16; ++at)
        sum += at == 4 ? 0 : number8(bytes, at);
    expect(sum % 256 == number8(bytes, 4), where + QStringLiteral(": wrong checksum of the tag"));
    const int covered = number16(bytes, 10);
    expect(covered > 0 && 16 + covered <= bytes.size(), where + QStringLiteral(": wrong length under the checksum"));
    expect(checksumOf(bytes.mid(16, covered)) == number16(bytes, 8), where + QStringLiteral(": wrong checksum"));
    expect(number32(bytes, 12) == location, where + QStringLiteral(": wrong location in the tag"));
}

void UdfImageReader::readRecognition()
{
    std::uint64_t at = 16;
    while (block(at).mid(1, 5) == "CD001")
        ++at;
    for (const char *const identifier : {"BEA01", "NSR02", "TEA01"}) {
        const QByteArray bytes = block(at++);
        expect(bytes == QByteArray(1, '\0').append(identifier).append('\1').append(2041, '\0'),
               QStringLiteral("no %1").arg(QLatin1String(identifier)));
    }
}

void UdfImageReader::readAnchors()
{
    const QByteArray anchor = block(256);
    const QByteArray last = block(m_blockCount - 1);
    checkTag(anchor.first(512), 2, 256, QStringLiteral("anchor"));
    checkTag(last.first(512), 2, static_cast<std::uint32_t>(m_blockCount - 1), QStringLiteral("last anchor"));
    expect(anchor.mid(16, 496) == last.mid(16, 496), QStringLiteral("the anchors differ"));
    const auto main = readSequence(number32(anchor, 20), number32(anchor, 16), QStringLiteral("main sequence"));
    m_reserveStart = number32(anchor, 28);
    const auto reserve = readSequence(number32(anchor, 28), number32(anchor, 24), QStringLiteral("reserve sequence"));
    expect(main.size() == reserve.size(), QStringLiteral("the sequences differ in length"));
    for (std::size_t index = 0; index < std::min(main.size(), reserve.size()); ++index)
        expect(main[index].mid(16) == reserve[index].mid(16), QStringLiteral("the sequences differ"));
    readVolume(main);
}

std::vector<QByteArray> UdfImageReader::readSequence(std::uint32_t start, std::uint32_t length, const QString &where)
{
    std::vector<QByteArray> descriptors;
    expect(length >= 16 * blockSize, where + QStringLiteral(": shorter than 16 blocks"));
    for (std::uint32_t at = start; at < start + length / blockSize; ++at) {
        const QByteArray bytes = block(at);
        const int identifier = number16(bytes, 0);
        checkTag(bytes, identifier, at, where);
        if (identifier == 8)
            return descriptors;
        descriptors.push_back(bytes);
    }
    problem(where + QStringLiteral(": no end"));
    return descriptors;
}

void UdfImageReader::readVolume(const std::vector<QByteArray> &descriptors)
{
    std::map<int, int> counts;
    std::set<std::uint32_t> sequenceNumbers;
    QByteArray logical;
    for (const QByteArray &bytes : descriptors) {
        const int identifier = number16(bytes, 0);
        ++counts[identifier];
        expect(sequenceNumbers.insert(number32(bytes, 16)).second, QStringLiteral("a sequence number twice"));
        if (identifier == 1) {
            m_volumeSet = fixedText(bytes, 72, 128);
            expect(m_volumeSet.size() >= 16, QStringLiteral("no unique volume set"));
            expect(isCharacterSet(bytes, 200) && isCharacterSet(bytes, 264), QStringLiteral("wrong character set"));
            expect(number16(bytes, 56) == 1 && number16(bytes, 58) == 1, QStringLiteral("more volumes than one"));
            expect(number16(bytes, 60) == 2 && number16(bytes, 62) == 3, QStringLiteral("wrong interchange level"));
            expect(number32(bytes, 64) == 1 && number32(bytes, 68) == 1, QStringLiteral("wrong list of sets"));
            expect(bytes.mid(512).count('\0') == 1536, QStringLiteral("something behind the primary descriptor"));
        } else if (identifier == 4) {
            expect(bytes.mid(21, 12) == "*UDF LV Info", QStringLiteral("wrong implementation use"));
            expect(number16(bytes, 44) == 0x0102, QStringLiteral("wrong revision of the implementation use"));
        } else if (identifier == 5) {
            expect(bytes.mid(25, 6) == "+NSR02", QStringLiteral("wrong contents of the partition"));
            expect(number16(bytes, 22) == 0 && number32(bytes, 184) == 1, QStringLiteral("partition not read only"));
            m_partitionStart = number32(bytes, 188);
            m_partitionLength = number32(bytes, 192);
            expect(m_partitionStart > 256 && std::uint64_t{m_partitionStart} + m_partitionLength == m_reserveStart
                       && m_reserveStart + 16 == m_blockCount - 1,
                   QStringLiteral("the partition is not all between the first anchor and the reserve sequence"));
        } else if (identifier == 6) {
            logical = bytes;
        } else if (identifier == 7) {
            expect(number32(bytes, 20) == 0, QStringLiteral("unallocated space on a disc that is read only"));
        }
    }
    expect(counts == std::map<int, int>({{1, 1}, {4, 1}, {5, 1}, {6, 1}, {7, 1}}), QStringLiteral("wrong descriptors"));
    if (!logical.isEmpty())
        readLogicalVolume(logical);
}

void UdfImageReader::readLogicalVolume(const QByteArray &bytes)
{
    m_volumeName = fixedText(bytes, 84, 128);
    expect(isCharacterSet(bytes, 20), QStringLiteral("wrong character set of the logical volume"));
    expect(number32(bytes, 212) == blockSize, QStringLiteral("wrong block size"));
    expect(bytes.mid(217, 19) == "*OSTA UDF Compliant" && number16(bytes, 240) == 0x0102,
           QStringLiteral("wrong domain of the logical volume"));
    expect(number32(bytes, 264) == 6 && number32(bytes, 268) == 1 && bytes.mid(440, 6) == QByteArray("\1\6\1\0\0\0", 6),
           QStringLiteral("wrong partition map"));
    readIntegrity(number32(bytes, 436), number32(bytes, 432));
    expect(number32(bytes, 248) >= blockSize && number16(bytes, 256) == 0, QStringLiteral("wrong place of file sets"));
    readFileSet(number32(bytes, 252));
}

void UdfImageReader::readIntegrity(std::uint32_t start, std::uint32_t length)
{
    expect(length >= 2 * blockSize, QStringLiteral("no room to end the integrity sequence"));
    const QByteArray bytes = block(start);
    checkTag(bytes, 9, start, QStringLiteral("integrity"));
    checkTag(block(start + 1), 8, start + 1, QStringLiteral("end of integrity"));
    expect(number32(bytes, 28) == 1, QStringLiteral("integrity is not closed"));
    m_nextUniqueId = number64(bytes, 40);
    expect(number32(bytes, 72) == 1 && number32(bytes, 76) == 46, QStringLiteral("wrong shape of integrity"));
    expect(number32(bytes, 80) == 0, QStringLiteral("free space on a disc that is read only"));
    expect(number32(bytes, 84) == m_partitionLength, QStringLiteral("wrong size table"));
    m_statedFiles = number32(bytes, 120);
    m_statedFolders = number32(bytes, 124);
    expect(number16(bytes, 128) == 0x0102 && number16(bytes, 130) == 0x0102 && number16(bytes, 132) == 0x0102,
           QStringLiteral("wrong revisions in integrity"));
}

void UdfImageReader::readFileSet(std::uint32_t at)
{
    const QByteArray bytes = block(std::uint64_t{m_partitionStart} + at);
    checkTag(bytes, 256, at, QStringLiteral("file set"));
    checkTag(block(std::uint64_t{m_partitionStart} + at + 1), 8, at + 1, QStringLiteral("end of file sets"));
    claim({std::uint64_t{m_partitionStart} + at, 2 * blockSize}, false, QStringLiteral("file set"));
    expect(fixedText(bytes, 112, 128) == m_volumeName, QStringLiteral("file set of another volume"));
    expect(isCharacterSet(bytes, 48) && isCharacterSet(bytes, 240), QStringLiteral("wrong character set of files"));
    expect(bytes.mid(417, 19) == "*OSTA UDF Compliant" && number16(bytes, 440) == 0x0102,
           QStringLiteral("wrong domain of the file set"));
    expect(number16(bytes, 28) == 3 && number16(bytes, 30) == 3, QStringLiteral("wrong interchange level of files"));
    const std::uint32_t root = number32(bytes, 404);
    UdfObject object = readEntry(root, QStringLiteral("root"));
    expect(object.type == 4 && object.uniqueId == 0, QStringLiteral("wrong root"));
    m_objects[""] = object;
    readDirectory("", object, root);
}

UdfObject UdfImageReader::readEntry(std::uint32_t at, const QString &where)
{
    UdfObject object;
    object.icb = m_partitionStart + at;
    if (at >= m_partitionLength) {
        problem(where + QStringLiteral(": ICB outside of the partition"));
        return object;
    }
    if (const auto known = m_entries.find(at); known != m_entries.end())
        return known->second;
    const QByteArray bytes = block(object.icb);
    checkTag(bytes, 261, at, where);
    claim({object.icb, blockSize}, false, where);
    expect(number32(bytes, 16) == 0 && number16(bytes, 20) == 4 && number16(bytes, 24) == 1,
           where + QStringLiteral(": wrong strategy"));
    object.type = number8(bytes, 27);
    object.flags = number16(bytes, 34);
    object.userId = number32(bytes, 36);
    object.groupId = number32(bytes, 40);
    object.permissions = number32(bytes, 44);
    object.links = number16(bytes, 48);
    object.size = number64(bytes, 56);
    object.uniqueId = number64(bytes, 160);
    object.modification = {number16(bytes, 84), number16(bytes, 86)};
    for (int part = 88; part < 96; ++part)
        object.modification.push_back(number8(bytes, part));
    expect(number32(bytes, 108) == 1, where + QStringLiteral(": wrong checkpoint"));
    const std::uint64_t attributes = number32(bytes, 168);
    const std::uint64_t allocation = number32(bytes, 172);
    if (176 + attributes + allocation > blockSize) {
        problem(where + QStringLiteral(": the file entry does not fit into its block"));
        return object;
    }
    expect(number16(bytes, 10) == 160 + attributes + allocation,
           where + QStringLiteral(": not all under the checksum"));
    object.attributes = bytes.mid(176, static_cast<qsizetype>(attributes));
    if (attributes > 0)
        checkTag(object.attributes, 262, at, where + QStringLiteral(" (attributes)"));
    const QByteArray rest = bytes.mid(176 + static_cast<qsizetype>(attributes), static_cast<qsizetype>(allocation));
    if ((object.flags & 7) == 3) {
        object.embedded = rest;
        expect(object.size == allocation && number64(bytes, 64) == 0, where + QStringLiteral(": wrong embedded size"));
    } else {
        expect((object.flags & 7) == 0, where + QStringLiteral(": no short descriptors"));
        readAllocation(object, rest, where);
        checkExtents(object, number64(bytes, 64), where);
    }
    m_entries[at] = object;
    return object;
}

void UdfImageReader::readAllocation(UdfObject &object, QByteArray descriptors, const QString &where)
{
    std::uint32_t previous = 0;
    for (qsizetype at = 0; at + 8 <= descriptors.size(); at += 8) {
        const std::uint32_t length = number32(descriptors, at) & 0x3FFFFFFF;
        const std::uint32_t type = number32(descriptors, at) >> 30;
        const std::uint32_t position = number32(descriptors, at + 4);
        if (type == 0) {
            object.extents.push_back({std::uint64_t{m_partitionStart} + position, length});
            continue;
        }
        expect(type == 3 && at + 8 == descriptors.size() && length == blockSize,
               where + QStringLiteral(": wrong continuation"));
        const QByteArray next = block(std::uint64_t{m_partitionStart} + position);
        checkTag(next, 258, position, where + QStringLiteral(" (allocation extent)"));
        claim({std::uint64_t{m_partitionStart} + position, blockSize}, false, where);
        expect(number32(next, 16) == previous, where + QStringLiteral(": wrong previous allocation extent"));
        expect(number32(next, 20) <= blockSize - 24, where + QStringLiteral(": allocation extent too long"));
        previous = position;
        descriptors = next.mid(24, number32(next, 20));
        at = -8;
    }
}

void UdfImageReader::checkExtents(const UdfObject &object, std::uint64_t recordedBlocks, const QString &where)
{
    std::uint64_t bytes = 0;
    std::uint64_t blocks = 0;
    for (const UdfExtent &extent : object.extents) {
        const bool isLast = &extent == &object.extents.back();
        expect(extent.bytes > 0 && (isLast || extent.bytes % blockSize == 0),
               where + QStringLiteral(": partial block"));
        bytes += extent.bytes;
        blocks += (extent.bytes + blockSize - 1) / blockSize;
        claim(extent, object.type == 5, where);
    }
    expect(bytes == object.size, where + QStringLiteral(": extents of %1 bytes for %2").arg(bytes).arg(object.size));
    expect(blocks == recordedBlocks, where + QStringLiteral(": wrong number of blocks"));
}

void UdfImageReader::claim(const UdfExtent &extent, bool isFileContents, const QString &where)
{
    const std::uint64_t count = (extent.bytes + blockSize - 1) / blockSize;
    expect(extent.block >= m_partitionStart
               && extent.block + count <= std::uint64_t{m_partitionStart} + m_partitionLength,
           where + QStringLiteral(": outside of the partition"));
    const auto [place, isNew] = m_claims.try_emplace(extent.block, Claim{count, isFileContents});
    expect(isNew || (isFileContents && place->second.isFileContents && place->second.count == count),
           where + QStringLiteral(": its blocks are another's"));
}

void UdfImageReader::checkWhole()
{
    std::uint64_t end = 0;
    for (const auto &[start, claimed] : m_claims) {
        expect(start >= end, QStringLiteral("extents overlap at block %1").arg(start));
        end = start + claimed.count;
    }
    expect(m_fileNames == m_statedFiles,
           QStringLiteral("%1 files stated, %2 found").arg(m_statedFiles).arg(m_fileNames));
    expect(m_folderNames == m_statedFolders, QStringLiteral("wrong number of folders stated"));
    std::set<std::uint64_t> uniqueIds;
    for (const auto &[icb, object] : m_entries) {
        expect(uniqueIds.insert(object.uniqueId).second, QStringLiteral("unique id %1 twice").arg(object.uniqueId));
        expect(object.uniqueId == 0 || object.uniqueId >= 16, QStringLiteral("a unique id below 16"));
        expect(object.uniqueId < m_nextUniqueId, QStringLiteral("a unique id beyond the next one"));
        expect(object.links == m_linksTo[icb], QStringLiteral("wrong link count at ICB %1").arg(icb));
    }
}

} // namespace Tessaron::Testing
