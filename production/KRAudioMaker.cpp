#include "imaging/ProcessFolder.h"
#include "platform/discrecording/audio/AudioFileTrack.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/HelperProcess.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/PathBytes.h"
#include <TessaronClasses/KRAudioMaker.h>
#include <TessaronClasses/KRVideoDVDBurnPathAddition.h>

#include <QCoreApplication>
#include <QDateTime>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <fcntl.h>
#include <limits>
#include <mutex>
#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t bytesPerFrame = 2352;
constexpr auto usualPatience = std::chrono::minutes(1);
constexpr auto patienceWithMainThread = std::chrono::seconds(1);
constexpr auto patienceWithMkfifo = std::chrono::seconds(10);
/// What a helper needs to see that its pipe is closed.
constexpr auto timeToEnd = std::chrono::seconds(1);
constexpr auto timeBetweenLooks = std::chrono::milliseconds(100);
/// In which an open that the helper has answered comes back, also on a busy machine.
constexpr auto timeToReturn = std::chrono::milliseconds(100);

std::atomic<std::uint64_t> totalSizeOfAllMakers = 0;

double secondsSinceReferenceDate()
{
    constexpr double referenceDate = 978307200; // 2001-01-01 00:00:00 UTC since 1970
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count() - referenceDate;
}

/// Runs a step on the main thread and waits for it. Where the main thread does not begin it in time, because it waits
/// for this thread or its event loop has ended, the step runs here.
void onMainThread(const std::function<void()> &step)
{
    if (isMainThread() || !QCoreApplication::instance()) {
        step();
        return;
    }
    struct Turn {
        std::mutex mutex; ///< guards the members below
        std::condition_variable changed;
        bool isTaken = false;
        bool isDone = false;
    };
    const auto turn = std::make_shared<Turn>();
    performOnMainThread([turn, &step] {
        {
            const std::lock_guard lock(turn->mutex);
            if (std::exchange(turn->isTaken, true))
                return;
        }
        step();
        const std::lock_guard lock(turn->mutex);
        turn->isDone = true;
        turn->changed.notify_one();
    });
    std::unique_lock lock(turn->mutex);
    turn->changed.wait_for(lock, patienceWithMainThread, [&turn] { return turn->isDone; });
    if (std::exchange(turn->isTaken, true)) {
        turn->changed.wait(lock, [&turn] { return turn->isDone; });
        return;
    }
    lock.unlock();
    step();
}

/// Opens a pipe for reading on a thread of its own, since that waits for a writer.
class PipeOpening
{
public:
    explicit PipeOpening(QByteArray path)
        : m_path(std::move(path))
        , m_thread([this] { run(); })
    {
    }
    /// Where no writer has come, this object is one for a moment, so that the waiting ends.
    ~PipeOpening()
    {
        while (!waitFor(std::chrono::milliseconds(1))) {
            const UniqueDescriptor writer(::open(m_path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
            if (!writer && errno == ENOENT && waitFor(timeToReturn))
                break;
        }
    }
    PipeOpening(const PipeOpening &) = delete;
    PipeOpening &operator=(const PipeOpening &) = delete;

    /// True once the pipe is open, or cannot be opened.
    bool waitFor(std::chrono::milliseconds atMost)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, atMost, [this] { return m_isOver; });
    }
    UniqueDescriptor take()
    {
        const std::lock_guard lock(m_mutex);
        return std::move(m_descriptor);
    }

private:
    void run()
    {
        UniqueDescriptor opened;
        do
            opened.reset(::open(m_path.constData(), O_RDONLY | O_CLOEXEC));
        while (!opened && errno == EINTR);
        const std::lock_guard lock(m_mutex);
        m_descriptor = std::move(opened);
        m_isOver = true;
        m_changed.notify_one();
    }

    const QByteArray m_path;
    std::mutex m_mutex; ///< guards the members below
    std::condition_variable m_changed;
    UniqueDescriptor m_descriptor;
    bool m_isOver = false;
    std::jthread m_thread; ///< last, so that it is joined first
};

} // namespace

KRAudioMaker::KRAudioMaker()
    : m_patience(usualPatience)
{
}

KRAudioMaker::~KRAudioMaker()
{
    KRAudioMaker::cleanupTrackAfterBurn(nullptr);
}

std::shared_ptr<DRTrack> KRAudioMaker::dataProducer()
{
    const std::uint64_t frames = m_size / bytesPerFrame;
    if (frames > std::numeric_limits<std::uint32_t>::max())
        return nullptr;
    return trackForAudioOfLength(DRMSF::msfWithFrames(std::uint32_t(frames)), shared_from_this());
}

bool KRAudioMaker::prepareTrack(DRTrack * /*track*/, DRBurn * /*forBurn*/, const QVariantMap & /*toMedia*/)
{
    KRAudioMaker::cleanupTrackAfterBurn(nullptr); // of a burn that was not ended
    m_task.reset();
    m_isHelperHung = false;
    totalSizeOfAllMakers = 0;
    const QString source = KRstringWithFSRef(&m_ref);
    if (source.isNull())
        return false;
    const QByteArray folder = ProcessFolder::ofThisProcess().path();
    onMainThread([this, folder] {
        static_cast<void>(
            createFifo(folder.isEmpty() ? QStringLiteral("/tmp") : stringWithFileSystemRepresentation(folder)));
    });
    if (m_tempFifoPath.isNull())
        return false;
    if (startHelper(source))
        onMainThread([this] { openFifo(); });
    if (m_fifoFileNo >= 1)
        return true;
    if (m_task)
        m_task->kill(); // it does nothing, or has ended
    KRAudioMaker::cleanupTrackAfterBurn(nullptr);
    return false;
}

