#include "platform/discrecording/udf/UdfVolume.h"

#include "platform/discrecording/image/BlockImage.h"
#include "platform/discrecording/udf/UdfFields.h"
#include "platform/discrecording/udf/UdfTag.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>
#include <string_view>

namespace Tessaron
{

namespace
{

constexpr std::size_t descriptorSize = 512;
constexpr std::uint32_t sequenceBytes = UdfVolumeLayout::sequenceBlocks * logicalBlockSize;

// Fields of the descriptors, counted from 0. Those of a sequence begin, behind the tag, with their number in it.
constexpr std::size_t sequenceNumber = udfTagSize;
/// Volume identifiers are texts of this size, except the two short ones.
constexpr std::size_t textSize = 128;
constexpr std::size_t shortTextSize = 32;

// ECMA-167 2/9.1.
namespace Recognition
{
constexpr std::size_t identifier = 1;
constexpr std::size_t version = 6;
} // namespace Recognition

// ECMA-167 3/10.1.
namespace Primary
{
constexpr std::size_t volumeIdentifier = 24;
constexpr std::size_t numberInSet = 56;
constexpr std::size_t setSize = 58;
constexpr std::size_t interchangeLevel = 60;
constexpr std::size_t greatestInterchangeLevel = 62;
constexpr std::size_t characterSets = 64;
constexpr std::size_t greatestCharacterSets = 68;
constexpr std::size_t setIdentifier = 72;
constexpr std::size_t descriptorCharacterSet = 200;
constexpr std::size_t explanatoryCharacterSet = 264;
constexpr std::size_t application = 344;
constexpr std::size_t recordingTime = 376;
constexpr std::size_t implementation = 388;
} // namespace Primary

// ECMA-167 3/10.4 with UDF 2.2.7.
namespace ImplementationUse
{
constexpr std::size_t identifier = 20;
constexpr std::size_t characterSet = 52;
constexpr std::size_t volumeIdentifier = 116;
constexpr std::size_t implementation = 352;
} // namespace ImplementationUse

// ECMA-167 3/10.5.
namespace Partition
{
constexpr std::size_t flags = 20;
constexpr std::size_t number = 22;
constexpr std::size_t contents = 24;
constexpr std::size_t accessType = 184;
constexpr std::size_t start = 188;
constexpr std::size_t length = 192;
constexpr std::size_t implementation = 196;
} // namespace Partition

// ECMA-167 3/10.6, with one partition map of type 1 (3/10.7.2).
namespace LogicalVolume
{
constexpr std::size_t characterSet = 20;
constexpr std::size_t name = 84;
constexpr std::size_t blockSize = 212;
constexpr std::size_t domain = 216;
constexpr std::size_t fileSet = 248;
constexpr std::size_t mapTableLength = 264;
constexpr std::size_t mapCount = 268;
constexpr std::size_t implementation = 272;
constexpr std::size_t implementationUse = 304;
constexpr std::size_t integrity = 432;
constexpr std::size_t mapType = 440;
constexpr std::size_t mapLength = 441;
constexpr std::size_t mapVolume = 442;
constexpr std::size_t mapPartition = 444;
constexpr std::size_t size = 446;
} // namespace LogicalVolume

// ECMA-167 3/10.8.
namespace UnallocatedSpace
{
constexpr std::size_t size = 24; // without extents
} // namespace UnallocatedSpace

// ECMA-167 3/10.10 with UDF 2.2.6, for one partition.
namespace Integrity
{
constexpr std::size_t recordingTime = 16;
constexpr std::size_t type = 28;
constexpr std::size_t nextUniqueId = 40;
constexpr std::size_t partitionCount = 72;
constexpr std::size_t useLength = 76;
constexpr std::size_t freeBlocks = 80;
constexpr std::size_t partitionBlocks = 84;
constexpr std::size_t implementation = 88;
constexpr std::size_t fileCount = 120;
constexpr std::size_t folderCount = 124;
constexpr std::size_t leastRevisionToRead = 128;
constexpr std::size_t leastRevisionToWrite = 130;
constexpr std::size_t greatestRevisionToWrite = 132;
constexpr std::size_t size = 134;
} // namespace Integrity

// ECMA-167 3/10.2.
namespace Anchor
{
constexpr std::size_t mainSequence = 16;
constexpr std::size_t reserveSequence = 24;
} // namespace Anchor

// ECMA-167 4/14.1.
namespace FileSet
{
constexpr std::size_t recordingTime = 16;
constexpr std::size_t interchangeLevel = 28;
constexpr std::size_t greatestInterchangeLevel = 30;
constexpr std::size_t characterSets = 32;
constexpr std::size_t greatestCharacterSets = 36;
constexpr std::size_t volumeCharacterSet = 48;
constexpr std::size_t volumeName = 112;
constexpr std::size_t characterSet = 240;
constexpr std::size_t name = 304;
constexpr std::size_t rootIcb = 400;
constexpr std::size_t domain = 416;
} // namespace FileSet

constexpr std::uint32_t onlyCs0 = 1; ///< a list of character sets, a bit for each

void storeTerminator(std::span<std::uint8_t> block, std::uint32_t at)
{
    storeUdfTag(block.first(descriptorSize), UdfTag::Terminating, at);
}

/// The tags of the sequence's descriptors are written by storeSequenceBlock().
void storePrimary(std::span<std::uint8_t> block, const UdfVolumeFacts &facts)
{
    constexpr std::uint16_t oneVolume = 2; // interchange levels (UDF 2.2.2.2 and 2.2.2.3)
    constexpr std::uint16_t severalVolumes = 3;
    storeUdfText(block.subspan(Primary::volumeIdentifier, shortTextSize), facts.volumeName);
    storeLittleEndian<std::uint16_t>(&block[Primary::numberInSet], 1);
    storeLittleEndian<std::uint16_t>(&block[Primary::setSize], 1);
    storeLittleEndian<std::uint16_t>(&block[Primary::interchangeLevel], oneVolume);
    storeLittleEndian<std::uint16_t>(&block[Primary::greatestInterchangeLevel], severalVolumes);
    storeLittleEndian<std::uint32_t>(&block[Primary::characterSets], onlyCs0);
    storeLittleEndian<std::uint32_t>(&block[Primary::greatestCharacterSets], onlyCs0);
    storeUdfText(block.subspan(Primary::setIdentifier, textSize), facts.volumeSet);
    storeUdfCharacterSet(&block[Primary::descriptorCharacterSet]);
    storeUdfCharacterSet(&block[Primary::explanatoryCharacterSet]);
    storeUdfImplementation(&block[Primary::application]);
    storeUdfTimestamp(&block[Primary::recordingTime], facts.time);
    storeUdfImplementation(&block[Primary::implementation]);
}

/// The logical volume once more, in words.
void storeImplementationUse(std::span<std::uint8_t> block, const UdfVolumeFacts &facts)
{
    storeUdfEntityIdentifier(&block[ImplementationUse::identifier], "*UDF LV Info", UdfIdentifierSuffix::Udf);
    storeUdfCharacterSet(&block[ImplementationUse::characterSet]);
    storeUdfText(block.subspan(ImplementationUse::volumeIdentifier, textSize), facts.volumeName);
    storeUdfImplementation(&block[ImplementationUse::implementation]);
}

void storePartition(std::span<std::uint8_t> block, const UdfVolumeFacts &facts)
{
    constexpr std::uint16_t isAllocated = 1;
    constexpr std::uint32_t readOnly = 1;
    storeLittleEndian<std::uint16_t>(&block[Partition::flags], isAllocated);
    storeLittleEndian<std::uint16_t>(&block[Partition::number], 0);
    storeUdfEntityIdentifier(&block[Partition::contents], "+NSR02", UdfIdentifierSuffix::None);
    storeLittleEndian<std::uint32_t>(&block[Partition::accessType], readOnly);
    storeLittleEndian<std::uint32_t>(&block[Partition::start], facts.onDisc(UdfVolumeLayout::partition));
    storeLittleEndian<std::uint32_t>(&block[Partition::length], facts.partitionBlocks());
    storeUdfImplementation(&block[Partition::implementation]);
}

void storeLogicalVolume(std::span<std::uint8_t> block, const UdfVolumeFacts &facts)
{
    constexpr std::uint32_t mapSize = LogicalVolume::size - LogicalVolume::mapType;
    constexpr std::uint8_t plainPartition = 1;
    storeUdfCharacterSet(&block[LogicalVolume::characterSet]);
    storeUdfText(block.subspan(LogicalVolume::name, textSize), facts.volumeName);
    storeLittleEndian<std::uint32_t>(&block[LogicalVolume::blockSize], logicalBlockSize);
    storeUdfEntityIdentifier(&block[LogicalVolume::domain], "*OSTA UDF Compliant", UdfIdentifierSuffix::Domain);
    storeUdfLongDescriptor(&block[LogicalVolume::fileSet], udfFileSetBlocks * logicalBlockSize, facts.fileSet);
    storeLittleEndian<std::uint32_t>(&block[LogicalVolume::mapTableLength], mapSize);
    storeLittleEndian<std::uint32_t>(&block[LogicalVolume::mapCount], 1);
    storeUdfImplementation(&block[LogicalVolume::implementation]);
    storeUdfVolumeExtent(&block[LogicalVolume::integrity], UdfVolumeLayout::integrityBlocks * logicalBlockSize,
                         facts.onDisc(UdfVolumeLayout::integritySequence));
    const auto record = contentsRecord(facts.image);
    std::copy(record.begin(), record.end(), block.begin() + LogicalVolume::implementationUse);
    block[LogicalVolume::mapType] = plainPartition;
    block[LogicalVolume::mapLength] = mapSize;
    storeLittleEndian<std::uint16_t>(&block[LogicalVolume::mapVolume], 1);
    storeLittleEndian<std::uint16_t>(&block[LogicalVolume::mapPartition], 0);
}

/// A block of one of the two sequences (ECMA-167 3/8.4.2); `at` is where it lies on the disc, `index` which it is.
void storeSequenceBlock(std::span<std::uint8_t> block, std::uint32_t index, std::uint32_t at,
                        const UdfVolumeFacts &facts)
{
    storeLittleEndian<std::uint32_t>(&block[sequenceNumber], index); // of these descriptors; the terminator has none
    switch (index) {
    case 0:
        storePrimary(block, facts);
        storeUdfTag(block.first(descriptorSize), UdfTag::PrimaryVolume, at);
        break;
    case 1:
        storeImplementationUse(block, facts);
        storeUdfTag(block.first(descriptorSize), UdfTag::ImplementationUseVolume, at);
        break;
    case 2:
        storePartition(block, facts);
        storeUdfTag(block.first(descriptorSize), UdfTag::Partition, at);
        break;
    case 3:
        storeLogicalVolume(block, facts);
        storeUdfTag(block.first(LogicalVolume::size), UdfTag::LogicalVolume, at);
        break;
    case 4:
        // It lists no extents: a disc that is read only has nothing to give away.
        storeUdfTag(block.first(UnallocatedSpace::size), UdfTag::UnallocatedSpace, at);
        break;
    default:
        storeLittleEndian<std::uint32_t>(&block[sequenceNumber], 0);
        if (index == 5)
            storeTerminator(block, at);
        break;
    }
}

/// Some systems refuse big files when the sizes are not exact.
void storeIntegrity(std::span<std::uint8_t> block, std::uint32_t at, const UdfVolumeFacts &facts)
{
    constexpr std::uint32_t closed = 1;
    storeUdfTimestamp(&block[Integrity::recordingTime], facts.time);
    storeLittleEndian<std::uint32_t>(&block[Integrity::type], closed);
    storeLittleEndian<std::uint64_t>(&block[Integrity::nextUniqueId], facts.nextUniqueId);
    storeLittleEndian<std::uint32_t>(&block[Integrity::partitionCount], 1);
    storeLittleEndian<std::uint32_t>(&block[Integrity::useLength], Integrity::size - Integrity::implementation);
    storeLittleEndian<std::uint32_t>(&block[Integrity::freeBlocks], 0);
    storeLittleEndian<std::uint32_t>(&block[Integrity::partitionBlocks], facts.partitionBlocks());
    storeUdfImplementation(&block[Integrity::implementation]);
    storeLittleEndian<std::uint32_t>(&block[Integrity::fileCount], facts.fileCount);
    storeLittleEndian<std::uint32_t>(&block[Integrity::folderCount], facts.folderCount);
    storeLittleEndian<std::uint16_t>(&block[Integrity::leastRevisionToRead], udfRevision);
    storeLittleEndian<std::uint16_t>(&block[Integrity::leastRevisionToWrite], udfRevision);
    storeLittleEndian<std::uint16_t>(&block[Integrity::greatestRevisionToWrite], udfRevision);
    storeUdfTag(block.first(Integrity::size), UdfTag::LogicalVolumeIntegrity, at);
}

/// In the first 512 bytes of the block.
void storeAnchor(std::span<std::uint8_t> block, std::uint32_t at, const UdfVolumeFacts &facts)
{
    storeUdfVolumeExtent(&block[Anchor::mainSequence], sequenceBytes, facts.onDisc(UdfVolumeLayout::mainSequence));
    storeUdfVolumeExtent(&block[Anchor::reserveSequence], sequenceBytes, facts.onDisc(facts.reserveSequence()));
    storeUdfTag(block.first(descriptorSize), UdfTag::AnchorVolumePointer, at);
}

} // namespace

void storeUdfRecognition(std::span<std::uint8_t> block, std::uint32_t index)
{
    constexpr std::string_view identifiers[udfRecognitionCount] = {"BEA01", "NSR02", "TEA01"};
    std::copy(identifiers[index].begin(), identifiers[index].end(), block.begin() + Recognition::identifier);
    block[Recognition::version] = 1;
}

void storeUdfVolumeBlock(std::span<std::uint8_t> block, std::uint32_t at, const UdfVolumeFacts &facts)
{
    using Layout = UdfVolumeLayout;
    const std::uint32_t onDisc = facts.onDisc(at);
    if (at >= Layout::mainSequence && at < Layout::mainSequence + Layout::sequenceBlocks)
        storeSequenceBlock(block, at - Layout::mainSequence, onDisc, facts);
    else if (at == Layout::integritySequence)
        storeIntegrity(block, onDisc, facts);
    else if (at == Layout::integritySequence + 1)
        storeTerminator(block, onDisc);
    else if (at == Layout::anchor)
        storeAnchor(block, onDisc, facts);
}

void storeUdfTailBlock(std::span<std::uint8_t> block, std::uint32_t index, const UdfVolumeFacts &facts)
{
    const std::uint32_t at = facts.onDisc(facts.reserveSequence() + index);
    if (index < UdfVolumeLayout::sequenceBlocks)
        storeSequenceBlock(block, index, at, facts);
    else
        storeAnchor(block, at, facts);
}

void storeUdfFileSetBlock(std::span<std::uint8_t> block, std::uint32_t index, const UdfVolumeFacts &facts)
{
    if (index == 1) {
        storeTerminator(block, facts.fileSet + 1);
        return;
    }
    constexpr std::uint16_t interchangeLevel = 3; // the only one (UDF 2.3.2.1)
    storeUdfTimestamp(&block[FileSet::recordingTime], facts.time);
    storeLittleEndian<std::uint16_t>(&block[FileSet::interchangeLevel], interchangeLevel);
    storeLittleEndian<std::uint16_t>(&block[FileSet::greatestInterchangeLevel], interchangeLevel);
    storeLittleEndian<std::uint32_t>(&block[FileSet::characterSets], onlyCs0);
    storeLittleEndian<std::uint32_t>(&block[FileSet::greatestCharacterSets], onlyCs0);
    storeUdfCharacterSet(&block[FileSet::volumeCharacterSet]);
    storeUdfText(block.subspan(FileSet::volumeName, textSize), facts.volumeName);
    storeUdfCharacterSet(&block[FileSet::characterSet]);
    storeUdfText(block.subspan(FileSet::name, shortTextSize), facts.volumeName);
    storeUdfLongDescriptor(&block[FileSet::rootIcb], logicalBlockSize, facts.rootIcb);
    storeUdfEntityIdentifier(&block[FileSet::domain], "*OSTA UDF Compliant", UdfIdentifierSuffix::Domain);
    storeUdfTag(block.first(descriptorSize), UdfTag::FileSet, facts.fileSet);
}

} // namespace Tessaron
