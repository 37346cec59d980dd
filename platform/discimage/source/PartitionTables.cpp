#include "platform/discimage/source/PartitionTables.h"

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/disctracks/vant/Crc32.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t sectorSize = 512;

/// A partition map that claims more entries is damaged.
constexpr std::uint32_t maximumPartitions = 256;

using ProblemVisitor = std::function<void(const PartitionTableProblem &)>;

QString latinText(const std::uint8_t *from, std::size_t room)
{
    const std::size_t length = std::size_t(std::find(from, from + room, 0) - from);
    return QString::fromLatin1(reinterpret_cast<const char *>(from), qsizetype(length));
}

/// What both readers of maps need.
class TableReader
{
public:
    TableReader(const DiscImageSource &source, PartitionScheme scheme, const ProblemVisitor &problem)
        : m_source(source)
        , m_scheme(scheme)
        , m_problem(problem)
    {
    }

protected:
    template <std::size_t Size>
    [[nodiscard]] bool read(std::uint64_t offset, std::array<std::uint8_t, Size> *bytes) const
    {
        return m_source.contains(offset, Size) && !m_source.read(offset, bytes->data(), Size);
    }

    void damaged(std::uint64_t offset, const QString &message) const { tell(offset, false, message); }
    void remains(std::uint64_t offset, const QString &message) const { tell(offset, true, message); }

    const DiscImageSource &m_source;

private:
    void tell(std::uint64_t offset, bool isRemains, const QString &message) const
    {
        if (m_problem)
            m_problem({offset, isRemains, partitionSchemeName(m_scheme), message});
    }

    const PartitionScheme m_scheme;
    const ProblemVisitor &m_problem;
};

// Inside Macintosh, "The Partition Map": fields of the driver descriptor and of an entry.
namespace Driver
{
constexpr std::size_t blockSize = 2;
constexpr std::size_t blockCount = 4;
} // namespace Driver
namespace AppleEntry
{
constexpr std::size_t padding = 2;
constexpr std::size_t count = 4;
constexpr std::size_t start = 8;
constexpr std::size_t length = 12;
constexpr std::size_t name = 16;
constexpr std::size_t type = 48;
constexpr std::size_t textSize = 32;
constexpr std::size_t dataStart = 80;
constexpr std::size_t dataLength = 84;
} // namespace AppleEntry

class AppleMapReader : public TableReader
{
public:
    AppleMapReader(const DiscImageSource &source, const ProblemVisitor &problem)
        : TableReader(source, PartitionScheme::Apple, problem)
    {
    }

    void run(std::vector<DiscImagePartition> *partitions) const
    {
        Block driver{};
        const bool isRead = read(0, &driver);
        const bool hasDriver = isRead && isSigned(driver, "ER");
        // The map's blocks are of 512 bytes, on discs made for drives that know no others of 2048.
        for (const std::uint64_t blockSize : {std::uint64_t(512), std::uint64_t(2048)}) {
            Block first;
            if (!read(blockSize, &first) || !isSigned(first, "PM"))
                continue;
            if (!hasDriver)
                damaged(0, QStringLiteral("the driver descriptor in front of it is damaged or missing"));
            readEntries(blockSize, loadBigEndian<std::uint32_t>(&first[AppleEntry::count]), partitions);
            if (hasDriver)
                checkLength(driver, *partitions);
            return;
        }
        checkRemains(driver, hasDriver);
    }

private:
    using Block = std::array<std::uint8_t, 512>;

    static bool isSigned(const Block &block, const char (&signature)[3])
    {
        return block[0] == std::uint8_t(signature[0]) && block[1] == std::uint8_t(signature[1]);
    }

    /// The driver descriptor says how long the disc is. On discs that start computers the number is part of a program,
    /// and means nothing: it is believed where it leaves little room behind the last partition.
    void checkLength(const Block &driver, const std::vector<DiscImagePartition> &partitions) const
    {
        constexpr std::uint64_t mostBehindPartitions = 1 << 20;
        const auto blockSize = loadBigEndian<std::uint16_t>(&driver[Driver::blockSize]);
        const std::uint64_t length =
            std::uint64_t(loadBigEndian<std::uint32_t>(&driver[Driver::blockCount])) * blockSize;
        std::uint64_t end = 0;
        for (const DiscImagePartition &partition : partitions)
            end = std::max(end, partition.offset + partition.length);
        if (length >= end && length - end <= mostBehindPartitions && length > m_source.length())
            damaged(Driver::blockCount,
                    QStringLiteral("the disc has %1 bytes, the image only %2").arg(length).arg(m_source.length()));
    }

