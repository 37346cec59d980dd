#include "platform/quicktime/MovieDescription.h"

#include "platform/quicktime/MediaErrors.h"
#include "platform/quicktime/MediaModule.h"
#include "platform/quicktime/QuickTimeDescription.h"

namespace Tessaron
{

namespace
{

constexpr std::int64_t longestPicture = std::int64_t(64) << 20;

NSError noCoverError(const QByteArray &path, const QString &why)
{
    return mediaError(invalidMovie, path, why, QStringLiteral("The file is damaged or has changed; look at it again."));
}

} // namespace

Result<MovieDescription> describeMovie(const QByteArray &path, const std::stop_token &stop)
{
    {
        const Result<MediaFile> file = MediaFile::open(path);
        if (!file)
            return file.error();
        Result<std::optional<MovieDescription>> movie = quickTimeDescription(*file, stop);
        if (!movie)
            return movie.error();
        if (*movie)
            return **std::move(movie);
    }
    const Result<const MediaService *> service = mediaService(path);
    if (!service)
        return service.error();
    return (*service)->describeMovie(path, stop);
}

Result<QByteArray> pictureOfCover(const QByteArray &path, const MovieCover &cover, const std::stop_token &stop)
{
    if (cover.length <= 0 || cover.length > longestPicture)
        return noCoverError(path, QStringLiteral("its cover has a length that makes no sense"));
    if (cover.offset < 0) {
        const Result<const MediaService *> service = mediaService(path);
        if (!service)
            return service.error();
        return (*service)->pictureOfCover(path, stop);
    }
    const Result<MediaFile> file = MediaFile::open(path);
    if (!file)
        return file.error();
    QByteArray picture = file->bytesAt(cover.offset, cover.length);
    if (picture.size() < cover.length)
        return noCoverError(path, QStringLiteral("its cover is cut"));
    return picture;
}

} // namespace Tessaron
