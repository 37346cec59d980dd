#include "imaging/jobs/ImageDestination.h"

#include "imaging/ImageFinisher.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

NSError destinationError(const QByteArray &path, const QString &message, const QString &advice = {})
{
    return discJobError(DiscJobErrorCode::Destination, message, advice, path);
}

NSError isFolderError(const QByteArray &output)
{
    const QByteArray example = output.endsWith('/') ? output + "disc.iso" : output + "/disc.iso";
    return destinationError(output, QStringLiteral("the output %1 is a folder").arg(quoted(output)),
                            QStringLiteral("Name the image file inside it, for example %1.").arg(quoted(example)));
}

/// Replaces a symbolic link by what it leads to.
NSError followLink(QByteArray *output, struct stat *status)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(output->constData(), nullptr), &std::free);
    if (!real || ::stat(real.get(), status) != 0)
        return destinationError(*output,
                                QStringLiteral("the output %1 is a symbolic link that leads nowhere: %2")
                                    .arg(quoted(*output), systemText(errno)),
                                QStringLiteral("Remove it, or name another file."));
    *output = real.get();
    return {};
}

NSError checkReplaceable(const QByteArray &path, const struct stat &status)
{
    if (S_ISDIR(status.st_mode))
        return isFolderError(path);
    if (!S_ISREG(status.st_mode))
        return destinationError(path, QStringLiteral("the output %1 is not a regular file").arg(quoted(path)),
                                QStringLiteral("An image can only replace a regular file or be a new one."));
    if (::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) != 0)
        return destinationError(
            path,
            QStringLiteral("the output %1 exists and may not be written: %2").arg(quoted(path), systemText(errno)),
            QStringLiteral("Remove it, or name another file."));
    return {};
}

NSError inspectExisting(ImageDestination *destination)
{
    struct stat status;
    if (::lstat(destination->path.constData(), &status) != 0) {
        // The folder's own check words the other reasons better.
        if (errno == ENAMETOOLONG && destination->path.size() >= PATH_MAX)
            return destinationError(
                destination->path,
                QStringLiteral("the path of the output has %1 bytes, and the system takes %2 at most")
                    .arg(destination->path.size())
                    .arg(PATH_MAX - 1),
                QStringLiteral("Go into a folder on its way, and name it from there."));
        if (errno == ENAMETOOLONG)
            return destinationError(destination->path,
                                    QStringLiteral("the output's name is too long for the filesystem"),
                                    QStringLiteral("Name it with at most 255 bytes."));
        return {};
    }
    if (S_ISLNK(status.st_mode)) {
        if (NSError error = followLink(&destination->path, &status))
            return error;
    }
    destination->existingImage = DeviceAndInode{status.st_dev, status.st_ino};
    return checkReplaceable(destination->path, status);
}

/// A file in a folder with the sticky bit (such as /tmp) can be replaced only by its owner or the folder's.
bool isProtectedBySticky(const struct stat &folder, const struct stat &file)
{
    const uid_t user = ::geteuid();
    return (folder.st_mode & S_ISVTX) != 0 && user != 0 && folder.st_uid != user && file.st_uid != user;
}

