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

void storeTerminator(std::span<std::uint8_t> block, std::uint32_t at)
{
    storeUdfTag(block.first(descriptorSize), UdfTag::Terminating, at);
}

/// ECMA-167 3/10.1. The tags of the sequence's descriptors are written by storeSequenceBlock().
void storePrimary(std::span<std::uint8_t> block, const UdfVolumeFacts &facts)
{
    storeUdfText(block.subspan(24, 32), facts.volumeName);
    storeLittleEndian<std::uint16_t>(&block[56], 1); // volume of its set
    storeLittleEndian<std::uint16_t>(&block[58], 1); // volumes in the set
    storeLittleEndian<std::uint16_t>(&block[60], 2); // interchange level: one volume
    storeLittleEndian<std::uint16_t>(&block[62], 3); // and what it may become (UDF 2.2.2.2)
    storeLittleEndian<std::uint32_t>(&block[64], 1); // character sets: CS0
    storeLittleEndian<std::uint32_t>(&block[68], 1);
    storeUdfText(block.subspan(72, 128), facts.volumeSet);
    storeUdfCharacterSet(&block[200]);
    storeUdfCharacterSet(&block[264]);
    storeUdfImplementation(&block[344]); // application
    storeUdfTimestamp(&block[376], facts.time);
    storeUdfImplementation(&block[388]);
}

/// ECMA-167 3/10.4 with UDF 2.2.7: the logical volume once more, in words.
void storeImplementationUse(std::span<std::uint8_t> block, const UdfVolumeFacts &facts)
{
    storeUdfEntityIdentifier(&block[20], "*UDF LV Info", UdfIdentifierSuffix::Udf);
    storeUdfCharacterSet(&block[52]);
    storeUdfText(block.subspan(116, 128), facts.volumeName);
    storeUdfImplementation(&block[352]);
}

/// ECMA-167 3/10.5.
void storePartition(std::span<std::uint8_t> block, const UdfVolumeFacts &facts)
{
    constexpr std::uint32_t readOnly = 1;
    storeLittleEndian<std::uint16_t>(&block[20], 1); // has room
    storeLittleEndian<std::uint16_t>(&block[22], 0); // its number
    storeUdfEntityIdentifier(&block[24], "+NSR02", UdfIdentifierSuffix::None);
    storeLittleEndian<std::uint32_t>(&block[184], readOnly);
    storeLittleEndian<std::uint32_t>(&block[188], facts.onDisc(UdfVolumeLayout::partition));
    storeLittleEndian<std::uint32_t>(&block[192], facts.partitionBlocks());
    storeUdfImplementation(&block[196]);
}

constexpr std::size_t partitionMapSize = 6;

/// ECMA-167 3/10.6.
void storeLogicalVolume(std::span<std::uint8_t> block, const UdfVolumeFacts &facts)
{
    storeUdfCharacterSet(&block[20]);
    storeUdfText(block.subspan(84, 128), facts.volumeName);
    storeLittleEndian<std::uint32_t>(&block[212], logicalBlockSize);
    storeUdfEntityIdentifier(&block[216], "*OSTA UDF Compliant", UdfIdentifierSuffix::Domain);
    storeUdfLongDescriptor(&block[248], udfFileSetBlocks * logicalBlockSize, facts.fileSet);
    storeLittleEndian<std::uint32_t>(&block[264], partitionMapSize);
    storeLittleEndian<std::uint32_t>(&block[268], 1); // partition maps
    storeUdfImplementation(&block[272]);
    storeUdfVolumeExtent(&block[432], UdfVolumeLayout::integrityBlocks * logicalBlockSize,
                         facts.onDisc(UdfVolumeLayout::integritySequence));
    block[440] = 1; // type of the map: a partition as it is
    block[441] = partitionMapSize;
    storeLittleEndian<std::uint16_t>(&block[442], 1); // volume of the set; its partition 0
}

