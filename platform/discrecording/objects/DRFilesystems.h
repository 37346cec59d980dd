#pragma once

#include "platform/foundation/Export.h"

#include <QString>

#include <cstdint>

namespace Tessaron
{

/// Which filesystems of a disc are to hold an object: one bit each.
using DRFilesystemMask = std::uint32_t;
inline constexpr DRFilesystemMask DRFilesystemInclusionMaskISO9660 = 1u << 0;
inline constexpr DRFilesystemMask DRFilesystemInclusionMaskJoliet = 1u << 1;
inline constexpr DRFilesystemMask DRFilesystemInclusionMaskUDF = 1u << 2;
inline constexpr DRFilesystemMask DRFilesystemInclusionMaskHFSPlus = 1u << 3;
inline constexpr DRFilesystemMask DRFilesystemInclusionMaskAll = 15;

/// Whose names or properties are meant. `All` is valid for properties only; ISO9660 stands for both name levels in
/// properties and for level two in names.
enum class DRFilesystem : std::uint8_t {
    All,
    ISO9660,
    ISO9660LevelOne,
    ISO9660LevelTwo,
    Joliet,
    UDF,
    HFSPlus,
};
inline constexpr DRFilesystem DRAllFilesystems = DRFilesystem::All;
inline constexpr DRFilesystem DRISO9660 = DRFilesystem::ISO9660;
inline constexpr DRFilesystem DRISO9660LevelOne = DRFilesystem::ISO9660LevelOne;
inline constexpr DRFilesystem DRISO9660LevelTwo = DRFilesystem::ISO9660LevelTwo;
inline constexpr DRFilesystem DRJoliet = DRFilesystem::Joliet;
inline constexpr DRFilesystem DRUDF = DRFilesystem::UDF;
inline constexpr DRFilesystem DRHFSPlus = DRFilesystem::HFSPlus;

// Keys of object properties. Values are given as QVariant of the type named. DRInvisible counts for each filesystem by
// itself, the two of the Finder for HFS+. Mode, owner, group and dates are one for the whole disc, since its
// filesystems share what is known of a file: those that hold for DRISO9660 (or DRAllFilesystems) count.
TESSARON_EXPORT extern const QString DRInvisible; ///< bool
TESSARON_EXPORT extern const QString DRMacFinderFlags; ///< qint16 as int, Finder flags
TESSARON_EXPORT extern const QString DRMacFinderHideExtension; ///< bool
TESSARON_EXPORT extern const QString DRPosixFileMode; ///< uint, `st_mode`
TESSARON_EXPORT extern const QString DRPosixUID; ///< uint
TESSARON_EXPORT extern const QString DRPosixGID; ///< uint
TESSARON_EXPORT extern const QString DRCreationDate; ///< QDateTime
TESSARON_EXPORT extern const QString DRContentModificationDate; ///< QDateTime
TESSARON_EXPORT extern const QString DRAttributeModificationDate; ///< QDateTime
TESSARON_EXPORT extern const QString DRAccessDate; ///< QDateTime

// Keys for the root folder: what the volume says of itself (ECMA-119 8.4). QString unless said otherwise.
TESSARON_EXPORT extern const QString DRISOLevel; ///< int 1 to 3: name level of the ISO 9660 tree, 2 when unset
/// bool: folders deeper than the eight levels of ECMA-119 6.8.2.1 are recorded in a folder "rr_moved" of the root, and
/// Rock Ridge shows them in their places. Unset, they are recorded where they are.
TESSARON_EXPORT extern const QString DRRelocatesDeepFolders;
TESSARON_EXPORT extern const QString DRVolumeSet;
TESSARON_EXPORT extern const QString DRPublisher;
TESSARON_EXPORT extern const QString DRDataPreparer;
TESSARON_EXPORT extern const QString DRApplicationIdentifier;
TESSARON_EXPORT extern const QString DRSystemIdentifier;
TESSARON_EXPORT extern const QString
    DRVolumeCreationDate; ///< QDateTime; the time of the burn (or SOURCE_DATE_EPOCH) when unset

} // namespace Tessaron
