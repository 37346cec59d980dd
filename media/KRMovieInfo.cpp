#include "media/MovieArtwork.h"
#include "media/MovieInfoDictionaries.h"
#include "media/MovieRequestQueue.h"
#include "media/WindowsMedia.h"
#include "platform/coreservices/Mounts.h"
#include "platform/foundation/DelayedPerform.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/MediaFile.h"
#include <TessaronClasses/KRMovieInfo.h>

#include <QDir>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

namespace Tessaron
{

namespace
{

using namespace std::chrono_literals;

constexpr auto usualPatience = 60s;
constexpr auto patienceAtTheEnd = 2s; ///< with what still reads when the process ends
constexpr auto pauseWithoutThreads = 100ms;

/// The movie and the error of one reading.
struct OpenedMovie {
    std::optional<MovieDescription> movie;
    NSError error; ///< null when there is a movie
};

/// Everything that is told of a file.
struct Delivery {
    MovieRequest request;
    QVariantMap info;
    std::optional<MovieDescription> movie;
};

Delivery deliveryOf(MovieRequest request, OpenedMovie opened, const QVariantMap &metadata)
{
    Delivery delivery;
    delivery.info = request.dictionary();
    delivery.info.insert(fZelTracksInfoKey, opened.movie ? trackDictionaries(*opened.movie) : QVariantList());
    delivery.info.insert(kZelMovieInfoKey, opened.movie ? movieDictionary(*opened.movie) : QVariantMap());
    delivery.info.insert(kZelMovieMetadataKey, metadata);
    if (opened.error)
        delivery.info.insert(QStringLiteral("error"), QVariant::fromValue(opened.error));
    delivery.request = std::move(request);
    delivery.movie = std::move(opened.movie);
    return delivery;
}

/// The names of a movie's codecs, as far as they are known.
std::optional<QStringList> codecsOf(const OpenedMovie &opened)
{
    if (!opened.movie)
        return {};
    QStringList names;
    for (const QTTrack &track : opened.movie->tracks) {
        if (track.sound && !track.sound->name.isEmpty())
            names << track.sound->name;
        if (track.image && !track.image->name.isEmpty())
            names << track.image->name;
    }
    return names.isEmpty() ? std::nullopt : std::optional(names);
}

/// Where the file system is mounted that a path lies on, by the path alone: what does not answer is not asked. Empty
/// for that of the root.
QByteArray mountPointOf(const QString &path, const std::vector<Mount> &mounts)
{
    const QByteArray absolute = fileSystemRepresentation(QDir::cleanPath(QDir::current().absoluteFilePath(path)));
    QByteArray longest;
    for (const Mount &mount : mounts) {
        const bool isBelow = absolute.startsWith(mount.point + '/') || absolute == mount.point;
        if (mount.point != "/" && isBelow && mount.point.size() > longest.size())
            longest = mount.point;
    }
    return longest;
}

NSError silentFileError(const QByteArray &path, const QString &reason)
{
    return mediaError(ioErr, path, reason,
                      QStringLiteral("Check the drive, or the connection to the computer that it lies on."));
}

} // namespace

KRMovieInfoReceiver::~KRMovieInfoReceiver() = default;

void KRMovieInfoReceiver::KRMovieInfoDidDescribe(const QString & /*path*/, const MovieDescription * /*movie*/) { }

bool KRMovieInfoReceiver::wantsArtworks() const
{
    return true;
}

/// The queue and the thread that works on it. Threads hold it: one that the system holds may outlive all else.
class KRMovieInfo::State : public std::enable_shared_from_this<State>
{
public:
    void append(MovieRequest request);
    void getAllInfo();
    void close();
    [[nodiscard]] OpenedMovie describe(const QString &path, const std::stop_token &stop) const;

    mutable std::mutex queueLock; ///< guards what follows; never held while a file is read
    MovieRequestQueue queue;
    std::chrono::milliseconds patience = usualPatience;
    Describer describer;

private:
    /// One file on its way. Guarded by the lock.
    struct Reading {
        QString path; ///< null until the thread has taken it
        std::stop_source stop;
        bool isGivenUp = false;
        bool hasEnded = false;
    };
    struct Worker {
        std::shared_ptr<Reading> reading;
        std::thread thread;
    };

    void joinEnded();
    void startThread();
    void getInfoForNextMovieOnThread(const std::shared_ptr<Reading> &reading);
    [[nodiscard]] OpenedMovie openedMovie(const QString &path, const std::stop_token &stop,
                                          const QStringList &silentPaths) const;
    void ended(const std::shared_ptr<Reading> &reading);
    void deliver(const QString &path, OpenedMovie opened, const QVariantMap &metadata);
    void giveUpLater(const std::shared_ptr<Reading> &reading, std::chrono::milliseconds after);
    void giveUp(const std::shared_ptr<Reading> &reading, std::chrono::milliseconds after);
    static void informAboutInfo(const Delivery &delivery);

