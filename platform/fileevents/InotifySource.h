#pragma once

#include "platform/fileevents/FileEventSource.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>
#include <QHash>
#include <QSet>

#include <array>
#include <cstdint>
#include <ctime>
#include <map>
#include <vector>

struct inotify_event;

namespace Tessaron
{

/// Changes as inotify(7) tells them: a watch for each folder below the roots, and for each folder on the way to a root.
/// A folder is listed after it is watched, so that nothing that appears in it is missed.
class InotifySource final : public FileEventSource
{
public:
    void continueOnThread() override;
    void watchAnew(const std::vector<Mount> &mounts, FSEventStreamEventFlags flags) override;
    void mountHasChanged(const std::vector<Mount> &mounts, const QByteArray &point) override;
    void readEvents() override;
    bool watchMore() override;

private:
    enum class Occasion : std::uint8_t {
        Start, ///< it was there when watching began
        Appearance, ///< it was made since, and what is in it may have been, too
        Arrival, ///< it came as a whole, and is to be scanned when all of it is watched
    };
    struct Visit {
        QByteArray folder;
        Occasion occasion = Occasion::Start;
    };
    struct Watch {
        QByteArray folder;
        bool isListed = false; ///< false for a folder that is only on the way to a root
    };

    [[nodiscard]] NSError open(const std::vector<Mount> &mounts) override;
    void noteMounts(const std::vector<Mount> &mounts);
    void watchRoots();
    void watchWays();
    void visit(const Visit &next);
    [[nodiscard]] bool watch(int folder, const QByteArray &path, bool isListed);
    void list(UniqueDescriptor folder, const Visit &next);
    void record(const inotify_event &event, const QByteArray &name);
    void arrive(const QByteArray &folder);
    void recordFolderEntry(std::uint32_t mask, const QByteArray &entry);
    void forget(const QByteArray &folder);
    void forgetBelow(const QByteArray &folder);
    void tellOfFailure(const QByteArray &folder, int error);
    void tellOfUnreadableFolders();
    void allAreWatched();

    QHash<int, Watch> m_watches;
    std::map<QByteArray, int> m_watchOfFolder; ///< a folder's own are followed by those below it, more or less
    QSet<QByteArray> m_leftOut; ///< mount points of file systems without files of people's
    std::vector<Visit> m_toVisit; ///< the last one is next, so that few wait
    QSet<QByteArray> m_toBeScanned; ///< told once when they are watched
    timespec m_begin = {}; ///< a folder that changed later may have changed before it was watched
    FSEventStreamEventFlags m_flagsAtEnd = kFSEventStreamEventFlagNone; ///< for watchAnew()
    bool m_isBuilding = false;
    bool m_isLimitTold = false;
    std::uint64_t m_unreadable = 0;
    QByteArray m_firstUnreadable;
    alignas(8) std::array<char, 65536> m_buffer = {};
};

} // namespace Tessaron