    /// The map's begin is damaged: another entry, or a driver descriptor with a possible size of blocks, is left.
    void checkRemains(const Block &driver, bool hasDriver) const
    {
        const auto blockSize = loadBigEndian<std::uint16_t>(&driver[Driver::blockSize]);
        for (const std::uint64_t size : {std::uint64_t(512), std::uint64_t(2048)}) {
            Block entry;
            if (read(2 * size, &entry) && isSigned(entry, "PM") && entry[AppleEntry::padding] == 0)
                return remains(size, QStringLiteral("its first entry is damaged"));
            if (read(size, &entry) && isTypeOfApple(latinText(&entry[AppleEntry::type], AppleEntry::textSize)))
                return remains(size, QStringLiteral("its first entry is damaged"));
        }
        if (hasDriver && blockSize == 2048)
            remains(blockSize, QStringLiteral("there is a driver descriptor, but no entry of a partition"));
    }

    static bool isTypeOfApple(const QString &type) { return type.startsWith(QStringLiteral("Apple_")); }

    void readEntries(std::uint64_t blockSize, std::uint32_t count, std::vector<DiscImagePartition> *partitions) const
    {
        std::uint32_t present = 0;
        for (std::uint32_t number = 1; number <= std::min(count, maximumPartitions); ++number) {
            const std::uint64_t offset = number * blockSize;
            Block entry;
            if (!read(offset, &entry) || !isSigned(entry, "PM")) {
                remains(offset, QStringLiteral("entry %1 of %2 is damaged or missing").arg(number).arg(count));
                continue;
            }
            ++present;
            if (loadBigEndian<std::uint32_t>(&entry[AppleEntry::count]) != count)
                damaged(offset + AppleEntry::count, QStringLiteral("its entries do not agree on their number"));
            takeEntry(entry, offset, blockSize, partitions);
        }
        Block behind;
        if (read((std::uint64_t(count) + 1) * blockSize, &behind) && isSigned(behind, "PM")
            && isTypeOfApple(latinText(&behind[AppleEntry::type], AppleEntry::textSize)))
            damaged(blockSize + AppleEntry::count, QStringLiteral("it has more entries than it says"));
    }

    void takeEntry(const Block &entry, std::uint64_t offset, std::uint64_t blockSize,
                   std::vector<DiscImagePartition> *partitions) const
    {
        DiscImagePartition partition;
        const auto length = loadBigEndian<std::uint32_t>(&entry[AppleEntry::length]);
        partition.name = latinText(&entry[AppleEntry::name], AppleEntry::textSize);
        partition.type = latinText(&entry[AppleEntry::type], AppleEntry::textSize);
        partition.offset = loadBigEndian<std::uint32_t>(&entry[AppleEntry::start]) * blockSize;
        partition.length = length * blockSize;
        const auto dataStart = loadBigEndian<std::uint32_t>(&entry[AppleEntry::dataStart]);
        const auto dataLength = loadBigEndian<std::uint32_t>(&entry[AppleEntry::dataLength]);
        if (dataLength != 0 && (dataLength > length || (dataStart == 0 && dataLength != length)))
            damaged(offset + AppleEntry::dataLength, QStringLiteral("an entry contradicts itself on its length"));
        if (entry[AppleEntry::padding] != 0 || entry[AppleEntry::padding + 1] != 0)
            damaged(offset + AppleEntry::padding, QStringLiteral("bytes that have to be zero are not"));
        if (partition.type == QStringLiteral("Apple_partition_map") && partition.offset != blockSize)
            damaged(offset + AppleEntry::start, QStringLiteral("its own entry leads elsewhere"));
        if (!m_source.contains(partition.offset, partition.length))
            damaged(offset + AppleEntry::start, QStringLiteral("a partition reaches beyond the end of the image"));
        if (isAlmostKnown(partition.type))
            damaged(offset + AppleEntry::type,
                    QStringLiteral("the type of a partition, “%1”, is unknown").arg(partition.type));
        partitions->push_back(std::move(partition));
    }

