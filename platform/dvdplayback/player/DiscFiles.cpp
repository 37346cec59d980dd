#include "platform/dvdplayback/player/DiscFiles.h"

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/dvdplayback/DVDErrors.h"
#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/player/ImageInput.h"
#include "platform/foundation/DirectoryStream.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/PathBytes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

/// The name of the folder's entry that is that name in any case; empty without one.
QByteArray entryNamed(const QByteArray &folder, const char *name)
{
    const DirectoryStream entries =
        directoryStream(UniqueDescriptor(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    while (entries) {
        const struct dirent *const entry = ::readdir(entries.get());
        if (!entry)
            break;
        if (qstricmp(entry->d_name, name) == 0)
            return entry->d_name;
    }
    return {};
}

bool holdsTables(const QByteArray &folder)
{
    return !entryNamed(folder, "VIDEO_TS.IFO").isEmpty() || !entryNamed(folder, "VIDEO_TS.BUP").isEmpty();
}

NSError noDisc(const QByteArray &path, const QString &reason)
{
    return dvdError(kDVDErrorNoValidMedia, path, reason);
}

void keep(void *disc, dvd_logger_level_t level, const char *format, va_list arguments)
{
    if (level == DVD_LOGGER_LEVEL_ERROR || level == DVD_LOGGER_LEVEL_WARN)
        static_cast<DiscFiles *>(disc)->log().add(format, arguments);
}

constexpr dvd_logger_cb logCallback = {keep};

/// The library reads blocks of 2048 bytes from the begin of a file itself.
NSError openImage(const DiscPlace &place)
{
    constexpr std::uint32_t plainSector = 2048;
    const DiscImageSourceResult opened =
        DiscImageSource::sourceWithFile(stringWithFileSystemRepresentation(place.path));
    if (!opened.source)
        return noDisc(place.given, opened.error.localizedFailureReason());
    const DiscImageSectors &sectors = opened.source->sectors();
    if (sectors.size != plainSector || sectors.start != 0)
        ImageInput::use(opened.source);
    // The library does not tell what cannot be read from what is not there.
    std::array<char, plainSector> anchor;
    constexpr std::uint64_t placeOfAnchor =
        std::uint64_t(256) * plainSector; // of every UDF volume (ECMA-167 3/8.4.2.1)
    if (opened.source->contains(placeOfAnchor, anchor.size())) {
        if (const NSError error = opened.source->read(placeOfAnchor, anchor.data(), anchor.size()))
            return noDisc(place.given, error.localizedFailureReason());
    }
    return {};
}

/// Of an image that the library has opened, which it does with any file.
NSError errorOfVolume(const DiscPlace &place, dvd_reader_t *reader)
{
    std::array<char, 33> name{};
    if (DVDUDFVolumeInfo(reader, name.data(), unsigned(name.size()), nullptr, 0) != 0)
        return noDisc(place.given, QStringLiteral("there is no UDF volume in it, as every video DVD has one"));
    std::uint32_t size = 0;
    if (UDFFindFile(reader, "/VIDEO_TS/VIDEO_TS.IFO", &size) == 0
        && UDFFindFile(reader, "/VIDEO_TS/VIDEO_TS.BUP", &size) == 0)
        return noDisc(place.given, QStringLiteral("there is no VIDEO_TS.IFO in a folder VIDEO_TS of its UDF volume"));
    return {};
}

/// Of a folder that may not be listed: what is in it is not known then.
NSError errorOfListing(const DiscPlace &place, const QByteArray &folder)
{
    if (::faccessat(AT_FDCWD, folder.constData(), R_OK | X_OK, AT_EACCESS) == 0)
        return {};
    return noDisc(place.given, NSError::errorWithErrno(errno, {}).localizedFailureReason());
}

} // namespace

Result<DiscPlace> findDisc(const QByteArray &path)
{
    const std::unique_ptr<char, FreeBy<std::free>> real(::realpath(path.constData(), nullptr));
    struct stat status;
    if (!real || ::stat(real.get(), &status) != 0)
        return dvdError(kDVDErrorNoValidMedia, path, NSError::errorWithErrno(errno, {}).localizedFailureReason());
    DiscPlace place = {path, real.get(), S_ISDIR(status.st_mode)};
    if (!place.isFolder) {
        if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode))
            return noDisc(path, QStringLiteral("it is neither a folder nor an image nor a device"));
        return place;
    }
    if (const NSError error = errorOfListing(place, place.path))
        return error;
    if (!holdsTables(place.path)) {
        const QByteArray below = entryNamed(place.path, "VIDEO_TS");
        if (!below.isEmpty()) {
            if (const NSError error = errorOfListing(place, childPath(place.path, below)))
                return error;
        }
        if (below.isEmpty() || !holdsTables(childPath(place.path, below)))
            return noDisc(path, QStringLiteral("there is no VIDEO_TS.IFO in it, nor in a folder VIDEO_TS"));
        place.path = childPath(place.path, below);
    }
    return place;
}

DiscFiles::DiscFiles(DiscPlace place)
    : m_place(std::move(place))
{
}

Result<std::unique_ptr<DiscFiles>> DiscFiles::open(const DiscPlace &place)
{
    if (!place.isFolder) {
        if (const NSError error = openImage(place))
            return error;
    }
    std::unique_ptr<DiscFiles> disc(new DiscFiles(place));
    disc->m_reader.reset(DVDOpen2(disc.get(), &logCallback, place.path.constData()));
    if (!disc->m_reader)
        return noDisc(place.given, QStringLiteral("it holds no video DVD"));
    if (!place.isFolder) {
        if (const NSError error = errorOfVolume(place, disc->reader()))
            return error;
    }
    return disc;
}

} // namespace Tessaron
