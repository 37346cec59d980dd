#include "platform/discimage/hfsplus/HfsPlusVolumeCheck.h"

#include "platform/discimage/hfsplus/HfsPlusCatalogCheck.h"
#include "platform/discimage/hfsplus/HfsPlusForkExtents.h"
#include "platform/discimage/hfsplus/HfsPlusKeyOrder.h"
#include "platform/discimage/hfsplus/HfsPlusPlaceCheck.h"
#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/discimage/hfsplus/HfsPlusTreeCheck.h"
#include "platform/discimage/hfsplus/HfsPlusVolumeHeaderReader.h"
#include "platform/foundation/ByteOrder.h"
#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <tuple>

namespace Tessaron
{

namespace
{

namespace Field = HfsPlusHeaderField;
namespace Extent = HfsPlusExtentField;

constexpr std::uint32_t unmountedAttribute = 1u << 8;
constexpr std::uint32_t softwareLockAttribute = 1u << 15;
constexpr std::uint32_t idsReusedAttribute = 1u << 12;
constexpr std::uint32_t inconsistentAttribute = 1u << 11;

enum FileId : std::uint32_t {
    ExtentsFile = 3,
    CatalogFile = 4,
    BadBlocksFile = 5,
    AllocationFile = 6,
    StartupFile = 7,
    AttributesFile = 8
};

constexpr std::uint8_t resourceFork = 0xFF;
constexpr std::size_t shortestAttributeKey = 12;

QString headerName()
{
    return QStringLiteral("volume header");
}

class VolumeCheck
{
public:
    VolumeCheck(const DiscImageSource &source, const HfsPlusHeader &header, const VolumeProblems &problems)
        : m_source(source)
        , m_header(header)
        , m_problems(problems)
    {
    }

    void run()
    {
        checkCopy();
        const std::uint64_t length = std::uint64_t(m_header.place.blockCount) * m_header.place.blockSize;
        if (!m_source.contains(m_header.place.offset, length) || length > m_header.containerLength)
            return m_problems.truncated(m_header.offset() + Field::blockCount, headerName(),
                                        QStringLiteral("the volume has %1 of %2 bytes, more than there is room for")
                                            .arg(counted(m_header.place.blockCount, "block", "blocks"))
                                            .arg(m_header.place.blockSize));
        m_isUsed.assign(m_header.place.blockCount, false);
        markOwnBlocks();
        checkAttributes();
        if (checkExtentsFile() && !m_problems.isStopped() && checkCatalog() && !m_problems.isStopped()) {
            checkAttributesFile();
            checkUnreferencedExtents();
            checkAllocation();
        }
    }

private:
    /// A record of the extents file.
    struct Overflow {
        std::uint32_t fileId = 0;
        std::uint8_t fork = 0;
        std::uint32_t firstBlock = 0; ///< of the fork
        std::array<std::uint8_t, Extent::recordSize> extents{};
        std::uint64_t offset = 0; ///< in the image
        bool isUsed = false;
    };

    [[nodiscard]] std::uint32_t number(std::size_t at) const
    {
        return loadBigEndian<std::uint32_t>(&m_header.bytes[at]);
    }

    void unnoticed(std::size_t at, const QString &message) const
    {
        m_problems.unnoticed(m_header.offset() + at, headerName(), message);
    }

    /// A volume in use writes its header often and the copy seldom, but then many fields differ at once: dates, counts
    /// and the number of free blocks. A single field that differs is damage, and so are several when dates and number
    /// of writes are the same.
    void checkCopy() const
    {
        const std::uint64_t length = std::uint64_t(m_header.place.blockCount) * m_header.place.blockSize;
        if (length < 2 * hfsPlusHeaderDistance)
            return;
        std::array<std::uint8_t, HfsPlusHeader::size> copy;
        const std::uint64_t offset = m_header.place.offset + length - hfsPlusHeaderDistance;
        if (m_source.read(offset, copy.data(), copy.size()))
            return; // the volume's length is told elsewhere
        std::size_t differing = 0;
        std::size_t first = 0;
        for (std::size_t at = 0; at < copy.size(); at += 4) {
            if (std::memcmp(&copy[at], &m_header.bytes[at], 4) != 0) {
                first = differing++ == 0 ? at : first;
            }
        }
        const auto isSame = [&](std::size_t from, std::size_t size) {
            return std::memcmp(&copy[from], &m_header.bytes[from], size) == 0;
        };
        const bool isOfSameWriting = isSame(Field::dates, Field::datesSize) && isSame(Field::writeCount, 4);
        if (differing == 1 || (differing > 1 && isOfSameWriting))
            m_problems.damaged(m_header.offset() + first, headerName(),
                               QStringLiteral("it and its copy at byte %1 of the image differ").arg(offset + first));
    }

