#pragma once

#include <cstddef>
#include <cstdint>

namespace Tessaron
{

// Where the fields of HFS+'s structures lie, in bytes from the start of their structure; titles are those of the HFS
// Plus Volume Format. The writer has a table of its own, so that a mistake in one of the two shows.

/// Bytes from the start of a volume or wrapper to its header, and from the copy of the header to the end.
inline constexpr std::uint64_t hfsPlusHeaderDistance = 1024;

/// The first number of a header.
enum HfsPlusSignature : std::uint16_t {
    HfsPlusWrapperSignature = 0x4244, ///< "BD"
    HfsPlusVolumeSignature = 0x482B, ///< "H+"
    HfsPlusCaseSensitiveSignature = 0x4858, ///< "HX"
};

/// The master directory block of a wrapper ("HFS Wrapper").
namespace HfsPlusWrapperField
{
inline constexpr std::size_t modificationDate = 6;
inline constexpr std::size_t dateSize = 4;
inline constexpr std::size_t filesInRoot = 12;
inline constexpr std::size_t unitCount = 18;
inline constexpr std::size_t unitSize = 20;
inline constexpr std::size_t clumpSize = 24;
inline constexpr std::size_t firstSector = 28; // of the units
inline constexpr std::size_t freeUnits = 34;
inline constexpr std::size_t writeCount = 70;
inline constexpr std::size_t foldersInRoot = 82;
inline constexpr std::size_t fileCount = 84;
inline constexpr std::size_t folderCount = 88;
inline constexpr std::size_t embeddedSignature = 124;
inline constexpr std::size_t embeddedStart = 126;
inline constexpr std::size_t embeddedCount = 128;
inline constexpr std::size_t embeddedEnd = 130;
inline constexpr std::size_t size = 162;
} // namespace HfsPlusWrapperField

/// "Volume Header".
namespace HfsPlusHeaderField
{
inline constexpr std::size_t version = 2;
inline constexpr std::size_t attributes = 4;
inline constexpr std::size_t dates = 16; // four of 4 bytes, from that of creation on
inline constexpr std::size_t datesSize = 16;
inline constexpr std::size_t modificationDate = 20;
inline constexpr std::size_t fileCount = 32;
inline constexpr std::size_t folderCount = 36;
inline constexpr std::size_t blockSize = 40;
inline constexpr std::size_t blockCount = 44;
inline constexpr std::size_t freeBlocks = 48;
inline constexpr std::size_t nextCatalogId = 64;
inline constexpr std::size_t writeCount = 68;
inline constexpr std::size_t reservedFinderInfo = 96; // the fifth of the eight numbers for the Finder
inline constexpr std::size_t allocationFile = 112;
inline constexpr std::size_t extentsFile = 192;
inline constexpr std::size_t catalogFile = 272;
inline constexpr std::size_t attributesFile = 352;
inline constexpr std::size_t startupFile = 432;
} // namespace HfsPlusHeaderField

/// "Fork Data Structure".
namespace HfsPlusForkDataField
{
inline constexpr std::size_t length = 0;
inline constexpr std::size_t blockCount = 12;
inline constexpr std::size_t extents = 16;
inline constexpr std::size_t size = 80;
} // namespace HfsPlusForkDataField

/// Records of extents, of a fork and of the extents file, have eight.
namespace HfsPlusExtentField
{
inline constexpr std::size_t start = 0;
inline constexpr std::size_t count = 4;
inline constexpr std::size_t size = 8;
inline constexpr std::size_t perRecord = 8;
inline constexpr std::size_t recordSize = perRecord * size;
} // namespace HfsPlusExtentField

/// The descriptor of a node ("Node Structure").
namespace HfsPlusNodeField
{
inline constexpr std::size_t next = 0;
inline constexpr std::size_t previous = 4;
inline constexpr std::size_t kind = 8;
inline constexpr std::size_t height = 9;
inline constexpr std::size_t recordCount = 10;
inline constexpr std::size_t reserved = 12;
inline constexpr std::size_t size = 14;
} // namespace HfsPlusNodeField

/// "Header Record".
namespace HfsPlusTreeHeaderField
{
inline constexpr std::size_t depth = 0;
inline constexpr std::size_t root = 2;
inline constexpr std::size_t leafRecords = 6;
inline constexpr std::size_t firstLeaf = 10;
inline constexpr std::size_t lastLeaf = 14;
inline constexpr std::size_t nodeSize = 18;
inline constexpr std::size_t longestKey = 20;
inline constexpr std::size_t nodeCount = 22;
inline constexpr std::size_t freeNodes = 26;
inline constexpr std::size_t type = 36;
inline constexpr std::size_t compareType = 37;
inline constexpr std::size_t attributes = 38;
inline constexpr std::size_t size = 106;
} // namespace HfsPlusTreeHeaderField

/// "Catalog File Key", behind its length.
namespace HfsPlusCatalogKeyField
{
inline constexpr std::size_t parentId = 0;
inline constexpr std::size_t nameLength = 4; // UTF-16 units
inline constexpr std::size_t name = 6;
} // namespace HfsPlusCatalogKeyField

/// "Extents Overflow File Key", behind its length.
namespace HfsPlusExtentsKeyField
{
inline constexpr std::size_t fork = 0;
inline constexpr std::size_t padding = 1;
inline constexpr std::size_t fileId = 2;
inline constexpr std::size_t firstBlock = 6;
inline constexpr std::size_t size = 10;
} // namespace HfsPlusExtentsKeyField

/// The kinds of records in the catalog, their first number.
enum HfsPlusRecordType : std::uint16_t {
    HfsPlusFolderRecord = 1,
    HfsPlusFileRecord = 2,
    HfsPlusFolderThreadRecord = 3,
    HfsPlusFileThreadRecord = 4,
};

/// "Catalog Thread Records".
namespace HfsPlusThreadField
{
inline constexpr std::size_t reserved = 2;
inline constexpr std::size_t parentId = 4;
inline constexpr std::size_t nameLength = 8; // UTF-16 units
inline constexpr std::size_t name = 10;
} // namespace HfsPlusThreadField

/// "Catalog Folder Records" and "Catalog File Records".
namespace HfsPlusItemField
{
inline constexpr std::size_t flags = 2;
inline constexpr std::size_t childCount = 4; // of a folder; reserved in a file
inline constexpr std::size_t id = 8;
inline constexpr std::size_t creationDate = 12;
inline constexpr std::size_t modificationDate = 16;
inline constexpr std::size_t mode = 42;
inline constexpr std::size_t special = 44;
inline constexpr std::size_t finderInfo = 48;
inline constexpr std::size_t typeAndCreatorSize = 8; // the first part of it, of a file
inline constexpr std::size_t folderSize = 88;
inline constexpr std::size_t dataFork = 88;
inline constexpr std::size_t resourceFork = 168;
inline constexpr std::size_t fileSize = 248;
} // namespace HfsPlusItemField

} // namespace Tessaron
