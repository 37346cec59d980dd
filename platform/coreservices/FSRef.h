#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/FileTime.h"
#include "platform/foundation/OSStatus.h"

#include <QByteArray>

#include <cstdint>
#include <type_traits>

namespace Tessaron
{

/// Reference to a file or folder: 80 bytes, passed by value, comparable, meaningless outside this process (alias data
/// is the persistent form). It names an identity (device, inode, birth time) and a place (a node of the process-wide
/// table of parent and name pairs). The zero-filled value refers to nothing.
///
/// It refers to the file of that identity as long as there is one, at its place or wherever it was renamed or moved to,
/// and else to the file of the same kind that has taken its place on the same volume, as programs do that save by
/// replacing. A file elsewhere that only may be the same one, having got the inode of a removed one, is not meant.
struct FSRef {
    std::uint64_t device = 0; ///< `st_dev` of the file
    std::uint64_t inode = 0;
    std::int64_t birthSeconds = 0; ///< see birthTime()
    std::uint32_t birthNanoseconds = 0;
    std::uint32_t node = 0; ///< place in the table of names, 0 for none
    std::uint32_t kind = 0; ///< the S_IFMT bits of its mode, 0 where not known
    std::uint8_t reserved[44] = {}; ///< zero

    /// Zero where the filesystem keeps none.
    [[nodiscard]] FileTime birthTime() const { return {birthSeconds, birthNanoseconds}; }
    void setBirthTime(FileTime time)
    {
        birthSeconds = time.seconds;
        birthNanoseconds = time.nanoseconds;
    }

    friend bool operator==(const FSRef &, const FSRef &) = default;
};
static_assert(sizeof(FSRef) == 80 && std::is_trivially_copyable_v<FSRef>);

/// Options of FSPathMakeRefWithOptions().
enum FSPathMakeRefOptions : std::uint32_t {
    kFSPathMakeRefDefaultOptions = 0,
    kFSPathMakeRefDoNotFollowLeafSymlink = 1, ///< a symbolic link at the end of the path is itself what is meant
};

/// Makes the reference of what is at `path` (bytes, absolute or relative to the working folder).
/// `isDirectory` may be null. Returns fnfErr, afpAccessDenied … and leaves the outputs alone on failure. Thread-safe.
TESSARON_EXPORT OSStatus FSPathMakeRefWithOptions(const QByteArray &path, std::uint32_t options, FSRef *ref,
                                                  bool *isDirectory);
/// The same, following a symbolic link at the leaf.
TESSARON_EXPORT OSStatus FSPathMakeRef(const QByteArray &path, FSRef *ref, bool *isDirectory);

/// Writes the path of a valid reference, NUL-terminated, into `buffer`. A reference whose file was renamed or moved
/// while the process runs yields the new path where it can be found cheaply. Errors: fnfErr when the file is gone,
/// bdNamErr when the path does not fit in `bufferSize` bytes. Thread-safe.
TESSARON_EXPORT OSStatus FSRefMakePath(const FSRef *ref, char *buffer, std::uint32_t bufferSize);

/// The path of a reference as bytes, of any length, without looking at the disk: the place where the file was when it
/// was last found. Empty for the zero reference. Thread-safe.
[[nodiscard]] TESSARON_EXPORT QByteArray lastKnownPath(const FSRef &ref);

/// Makes the reference of the child named `name` (bytes) of the folder `parent`; fnfErr when there is none.
TESSARON_EXPORT OSStatus FSMakeFSRefForChild(const FSRef &parent, const QByteArray &name, FSRef *child);

} // namespace Tessaron
