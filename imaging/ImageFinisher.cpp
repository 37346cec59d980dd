#include "imaging/ImageFinisher.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/CueSheetWriter.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/PathBytes.h"
#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/CueSheets.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t plainBlockSize = 2048;

QString nameOf(const QByteArray &path)
{
    return stringWithFileSystemRepresentation(path);
}

/// The sentence has "%1" where the path is to stand.
NSError fileError(OSStatus code, const QByteArray &path, const QString &sentence, const QString &suggestion)
{
    return NSError(NSOSStatusErrorDomain, code,
                   {{NSLocalizedDescriptionKey, sentence.arg(displayableText(nameOf(path)))},
                    {NSLocalizedRecoverySuggestionErrorKey, suggestion},
                    {NSFilePathErrorKey, nameOf(path)}});
}

/// The same, and the system's reason at the sentence's end.
NSError systemError(int errnoValue, const QByteArray &path, const QString &sentence, const QString &suggestion)
{
    const QString reason = QString::fromStdString(std::generic_category().message(errnoValue));
    return fileError(statusForErrno(errnoValue), path, sentence + QStringLiteral(": ") + reason + u'.', suggestion);
}

NSError writingError(int errnoValue, const QByteArray &path)
{
    return burnOutputError(errnoValue, nameOf(path));
}

bool isRegularFile(int descriptor, struct stat *status)
{
    return ::fstat(descriptor, status) == 0 && S_ISREG(status->st_mode);
}

QByteArray pathBeside(const QByteArray &imagePath, const QByteArray &extension)
{
    const QByteArrayView name = lastPathComponent(imagePath);
    const qsizetype dot = name.lastIndexOf('.');
    // A dot that begins the name hides the file; no extension begins with it.
    const QByteArray base = dot > 0 ? imagePath.chopped(name.size() - dot) : imagePath;
    const QByteArray path = base + extension;
    // An image that has this extension itself must not be overwritten.
    return path == imagePath ? path + extension : path;
}

/// Devices and pipes are kept; only a regular file or a link goes.
void removeFile(const QByteArray &path)
{
    struct stat status;
    if (::lstat(path.constData(), &status) == 0 && (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode)))
        ::unlink(path.constData());
}

} // namespace

QByteArray pathOfCueSheet(const QByteArray &imagePath)
{
    return pathBeside(imagePath, ".cue");
}

QByteArray pathOfCDTextFile(const QByteArray &imagePath)
{
    return pathBeside(imagePath, ".cdt");
}

TableOfContents contentsOfPlainImage(std::uint64_t bytes)
{
    DiscTrack track;
    track.kind = TrackKind::Mode1;
    track.blockSize = plainBlockSize;
    track.length = bytes / plainBlockSize;
    track.recording = {4, 16, 8, 0};
    return TableOfContents::withTrack(track);
}

bool isOnePlainTrack(const TableOfContents &contents)
{
    if (contents.trackCount() != 1)
        return false;
    TableOfContents plain = contents;
    DiscTrack &track = plain.sessions.front().tracks.front();
    // Numbers for a recorder have no place in any sheet.
    track.recording = {};
    if (track.kind == TrackKind::Unstated)
        track.kind = TrackKind::Mode1;
    TableOfContents expected = contentsOfPlainImage(contents.storedBytes());
    expected.sessions.front().tracks.front().recording = {};
    return plain == expected;
}

ImageFinisher::ImageFinisher(TessaronDiscImageFormat format, TableOfContents contents)
    : m_format(format)
    , m_contents(std::move(contents))
{
}

bool ImageFinisher::hasCueSheet() const
{
    return m_format == TessaronDiscImageFormatBIN;
}

bool ImageFinisher::hasCDTextFile() const
{
    return hasCueSheet() && needsCDTextFile(m_contents);
}

QStringList ImageFinisher::lost() const
{
    if (m_format == TessaronDiscImageFormatVANT) {
        TableOfContents withoutTexts = m_contents;
        withoutTexts.cdText = {}; // which go into records of their own
        return lostInVANT(withoutTexts);
    }
    if (!hasCueSheet())
        return {};
    const QByteArray cdTextFile = hasCDTextFile() ? pathOfCDTextFile("image") : QByteArray();
    const Result<CueSheetText> sheet = cueSheetForImage(m_contents, QByteArray(), cdTextFile);
    return sheet ? sheet->lost : QStringList();
}

