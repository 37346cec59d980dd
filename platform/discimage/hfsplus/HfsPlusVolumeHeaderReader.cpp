#include "platform/discimage/hfsplus/HfsPlusVolumeHeaderReader.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// Of the header, and of a wrapper's, from the first byte of the volume or partition; the copy from its end.
constexpr std::uint64_t headerDistance = 1024;
constexpr std::uint16_t wrapperSignature = 0x4244; // "BD"
constexpr std::uint16_t volumeSignature = 0x482B; // "H+"
constexpr std::uint16_t caseSensitiveSignature = 0x4858; // "HX"
constexpr std::uint32_t smallestBlock = 512;
constexpr std::uint32_t journalAttribute = 1u << 13;

// Of a wrapper ("HFS Wrapper").
constexpr std::size_t wrapperUnitField = 20;
constexpr std::size_t wrapperFirstSectorField = 28;
constexpr std::size_t wrapperEmbeddedField = 124; ///< signature, first unit and number of units of the volume inside
// Of the header.
constexpr std::size_t attributesField = 4;
constexpr std::size_t modifiedField = 20;
constexpr std::size_t blockSizeField = 40;
constexpr std::size_t blockCountField = 44;

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
    return signatureOf(bytes) == volumeSignature || signatureOf(bytes) == caseSensitiveSignature;
}

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

/// What lies in a part of the image: a volume, or a wrapper with one, or neither.
std::optional<Candidate> candidateIn(const DiscImageSource &source, std::uint64_t offset, std::uint64_t length)
{
    HeaderBytes bytes;
    if (!source.contains(offset, headerDistance + bytes.size())
        || source.read(offset + headerDistance, bytes.data(), bytes.size()))
        return std::nullopt;
    if (isVolume(bytes))
        return Candidate{offset, length, false};
    if (signatureOf(bytes) != wrapperSignature
        || loadBigEndian<std::uint16_t>(&bytes[wrapperEmbeddedField]) != volumeSignature)
        return std::nullopt;
    const std::uint64_t unit = loadBigEndian<std::uint32_t>(&bytes[wrapperUnitField]);
    const std::uint64_t firstSector = loadBigEndian<std::uint16_t>(&bytes[wrapperFirstSectorField]);
    const std::uint64_t firstUnit = loadBigEndian<std::uint16_t>(&bytes[wrapperEmbeddedField + 2]);
    const std::uint64_t units = loadBigEndian<std::uint16_t>(&bytes[wrapperEmbeddedField + 4]);
    return Candidate{offset + firstSector * 512 + firstUnit * unit, units * unit, true};
}

NSError readHeader(const DiscImageSource &source, const Candidate &candidate, HfsPlusHeader *header)
{
    const std::uint64_t offset = candidate.offset + headerDistance;
    if (NSError error = source.read(offset, header->bytes.data(), header->bytes.size()))
        return error;
    const std::uint8_t *const from = header->bytes.data();
    if (!isVolume(header->bytes))
        return damaged(offset, QStringLiteral("A wrapper says that an HFS+ volume is here, but there is none"));
    header->isHfsx = signatureOf(header->bytes) == caseSensitiveSignature;
    header->hasJournal = (loadBigEndian<std::uint32_t>(from + attributesField) & journalAttribute) != 0;
    header->modified = loadBigEndian<std::uint32_t>(from + modifiedField);
    header->place = {candidate.offset, loadBigEndian<std::uint32_t>(from + blockSizeField),
                     loadBigEndian<std::uint32_t>(from + blockCountField)};
    header->containerLength = candidate.length;
    const std::uint32_t blockSize = header->place.blockSize;
    if (blockSize < smallestBlock || (blockSize & (blockSize - 1)) != 0 || header->place.blockCount == 0)
        return damaged(offset, QStringLiteral("The HFS+ volume has impossible blocks"));
    return {};
}

} // namespace

std::uint64_t HfsPlusHeader::offset() const
{
    return place.offset + headerDistance;
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
        if (length < 2 * headerDistance)
            continue;
        const std::uint64_t offset = header.place.offset + length - headerDistance;
        HeaderBytes copy;
        NSError failure = source.read(offset, copy.data(), copy.size());
        const auto isSame = [&](std::size_t from, std::size_t count) {
            return std::equal(copy.begin() + std::ptrdiff_t(from), copy.begin() + std::ptrdiff_t(from + count),
                              header.bytes.begin() + std::ptrdiff_t(from));
        };
        constexpr std::size_t versionEnd = 4;
        constexpr std::size_t blocksStart = 40;
        constexpr std::size_t filesStart = 112;
        if (!failure && isSame(0, versionEnd) && isSame(blocksStart, 8) && isSame(filesStart, copy.size() - filesStart))
            return {};
        if (!failure)
            failure = damaged(offset, QStringLiteral("The copy of the HFS+ volume header differs"));
        if (!error)
            error = std::move(failure);
    }
    return error;
}

} // namespace Tessaron