    void checkAttributes() const
    {
        const std::uint32_t attributes = number(Field::attributes);
        const auto version = loadBigEndian<std::uint16_t>(&m_header.bytes[Field::version]);
        if (version != (m_header.isHfsx ? 5 : 4))
            m_problems.damaged(m_header.offset() + Field::version, headerName(),
                               QStringLiteral("version %1 is unknown").arg(version));
        if ((attributes & unmountedAttribute) == 0 || (attributes & inconsistentAttribute) != 0)
            unnoticed(Field::attributes, QStringLiteral("the volume was left open by what wrote it last"));
    }

    /// Both headers and what lies before and behind them.
    void markOwnBlocks()
    {
        const std::uint32_t blockSize = m_header.place.blockSize;
        constexpr std::uint64_t begin = hfsPlusHeaderDistance + HfsPlusHeader::size;
        const std::uint64_t length = std::uint64_t(m_header.place.blockCount) * blockSize;
        for (std::uint64_t block = 0; block * blockSize < begin && block < m_isUsed.size(); ++block)
            m_isUsed[block] = true;
        for (std::uint64_t block = (length - std::min(length, hfsPlusHeaderDistance)) / blockSize;
             block < m_isUsed.size(); ++block)
            m_isUsed[block] = true;
        HfsPlusBytes bytes = m_header.bytes;
        useFork(AllocationFile, false, bytes.subspan(Field::allocationFile), m_header.offset(), &m_allocation);
    }

    void markExtents(HfsPlusBytes eightExtents, std::uint32_t *left, std::uint64_t offset, const QString &structure)
    {
        for (std::size_t index = 0; index<Extent::perRecord && * left> 0; ++index) {
            const auto start = loadBigEndian<std::uint32_t>(&eightExtents[index * Extent::size + Extent::start]);
            const auto count = loadBigEndian<std::uint32_t>(&eightExtents[index * Extent::size + Extent::count]);
            if (count == 0 || count > *left || start > m_isUsed.size() || count > m_isUsed.size() - start)
                return; // told by what adds the extents up
            // Behind the first block that is taken nothing is marked: volumes whose forks all claim everything would
            // take forever.
            std::uint32_t block = start;
            for (; block < start + count && !m_isUsed[block]; ++block)
                m_isUsed[block] = true;
            if (block < start + count)
                m_problems.damaged(offset, structure, QStringLiteral("an extent overlaps another one"));
            *left -= count;
        }
    }

    [[nodiscard]] Overflow *overflowOf(std::uint32_t fileId, std::uint8_t fork, std::uint32_t firstBlock)
    {
        const auto key = [](const Overflow &record) {
            return std::tuple(record.fileId, record.fork, record.firstBlock);
        };
        const Overflow wanted{fileId, fork, firstBlock, {}, 0, false};
        const auto found =
            std::lower_bound(m_overflow.begin(), m_overflow.end(), wanted,
                             [&](const Overflow &one, const Overflow &other) { return key(one) < key(other); });
        return found != m_overflow.end() && key(*found) == key(wanted) ? &*found : nullptr;
    }