    /// One letter is not that of a known type.
    static bool isAlmostKnown(const QString &type)
    {
        static const QString known[] = {QStringLiteral("Apple_HFS"),
                                        QStringLiteral("Apple_HFSX"),
                                        QStringLiteral("Apple_partition_map"),
                                        QStringLiteral("Apple_Free"),
                                        QStringLiteral("Apple_Driver_ATAPI"),
                                        QStringLiteral("Apple_UNIX_SVR2"),
                                        QStringLiteral("Apple_Driver43"),
                                        QStringLiteral("Apple_Patches"),
                                        QStringLiteral("Apple_ISO")};
        if (std::find(std::begin(known), std::end(known), type) != std::end(known))
            return false;
        return std::any_of(std::begin(known), std::end(known), [&type](const QString &one) {
            qsizetype same = 0;
            for (qsizetype index = 0; index < std::min(one.size(), type.size()); ++index)
                same += one[index] == type[index] ? 1 : 0;
            return same + 1 >= std::max(one.size(), type.size());
        });
    }
};

// UEFI 5.3.2 and 5.3.3.
namespace GptHeader
{
constexpr std::size_t headerSize = 12;
constexpr std::size_t checksum = 16;
constexpr std::size_t ownSector = 24;
constexpr std::size_t otherSector = 32;
constexpr std::size_t diskGuid = 56;
constexpr std::size_t entriesSector = 72;
constexpr std::size_t entryCount = 80;
constexpr std::size_t entrySize = 84;
constexpr std::size_t entriesChecksum = 88;
constexpr std::size_t smallestSize = 92;
} // namespace GptHeader
namespace GptEntry
{
constexpr std::size_t typeSize = 16; // a GUID, which the entry begins with; all zero in a free one
constexpr std::size_t firstSector = 32;
constexpr std::size_t lastSector = 40;
constexpr std::size_t name = 56;
constexpr std::size_t nameUnits = 36;
constexpr std::size_t size = 128;
} // namespace GptEntry

/// The text of a GUID, whose first three numbers are little-endian.
QString guidText(const std::uint8_t *bytes)
{
    QString digits;
    for (const int index : {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15})
        digits += index < 0 ? QStringLiteral("-") : QStringLiteral("%1").arg(bytes[index], 2, 16, QLatin1Char('0'));
    return digits.toUpper();
}

/// Whether the MBR says that there is a GPT.
enum class Announced : std::uint8_t {
    Yes,
    NotNeeded, ///< it has entries of its own for systems that know no GPT
    No,
};

class GptReader : public TableReader
{
public:
    GptReader(const DiscImageSource &source, const ProblemVisitor &problem)
        : TableReader(source, PartitionScheme::GPT, problem)
    {
    }

    /// Returns whether there is one.
    bool run(Announced announced, std::vector<DiscImagePartition> *partitions) const
    {
        const std::optional<Table> primary = readTable(1);
        const std::uint64_t last =
            m_source.length() / sectorSize - std::min<std::uint64_t>(m_source.length() / sectorSize, 1);
        const std::uint64_t backupSector =
            primary ? loadLittleEndian<std::uint64_t>(&primary->header[GptHeader::otherSector]) : last;
        const std::optional<Table> backup = backupSector == 1 ? std::nullopt : readTable(backupSector);
        const bool isPrimarySound = primary && primary->isSound;
        const bool isBackupSound = backup && backup->isSound;
        if (!primary && !backup) {
            if (announced == Announced::Yes)
                remains(sectorSize,
                        QStringLiteral("an MBR says that there is one, but neither it nor its backup is found"));
            return false;
        }
        if (!isPrimarySound)
            remains(sectorSize,
                    primary ? QStringLiteral("a checksum is wrong, the backup is used")
                            : QStringLiteral("its signature is damaged, the backup is used"));
        if (!isBackupSound)
            damaged(backupSector * sectorSize, QStringLiteral("its backup is damaged or missing"));
        else if (isPrimarySound && !isSame(*primary, *backup))
            damaged(backupSector * sectorSize, QStringLiteral("it and its backup do not say the same"));
        if (announced == Announced::No)
            damaged(0, QStringLiteral("no MBR announces it"));
        const Table &used = isPrimarySound || !isBackupSound ? (primary ? *primary : *backup) : *backup;
        takeEntries(used, partitions);
        return true;
    }

private:
    using Sector = std::array<std::uint8_t, sectorSize>;
    struct Table {
        Sector header{};
        std::vector<std::uint8_t> entries;
        std::uint32_t entrySize = 0;
        std::uint64_t sector = 0;
        bool isSound = false; ///< both checksums are right
    };

