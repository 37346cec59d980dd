#pragma once

#include "platform/foundation/OSStatus.h"

#include <QByteArray>

#include <array>
#include <cstdint>

namespace Tessaron
{

class PathAccess;

/// A file's resource fork and Finder information, which Linux file systems keep in extended attributes.
inline constexpr const char *resourceForkAttribute = "user.com.apple.ResourceFork";
/// 16 bytes of Finder information and 16 of extended Finder information, in big-endian order.
inline constexpr const char *finderInfoAttribute = "user.com.apple.FinderInfo";

using FinderInfoBytes = std::array<std::uint8_t, 32>;

/// Flags in the Finder information: the big-endian word at offset 8 of its first 16 bytes.
enum FinderFlags : std::uint16_t {
    kFinderHasHiddenExtension = 0x0010,
    kFinderHasBundle = 0x2000,
    kFinderIsInvisible = 0x4000,
    kFinderIsAlias = 0x8000,
};

/// The flags in Finder information of 16 or 32 bytes.
[[nodiscard]] std::uint16_t finderFlagsOf(const std::uint8_t *finderInfo);
void setFinderFlags(std::uint8_t *finderInfo, std::uint16_t flags);

/// Length in bytes of an extended attribute of the file named `name` in an open folder (or AT_FDCWD and a whole path),
/// 0 when it has none; a symbolic link is not followed and no file is opened. `folderPath` is a path of that folder,
/// used on kernels older than 6.13, which have no such call relative to a descriptor; when it is empty, /proc serves.
/// `*isSupported` becomes false when the volume keeps no such attributes.
[[nodiscard]] std::uint64_t attributeLength(int folder, const char *name, QByteArrayView folderPath,
                                            const char *attribute, bool *isSupported);

/// True once a kernel older than 6.13 was found to know no calls relative to a descriptor, so that a `folderPath`
/// helps.
[[nodiscard]] bool attributesNeedPaths();

/// True when the file has any extended attribute, of users or of the system, or when that cannot be told; with the
/// arguments of attributeLength(). It costs a quarter less than asking for one that the file does not have.
[[nodiscard]] bool hasAnyAttribute(int folder, const char *name, QByteArrayView folderPath);

/// Reads the Finder information; zeroes when the file has none.
[[nodiscard]] FinderInfoBytes readFinderInfo(const PathAccess &file);
/// The same with the arguments of attributeLength().
[[nodiscard]] FinderInfoBytes readFinderInfo(int folder, const char *name, QByteArrayView folderPath,
                                             bool *isSupported);
/// Reads the resource fork, empty when the file has none or when it is longer than `limit` bytes.
[[nodiscard]] QByteArray readResourceFork(const PathAccess &file, std::uint64_t limit);

/// Write them, for programs that make such files; an empty fork is removed. noErr or a status; permErr where the
/// volume keeps no extended attributes or the file may have none.
[[nodiscard]] OSStatus writeFinderInfo(const PathAccess &file, const FinderInfoBytes &info);
[[nodiscard]] OSStatus writeResourceFork(const PathAccess &file, const QByteArray &fork);

} // namespace Tessaron