    /// Adds up the extents of a fork and marks its blocks. `*extents` may be null.
    void useFork(std::uint32_t fileId, bool isResource, HfsPlusBytes fork, std::uint64_t offset,
                 std::vector<VolumeExtent> *extents)
    {
        const QString structure = QStringLiteral("extents");
        const HfsPlusForkHead head = hfsPlusForkHead(fork.data());
        const HfsPlusBytes first = fork.subspan(HfsPlusForkDataField::extents, Extent::recordSize);
        HfsPlusForkExtents found(m_header.place, head);
        // Other systems give files blocks that they may grow into.
        const std::uint64_t needed =
            head.length / m_header.place.blockSize + (head.length % m_header.place.blockSize != 0);
        if (m_header.isOfThisSystem() && head.blockCount != needed)
            m_problems.damaged(offset, structure,
                               QStringLiteral("a fork has %1, but its length needs %2")
                                   .arg(counted(head.blockCount, "block", "blocks"))
                                   .arg(needed));
        std::uint32_t left = head.blockCount;
        NSError error = found.add(first.data(), offset);
        if (error)
            return m_problems.error(structure, error);
        checkUnusedExtents(first, left, offset);
        markExtents(first, &left, offset, structure);
        while (!found.isComplete()) {
            Overflow *const record = overflowOf(fileId, isResource ? resourceFork : 0, found.blocksFound());
            if (record == nullptr)
                return m_problems.damaged(offset, structure, QStringLiteral("a fork has fewer blocks than it says"));
            record->isUsed = true;
            error = found.add(record->extents.data(), record->offset);
            if (error)
                return m_problems.error(structure, error);
            markExtents(record->extents, &left, record->offset, structure);
        }
        std::vector<VolumeExtent> result;
        error = found.finish(offset, &result);
        if (error)
            return m_problems.error(structure, error);
        if (extents)
            *extents = std::move(result);
    }

    /// Extents behind the last one that is needed are empty ones.
    void checkUnusedExtents(HfsPlusBytes eightExtents, std::uint32_t left, std::uint64_t offset) const
    {
        for (std::size_t index = 0; index < Extent::perRecord; ++index) {
            const auto start = loadBigEndian<std::uint32_t>(&eightExtents[index * Extent::size + Extent::start]);
            const auto count = loadBigEndian<std::uint32_t>(&eightExtents[index * Extent::size + Extent::count]);
            if (left == 0 && (start != 0 || count != 0))
                return m_problems.unnoticed(offset, QStringLiteral("extents"),
                                            QStringLiteral("there is something behind the last extent of a fork"));
            left -= std::min(left, count);
        }
    }

    [[nodiscard]] bool checkExtentsFile()
    {
        HfsPlusTreeCheck::Traits traits;
        const HfsPlusBytes header = m_header.bytes;
        useFork(ExtentsFile, false, header.subspan(HfsPlusHeaderField::extentsFile), m_header.offset(),
                &traits.extents);
        traits.shortestKey = HfsPlusExtentsKeyField::size;
        traits.orderFor = [](std::uint8_t) { return hfsPlusExtentsOrder(); };
        traits.name = QStringLiteral("extents file");
        traits.record = [this](HfsPlusBytes key, HfsPlusBytes data, std::uint64_t offset) {
            Overflow record;
            if (data.size() != record.extents.size())
                return m_problems.damaged(offset, QStringLiteral("extents file"),
                                          QStringLiteral("a record has the wrong length"));
            namespace Key = HfsPlusExtentsKeyField;
            if (key[Key::padding] != 0)
                m_problems.unnoticed(offset, QStringLiteral("extents file"),
                                     QStringLiteral("bytes that have to be zero are not"));
            record.fork = key[Key::fork];
            record.fileId = loadBigEndian<std::uint32_t>(&key[Key::fileId]);
            record.firstBlock = loadBigEndian<std::uint32_t>(&key[Key::firstBlock]);
            std::copy(data.begin(), data.end(), record.extents.begin());
            record.offset = offset;
            m_overflow.push_back(record);
        };
        return HfsPlusTreeCheck(m_source, std::move(traits), m_problems).run();
    }