NSError openFolder(ImageDestination *destination)
{
    const qsizetype slash = destination->path.lastIndexOf('/');
    destination->name = destination->path.mid(slash + 1);
    destination->folderPath =
        slash < 0 ? QByteArrayLiteral(".") : destination->path.left(std::max<qsizetype>(slash, 1));
    const QByteArray &folderPath = destination->folderPath;
    destination->folder.reset(::open(folderPath.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!destination->folder && errno == ENOENT)
        return destinationError(folderPath,
                                QStringLiteral("the output's folder %1 does not exist").arg(quoted(folderPath)),
                                QStringLiteral("Make it first, or choose another place."));
    if (!destination->folder && errno == ENOTDIR)
        return destinationError(
            folderPath, QStringLiteral("%1 is not a folder, so nothing can be put into it").arg(quoted(folderPath)));
    if (!destination->folder)
        return destinationError(
            folderPath,
            QStringLiteral("the output's folder %1 cannot be opened: %2").arg(quoted(folderPath), systemText(errno)),
            isLackOfDescriptors(errno) ? adviceOnDescriptors() : QString());
    if (::faccessat(destination->folder.get(), ".", W_OK | X_OK, AT_EACCESS) != 0)
        return destinationError(folderPath,
                                QStringLiteral("no file can be made in the output's folder %1: %2")
                                    .arg(quoted(folderPath), systemText(errno)),
                                QStringLiteral("Choose a folder that you may write to."));
    return {};
}

NSError checkSticky(const ImageDestination &destination, const QByteArray &name)
{
    struct stat folder;
    struct stat file;
    if (::fstat(destination.folder.get(), &folder) != 0
        || ::fstatat(destination.folder.get(), name.constData(), &file, AT_SYMLINK_NOFOLLOW) != 0
        || !isProtectedBySticky(folder, file))
        return {};
    return destinationError(name, QStringLiteral("the output %1 exists and belongs to another user").arg(quoted(name)),
                            QStringLiteral("Name another file."));
}

std::vector<DeviceAndInode> folderAndAncestors(int folder)
{
    std::vector<DeviceAndInode> result;
    UniqueDescriptor current(::openat(folder, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat status;
    while (current && ::fstat(current.get(), &status) == 0) {
        const DeviceAndInode identity = {status.st_dev, status.st_ino};
        if (!result.empty() && result.back() == identity)
            break; // the root folder is its own parent
        result.push_back(identity);
        current = UniqueDescriptor(::openat(current.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    return result;
}

} // namespace

NSError openDestination(const QByteArray &output, DiscFormat format, ImageDestination *destination)
{
    if (output.endsWith('/'))
        return isFolderError(output);
    destination->path = output;
    if (NSError error = inspectExisting(destination))
        return error;
    if (NSError error = openFolder(destination))
        return error;
    if (NSError error = checkSticky(*destination, destination->name))
        return error;
    if (format != DiscFormat::BIN)
        return {};
    destination->cueName = pathOfCueSheet(destination->name);
    return inspectBeside(*destination, destination->cueName, QStringLiteral("cue sheet"), &destination->existingCue);
}

NSError inspectBeside(const ImageDestination &destination, const QByteArray &name, const QString &what,
                      std::optional<DeviceAndInode> *existing)
{
    struct stat status;
    if (::fstatat(destination.folder.get(), name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENAMETOOLONG)
            return {};
        return destinationError(name,
                                QStringLiteral("the name of the %1, %2, would be too long").arg(what, quoted(name)),
                                QStringLiteral("Give the image a shorter name."));
    }
    *existing = DeviceAndInode{status.st_dev, status.st_ino};
    if (!S_ISREG(status.st_mode))
        return destinationError(name,
                                QStringLiteral("the %1 %2 exists and is not a regular file").arg(what, quoted(name)),
                                QStringLiteral("Remove it, or name another image."));
    return checkSticky(destination, name);
}

NSError checkOutside(const ImageDestination &destination, const std::vector<DiscSource> &sources)
{
    const std::vector<DeviceAndInode> ancestors = folderAndAncestors(destination.folder.get());
    for (const DiscSource &source : sources) {
        const bool isInside =
            source.isFolder && std::find(ancestors.begin(), ancestors.end(), source.identity) != ancestors.end();
        if (isInside)
            return destinationError(destination.path,
                                    QStringLiteral("the output %1 lies inside the source folder %2")
                                        .arg(quoted(destination.path), quoted(source.argument)),
                                    QStringLiteral("Choose a place outside of it: an image cannot hold itself."));
        if (destination.existingImage == source.identity || destination.existingCue == source.identity)
            return destinationError(
                destination.path, QStringLiteral("the output would replace the source %1").arg(quoted(source.argument)),
                QStringLiteral("Give the output another name."));
    }
    return {};
}

} // namespace Tessaron