/// A block of one of the two sequences (ECMA-167 3/8.4.2); `at` is where it lies on the disc, `index` which it is.
void storeSequenceBlock(std::span<std::uint8_t> block, std::uint32_t index, std::uint32_t at,
                        const UdfVolumeFacts &facts)
{
    storeLittleEndian<std::uint32_t>(&block[16], index); // of these descriptors; the terminator has none
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
        storeUdfTag(block.first(440 + partitionMapSize), UdfTag::LogicalVolume, at);
        break;
    case 4:
        // ECMA-167 3/10.8, of no extents: a disc that is read only has nothing to give away.
        storeUdfTag(block.first(24), UdfTag::UnallocatedSpace, at);
        break;
    default:
        storeLittleEndian<std::uint32_t>(&block[16], 0);
        if (index == 5)
            storeTerminator(block, at);
        break;
    }
}

/// ECMA-167 3/10.10 with UDF 2.2.6. Some systems refuse big files when the sizes are not exact.
void storeIntegrity(std::span<std::uint8_t> block, std::uint32_t at, const UdfVolumeFacts &facts)
{
    constexpr std::uint32_t implementationUseSize = 46;
    storeUdfTimestamp(&block[16], facts.time);
    storeLittleEndian<std::uint32_t>(&block[28], 1); // closed
    storeLittleEndian<std::uint64_t>(&block[40], facts.nextUniqueId);
    storeLittleEndian<std::uint32_t>(&block[72], 1); // partitions
    storeLittleEndian<std::uint32_t>(&block[76], implementationUseSize);
    storeLittleEndian<std::uint32_t>(&block[80], 0); // free blocks
    storeLittleEndian<std::uint32_t>(&block[84], facts.partitionBlocks());
    storeUdfImplementation(&block[88]);
    storeLittleEndian<std::uint32_t>(&block[120], facts.fileCount);
    storeLittleEndian<std::uint32_t>(&block[124], facts.folderCount);
    storeLittleEndian<std::uint16_t>(&block[128], udfRevision); // to be read by
    storeLittleEndian<std::uint16_t>(&block[130], udfRevision); // to be written by, at least
    storeLittleEndian<std::uint16_t>(&block[132], udfRevision); // and at most
    storeUdfTag(block.first(88 + implementationUseSize), UdfTag::LogicalVolumeIntegrity, at);
}

/// ECMA-167 3/10.2; in the first 512 bytes of the block.
void storeAnchor(std::span<std::uint8_t> block, std::uint32_t at, const UdfVolumeFacts &facts)
{
    storeUdfVolumeExtent(&block[16], sequenceBytes, facts.onDisc(UdfVolumeLayout::mainSequence));
    storeUdfVolumeExtent(&block[24], sequenceBytes, facts.onDisc(facts.reserveSequence()));
    storeUdfTag(block.first(descriptorSize), UdfTag::AnchorVolumePointer, at);
}

} // namespace

void storeUdfRecognition(std::span<std::uint8_t> block, std::uint32_t index)
{
    constexpr std::string_view identifiers[udfRecognitionCount] = {"BEA01", "NSR02", "TEA01"};
    std::copy(identifiers[index].begin(), identifiers[index].end(), block.begin() + 1);
    block[6] = 1; // version
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
    storeUdfTimestamp(&block[16], facts.time);
    storeLittleEndian<std::uint16_t>(&block[28], 3); // interchange level, and its maximum (UDF 2.3.2)
    storeLittleEndian<std::uint16_t>(&block[30], 3);
    storeLittleEndian<std::uint32_t>(&block[32], 1); // character sets: CS0
    storeLittleEndian<std::uint32_t>(&block[36], 1);
    storeUdfCharacterSet(&block[48]);
    storeUdfText(block.subspan(112, 128), facts.volumeName);
    storeUdfCharacterSet(&block[240]);
    storeUdfText(block.subspan(304, 32), facts.volumeName);
    storeUdfLongDescriptor(&block[400], logicalBlockSize, facts.rootIcb);
    storeUdfEntityIdentifier(&block[416], "*OSTA UDF Compliant", UdfIdentifierSuffix::Domain);
    storeUdfTag(block.first(descriptorSize), UdfTag::FileSet, facts.fileSet);
}

} // namespace Tessaron
