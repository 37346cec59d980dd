#pragma once

#include "platform/coreservices/FSRef.h"

#include <QByteArray>

#include <cstdint>

namespace Tessaron
{

enum ResolveAliasFlags : std::uint32_t {
    kResolveAliasFileDefault = 0,
    kResolveAliasFileNoUI = 1, ///< do not ask the user for a missing volume; no question is ever asked
};

/// Makes alias data: bytes that find the file again in another process and another year. fnfErr … when the file is
/// gone. Thread-safe, as all of these.
[[nodiscard]] TESSARON_EXPORT OSErr FSNewAliasMinimal(const FSRef *target, QByteArray *alias);

/// Finds the file of alias data: where it was, on its volume wherever that is mounted now, after a rename in its
/// folder, after a move within the volume where the system can tell (or a search of some thousand entries around its
/// old place does), and else what has taken its place under the same path. `from` is ignored and may be null.
/// `*wasChanged`, which may be null too, tells that fresh alias data would differ. Errors, with the target untouched:
/// paramErr for bytes that are not alias data, nsvErr when its volume is not mounted, fnfErr when the file is not
/// found.
[[nodiscard]] TESSARON_EXPORT OSErr FSResolveAliasWithMountFlags(const FSRef *from, const QByteArray &alias,
                                                                 FSRef *target, bool *wasChanged, std::uint32_t flags);

/// Tells whether a file is an alias file: one with the alias flag in its Finder information, whatever it holds. Both
/// outputs may be null.
[[nodiscard]] TESSARON_EXPORT OSErr FSIsAliasFile(const FSRef *ref, bool *aliasFileFlag, bool *folderFlag);

/// Replaces the reference of an alias file by that of its target; a reference to any other file stays as it is. With
/// `resolveAliasChains` a target that is an alias file itself is resolved in turn. Errors, with the reference
/// untouched: those of FSResolveAliasWithMountFlags() for the alias data in the file's resource fork or contents
/// (paramErr when neither holds alias data), and fnfErr for a chain that leads back to itself. All outputs but `ref`
/// may be null.
[[nodiscard]] TESSARON_EXPORT OSErr FSResolveAliasFile(FSRef *ref, bool resolveAliasChains, bool *targetIsFolder,
                                                       bool *wasAliased);

/// Makes an alias file at a path where nothing is yet. permErr where the volume keeps no Finder information; nothing is
/// left then.
[[nodiscard]] TESSARON_EXPORT OSStatus writeAliasFile(const QByteArray &path, const FSRef &target);

} // namespace Tessaron
