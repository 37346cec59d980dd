#pragma once

#include "platform/fileevents/FileEventSource.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QHash>
#include <QSet>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

struct fanotify_event_metadata;

namespace Tessaron
{

/// Changes as fanotify(7) tells them: one mark for each file system that holds a root or a part of one. The kernel
/// names a folder by its handle, which leads to the folder wherever it is now.
class FanotifySource final : public FileEventSource
{
public:
    void continueOnThread() override;
    void watchAnew(const std::vector<Mount> &mounts, FSEventStreamEventFlags flags) override;
    void mountHasChanged(const std::vector<Mount> &mounts, const QByteArray &point) override;
    void readEvents() override;

private:
    /// What the kernel says of one event.
    struct Change {
        std::uint64_t mask = 0;
        QByteArray volume; ///< the identifier of the file system, as bytes
        QByteArray folder; ///< a handle as in FileHandle.h
        QByteArray name; ///< of the entry; "." for the folder itself
    };
    /// Where a folder lies, once for each place at which its file system is mounted.
    struct Places {
        std::vector<QByteArray> folders;
        bool areAll = true; ///< false when one could not be found out, which the record was told
    };

    [[nodiscard]] NSError open(const std::vector<Mount> &mounts) override;
    [[nodiscard]] bool isOfUse(const Mount &mount) const;
    [[nodiscard]] int mark(const QByteArray &point);
    [[nodiscard]] NSError markLocalMounts();
    void markMounts();
    [[nodiscard]] static bool read(const char *event, std::size_t length, Change *change);
    void record(const Change &change);
    void recordIn(const QByteArray &folder, const Change &change);
    [[nodiscard]] const std::vector<QByteArray> &foldersOf(const Change &change);
    [[nodiscard]] Places foldersNow(const Change &change);
    [[nodiscard]] int mountFolder(const QByteArray &point, int *error);

    std::vector<Mount> m_mounts;
    QHash<QByteArray, QByteArrayList> m_pointsOfVolume; ///< where each marked file system is mounted
    QSet<QByteArray> m_refused; ///< mount points that were told of
    // Kept during one call of readEvents(): an open folder would keep its volume from being unmounted.
    QHash<QByteArray, Places> m_folders; ///< by volume and handle
    std::vector<std::pair<QByteArray, UniqueDescriptor>> m_openPoints;
    alignas(8) std::array<char, 262144> m_buffer = {};
};

} // namespace Tessaron
