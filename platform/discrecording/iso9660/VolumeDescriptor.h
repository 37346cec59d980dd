#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/image/ContentsRecord.h"
#include "platform/discrecording/iso9660/DirectoryRecords.h"

#include <cstdint>
#include <span>
#include <string>

namespace Tessaron
{

class DRFolder;

/// What a volume says of itself, as UTF-8. Texts are cut and mended for the character set of each descriptor.
struct VolumeTexts {
    std::string systemIdentifier;
    std::string volumeSet;
    std::string publisher;
    std::string dataPreparer;
    std::string application;
};

/// Takes the texts from the properties of a root folder; the application is this system when none is set.
[[nodiscard]] VolumeTexts volumeTextsOf(const DRFolder &root);

/// What a volume descriptor points to.
struct IsoVolumeFacts {
    std::uint32_t imageBlocks = 0;
    std::uint32_t pathTableBytes = 0;
    std::uint32_t littleEndianPathTable = 0; ///< its block
    std::uint32_t bigEndianPathTable = 0;
    HierarchyPlaces places;
    ImageFacts image;
};

/// Fills one zeroed block with the primary volume descriptor (ECMA-119 8.4) of an ISO 9660 hierarchy or the
/// supplementary one (8.5) of a Joliet hierarchy.
void storeVolumeDescriptor(std::span<std::uint8_t> block, const DirectoryHierarchy &hierarchy, const VolumeTexts &texts,
                           const IsoVolumeFacts &facts);

/// Fills one zeroed block with the terminator of the volume descriptors (8.3).
void storeVolumeDescriptorSetTerminator(std::span<std::uint8_t> block);

} // namespace Tessaron
