#pragma once

#include "platform/foundation/FileTime.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// A run of bytes of the image that holds a part of a file.
struct VolumeExtent {
    std::uint64_t offset = 0; ///< in the image, bytes
    std::uint64_t length = 0; ///< bytes
    bool isHole = false; ///< not recorded: reads as zeros, the offset means nothing

    friend bool operator==(const VolumeExtent &, const VolumeExtent &) = default;
};

/// A time as a filesystem records it.
struct VolumeTime : FileTime {
    std::uint32_t granularity = 1'000'000'000; ///< the smallest step that the filesystem can record, nanoseconds

    friend bool operator==(const VolumeTime &, const VolumeTime &) = default;
};

enum class VolumeObjectKind : std::uint8_t {
    File,
    Folder,
    SymbolicLink,
    Other, ///< a named pipe, socket or device
};

/// One object of a filesystem in an image, as that filesystem has it. A value.
struct VolumeObject {
    /// The name as bytes, in UTF-8 where the filesystem records characters, in the form a program of the system would
    /// see it mounted: no version number, ':' and '/' of HFS+ exchanged. Empty for the root.
    QByteArray name;
    VolumeObjectKind kind = VolumeObjectKind::File;
    std::uint64_t size = 0; ///< of a file's contents, bytes; 0 for everything else
    std::optional<VolumeTime> modified; ///< of the contents; absent when it is not recorded
    std::optional<std::uint32_t> mode; ///< permission bits with type bits (`st_mode`); absent when not recorded
    std::optional<std::uint32_t> userId; ///< absent when not recorded
    std::optional<std::uint32_t> groupId;
    std::uint64_t deviceNumber = 0; ///< of a device (`st_rdev`); 0 when not recorded
    QByteArray linkTarget; ///< of a symbolic link
    /// Names of one file have one number, other files another; 0 when the filesystem does not say.
    std::uint64_t identity = 0;
    /// Where a file's contents lie, in their order; the lengths add up to `size`. Adjacent runs are one.
    std::vector<VolumeExtent> extents;
    std::uint64_t recordOffset = 0; ///< in the image: the structure that describes the object, for messages
    /// For folders: bytes of the image that list it, all its own; 0 when a structure shared with others does.
    std::uint64_t listingLength = 0;
    std::uint64_t location = 0; ///< the reader's own mark for a folder, unique among the folders of the volume
};

} // namespace Tessaron
