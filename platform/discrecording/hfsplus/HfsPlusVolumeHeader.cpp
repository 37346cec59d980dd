#include "platform/discrecording/hfsplus/HfsPlusVolumeHeader.h"

#include "platform/discrecording/hfsplus/HfsPlusDates.h"
#include "platform/discrecording/hfsplus/HfsPlusForkData.h"
#include "platform/discrecording/image/BlockImage.h"
#include "platform/foundation/ByteOrder.h"

namespace Tessaron
{

namespace
{

constexpr std::uint16_t signature = 0x482B; // "H+"
constexpr std::uint16_t version = 4;
constexpr std::uint32_t lastMountedBy = 0x54657373; // "Tess"

enum Attribute : std::uint32_t {
    Unmounted = 1u << 8, ///< nobody has left it half written
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
    storeBigEndian<std::uint16_t>(to, signature);
    storeBigEndian<std::uint16_t>(to + 2, version);
    storeBigEndian<std::uint32_t>(to + 4, Unmounted | SoftwareLock | (facts.hasSparedBlocks ? SparedBlocks : 0u));
    storeBigEndian<std::uint32_t>(to + 8, lastMountedBy);
    // Of the four dates the first is meant in local time; which one is nobody's to know, so it is UTC like the others.
    const std::uint32_t date = hfsPlusDate(facts.time);
    storeBigEndian<std::uint32_t>(to + 16, date); // created
    storeBigEndian<std::uint32_t>(to + 20, date); // modified
    storeBigEndian<std::uint32_t>(to + 28, date); // checked
    storeBigEndian<std::uint32_t>(to + 32, facts.fileCount);
    storeBigEndian<std::uint32_t>(to + 36, facts.folderCount);
    storeBigEndian<std::uint32_t>(to + 40, logicalBlockSize);
    storeBigEndian<std::uint32_t>(to + 44, facts.totalBlocks);
    storeBigEndian<std::uint32_t>(to + 48, facts.freeBlocks);
    storeBigEndian<std::uint32_t>(to + 52, facts.nextFreeBlock);
    storeBigEndian<std::uint32_t>(to + 56, logicalBlockSize); // clump sizes of both forks
    storeBigEndian<std::uint32_t>(to + 60, logicalBlockSize);
    storeBigEndian<std::uint32_t>(to + 64, facts.nextId);
    storeBigEndian<std::uint32_t>(to + 68, 1); // how often it was written
    storeBigEndian<std::uint64_t>(to + 72, romanEncoding);
    storeBigEndian<std::uint64_t>(to + 104,
                                  facts.volumeId); // behind the folders for starting a system, of which it has none
    storeSpecialFile(to + 112, facts.allocationFile);
    storeSpecialFile(to + 192, facts.extentsFile);
    storeSpecialFile(to + 272, facts.catalogFile);
}

} // namespace Tessaron
