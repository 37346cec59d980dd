#include "platform/quicktime/QTMovie.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/MediaModule.h"
#include "platform/quicktime/MovieStorage.h"
#include "platform/quicktime/MovieTimes.h"

#include <algorithm>

namespace Tessaron
{

const QString QTMovieFileNameAttribute = QStringLiteral("QTMovieFileNameAttribute");
const QString QTMovieOpenAsyncOKAttribute = QStringLiteral("QTMovieOpenAsyncOKAttribute");

namespace
{

std::shared_ptr<QTMovie> failed(NSError *to, const NSError &error)
{
    if (to)
        *to = error;
    return nullptr;
}

} // namespace

std::shared_ptr<QTMovie> QTMovie::newMovie()
{
    return std::shared_ptr<QTMovie>(new QTMovie);
}

std::shared_ptr<QTMovie> QTMovie::initWithAttributes(const QVariantMap &attributes, NSError *error,
                                                     const std::stop_token &stop)
{
    const QString name = attributes.value(QTMovieFileNameAttribute).toString();
    return movieByOpeningFileSync(fileSystemRepresentation(name), error, stop);
}

std::shared_ptr<QTMovie> QTMovie::movieByOpeningFileSync(const QByteArray &path, NSError *error,
                                                         const std::stop_token &stop)
{
    if (error)
        *error = NSError();
    const Result<const MediaService *> service = mediaService(path);
    if (!service)
        return failed(error, service.error());
    Result<MovieContents> contents = (*service)->openMovie(path, stop);
    if (!contents)
        return failed(error, contents.error());
    auto movie = newMovie();
    movie->m_path = path;
    movie->m_duration = contents->duration;
    movie->m_soundRate = contents->soundRate;
    movie->m_tracks = std::move(contents->tracks);
    return movie;
}

Result<std::uint64_t> QTMovie::dataSizeOfTrack(std::size_t index, const std::stop_token &stop) const
{
    const Result<const MediaService *> service = mediaService(m_path);
    if (!service)
        return service.error();
    return (*service)->sizeOfTrack(m_path, index, stop);
}

NSError InsertMovieSegment(const QTMovie &source, QTMovie &destination, std::int64_t sourceIn,
                           std::int64_t sourceDuration)
{
    const QTTime whole = source.duration();
    if (source.m_soundRate == 0)
        return mediaError(invalidMedia, source.path(), QStringLiteral("it holds no sound"),
                          QStringLiteral("Choose a file with sound."));
    if (sourceIn < 0 || sourceDuration <= 0 || sourceIn >= whole.timeValue)
        return mediaError(invalidTime, source.path(), QStringLiteral("it has no sound at this time"),
                          QStringLiteral("Choose a part that lies within the file."));
    const std::int64_t left = whole.timeValue - sourceIn;
    const std::int64_t end = sourceIn + std::min(sourceDuration, left);
    const auto samples = [&](std::int64_t time) { return rescaledTime(time, source.m_soundRate, whole.timeScale); };
    // Up to the very end means to the last sample, however coarse the movie's times are.
    const std::int64_t lastSample = sourceDuration >= left ? INT64_MAX : samples(end);
    destination.m_segments.push_back({source.path(), samples(sourceIn), lastSample});
    destination.m_duration.timeScale = whole.timeScale;
    destination.m_duration.timeValue += end - sourceIn;
    return {};
}

void MovieStorageDeleter::operator()(MovieStorage *storage) const
{
    delete storage;
}

Result<MovieStorageHandle> CreateMovieStorage(const QByteArray &path)
{
    return MovieStorage::create(path);
}

NSError AddMovieToStorage(const QTMovie &movie, MovieStorage &storage, const std::stop_token &stop)
{
    const Result<const MediaService *> service = mediaService(storage.path());
    if (!service)
        return service.error();
    const NSError error = (*service)->writeMovie(movie.segments(), storage, stop);
    return storage.failure() ? storage.failure() : error;
}

NSError CloseMovieStorage(MovieStorageHandle storage)
{
    return storage ? storage->close() : NSError();
}

} // namespace Tessaron
