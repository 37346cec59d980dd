#pragma once

#include "platform/discimage/hfsplus/HfsPlusBTreeWalker.h"
#include "platform/discimage/volume/VolumeObject.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <string_view>

namespace Tessaron
{

/// A thread record of the catalog: how to find the folder or file with an ID (HFS Plus Volume Format, "Catalog Thread
/// Records").
struct HfsPlusThread {
    bool isFolder = false;
    std::uint32_t parentId = 0;
    QByteArray name; ///< UTF-16, big-endian
};

/// A folder or file record of the catalog ("Catalog Folder Records", "Catalog File Records").
struct HfsPlusItem {
    bool isFolder = false;
    std::uint32_t id = 0;
    std::uint32_t childCount = 0; ///< of a folder
    std::uint32_t created = 0; ///< seconds since 1904, UTC
    std::uint32_t modified = 0;
    std::uint16_t mode = 0; ///< 0 when permissions are not recorded
    std::uint32_t special = 0; ///< of a hard link: the number in the name of the file it leads to
    std::string_view typeAndCreator; ///< of a file; lives as long as the record
    HfsPlusBytes dataFork; ///< of a file; lives as long as the record

    [[nodiscard]] bool isHardLink() const { return !isFolder && typeAndCreator == "hlnkhfs+"; }
    /// From the mode, or, where there is none, from the type.
    [[nodiscard]] VolumeObjectKind kind() const;
};

/// Absent when the data of a record are not of this kind or too short.
[[nodiscard]] std::optional<HfsPlusThread> hfsPlusThread(HfsPlusBytes data);
[[nodiscard]] std::optional<HfsPlusItem> hfsPlusItem(HfsPlusBytes data);

/// The parent's ID and the name in a key of the catalog. A name that claims to be longer than the key ends with it.
[[nodiscard]] std::uint32_t hfsPlusParentId(HfsPlusBytes key);
[[nodiscard]] HfsPlusBytes hfsPlusKeyName(HfsPlusBytes key);
/// A key; the name is UTF-16, big-endian.
[[nodiscard]] QByteArray hfsPlusKey(std::uint32_t parentId, QByteArrayView name);

/// The name as programs of a POSIX system see it: UTF-8, composed, ':' and '/' exchanged. Absent for a name that
/// no program could use: an empty one, "." and "..", one with the separator of paths.
[[nodiscard]] std::optional<QByteArray> hfsPlusDisplayName(HfsPlusBytes name);

[[nodiscard]] VolumeTime hfsPlusTime(std::uint32_t secondsSince1904);

} // namespace Tessaron
