#pragma once

#include "platform/coreservices/FSRef.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace Tessaron
{

class PathAccess;

/// What tells the file of a reference from another one with the same device, inode and birth time. A file system gives
/// a freed inode to the next file, and a file made within the same tick of its clock has the same birth time. So:
///
/// - A file born well before its reference was made cannot be confused with a later one; that needs no note.
/// - Of a younger one the file system's handle (inode and generation) is noted when the reference is made.
/// - One without birth time, or without a handle where one is needed, stays doubtful.
///
/// It also knows on which mounts the devices of references were seen, so that the file at a reference's path is told
/// from one on another volume mounted there. Thread-safe.
class IdentityProofs
{
public:
    static IdentityProofs &shared();

    /// The clock that file systems take times of birth from. To be read before a file is looked at.
    [[nodiscard]] static FileTime now();

    /// True when a file that is made at `now` or later could have the birth time of this one.
    [[nodiscard]] static bool isYoung(const FSRef &ref, FileTime now);
    /// Notes the handle of a young file, which lies below an open folder (or AT_FDCWD and a path).
    void noteYoung(const FSRef &ref, int folder, const char *name);
    /// True when the file at this place, whose device, inode and birth time are the reference's, is the same file for
    /// certain.
    [[nodiscard]] bool isProven(const FSRef &ref, const PathAccess &place) const;

    /// A reference to a file of this device was made on this mount (see mountOf(); 0, an unknown one, is not noted).
    void noteMount(std::uint64_t device, std::uint64_t mount);
    [[nodiscard]] bool wasSeenOnMount(std::uint64_t device, std::uint64_t mount) const;

private:
    /// Without the device: not every reference that is looked for knows it, and a chance equality only adds a doubt.
    struct Key {
        std::uint64_t inode = 0;
        FileTime birthTime;

        friend bool operator==(const Key &, const Key &) = default;
    };
    struct Hash {
        std::size_t operator()(const Key &key) const;
    };

    IdentityProofs() = default;

    [[nodiscard]] static Key keyOf(const FSRef &ref);

    mutable std::mutex m_mutex; ///< guards the members below
    std::unordered_map<Key, QByteArray, Hash> m_handles; ///< an empty one: two files had the key, or there was none
    std::unordered_map<std::uint64_t, std::vector<std::uint64_t>> m_mounts; ///< by device
};

} // namespace Tessaron