    [[nodiscard]] bool checkCatalog()
    {
        const HfsPlusBytes header = m_header.bytes;
        HfsPlusTreeCheck::Traits traits;
        useFork(CatalogFile, false, header.subspan(HfsPlusHeaderField::catalogFile), m_header.offset(),
                &traits.extents);
        HfsPlusCatalogCheck catalog(m_problems, m_header.isOfThisSystem(),
                                    [this](std::uint32_t id, bool isResource, HfsPlusBytes fork, std::uint64_t offset) {
                                        useFork(id, isResource, fork, offset, nullptr);
                                    });
        traits.shortestKey = HfsPlusCatalogKeyField::name;
        traits.orderFor = [isHfsx = m_header.isHfsx](std::uint8_t compareType) {
            return hfsPlusCatalogOrder(isHfsx, compareType);
        };
        traits.name = QStringLiteral("catalog");
        traits.record = [&catalog](HfsPlusBytes key, HfsPlusBytes data, std::uint64_t offset) {
            catalog.take(key, data, offset);
        };
        if (!HfsPlusTreeCheck(m_source, std::move(traits), m_problems).run())
            return false;
        catalog.finish();
        compareCount(Field::fileCount, catalog.fileCount(), "files");
        compareCount(Field::folderCount, catalog.folderCount(), "folders");
        if (number(Field::nextCatalogId) <= catalog.greatestId()
            && (number(Field::attributes) & idsReusedAttribute) == 0)
            unnoticed(Field::nextCatalogId,
                      QStringLiteral("the next ID, %1, is in use").arg(number(Field::nextCatalogId)));
        return true;
    }

    void compareCount(std::size_t at, std::uint32_t found, const char *what) const
    {
        if (number(at) != found)
            unnoticed(at,
                      QStringLiteral("it says that there are %1 %2, but there are %3")
                          .arg(number(at))
                          .arg(QLatin1String(what))
                          .arg(found));
    }

    /// What the file of extended attributes says is not read here, but its blocks and those of big attributes are used.
    void checkAttributesFile()
    {
        const HfsPlusBytes header = m_header.bytes;
        useFork(StartupFile, false, header.subspan(Field::startupFile), m_header.offset(), nullptr);
        HfsPlusTreeCheck::Traits traits;
        useFork(AttributesFile, false, header.subspan(Field::attributesFile), m_header.offset(), &traits.extents);
        if (traits.extents.empty())
            return;
        traits.shortestKey = shortestAttributeKey;
        traits.orderFor = [](std::uint8_t) {
            return [](HfsPlusBytes, HfsPlusBytes) { return -1; }; // the order of names of attributes is not looked at
        };
        traits.name = QStringLiteral("attributes file");
        traits.record = [this](HfsPlusBytes, HfsPlusBytes data, std::uint64_t offset) { takeAttribute(data, offset); };
        (void)HfsPlusTreeCheck(m_source, std::move(traits), m_problems).run();
    }

    void takeAttribute(HfsPlusBytes data, std::uint64_t offset)
    {
        constexpr std::uint32_t forkData = 0x20;
        constexpr std::uint32_t moreExtents = 0x30;
        constexpr std::size_t headSize = 8;
        if (data.size() < headSize)
            return;
        const auto type = loadBigEndian<std::uint32_t>(data.data());
        std::uint32_t left = m_header.place.blockCount;
        if (type == forkData && data.size() >= headSize + HfsPlusForkDataField::size)
            markExtents(data.subspan(headSize + HfsPlusForkDataField::extents, Extent::recordSize), &left, offset,
                        QStringLiteral("attributes file"));
        else if (type == moreExtents && data.size() >= headSize + Extent::recordSize)
            markExtents(data.subspan(headSize, Extent::recordSize), &left, offset, QStringLiteral("attributes file"));
    }

    /// The blocks that the volume leaves alone have only their extents; all other records belong to a fork.
    void checkUnreferencedExtents()
    {
        std::uint32_t next = 0;
        for (Overflow &record : m_overflow) {
            if (record.isUsed)
                continue;
            if (record.fileId != BadBlocksFile) {
                m_problems.damaged(record.offset, QStringLiteral("extents file"),
                                   QStringLiteral("a record belongs to no fork"));
                continue;
            }
            if (record.firstBlock != next)
                m_problems.damaged(record.offset, QStringLiteral("extents file"),
                                   QStringLiteral("a record is missing in the list of unusable blocks"));
            std::uint32_t left = m_header.place.blockCount;
            markExtents(record.extents, &left, record.offset, QStringLiteral("extents file"));
            next = record.firstBlock + (m_header.place.blockCount - left);
        }
    }

    void checkAllocation() const
    {
        constexpr std::size_t step = 65536;
        std::vector<std::uint8_t> bits(step);
        AllocationState state;
        for (const VolumeExtent &extent : m_allocation) {
            for (std::uint64_t at = 0; at < extent.length && !m_problems.isStopped(); at += step) {
                const auto part = std::size_t(std::min<std::uint64_t>(step, extent.length - at));
                if (const NSError error = m_source.read(extent.offset + at, bits.data(), part))
                    return m_problems.error(allocationName(), error);
                compareBits({bits.data(), part}, extent.offset + at, &state);
            }
        }
        judgeAllocation(state);
    }

