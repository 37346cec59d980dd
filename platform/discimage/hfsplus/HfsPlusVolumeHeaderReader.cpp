#include "platform/discimage/hfsplus/HfsPlusVolumeHeaderReader.h"

#include "platform/discimage/hfsplus/HfsPlusRecordFields.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t smallestBlock = 512;
constexpr std::uint32_t journalAttribute = 1u << 13;

namespace Wrapper = HfsPlusWrapperField;
namespace Field = HfsPlusHeaderField;

using HeaderBytes = std::array<std::uint8_t, HfsPlusHeader::size>;

/// Where a volume may be.
struct Candidate {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    bool isPromised = false; ///< a wrapper says that it is there
};

std::uint16_t signatureOf(const HeaderBytes &bytes)
{
    return loadBigEndian<std::uint16_t>(bytes.data());
}

bool isVolume(const HeaderBytes &bytes)
{
    return signatureOf(bytes) == HfsPlusVolumeSignature || signatureOf(bytes) == HfsPlusCaseSensitiveSignature;
}

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

/// What lies in a part of the image: a volume, or a wrapper with one, or neither.
std::optional<Candidate> candidateIn(const DiscImageSource &source, std::uint64_t offset, std::uint64_t length)
{
    HeaderBytes bytes;
    if (!source.contains(offset, hfsPlusHeaderDistance + bytes.size())
        || source.read(offset + hfsPlusHeaderDistance, bytes.data(), bytes.size()))
        return std::nullopt;
    if (isVolume(bytes))
        return Candidate{offset, length, false};
    if (signatureOf(bytes) != HfsPlusWrapperSignature
        || loadBigEndian<std::uint16_t>(&bytes[Wrapper::embeddedSignature]) != HfsPlusVolumeSignature)
        return std::nullopt;
    const std::uint64_t unit = loadBigEndian<std::uint32_t>(&bytes[Wrapper::unitSize]);
    const std::uint64_t firstSector = loadBigEndian<std::uint16_t>(&bytes[Wrapper::firstSector]);
    const std::uint64_t firstUnit = loadBigEndian<std::uint16_t>(&bytes[Wrapper::embeddedStart]);
    const std::uint64_t units = loadBigEndian<std::uint16_t>(&bytes[Wrapper::embeddedCount]);
    return Candidate{offset + firstSector * 512 + firstUnit * unit, units * unit, true};
}

NSError readHeader(const DiscImageSource &source, const Candidate &candidate, HfsPlusHeader *header)
{
    const std::uint64_t offset = candidate.offset + hfsPlusHeaderDistance;
    if (NSError error = source.read(offset, header->bytes.data(), header->bytes.size()))
        return error;
    const std::uint8_t *const from = header->bytes.data();
    if (!isVolume(header->bytes))
        return damaged(offset, QStringLiteral("A wrapper says that an HFS+ volume is here, but there is none"));
    header->isHfsx = signatureOf(header->bytes) == HfsPlusCaseSensitiveSignature;
    header->hasJournal = (loadBigEndian<std::uint32_t>(from + Field::attributes) & journalAttribute) != 0;
    header->modified = loadBigEndian<std::uint32_t>(from + Field::modificationDate);
    header->place = {candidate.offset, loadBigEndian<std::uint32_t>(from + Field::blockSize),
                     loadBigEndian<std::uint32_t>(from + Field::blockCount)};
    header->containerLength = candidate.length;
    const std::uint32_t blockSize = header->place.blockSize;
    if (blockSize < smallestBlock || (blockSize & (blockSize - 1)) != 0 || header->place.blockCount == 0)
        return damaged(offset, QStringLiteral("The HFS+ volume has impossible blocks"));
    return {};
}

} // namespace

std::uint64_t HfsPlusHeader::offset() const
{
    return place.offset + hfsPlusHeaderDistance;
}

std::optional<std::uint8_t> HfsPlusHeader::treesOfImage() const
{
    const std::uint8_t *const record = &bytes[HfsPlusHeaderField::reservedFinderInfo];
    const bool isWhole = record[0] == 'T' && record[1] == 'e' && std::uint8_t(record[2] ^ record[3]) == 0xFF;
    return isWhole ? std::optional(record[2]) : std::nullopt;
}

std::optional<HfsPlusHeader> findHfsPlusHeader(const DiscImageSource &source, NSError *error)
{
    *error = {};
    std::vector<std::optional<Candidate>> candidates{candidateIn(source, 0, source.length())};
    for (const DiscImagePartition &partition : source.partitions()) {
        if (isHfsPlusPartition(partition))
            candidates.push_back(candidateIn(source, partition.offset, partition.length));
    }
    for (const std::optional<Candidate> &candidate : candidates) {
        if (!candidate)
            continue;
        HfsPlusHeader header;
        NSError failure = readHeader(source, *candidate, &header);
        if (!failure)
            return header;
        if (!*error)
            *error = std::move(failure);
    }
    return std::nullopt;
}

NSError checkHfsPlusHeaderCopy(const DiscImageSource &source, const HfsPlusHeader &header)
{
    // A volume need not fill its partition to the last block; the copy is at the end of either.
    const std::uint64_t volumeLength = std::uint64_t{header.place.blockCount} * header.place.blockSize;
    NSError error;
    for (const std::uint64_t length : {volumeLength, header.containerLength}) {
        if (length < 2 * hfsPlusHeaderDistance)
            continue;
        const std::uint64_t offset = header.place.offset + length - hfsPlusHeaderDistance;
        HeaderBytes copy;
        NSError failure = source.read(offset, copy.data(), copy.size());
        const auto isSame = [&](std::size_t from, std::size_t count) {
            return std::equal(copy.begin() + std::ptrdiff_t(from), copy.begin() + std::ptrdiff_t(from + count),
                              header.bytes.begin() + std::ptrdiff_t(from));
        };
        if (!failure && isSame(0, Field::attributes) && isSame(Field::blockSize, Field::freeBlocks - Field::blockSize)
            && isSame(Field::allocationFile, copy.size() - Field::allocationFile))
            return {};
        if (!failure)
            failure = damaged(offset, QStringLiteral("The copy of the HFS+ volume header differs"));
        if (!error)
            error = std::move(failure);
    }
    return error;
}

} // namespace Tessaron