    bool isGettingInfo = false; ///< while a thread reads that was not given up
    std::vector<Worker> workers; ///< that one, and those that were given up or have just ended
    std::condition_variable workerEnded;
};

void KRMovieInfo::State::append(MovieRequest request)
{
    {
        const std::lock_guard lock(queueLock);
        queue.append(std::move(request));
    }
    getAllInfo();
}

void KRMovieInfo::State::getAllInfo()
{
    const std::lock_guard lock(queueLock);
    joinEnded();
    if (!isGettingInfo && !queue.isEmpty())
        startThread();
}

/// A thread that has said its last word under the lock returns without waiting for anything.
void KRMovieInfo::State::joinEnded()
{
    for (Worker &worker : workers) {
        if (worker.reading->hasEnded)
            worker.thread.join();
    }
    std::erase_if(workers, [](const Worker &worker) { return worker.reading->hasEnded; });
}

void KRMovieInfo::State::startThread()
{
    const auto reading = std::make_shared<Reading>();
    const std::shared_ptr<State> self = shared_from_this();
    try {
        workers.push_back({reading, {}});
        workers.back().thread = std::thread([self, reading] { self->getInfoForNextMovieOnThread(reading); });
    } catch (const std::system_error &) {
        workers.pop_back();
        performOnMainThread(
            [self] { performAfterDelay(self.get(), pauseWithoutThreads, [self] { self->getAllInfo(); }); });
        return;
    }
    isGettingInfo = true;
    performOnMainThread([self, reading, after = patience] { self->giveUpLater(reading, after); });
}

void KRMovieInfo::State::getInfoForNextMovieOnThread(const std::shared_ptr<Reading> &reading)
{
    QString path;
    bool wantsArtworks = true;
    QStringList silentPaths;
    {
        const std::lock_guard lock(queueLock);
        const bool asksForNothing = !queue.isEmpty() && queue[0].path.isNull();
        if (asksForNothing)
            queue.removeFirst();
        if (asksForNothing || queue.isEmpty())
            return ended(reading);
        path = reading->path = queue[0].path;
        wantsArtworks = queue[0].wantsArtworks;
        for (const Worker &worker : workers) {
            if (worker.reading->isGivenUp && !worker.reading->hasEnded)
                silentPaths << worker.reading->path;
        }
    }
    OpenedMovie opened;
    QVariantMap metadata;
    try {
        opened = openedMovie(path, reading->stop.get_token(), silentPaths);
        if (opened.movie) {
            metadata = metadataDictionary(opened.movie->metadata);
            const QImage artwork = wantsArtworks ? artworkForFile(path) : QImage();
            if (!artwork.isNull())
                metadata.insert(kZelAudioInfoArtworks, QVariantList{artwork});
        }
    } catch (const std::bad_alloc &) {
        opened = {{}, mediaOpenError(ENOMEM, fileSystemRepresentation(path))};
    }
    const std::lock_guard lock(queueLock);
    if (!reading->isGivenUp)
        deliver(path, std::move(opened), metadata);
    ended(reading);
}

/// Under the lock, last of all.
void KRMovieInfo::State::ended(const std::shared_ptr<Reading> &reading)
{
    reading->hasEnded = true;
    if (!reading->isGivenUp)
        isGettingInfo = false;
    workerEnded.notify_all();
    performOnMainThread([self = shared_from_this(), reading] {
        cancelPreviousPerformRequests(reading.get());
        self->getAllInfo();
    });
}

OpenedMovie KRMovieInfo::State::describe(const QString &path, const std::stop_token &stop) const
{
    Describer given;
    {
        const std::lock_guard lock(queueLock);
        given = describer;
    }
    const QByteArray bytes = fileSystemRepresentation(path);
    Result<MovieDescription> movie = given ? given(bytes, stop) : describeMovie(bytes, stop);
    return movie ? OpenedMovie{*std::move(movie), {}} : OpenedMovie{{}, movie.error()};
}

/// The file is read here in either case. A movie of Windows Media passes through the main thread, where such movies are
/// opened; that thread has nothing to wait for then.
OpenedMovie KRMovieInfo::State::openedMovie(const QString &path, const std::stop_token &stop,
                                            const QStringList &silentPaths) const
{
    if (!silentPaths.isEmpty()) {
        const std::vector<Mount> mounts = currentMounts();
        const QByteArray mount = mountPointOf(path, mounts);
        const bool isSilent = !mount.isEmpty()
            && std::any_of(silentPaths.begin(), silentPaths.end(),
                           [&](const QString &silent) { return mountPointOf(silent, mounts) == mount; });
        if (isSilent)
            return {{},
                    silentFileError(fileSystemRepresentation(path),
                                    QStringLiteral("another file on %1 does not answer").arg(quoted(mount)))};
    }
    OpenedMovie read = describe(path, stop), opened;
    const auto open = [&] { opened = std::move(read); };
    if (isWindowsMedia(path, codecsOf(read), contentTypeTree(path)))
        performOnMainThreadAndWait(open);
    else
        open();
    return opened;
}

/// Under the lock. The request is gone when it was withdrawn meanwhile.
void KRMovieInfo::State::deliver(const QString &path, OpenedMovie opened, const QVariantMap &metadata)
{
    const std::ptrdiff_t index = queue.indexOfItemWithPath(path);
    if (index < 0)
        return;
    const auto delivery =
        std::make_shared<const Delivery>(deliveryOf(queue.take(std::size_t(index)), std::move(opened), metadata));
    performOnMainThread([delivery] { informAboutInfo(*delivery); });
}

void KRMovieInfo::State::informAboutInfo(const Delivery &delivery)
{
    for (const Receiver &one : delivery.request.receivers) {
        const std::shared_ptr<KRMovieInfoReceiver> receiver = one.lock();
        if (!receiver)
            continue;
        receiver->KRMovieInfoDidDescribe(delivery.request.path, delivery.movie ? &*delivery.movie : nullptr);
        receiver->KRMovieInfoDidGetInfo(delivery.info);
    }
}

/// On the main thread.
void KRMovieInfo::State::giveUpLater(const std::shared_ptr<Reading> &reading, std::chrono::milliseconds after)
{
    performAfterDelay(reading.get(), after,
                      [self = shared_from_this(), reading, after] { self->giveUp(reading, after); });
}

/// On the main thread.
void KRMovieInfo::State::giveUp(const std::shared_ptr<Reading> &reading, std::chrono::milliseconds after)
{
    {
        const std::lock_guard lock(queueLock);
        if (reading->hasEnded)
            return;
        if (reading->path.isNull()) // The system has not run the thread yet.
            return giveUpLater(reading, after);
        reading->isGivenUp = true;
        reading->stop.request_stop();
        isGettingInfo = false;
        const QString reason =
            QStringLiteral("it has not answered for %1")
                .arg(counted(std::uint64_t(std::max<std::int64_t>(after / 1s, 1)), "second", "seconds"));
        deliver(reading->path, {{}, silentFileError(fileSystemRepresentation(reading->path), reason)}, {});
    }
    getAllInfo();
}

void KRMovieInfo::State::close()
{
    std::vector<Worker> last;
    {
        std::unique_lock lock(queueLock);
        queue.clear();
        for (const Worker &worker : workers)
            worker.reading->stop.request_stop();
        workerEnded.wait_for(lock, patienceAtTheEnd, [this] {
            return std::all_of(workers.begin(), workers.end(),
                               [](const Worker &worker) { return worker.reading->hasEnded; });
        });
        last.swap(workers);
        for (Worker &worker : last) {
            if (!worker.reading->hasEnded)
                worker.thread.detach();
        }
    }
    for (Worker &worker : last) {
        if (worker.thread.joinable())
            worker.thread.join();
    }
}

KRMovieInfo::KRMovieInfo()
    : d(std::make_shared<State>())
{
    // What the threads use when they end must outlive this object at the end of the process.
    performOnMainThread([] {});
}

KRMovieInfo::~KRMovieInfo()
{
    d->close();
}

std::shared_ptr<KRMovieInfo> KRMovieInfo::sharedInstance()
{
    static const std::shared_ptr<KRMovieInfo> instance(new KRMovieInfo);
    return instance;
}

std::shared_ptr<KRMovieInfo> KRMovieInfo::init()
{
    return sharedInstance();
}

void KRMovieInfo::getInfoForMovieAtPath(const QString &path, const std::shared_ptr<KRMovieInfoReceiver> &andNotify)
{
    MovieRequest request;
    request.path = path;
    if (andNotify) {
        request.receivers.push_back(andNotify);
        request.wantsArtworks = andNotify->wantsArtworks();
    }
    d->append(std::move(request));
}

void KRMovieInfo::abortInfoRequestForReceiver(const std::shared_ptr<KRMovieInfoReceiver> &receiver)
{
    const std::lock_guard lock(d->queueLock);
    if (receiver)
        d->queue.withdraw(receiver.get());
}

void KRMovieInfo::stopAll()
{
    const std::lock_guard lock(d->queueLock);
    d->queue.clear();
}

void KRMovieInfo::getAllInfo()
{
    d->getAllInfo();
}

std::ptrdiff_t KRMovieInfo::indexOfItemWithPath(const QString &path) const
{
    const std::lock_guard lock(d->queueLock);
    return d->queue.indexOfItemWithPath(path);
}

bool KRMovieInfo::isWindowsMediaMovie(const QString &path) const
{
    return !path.isNull() && isWindowsMedia(path, codecsOf(d->describe(path, {})), contentTypeTree(path));
}

QImage KRMovieInfo::artworkForFile(const QString &path)
{
    return movieArtwork(path);
}

void KRMovieInfo::setPatience(std::chrono::milliseconds patience)
{
    const std::lock_guard lock(d->queueLock);
    d->patience = patience;
}

void KRMovieInfo::setDescriber(Describer describer)
{
    const std::lock_guard lock(d->queueLock);
    d->describer = std::move(describer);
}

int setTitleAuthorAlbumOfMovieFile(const char * /*path*/, const char * /*title*/, const char * /*author*/,
                                   const char * /*album*/)
{
    return 0;
}

} // namespace Tessaron
