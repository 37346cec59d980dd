#pragma once

#include "platform/coreservices/FSRef.h"

#include <cstdint>
#include <memory>

namespace Tessaron
{

/// What FSGetCatalogInfo() is to fetch.
enum FSCatalogInfoBitmap : std::uint32_t {
    kFSCatInfoNone = 0,
    kFSCatInfoNodeFlags = 1u << 0, ///< nodeFlags
    kFSCatInfoFinderInfo = 1u << 1, ///< finderInfo
    kFSCatInfoFinderXInfo = 1u << 2, ///< extFinderInfo
    kFSCatInfoDataSizes = 1u << 3, ///< dataLogicalSize, dataPhysicalSize
    kFSCatInfoRsrcSizes = 1u << 4, ///< rsrcLogicalSize, rsrcPhysicalSize
    kFSCatInfoDates = 1u << 5, ///< the four times
    kFSCatInfoPermissions = 1u << 6, ///< mode, userId, groupId, linkCount, deviceNumber
};

enum FSNodeFlags : std::uint16_t {
    kFSNodeIsDirectoryBit = 4,
    kFSNodeIsDirectoryMask = 1u << kFSNodeIsDirectoryBit,
};

/// Facts about a file; only the members asked for are filled. Sizes are bytes; "physical" is what is allocated on disk.
struct FSCatalogInfo {
    std::uint16_t nodeFlags = 0;
    std::uint64_t dataLogicalSize = 0;
    std::uint64_t dataPhysicalSize = 0;
    std::uint64_t rsrcLogicalSize = 0;
    std::uint64_t rsrcPhysicalSize = 0;
    std::uint8_t finderInfo[16] = {}; ///< all zero where the file has none
    std::uint8_t extFinderInfo[16] = {};
    FileTime createDate; ///< zero where the filesystem keeps none
    FileTime contentModDate;
    FileTime attributeModDate;
    FileTime accessDate;
    std::uint32_t mode = 0; ///< `st_mode`
    std::uint32_t userId = 0;
    std::uint32_t groupId = 0;
    std::uint32_t linkCount = 0;
    std::uint64_t deviceNumber = 0; ///< `st_rdev` of a device file
};

/// Fetches facts about the file (a symbolic link itself, never its target). With kFSCatInfoNone it only answers whether
/// the reference is valid. `info` may be null then. Errors: fnfErr when the reference's file is gone. Thread-safe.
TESSARON_EXPORT OSErr FSGetCatalogInfo(const FSRef *ref, std::uint32_t whichInfo, FSCatalogInfo *info);

/// An open listing of one folder, in the order in which the file system lists it, "." and ".." left out. Used by one
/// thread at a time.
class FSIterator;

/// Opens a flat (not recursive) listing; null with `*status` set when the folder cannot be opened.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<FSIterator> FSOpenIterator(const FSRef &container, OSStatus *status);

/// One entry of a listing.
struct FSBulkEntry {
    FSRef ref;
    FSCatalogInfo info;
};

/// Fetches up to `maximum` further entries into `entries`. Returns noErr while there may be more, errFSNoMoreItems when
/// the end was reached (with the last `*actual` entries), else the status of what failed (entries read before it are
/// returned, too). An entry that vanishes while it is listed is left out. No file is opened.
TESSARON_EXPORT OSStatus FSGetCatalogInfoBulk(FSIterator &iterator, std::uint32_t maximum, std::uint32_t *actual,
                                              std::uint32_t whichInfo, FSBulkEntry *entries);

} // namespace Tessaron
