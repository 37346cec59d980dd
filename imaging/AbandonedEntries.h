#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <functional>

namespace Tessaron
{

// Unfinished files and folders of a process, told from those that a killed process left behind by a lock (flock(2)) on
// each: the system takes it away with the process. Any thread.

/// Locks an open file or folder that this process has just made and named. False where another process thought it
/// abandoned, and has removed it, before it was locked. On file systems that know no such locks it stays unlocked, and
/// is never taken for abandoned.
[[nodiscard]] bool lockNewEntry(int descriptor);

/// Whether an open file or folder has not been removed yet.
[[nodiscard]] bool hasName(int descriptor);

/// Calls `remove` for each file and folder in the open folder whose name is meant, which belongs to this user and which
/// no process has locked, with its name and a descriptor that holds the lock meanwhile. Links are passed over.
void forEachAbandoned(int folder, const std::function<bool(QByteArrayView name)> &isMeant,
                      const std::function<void(const QByteArray &name, int descriptor)> &remove);

/// Removes the entry, a folder with all it holds, as far as that can be done. Links are removed, never followed.
void removeEntry(int folder, const char *name);

/// Removes all that the folder holds, in the same way.
void removeContents(int folder);

/// Whether the name consists of the beginning, of as many letters and digits as mkstemp(3) and the like put into names,
/// and of the end.
[[nodiscard]] bool isTemporaryName(QByteArrayView name, QByteArrayView beginning, QByteArrayView end = {});

} // namespace Tessaron
