#pragma once

#include "platform/coreservices/FSRef.h"

#include <QByteArray>

#include <sys/stat.h>

namespace Tessaron
{

/// Finds the file of a reference: at its last known place, else, when something else or nothing is there, wherever it
/// was renamed or moved to, as far as that shows cheaply. Returns 0, or an `errno` value (ENOENT when the file is
/// gone). `path` and `facts` may be null; `mask` adds to the fields that identify the file. Thread-safe.
///
/// The file at the last known place is the one meant when it has the reference's identity, or took the file's place on
/// the same volume and the file itself is found nowhere. Elsewhere the identity needs proof; see IdentityProofs.
///
/// The search asks the file system for the inode where it is able and permitted to, then looks through the folder for
/// a new name, then for the folders above. What it finds is remembered for this and all references below it.
[[nodiscard]] int locateFile(const FSRef &ref, unsigned int mask, struct statx *facts, QByteArray *path);

/// True when what was found at a reference's last known place is its file, without any search: the one that was there,
/// or the one that a search has found to have taken its place.
[[nodiscard]] bool isFileAtItsPlace(const FSRef &ref, const struct statx &facts);

/// True when the file at the reference's place may stand for the one that was there: of the same kind (if the reference
/// knows it), on a mount on which the reference's device was seen, or on the same device with the same birth time.
[[nodiscard]] bool maySucceed(const FSRef &ref, const struct statx &facts);

/// Notes what the folders above a node are, so that what they hold is found again when one of them is renamed. Only
/// folders not yet known, or in doubt since one moved away, cost a system call.
void noteFoldersAbove(std::uint32_t node);

/// The path now of an inode of the file system that holds the open folder, empty when it is not found that way. Only
/// some file systems can be asked, and only by privileged processes. `*isGone` tells for certain that there is no such
/// inode.
[[nodiscard]] QByteArray pathOfInode(int folderOnVolume, std::uint64_t inode, bool *isGone);

/// The name that an inode has in a folder, empty when it has none there. The last folder's listing is kept while the
/// folder stays unchanged, so that looking for each of a thousand vanished files reads the folder once.
[[nodiscard]] QByteArray nameOfInodeInFolder(const QByteArray &folderPath, std::uint64_t inode);

} // namespace Tessaron
