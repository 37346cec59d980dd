#include "imaging/jobs/DiscJobWork.h"
#include "media/jobs/MediaFileWalk.h"
#include "media/jobs/StagedResult.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/PathBytes.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "platform/quicktime/MediaErrors.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/InfoJob.h>
#include <TessaronClasses/KRMovieInfo.h>

#include <QDir>

#include <cerrno>
#include <deque>
#include <fcntl.h>
#include <functional>
#include <stdexcept>
#include <utility>

namespace Tessaron
{

namespace
{

NSError artworkFailure(const QByteArray &source, const QString &reason)
{
    return discJobError(DiscJobErrorCode::Write,
                        QStringLiteral("the cover of %1 cannot be written: %2").arg(quoted(source), reason), {},
                        source);
}

/// The name of the file with another extension.
QByteArray nameOfArtwork(const MovieFileInfo &file)
{
    QByteArray name = lastPathComponent(file.path).toByteArray();
    if (const qsizetype dot = name.lastIndexOf('.'); dot > 0)
        name.truncate(dot);
    return name + '.' + file.movie.cover->extension;
}

/// 0 or the errno value.
int writeFile(const QByteArray &path, const QByteArray &bytes)
{
    UniqueDescriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    int failure = file ? writeFully(file.get(), bytes.constData(), std::size_t(bytes.size())) : errno;
    if (!file.closeAndReport() && failure == 0)
        failure = errno;
    return failure;
}

QByteArray absolutePath(const QByteArray &path)
{
    return fileSystemRepresentation(QDir::current().absoluteFilePath(stringWithFileSystemRepresentation(path)));
}

/// Writes the cover into the folder under a name of its own, which it returns; nothing is left of one that is cut.
Result<QByteArray> writeArtwork(const MovieFileInfo &file, const QByteArray &folder, MadeFolders &folders,
                                const std::stop_token &stop)
{
    const Result<QByteArray> picture = pictureOfCover(file.path, *file.movie.cover, stop);
    if (!picture)
        return artworkFailure(file.path, picture.error().localizedFailureReason());
    const Result<std::unique_ptr<StagedResult>> stage =
        StagedResult::create(childPath(absolutePath(folder), nameOfArtwork(file)), folders);
    if (!stage)
        return artworkFailure(file.path, stage.error().localizedDescription());
    if (const int failure = writeFile((*stage)->path(), *picture))
        return artworkFailure(file.path, systemText(failure));
    const Result<QByteArray> path = (*stage)->publish();
    if (!path)
        return artworkFailure(file.path, path.error().localizedDescription());
    return *path;
}

/// How many files are found ahead of those that are looked at.
constexpr std::size_t filesAtOnce = 200;

} // namespace

bool InfoResult::isComplete() const
{
    return !error && failureCount == 0 && noMovieCount == 0 && unreadable.empty();
}

/// Finds some files in the background, asks for one after the other, then finds the next ones.
class InfoJob::Work final : public DiscJobWork
{
public:
    explicit Work(InfoOrder given)
        : order(std::move(given))
        , walk(order.paths)
        , receiver(std::make_shared<Receiver>(*this))
    {
    }

    void begin() override { askForNext(); }
    void stop() override;
    [[nodiscard]] DiscJobProgress progress() const override;

    const InfoOrder order;
    InfoResult result;
    std::function<void(const MovieFileInfo &)> tell;

private:
    /// Hears of the file that was asked for, as long as the work is there.
    class Receiver final : public KRMovieInfoReceiver
    {
    public:
        explicit Receiver(Work &work)
            : m_work(work)
        {
        }
        void KRMovieInfoDidDescribe(const QString & /*path*/, const MovieDescription *movie) override
        {
            m_movie = movie ? *movie : MovieDescription();
        }
        // Covers are taken out as they are stored.
        [[nodiscard]] bool wantsArtworks() const override { return false; }
        void KRMovieInfoDidGetInfo(const QVariantMap &info) override
        {
            m_work.gotInfo(std::move(m_movie), info.value(QStringLiteral("error")).value<NSError>());
        }

    private:
        Work &m_work;
        MovieDescription m_movie;
    };

    void findFiles();
    void askForNext();
    void gotInfo(MovieDescription movie, const NSError &error);
    void takeArtworkOut();
    void fileEnded();
    void endWith(const NSError &error);