    [[nodiscard]] std::optional<Table> readTable(std::uint64_t sector) const
    {
        Table table;
        table.sector = sector;
        if (sector > m_source.length() / sectorSize || !read(sector * sectorSize, &table.header)
            || std::memcmp(table.header.data(), "EFI PART", 8) != 0)
            return std::nullopt;
        const auto headerSize = loadLittleEndian<std::uint32_t>(&table.header[GptHeader::headerSize]);
        const auto checksum = loadLittleEndian<std::uint32_t>(&table.header[GptHeader::checksum]);
        if (headerSize < GptHeader::smallestSize || headerSize > table.header.size())
            return table;
        Sector cleared = table.header;
        storeLittleEndian<std::uint32_t>(&cleared[GptHeader::checksum], 0);
        table.isSound = crc32(0, cleared.data(), headerSize) == checksum
            && loadLittleEndian<std::uint64_t>(&table.header[GptHeader::ownSector]) == sector;
        readEntries(&table);
        return table;
    }

    void readEntries(Table *table) const
    {
        const auto count = loadLittleEndian<std::uint32_t>(&table->header[GptHeader::entryCount]);
        table->entrySize = loadLittleEndian<std::uint32_t>(&table->header[GptHeader::entrySize]);
        const auto first = loadLittleEndian<std::uint64_t>(&table->header[GptHeader::entriesSector]);
        constexpr std::uint32_t largestEntry = 4096;
        const bool isPossible = count <= 4 * maximumPartitions && table->entrySize >= GptEntry::size
            && table->entrySize <= largestEntry && first <= m_source.length() / sectorSize;
        const std::uint64_t length = isPossible ? std::uint64_t(count) * table->entrySize : 0;
        if (!isPossible || !m_source.contains(first * sectorSize, length)) {
            table->isSound = false;
            return;
        }
        table->entries.resize(std::size_t(length));
        const bool isRead = !m_source.read(first * sectorSize, table->entries.data(), table->entries.size());
        const auto checksum = loadLittleEndian<std::uint32_t>(&table->header[GptHeader::entriesChecksum]);
        table->isSound = table->isSound && isRead && crc32(0, table->entries.data(), table->entries.size()) == checksum;
    }

    static bool isSame(const Table &one, const Table &other)
    {
        constexpr std::size_t guidSize = 16;
        return one.entries == other.entries
            && std::equal(one.header.begin() + GptHeader::diskGuid, one.header.begin() + GptHeader::diskGuid + guidSize,
                          other.header.begin() + GptHeader::diskGuid)
            && loadLittleEndian<std::uint64_t>(&other.header[GptHeader::otherSector]) == one.sector;
    }

    void takeEntries(const Table &table, std::vector<DiscImagePartition> *partitions) const
    {
        for (std::size_t at = 0; at + GptEntry::size <= table.entries.size(); at += table.entrySize) {
            const std::uint8_t *const entry = &table.entries[at];
            if (std::all_of(entry, entry + GptEntry::typeSize, [](std::uint8_t byte) { return byte == 0; }))
                continue;
            const auto first = loadLittleEndian<std::uint64_t>(entry + GptEntry::firstSector);
            const auto last = loadLittleEndian<std::uint64_t>(entry + GptEntry::lastSector);
            const std::uint64_t sectors = m_source.length() / sectorSize + 1;
            if (first > last || last >= sectors) {
                damaged(table.sector * sectorSize, QStringLiteral("a partition reaches beyond the end of the image"));
                continue;
            }
            DiscImagePartition partition;
            partition.scheme = PartitionScheme::GPT;
            partition.type = guidText(entry);
            for (std::size_t unit = 0; unit < GptEntry::nameUnits; ++unit) {
                const auto character = loadLittleEndian<std::uint16_t>(entry + GptEntry::name + 2 * unit);
                if (character == 0)
                    break;
                partition.name += QChar(character);
            }
            partition.offset = first * sectorSize;
            partition.length = (last - first + 1) * sectorSize;
            partitions->push_back(std::move(partition));
        }
    }
};

