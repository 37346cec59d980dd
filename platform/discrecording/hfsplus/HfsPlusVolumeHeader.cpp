#include "platform/discrecording/hfsplus/HfsPlusVolumeHeader.h"

#include "platform/discrecording/hfsplus/HfsPlusDates.h"
#include "platform/discrecording/hfsplus/HfsPlusForkData.h"
#include "platform/discrecording/image/BlockImage.h"
#include "platform/foundation/ByteOrder.h"

namespace Tessaron
{

namespace
{

// Fields of a volume header, counted from 0.
namespace Field
{
constexpr std::size_t signature = 0;
constexpr std::size_t version = 2;
constexpr std::size_t attributes = 4;
constexpr std::size_t lastMountedBy = 8;
constexpr std::size_t creationDate = 16;
constexpr std::size_t modificationDate = 20;
constexpr std::size_t checkDate = 28;
constexpr std::size_t fileCount = 32;
constexpr std::size_t folderCount = 36;
constexpr std::size_t blockSize = 40;
constexpr std::size_t totalBlocks = 44;
constexpr std::size_t freeBlocks = 48;
constexpr std::size_t nextAllocation = 52;
constexpr std::size_t resourceClumpSize = 56;
constexpr std::size_t dataClumpSize = 60;
constexpr std::size_t nextCatalogId = 64;
constexpr std::size_t writeCount = 68;
constexpr std::size_t encodings = 72;
constexpr std::size_t contents = 96; // the fifth of eight numbers for the Finder, reserved
constexpr std::size_t volumeId = 104; // the last of eight numbers for the Finder; the others name folders to start from
constexpr std::size_t allocationFile = 112;
constexpr std::size_t extentsFile = 192;
constexpr std::size_t catalogFile = 272;
} // namespace Field

constexpr std::uint16_t signatureOfHfsPlus = 0x482B; // "H+"
constexpr std::uint16_t versionOfHfsPlus = 4;
constexpr std::uint32_t thisSystem = 0x54657373; // "Tess"

enum Attribute : std::uint32_t {
    Unmounted = 1u << 8, ///< it was written to its end
    SparedBlocks = 1u << 9,
    SoftwareLock = 1u << 15, ///< not to be written to: that would damage the other filesystems of the disc
};

constexpr std::uint64_t romanEncoding = 1;

void storeSpecialFile(std::uint8_t *to, const HfsPlusSpecialFile &file)
{
    storeHfsPlusForkData(to, file.blockCount * logicalBlockSize, file.firstBlock, file.blockCount, file.clumpSize);
}

} // namespace

void storeHfsPlusVolumeHeader(std::uint8_t *to, const HfsPlusVolumeFacts &facts)
{
    storeBigEndian<std::uint16_t>(to + Field::signature, signatureOfHfsPlus);
    storeBigEndian<std::uint16_t>(to + Field::version, versionOfHfsPlus);
    storeBigEndian<std::uint32_t>(to + Field::attributes,
                                  Unmounted | SoftwareLock | (facts.hasSparedBlocks ? SparedBlocks : 0u));
    storeBigEndian<std::uint32_t>(to + Field::lastMountedBy, thisSystem);
    // The format has the date of creation in local time. A disc does not say in which zone, so it is UTC like the
    // others.
    const std::uint32_t date = hfsPlusDate(facts.time);
    storeBigEndian<std::uint32_t>(to + Field::creationDate, date);
    storeBigEndian<std::uint32_t>(to + Field::modificationDate, date);
    storeBigEndian<std::uint32_t>(to + Field::checkDate, date);
    storeBigEndian<std::uint32_t>(to + Field::fileCount, facts.fileCount);
    storeBigEndian<std::uint32_t>(to + Field::folderCount, facts.folderCount);
    storeBigEndian<std::uint32_t>(to + Field::blockSize, logicalBlockSize);
    storeBigEndian<std::uint32_t>(to + Field::totalBlocks, facts.totalBlocks);
    storeBigEndian<std::uint32_t>(to + Field::freeBlocks, facts.freeBlocks);
    storeBigEndian<std::uint32_t>(to + Field::nextAllocation, facts.nextFreeBlock);
    storeBigEndian<std::uint32_t>(to + Field::resourceClumpSize, logicalBlockSize);
    storeBigEndian<std::uint32_t>(to + Field::dataClumpSize, logicalBlockSize);
    storeBigEndian<std::uint32_t>(to + Field::nextCatalogId, facts.nextId);
    storeBigEndian<std::uint32_t>(to + Field::writeCount, 1);
    storeBigEndian<std::uint64_t>(to + Field::encodings, romanEncoding);
    storeBigEndian<std::uint32_t>(to + Field::contents, facts.contents);
    storeBigEndian<std::uint64_t>(to + Field::volumeId, facts.volumeId);
    storeSpecialFile(to + Field::allocationFile, facts.allocationFile);
    storeSpecialFile(to + Field::extentsFile, facts.extentsFile);
    storeSpecialFile(to + Field::catalogFile, facts.catalogFile);
}

} // namespace Tessaron