    /// What the allocation file says as far as it was read.
    struct AllocationState {
        std::uint64_t block = 0; ///< that the next bit stands for
        std::uint64_t freeBlocks = 0;
        std::uint64_t wronglyFree = 0; ///< in use, but not marked
        std::uint64_t wronglyUsed = 0; ///< marked, but not in use
        std::uint64_t wrongOffset = 0; ///< of the first byte with a wrong bit, in the image
    };

    void compareBits(std::span<const std::uint8_t> bits, std::uint64_t offset, AllocationState *state) const
    {
        for (std::size_t byte = 0; byte < bits.size(); ++byte, state->block += 8) {
            const std::uint8_t used = usedBits(state->block);
            const std::uint64_t blocks =
                std::min<std::uint64_t>(8, m_isUsed.size() - std::min<std::uint64_t>(state->block, m_isUsed.size()));
            const auto present = std::uint8_t(0xFF00u >> blocks);
            state->freeBlocks += std::uint64_t(std::popcount(std::uint8_t(~bits[byte] & present)));
            if (used != bits[byte] && state->wronglyFree + state->wronglyUsed == 0)
                state->wrongOffset = offset + byte;
            state->wronglyFree += std::uint64_t(std::popcount(std::uint8_t(used & ~bits[byte])));
            state->wronglyUsed += std::uint64_t(std::popcount(std::uint8_t(~used & bits[byte])));
        }
    }

    void judgeAllocation(const AllocationState &state) const
    {
        if (state.block < m_isUsed.size())
            return m_problems.damaged(m_header.offset() + Field::allocationFile, allocationName(),
                                      QStringLiteral("it is too short for the volume's blocks"));
        // Volumes that nothing is to be written to may have all blocks marked, those of other filesystems, too.
        const bool isFullyMarked =
            state.freeBlocks == 0 && state.wronglyFree == 0 && (number(Field::attributes) & softwareLockAttribute) != 0;
        if (state.wronglyFree > 0 || (state.wronglyUsed > 0 && !isFullyMarked))
            m_problems.unnoticed(state.wrongOffset, allocationName(),
                                 QStringLiteral("it does not mark %1 in use, and marks %2 that are not in use")
                                     .arg(counted(state.wronglyFree, "block", "blocks"))
                                     .arg(state.wronglyUsed));
        if (state.freeBlocks != number(Field::freeBlocks))
            unnoticed(Field::freeBlocks,
                      QStringLiteral("it says that it has %1 free, but has %2")
                          .arg(counted(number(Field::freeBlocks), "block", "blocks"))
                          .arg(state.freeBlocks));
    }

    static QString allocationName() { return QStringLiteral("allocation file"); }

    [[nodiscard]] std::uint8_t usedBits(std::uint64_t block) const
    {
        std::uint8_t bits = 0;
        for (std::uint64_t index = 0; index < 8; ++index) {
            if (block + index < m_isUsed.size() && m_isUsed[block + index])
                bits = std::uint8_t(bits | 0x80u >> index);
        }
        return bits;
    }

    const DiscImageSource &m_source;
    const HfsPlusHeader &m_header;
    const VolumeProblems &m_problems;
    std::vector<Overflow> m_overflow; ///< in the order of the extents file
    std::vector<bool> m_isUsed; ///< by block
    std::vector<VolumeExtent> m_allocation; ///< of the allocation file
};

} // namespace

void checkHfsPlusVolume(const DiscImageSource &source, VolumeProblemReport &report)
{
    const VolumeProblems problems(report, VolumeKind::HFSPlus);
    checkHfsPlusPlaces(source, problems);
    NSError error;
    const std::optional<HfsPlusHeader> header = findHfsPlusHeader(source, &error);
    if (error)
        problems.error(headerName(), error);
    if (!header)
        return;
    error = checkHfsPlusHeaderCopy(source, *header);
    if (error)
        problems.error(headerName(), error);
    VolumeCheck(source, *header, problems).run();
}

} // namespace Tessaron