bool KRAudioMaker::startHelper(const QString &source)
{
    const QString program = NSBundle::mainBundle()->pathForResource(QStringLiteral("DummyRedbook"));
    int failure = 0;
    m_task = HelperProcess::start(
        fileSystemRepresentation(program),
        {fileSystemRepresentation(source), fileSystemRepresentation(m_tempFifoPath), "dummyNotification"}, &failure);
    return isTaskRunning();
}

bool KRAudioMaker::isTaskRunning() const
{
    return m_task && m_task->isRunning();
}

bool KRAudioMaker::createFifo(const QString &folder)
{
    const QByteArray path = childPath(fileSystemRepresentation(folder),
                                      QString::asprintf("tempFifo-%lf", secondsSinceReferenceDate()).toLatin1());
    m_tempFifoPath = stringWithFileSystemRepresentation(path);
    int failure = 0;
    const std::unique_ptr<HelperProcess> mkfifo = HelperProcess::start("/usr/bin/mkfifo", {path}, &failure);
    if (mkfifo && !mkfifo->waitForEnd(patienceWithMkfifo))
        mkfifo->kill();
    const int status = mkfifo ? mkfifo->exitStatus().value_or(failure) : failure;
    // The program asks the umask, which may let others in.
    if (status == 0 && ::chmod(path.constData(), S_IRUSR | S_IWUSR) == 0)
        return true;
    qWarning("mkfifo error %d", status);
    m_tempFifoPath = QString();
    return false;
}

void KRAudioMaker::openFifo()
{
    try {
        PipeOpening opening(fileSystemRepresentation(m_tempFifoPath));
        const auto end = std::chrono::steady_clock::now() + m_patience;
        bool isOpen = false;
        while (!isOpen && isTaskRunning() && std::chrono::steady_clock::now() < end)
            isOpen = opening.waitFor(timeBetweenLooks);
        // One that has ended may have opened the pipe before.
        if (isOpen || opening.waitFor(timeToReturn))
            m_fifoFileNo = opening.take().release();
    } catch (const std::system_error &) { // no thread: as if it could not be opened
    }
}

void KRAudioMaker::destroyFifo()
{
    if (m_fifoFileNo >= 1)
        ::close(m_fifoFileNo);
    m_fifoFileNo = 0;
}

/// Waits in short pieces: where the helper's own children hold the pipe open, only a look at it tells of its end.
KRAudioMaker::Wait KRAudioMaker::waitForData() const
{
    const auto end = std::chrono::steady_clock::now() + m_patience;
    struct pollfd pipe = {m_fifoFileNo, POLLIN, 0};
    for (;;) {
        const int ready = ::poll(&pipe, 1, int(timeBetweenLooks.count()));
        if (ready > 0)
            return (pipe.revents & POLLNVAL) == 0 ? Wait::Readable : Wait::Failed;
        if (ready < 0 && errno != EINTR)
            return Wait::Failed;
        if (!isTaskRunning())
            return Wait::HelperEnded;
        if (std::chrono::steady_clock::now() >= end)
            return Wait::TooLong;
    }
}

std::uint32_t KRAudioMaker::produceDataForTrack(DRTrack * /*track*/, char *intoBuffer, std::uint32_t length,
                                                std::uint64_t /*atAddress*/, std::uint32_t /*blockSize*/,
                                                std::uint32_t * /*ioFlags*/)
{
    if (m_isHelperHung)
        return 0;
    std::uint32_t got = 0;
    // The process is looked at before the pipe: what a helper leaves there when it ends is not read.
    while (isTaskRunning()) {
        const Wait wait = m_fifoFileNo >= 1 ? waitForData() : Wait::Failed;
        if (wait == Wait::HelperEnded)
            break;
        if (wait != Wait::Readable) {
            m_isHelperHung = wait == Wait::TooLong;
            if (m_isHelperHung)
                m_task->kill();
            return 0;
        }
        const ssize_t count = ::read(m_fifoFileNo, intoBuffer + got, length - got);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return 0;
        totalSizeOfAllMakers += std::uint64_t(count);
        got += std::uint32_t(count);
        if (count == 0)
            break;
        if (got == length)
            return got;
    }
    std::fill(intoBuffer + got, intoBuffer + length, '\0');
    totalSizeOfAllMakers += length - got;
    return length;
}

void KRAudioMaker::cleanupTrackAfterBurn(DRTrack * /*track*/)
{
    if (m_fifoFileNo >= 1)
        onMainThread([this] { destroyFifo(); });
    if (!m_tempFifoPath.isNull()) {
        ::unlink(fileSystemRepresentation(m_tempFifoPath).constData());
        m_tempFifoPath = QString();
    }
    // So that its exit status is there to be asked for. The main thread waits for nothing.
    if (m_task && !isMainThread())
        m_task->waitForEnd(timeToEnd);
}

std::uint64_t KRAudioMaker::totalSize()
{
    return totalSizeOfAllMakers;
}

std::optional<int> KRAudioMaker::helperExitStatus() const
{
    return m_task ? m_task->exitStatus() : std::nullopt;
}

} // namespace Tessaron