// UEFI 5.2.1.
namespace MbrField
{
constexpr std::size_t entries = 446;
constexpr std::size_t entrySize = 16;
constexpr std::size_t entryCount = 4;
constexpr std::size_t status = 0; // of an entry, like the next three
constexpr std::uint8_t isActive = 1u << 7; // in the status; its other bits are 0
constexpr std::size_t type = 4;
constexpr std::size_t firstSector = 8;
constexpr std::size_t sectorCount = 12;
constexpr std::size_t signature = 510; // these two
constexpr std::uint8_t firstSignatureByte = 0x55;
constexpr std::uint8_t secondSignatureByte = 0xAA;
} // namespace MbrField

constexpr std::uint8_t protectiveType = 0xEE; // announces a GPT

class MbrReader : public TableReader
{
public:
    MbrReader(const DiscImageSource &source, const ProblemVisitor &problem)
        : TableReader(source, PartitionScheme::MBR, problem)
    {
    }

    /// Returns whether one of the entries announces a GPT.
    bool run(std::vector<DiscImagePartition> *partitions) const
    {
        std::array<std::uint8_t, sectorSize> sector;
        if (!read(0, &sector) || sector[MbrField::signature] != MbrField::firstSignatureByte
            || sector[MbrField::signature + 1] != MbrField::secondSignatureByte)
            return false;
        // Boot sectors of filesystems have the same signature, and code where an MBR has its entries.
        for (std::size_t index = 0; index < MbrField::entryCount; ++index) {
            const std::uint8_t status = sector[MbrField::entries + index * MbrField::entrySize + MbrField::status];
            if ((status & ~MbrField::isActive) != 0)
                return false;
        }
        bool announcesGpt = false;
        for (std::size_t index = 0; index < MbrField::entryCount; ++index) {
            const std::uint8_t *const entry = &sector[MbrField::entries + index * MbrField::entrySize];
            const std::uint8_t type = entry[MbrField::type];
            announcesGpt = announcesGpt || type == protectiveType;
            const std::uint64_t count = loadLittleEndian<std::uint32_t>(entry + MbrField::sectorCount);
            if (type == 0 ? count == 0 : type == protectiveType)
                continue;
            DiscImagePartition partition;
            partition.scheme = PartitionScheme::MBR;
            partition.type = QStringLiteral("0x%1").arg(type, 2, 16, QLatin1Char('0'));
            partition.offset = loadLittleEndian<std::uint32_t>(entry + MbrField::firstSector) * sectorSize;
            partition.length = count * sectorSize;
            if (partition.offset > m_source.length())
                damaged(MbrField::entries + index * MbrField::entrySize,
                        QStringLiteral("a partition reaches beyond the end of the image"));
            partitions->push_back(std::move(partition));
        }
        return announcesGpt;
    }
};

} // namespace

std::vector<DiscImagePartition> readPartitionTables(const DiscImageSource &source, const ProblemVisitor &problem)
{
    std::vector<DiscImagePartition> partitions;
    AppleMapReader(source, problem).run(&partitions);
    std::vector<DiscImagePartition> mbrPartitions;
    const bool announcesGpt = MbrReader(source, problem).run(&mbrPartitions);
    // What an MBR has beside a GPT is for systems that know no GPT: it is shown, too. Such an MBR of a hybrid image has
    // no entry that announces the GPT; an entry at its place must be that one, though.
    const bool isHybrid = !mbrPartitions.empty()
        && std::ranges::none_of(mbrPartitions, [](const auto &partition) { return partition.offset == sectorSize; });
    (void)GptReader(source, problem)
        .run(announcesGpt   ? Announced::Yes
                 : isHybrid ? Announced::NotNeeded
                            : Announced::No,
             &partitions);
    partitions.insert(partitions.end(), mbrPartitions.begin(), mbrPartitions.end());
    return partitions;
}

bool isHfsPlusPartition(const DiscImagePartition &partition)
{
    switch (partition.scheme) {
    case PartitionScheme::Apple:
        return partition.type.startsWith(QStringLiteral("Apple_HFS"));
    case PartitionScheme::GPT:
        return partition.type == QStringLiteral("48465300-0000-11AA-AA11-00306543ECAC");
    case PartitionScheme::MBR:
        return partition.type == QStringLiteral("0xaf");
    }
    return false;
}

QString partitionSchemeName(PartitionScheme scheme)
{
    switch (scheme) {
    case PartitionScheme::Apple:
        return QStringLiteral("Apple partition map");
    case PartitionScheme::MBR:
        return QStringLiteral("MBR");
    case PartitionScheme::GPT:
        return QStringLiteral("GPT");
    }
    return {};
}

} // namespace Tessaron
