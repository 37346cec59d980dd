#include "platform/fileevents/FileEventWatcher.h"

#include "platform/foundation/MessageTexts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Tessaron
{

namespace
{

bool isSameMount(const Mount &one, const Mount &other)
{
    return one.number == other.number && one.point == other.point;
}

bool holds(const std::vector<Mount> &mounts, const Mount &mount)
{
    return std::any_of(mounts.begin(), mounts.end(),
                       [&mount](const Mount &other) { return isSameMount(mount, other); });
}

} // namespace

FileEventWatcher::FileEventWatcher(const std::vector<QByteArray> &paths, std::chrono::duration<double> latency,
                                   std::function<void()> wantsDelivery)
    : m_latency(latency)
    , m_wantsDelivery(std::move(wantsDelivery))
    , m_roots(paths)
{
}

FileEventWatcher::~FileEventWatcher()
{
    if (!m_thread.joinable())
        return;
    m_thread.request_stop();
    const std::uint64_t one = 1;
    // Fails only when the counter is full, and then it wakes the thread all the same.
    (void)!::write(m_wakeUp.get(), &one, sizeof one);
    m_thread.join();
}

NSError FileEventWatcher::start(std::unique_ptr<FileEventSource> source)
{
    m_wakeUp.reset(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!m_wakeUp)
        return NSError::errorWithErrno(errno, QString());
    // Opened before the mounts are read, so that no change falls between.
    m_mountList.reset(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
    m_mounts = currentMounts();
    m_roots.resolve();
    m_record.setRoots(m_roots.places());
    if (NSError error = source->begin(m_roots, m_record, m_mounts))
        return error;
    m_source = std::move(source);
    try {
        m_thread = std::jthread([this](const std::stop_token &stop) { run(stop); });
    } catch (const std::system_error &error) {
        return NSError::errorWithErrno(error.code().value(), QString());
    }
    return {};
}

void FileEventWatcher::run(const std::stop_token &stop)
{
    bool isStarted = false;
    while (!stop.stop_requested()) {
        try {
            if (!std::exchange(isStarted, true)) {
                m_source->continueOnThread();
                m_roots.resolveAgain();
                tellOfMissingRoots();
            }
            runOnce();
        } catch (const std::bad_alloc &) {
            // Which watches are missing is not known. Without memory there may be none to do better at once.
            m_record.lost(kFSEventStreamEventFlagUserDropped);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            m_mustBeginAnew = true;
        }
    }
}

void FileEventWatcher::runOnce()
{
    if (m_mustBeginAnew) {
        m_roots.resolve();
        m_mounts = currentMounts();
        m_record.setRoots(m_roots.places());
        m_source->watchAnew(m_mounts, kFSEventStreamEventFlagUserDropped);
        m_roots.resolveAgain();
        m_hasMoreToWatch = true;
        m_mustBeginAnew = false;
    }
    if (!wait())
        return;
    if (m_mountsHaveChanged)
        lookAtMounts();
    if (m_sourceIsReadable)
        m_source->readEvents();
    lookAtRoots();
    m_hasMoreToWatch = m_source->watchMore();
    askForDelivery();
}

/// False when the thread is to stop.
bool FileEventWatcher::wait()
{
    std::array<pollfd, 3> descriptors = {pollfd{m_wakeUp.get(), POLLIN, 0}, pollfd{m_source->descriptor(), POLLIN, 0},
                                         pollfd{m_mountList.get(), POLLPRI, 0}};
    if (::poll(descriptors.data(), descriptors.size(), millisecondsToWait()) <= 0)
        descriptors[0].revents = descriptors[1].revents = descriptors[2].revents = 0;
    m_sourceIsReadable = descriptors[1].revents != 0;
    m_mountsHaveChanged = descriptors[2].revents != 0;
    return descriptors[0].revents == 0;
}

int FileEventWatcher::millisecondsToWait() const
{
    if (m_hasMoreToWatch)
        return 0;
    const auto since = m_record.waitsSince();
    if (!since)
        return -1;
    const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - *since;
    if (waited >= m_latency)
        return 0;
    // A latency of weeks is waited for in steps.
    constexpr std::chrono::duration<double> longest = std::chrono::hours(1);
    return static_cast<int>(
        std::chrono::ceil<std::chrono::milliseconds>(std::min(m_latency - waited, longest)).count());
}

void FileEventWatcher::lookAtMounts()
{
    std::vector<Mount> mounts = currentMounts();
    mounts.swap(m_mounts);
    std::vector<QByteArray> changed;
    const auto tell = [&](const Mount &mount, FSEventStreamEventFlags flag) {
        m_roots.mountHasChanged(mount.point);
        if (m_roots.contains(mount.point)) {
            m_record.add(mount.point, flag);
            if (std::find(changed.begin(), changed.end(), mount.point) == changed.end())
                changed.push_back(mount.point);
        }
    };
    for (const Mount &mount : std::as_const(mounts)) {
        if (!holds(m_mounts, mount))
            tell(mount, kFSEventStreamEventFlagUnmount);
    }
    for (const Mount &mount : std::as_const(m_mounts)) {
        if (!holds(mounts, mount))
            tell(mount, kFSEventStreamEventFlagMount);
    }
    for (const QByteArray &point : changed)
        m_source->mountHasChanged(m_mounts, point);
}

void FileEventWatcher::lookAtRoots()
{
    if (!m_roots.haveChanged())
        return;
    std::vector<QByteArray> changed;
    for (const WatchedRoots::Root &root : m_roots.roots()) {
        if (root.hasChanged)
            changed.push_back(root.given);
    }
    m_roots.resolve();
    m_record.setRoots(m_roots.places());
    m_source->watchAnew(m_mounts, kFSEventStreamEventFlagNone);
    m_roots.resolveAgain();
    m_hasMoreToWatch = true;
    for (const QByteArray &path : changed)
        m_record.add(path, kFSEventStreamEventFlagRootChanged | kFSEventStreamEventFlagMustScanSubDirs);
    tellOfMissingRoots();
}

void FileEventWatcher::tellOfMissingRoots()
{
    for (const WatchedRoots::Root &root : m_roots.roots()) {
        if (root.error != 0)
            m_record.addProblem(cannotWatch(root.given, systemText(root.error),
                                            QStringLiteral("It is watched as soon as there is such a folder.")));
    }
}

void FileEventWatcher::askForDelivery()
{
    const auto since = m_record.waitsSince();
    if (!since || std::chrono::steady_clock::now() - *since < m_latency)
        return;
    m_record.handOver(m_latency);
    try {
        m_wantsDelivery();
    } catch (const std::bad_alloc &) {
        m_record.handOverHasFailed();
        throw;
    }
}

} // namespace Tessaron