    MadeFolders folders; ///< goes behind what is made in them; the background's alone
    MediaFileWalk walk; ///< the background's while it runs
    std::deque<FoundMediaFile> found;
    bool isWalkOver = false;
    bool isArtworkFolderSwept = false; ///< of what killed processes left in it
    MovieFileInfo file; ///< the one that is being looked at
    bool wasFileGiven = false;
    const std::shared_ptr<Receiver> receiver;
    bool isAsking = false; ///< a request of ours is in the queue
};

void InfoJob::Work::findFiles()
{
    runInBackground(
        [this](const std::stop_token &stop) {
            if (!std::exchange(isArtworkFolderSwept, true) && !order.artworkFolder.isEmpty())
                StagedResult::removeAbandoned(absolutePath(order.artworkFolder));
            while (found.size() < filesAtOnce && !isWalkOver) {
                std::optional<FoundMediaFile> next = walk.next(stop);
                if (next)
                    found.push_back(*std::move(next));
                else
                    isWalkOver = true;
            }
            return NSError();
        },
        [this](const NSError &error) {
            const MediaFileRemarks &remarks = walk.remarks();
            if (result.unreadable.size() < remarks.unreadable.size())
                result.unreadable = remarks.unreadable;
            result.leftOut = remarks.leftOut;
            result.leftOutSpecial = remarks.leftOutSpecial;
            if (error)
                endWith(error);
            else
                askForNext();
        });
}

void InfoJob::Work::askForNext()
{
    for (; !found.empty() && found.front().error && !isCancelled(); found.pop_front()) {
        file = {};
        file.path = found.front().path;
        file.error = found.front().error;
        fileEnded();
    }
    if (isCancelled() || (found.empty() && isWalkOver))
        return endWith({});
    if (found.empty())
        return findFiles();
    file = {};
    file.path = found.front().path;
    wasFileGiven = found.front().wasGiven;
    found.pop_front();
    isAsking = true;
    KRMovieInfo::sharedInstance()->getInfoForMovieAtPath(stringWithFileSystemRepresentation(file.path), receiver);
}

void InfoJob::Work::gotInfo(MovieDescription movie, const NSError &error)
{
    // A cancel may come between the reading and this.
    if (!std::exchange(isAsking, false))
        return;
    if (isLackOfDescriptors(error)) // The next file would have it, too: it is told once.
        return endWith(discJobError(DiscJobErrorCode::Source, error.localizedDescription(),
                                    error.localizedRecoverySuggestion(), file.path, error.code()));
    file.movie = std::move(movie);
    file.error = error;
    file.isNoMovie = !wasFileGiven && error.domain() == NSOSStatusErrorDomain && error.code() == noMovieFound;
    if (!error && file.movie.cover && !order.artworkFolder.isEmpty())
        return takeArtworkOut();
    fileEnded();
    askForNext();
}

void InfoJob::Work::takeArtworkOut()
{
    runInBackground(
        [this](const std::stop_token &stop) {
            Result<QByteArray> path = writeArtwork(file, order.artworkFolder, folders, stop);
            if (path)
                file.artwork = *std::move(path);
            else if (!stop.stop_requested())
                file.artworkError = path.error();
            return NSError();
        },
        [this](const NSError &error) {
            if (error)
                file.artworkError = error;
            fileEnded();
            askForNext();
        });
}

void InfoJob::Work::fileEnded()
{
    ++result.fileCount;
    if (file.isNoMovie)
        ++result.noMovieCount;
    else if (file.error || file.artworkError)
        ++result.failureCount;
    tell(file);
    if (order.areFilesKept)
        result.files.push_back(std::move(file));
}

void InfoJob::Work::endWith(const NSError &error)
{
    result.error = cancellationOr(error);
    end(result.error);
}

void InfoJob::Work::stop()
{
    if (!std::exchange(isAsking, false))
        return;
    // One request at a time: but others of the program may follow it in the queue, which is raised then.
    try {
        KRMovieInfo::sharedInstance()->abortInfoRequestForReceiver(receiver);
    } catch (const std::logic_error &) {
        // It is out all the same.
    }
    askForNext();
}

DiscJobProgress InfoJob::Work::progress() const
{
    DiscJobProgress progress;
    progress.phase = DiscJobPhase::Scanning;
    progress.files = result.fileCount;
    return progress;
}

InfoJob::InfoJob(InfoOrder order, QObject *parent)
    : InfoJob(std::make_unique<Work>(std::move(order)).release(), parent)
{
}

InfoJob::InfoJob(Work *work, QObject *parent)
    : DiscJob(std::unique_ptr<DiscJobWork>(work), parent)
    , m_work(work)
{
    work->tell = [this](const MovieFileInfo &file) { Q_EMIT described(file); };
}

InfoJob::~InfoJob() = default;

const InfoResult &InfoJob::result() const
{
    return m_work->result;
}

void InfoJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
