#pragma once

#include "platform/foundation/FileTime.h"

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// What alias data says about a file, so that it is found again after renames, moves and remounts.
///
/// As bytes, with integers in big-endian order: "TsAl"; 16-bit version 1; 16-bit flags (bit 0: a folder); 32-bit length
/// of the whole; 64-bit FNV-1a checksum of all that follows it; volume identifier, inode, birth time (three 64-bit
/// words, 32-bit nanoseconds); then file system type, path in the volume, whole path and handle, each with a 32-bit
/// length before it.
struct AliasRecord {
    bool isFolder = false;
    std::uint64_t volumeIdentifier = 0; ///< `f_fsid`, 0 where the file system has none
    std::uint64_t inode = 0;
    FileTime birthTime;
    QByteArray volumeType; ///< as in the list of mounts, "ext4"
    QByteArray pathInVolume; ///< from the root of the file system, whichever part of it was mounted where
    QByteArray path;
    QByteArray handle; ///< 32-bit type, then the bytes of a file handle; empty where the file system has none

    friend bool operator==(const AliasRecord &, const AliasRecord &) = default;
};

enum class AliasChecksum {
    Checked,
    Ignored, ///< for tests that want to reach what lies behind it
};

[[nodiscard]] QByteArray aliasDataFromRecord(const AliasRecord &record);
/// The record in the data; no value when the bytes are not alias data of this version, or are damaged. Safe for any
/// bytes.
[[nodiscard]] std::optional<AliasRecord> aliasRecordFromData(QByteArrayView data,
                                                             AliasChecksum checksum = AliasChecksum::Checked);

/// No alias data is longer, bytes.
inline constexpr qsizetype longestAliasData = 1 << 20;

} // namespace Tessaron
