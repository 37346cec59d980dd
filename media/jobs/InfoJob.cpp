#include "imaging/jobs/DiscJobWork.h"
#include "media/jobs/StagedResult.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/PathBytes.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/InfoJob.h>
#include <TessaronClasses/KRMovieInfo.h>

#include <QDir>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
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

/// Writes the cover into the folder under a name of its own, which it returns; nothing is left of one that is cut.
Result<QByteArray> writeArtwork(const MovieFileInfo &file, const QByteArray &folder, const std::stop_token &stop)
{
    const Result<QByteArray> picture = pictureOfCover(file.path, *file.movie.cover, stop);
    if (!picture)
        return artworkFailure(file.path, picture.error().localizedFailureReason());
    const QString absolute = QDir::current().absoluteFilePath(stringWithFileSystemRepresentation(folder));
    const Result<std::unique_ptr<StagedResult>> stage =
        StagedResult::create(childPath(fileSystemRepresentation(absolute), nameOfArtwork(file)));
    if (!stage)
        return artworkFailure(file.path, stage.error().localizedDescription());
    if (const int failure = writeFile((*stage)->path(), *picture))
        return artworkFailure(file.path, systemText(failure));
    const Result<QByteArray> path = (*stage)->publish();
    if (!path)
        return artworkFailure(file.path, path.error().localizedDescription());
    return *path;
}

} // namespace

std::size_t InfoResult::failures() const
{
    return std::size_t(std::count_if(files.begin(), files.end(),
                                     [](const MovieFileInfo &file) { return file.error || file.artworkError; }));
}

class InfoJob::Work final : public DiscJobWork
{
public:
    explicit Work(InfoOrder given)
        : order(std::move(given))
        , receiver(std::make_shared<Receiver>(*this))
    {
    }

    void begin() override { askForNext(); }
    void stop() override;
    [[nodiscard]] DiscJobProgress progress() const override;

    const InfoOrder order;
    InfoResult result;

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

    void askForNext();
    void gotInfo(MovieDescription movie, const NSError &error);
    void takeArtworkOut();

    const std::shared_ptr<Receiver> receiver;
    bool isAsking = false; ///< a request of ours is in the queue
};

void InfoJob::Work::askForNext()
{
    const std::size_t next = result.files.size();
    if (isCancelled() || next == std::size_t(order.paths.size())) {
        result.error = cancellationOr({});
        end(result.error);
        return;
    }
    isAsking = true;
    const QString path = stringWithFileSystemRepresentation(order.paths[qsizetype(next)]);
    KRMovieInfo::sharedInstance()->getInfoForMovieAtPath(path, receiver);
}

void InfoJob::Work::gotInfo(MovieDescription movie, const NSError &error)
{
    // A cancel may come between the reading and this.
    if (!std::exchange(isAsking, false))
        return;
    MovieFileInfo file;
    file.path = order.paths[qsizetype(result.files.size())];
    file.movie = std::move(movie);
    file.error = error;
    result.files.push_back(std::move(file));
    const MovieFileInfo &last = result.files.back();
    if (!last.error && last.movie.cover && !order.artworkFolder.isEmpty())
        takeArtworkOut();
    else
        askForNext();
}

void InfoJob::Work::takeArtworkOut()
{
    runInBackground(
        [this](const std::stop_token &stop) {
            MovieFileInfo &file = result.files.back();
            const Result<QByteArray> path = writeArtwork(file, order.artworkFolder, stop);
            file.artworkError = path.error();
            if (path)
                file.artwork = *path;
            return NSError();
        },
        [this](const NSError &error) {
            if (error)
                result.files.back().artworkError = error;
            askForNext();
        });
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
    progress.files = result.files.size();
    return progress;
}

InfoJob::InfoJob(InfoOrder order, QObject *parent)
    : DiscJob(std::make_unique<Work>(std::move(order)), parent)
{
}

InfoJob::~InfoJob() = default;

const InfoResult &InfoJob::result() const
{
    return static_cast<const Work &>(work()).result;
}

void InfoJob::announceResult()
{
    Q_EMIT finished(result());
}

} // namespace Tessaron