NSError ImageFinisher::finish(const UnfinishedImage &image) const
{
    struct stat status;
    if (isRegularFile(image.descriptor, &status) && std::uint64_t(status.st_size) != m_contents.storedBytes())
        return fileError(
            ioErr, image.path,
            QStringLiteral("The image “%1” has another length than it must have: something else wrote to it."),
            QStringLiteral("Make it again, and leave it alone meanwhile."));
    NSError error;
    if (m_format == TessaronDiscImageFormatVANT)
        error = addTrailer(image.descriptor, image.path);
    if (!error && hasCueSheet())
        error = writeSheetAndTexts(image);
    if (!error)
        error = sync(image.descriptor, image.path);
    if (!error && hasCueSheet())
        error = sync(image.cueSheet, pathOfCueSheet(image.path));
    if (!error && image.cdTextFile >= 0)
        error = sync(image.cdTextFile, pathOfCDTextFile(image.path));
    if (error)
        return error;
    if (const int failure = image.giveNames ? image.giveNames() : 0)
        return systemError(failure, image.path, QStringLiteral("The image is made, but cannot get its name “%1”"),
                           QStringLiteral("Choose another place for the image."));
    return image.folder >= 0 ? syncFolder(image.folder, image.descriptor, image.path) : NSError();
}

NSError ImageFinisher::addTrailer(int descriptor, const QByteArray &imagePath) const
{
    const Result<QByteArray> packs = cdTextFor(imagePath);
    if (!packs)
        return packs.error();
    const Result<QByteArray> trailer = vantTrailer(m_contents, cdTextBlocksOfPacks(*packs));
    if (!trailer)
        return fileError(paramErr, imagePath,
                         QStringLiteral("No VANT trailer can describe the tracks of “%1”: ")
                             + trailer.error().localizedFailureReason(),
                         QStringLiteral("Choose another format."));
    struct stat status;
    // In a pipe or a device the blocks end where the position is.
    if (isRegularFile(descriptor, &status) && ::lseek(descriptor, status.st_size, SEEK_SET) < 0)
        return writingError(errno, imagePath);
    const int failure = writeFully(descriptor, trailer->constData(), std::size_t(trailer->size()));
    return failure == 0 ? NSError() : writingError(failure, imagePath);
}

/// The packs of CD-TEXT; none without texts.
Result<QByteArray> ImageFinisher::cdTextFor(const QByteArray &imagePath) const
{
    if (m_contents.cdText.isEmpty())
        return QByteArray();
    Result<QByteArray> packs = cdTextPacks(m_contents.cdText, std::uint32_t(m_contents.trackCount()));
    if (packs)
        return packs;
    return fileError(paramErr, imagePath,
                     QStringLiteral("The texts of “%1” cannot be stored: ") + packs.error().localizedFailureReason(),
                     packs.error().localizedRecoverySuggestion());
}

Result<QByteArray> ImageFinisher::cueSheetText(const QByteArray &imagePath, const QByteArray &cdTextFileName) const
{
    // ASCII, except that the image's name stands there as it is.
    if (isOnePlainTrack(m_contents))
        return fileSystemRepresentation(standardCueSheetForFile(nameOf(imagePath)));
    Result<CueSheetText> sheet =
        cueSheetForImage(m_contents, lastPathComponent(imagePath).toByteArray(), cdTextFileName);
    if (sheet)
        return std::move(sheet->text);
    const NSError &error = sheet.error();
    const QString remedy = error.localizedRecoverySuggestion();
    return fileError(paramErr, imagePath,
                     QStringLiteral("No cue sheet can describe the tracks of “%1”: ") + error.localizedFailureReason(),
                     remedy.isEmpty() ? QStringLiteral("Choose another format.") : remedy);
}

NSError ImageFinisher::writeCueSheet(int descriptor, const QByteArray &imagePath,
                                     const QByteArray &cdTextFileName) const
{
    const Result<QByteArray> sheet = cueSheetText(imagePath, cdTextFileName);
    if (!sheet)
        return sheet.error();
    const int failure = writeFully(descriptor, sheet->constData(), std::size_t(sheet->size()));
    return failure == 0 ? NSError() : writingError(failure, pathOfCueSheet(imagePath));
}

/// All that lies beside the image.
NSError ImageFinisher::writeSheetAndTexts(const UnfinishedImage &image) const
{
    const bool hasTexts = hasCDTextFile() && image.cdTextFile >= 0;
    const QByteArray textPath = pathOfCDTextFile(image.path);
    if (hasTexts) {
        Result<QByteArray> packs = cdTextFor(image.path);
        if (!packs)
            return packs.error();
        *packs += '\0'; // which ends such files
        const int failure = writeFully(image.cdTextFile, packs->constData(), std::size_t(packs->size()));
        if (failure != 0)
            return writingError(failure, textPath);
    }
    return writeCueSheet(image.cueSheet, image.path,
                         hasTexts ? lastPathComponent(textPath).toByteArray() : QByteArray());
}

NSError ImageFinisher::sync(int descriptor, const QByteArray &path) const
{
    const int failure = m_waitsForDisk ? syncToDisk(descriptor) : 0;
    return failure == 0 ? NSError() : writingError(failure, path);
}

/// The names are there already: what fails here leaves whole files that may not survive a crash.
NSError ImageFinisher::syncFolder(int folder, int image, const QByteArray &imagePath) const
{
    if (!m_waitsForDisk)
        return {};
    // The caller's descriptor may be one that only names the folder. A folder that may be written but not listed
    // cannot be opened for this; then everything on its filesystem is waited for.
    const UniqueDescriptor opened(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    int failure = 0;
    if (opened)
        failure = syncToDisk(opened.get());
    else if (::syncfs(image) != 0)
        failure = errno;
    if (failure == 0)
        return {};
    return systemError(failure, imagePath, QStringLiteral("“%1” is whole, but the disk did not confirm its name"),
                       QStringLiteral("Check the disk, and whether the file is there, before you rely on it."));
}

NSError ImageFinisher::finishInPlace(const QByteArray &imagePath) const
{
    if (m_format == TessaronDiscImageFormatVANT)
        return addTrailerInPlace(imagePath);
    return hasCueSheet() ? addCueSheetInPlace(imagePath) : NSError();
}

NSError ImageFinisher::addCueSheetInPlace(const QByteArray &imagePath) const
{
    const QByteArray path = pathOfCueSheet(imagePath);
    // Without waiting: a fifo of that name may have no reader.
    UniqueDescriptor sheet(::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, 0666));
    if (!sheet)
        return writingError(errno, path);
    NSError error = writeCueSheet(sheet.get(), imagePath);
    if (!error)
        error = sync(sheet.get(), path);
    if (!sheet.closeAndReport() && !error)
        error = writingError(errno, path);
    if (error) {
        removeFile(path);
        return error;
    }
    const UniqueDescriptor folder(::open(parentPath(path).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const UniqueDescriptor image(::open(imagePath.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    return folder ? syncFolder(folder.get(), image.get(), imagePath) : writingError(errno, imagePath);
}

NSError ImageFinisher::addTrailerInPlace(const QByteArray &imagePath) const
{
    UniqueDescriptor image(::open(imagePath.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status;
    if (!image)
        return writingError(errno, imagePath);
    if (!isRegularFile(image.get(), &status))
        return writingError(ESPIPE, imagePath);
    NSError error = addTrailer(image.get(), imagePath);
    if (!error)
        error = sync(image.get(), imagePath);
    if (!image.closeAndReport() && !error)
        error = writingError(errno, imagePath);
    // Half a trailer is worse than none: without one the file still is an image of plain blocks.
    if (error && ::truncate(imagePath.constData(), status.st_size) != 0)
        return systemError(errno, imagePath, QStringLiteral("“%1” has an incomplete trailer that cannot be removed"),
                           QStringLiteral("Delete the image, and make it again on another disk."));
    return error;
}

} // namespace Tessaron
