#include "tools/tessaron/Destination.h"

#include "tools/tessaron/Text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

Problem destinationProblem(const QByteArray &path, const QString &message, const QString &advice = {})
{
    return {Problem::Kind::Destination, message, advice, path};
}

Problem isFolderProblem(const QByteArray &output)
{
    const QByteArray example = output.endsWith('/') ? output + "disc.iso" : output + "/disc.iso";
    return destinationProblem(output, QStringLiteral("the output %1 is a folder").arg(quoted(output)),
                              QStringLiteral("Name the image file inside it, for example %1.").arg(quoted(example)));
}

/// Replaces a symbolic link by what it leads to.
Problem followLink(QByteArray *output, struct stat *status)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(output->constData(), nullptr), &std::free);
    if (!real || ::stat(real.get(), status) != 0)
        return destinationProblem(*output,
                                  QStringLiteral("the output %1 is a symbolic link that leads nowhere: %2")
                                      .arg(quoted(*output), systemText(errno)),
                                  QStringLiteral("Remove it, or name another file."));
    *output = real.get();
    return {};
}

Problem checkReplaceable(const QByteArray &path, const struct stat &status)
{
    if (S_ISDIR(status.st_mode))
        return isFolderProblem(path);
    if (!S_ISREG(status.st_mode))
        return destinationProblem(path, QStringLiteral("the output %1 is not a regular file").arg(quoted(path)),
                                  QStringLiteral("An image can only replace a regular file or be a new one."));
    if (::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) != 0)
        return destinationProblem(
            path,
            QStringLiteral("the output %1 exists and may not be written: %2").arg(quoted(path), systemText(errno)),
            QStringLiteral("Remove it, or name another file."));
    return {};
}

Problem inspectExisting(Destination *destination)
{
    struct stat status;
    if (::lstat(destination->path.constData(), &status) != 0) {
        // The folder's own check words the other reasons better.
        if (errno == ENAMETOOLONG)
            return destinationProblem(destination->path,
                                      QStringLiteral("the output's name is too long for the filesystem"),
                                      QStringLiteral("Name it with at most 255 bytes."));
        return {};
    }
    if (S_ISLNK(status.st_mode)) {
        if (Problem problem = followLink(&destination->path, &status))
            return problem;
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

Problem openFolder(Destination *destination)
{
    const qsizetype slash = destination->path.lastIndexOf('/');
    destination->name = destination->path.mid(slash + 1);
    destination->folderPath =
        slash < 0 ? QByteArrayLiteral(".") : destination->path.left(std::max<qsizetype>(slash, 1));
    const QByteArray &folderPath = destination->folderPath;
    destination->folder.reset(::open(folderPath.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!destination->folder && errno == ENOENT)
        return destinationProblem(folderPath,
                                  QStringLiteral("the output's folder %1 does not exist").arg(quoted(folderPath)),
                                  QStringLiteral("Make it first, or choose another place."));
    if (!destination->folder && errno == ENOTDIR)
        return destinationProblem(
            folderPath, QStringLiteral("%1 is not a folder, so nothing can be put into it").arg(quoted(folderPath)));
    if (!destination->folder)
        return destinationProblem(
            folderPath,
            QStringLiteral("the output's folder %1 cannot be opened: %2").arg(quoted(folderPath), systemText(errno)));
    if (::faccessat(destination->folder.get(), ".", W_OK | X_OK, AT_EACCESS) != 0)
        return destinationProblem(folderPath,
                                  QStringLiteral("no file can be made in the output's folder %1: %2")
                                      .arg(quoted(folderPath), systemText(errno)),
                                  QStringLiteral("Choose a folder that you may write to."));
    return {};
}

Problem checkSticky(const Destination &destination, const QByteArray &name)
{
    struct stat folder;
    struct stat file;
    if (::fstat(destination.folder.get(), &folder) != 0
        || ::fstatat(destination.folder.get(), name.constData(), &file, AT_SYMLINK_NOFOLLOW) != 0
        || !isProtectedBySticky(folder, file))
        return {};
    return destinationProblem(name,
                              QStringLiteral("the output %1 exists and belongs to somebody else").arg(quoted(name)),
                              QStringLiteral("Name another file."));
}

Problem inspectCue(Destination *destination)
{
    destination->cueName = cueNameFor(destination->name);
    struct stat status;
    if (::fstatat(destination->folder.get(), destination->cueName.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENAMETOOLONG)
            return {};
        return destinationProblem(
            destination->cueName,
            QStringLiteral("the name of the cue sheet, %1, would be too long").arg(quoted(destination->cueName)),
            QStringLiteral("Give the image a shorter name."));
    }
    destination->existingCue = DeviceAndInode{status.st_dev, status.st_ino};
    if (!S_ISREG(status.st_mode))
        return destinationProblem(
            destination->cueName,
            QStringLiteral("the cue sheet %1 exists and is not a regular file").arg(quoted(destination->cueName)),
            QStringLiteral("Remove it, or name another image."));
    return checkSticky(*destination, destination->cueName);
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

QByteArray cueNameFor(const QByteArray &imageName)
{
    const qsizetype dot = imageName.lastIndexOf('.');
    return (dot > 0 ? imageName.left(dot) : imageName) + ".cue";
}

Problem openDestination(const QByteArray &output, ImageFormat format, Destination *destination)
{
    if (output == "-")
        return destinationProblem(output, QStringLiteral("an image cannot go to standard output"),
                                  QStringLiteral("Name a file; ./- is the file of that name."));
    if (output.endsWith('/'))
        return isFolderProblem(output);
    destination->path = output;
    if (Problem problem = inspectExisting(destination))
        return problem;
    if (Problem problem = openFolder(destination))
        return problem;
    if (Problem problem = checkSticky(*destination, destination->name))
        return problem;
    return format == ImageFormat::Bin ? inspectCue(destination) : Problem();
}

Problem checkOutside(const Destination &destination, const std::vector<Source> &sources)
{
    const std::vector<DeviceAndInode> ancestors = folderAndAncestors(destination.folder.get());
    for (const Source &source : sources) {
        const bool isInside =
            source.isFolder && std::find(ancestors.begin(), ancestors.end(), source.identity) != ancestors.end();
        if (isInside)
            return destinationProblem(destination.path,
                                      QStringLiteral("the output %1 lies inside the source folder %2")
                                          .arg(quoted(destination.path), quoted(source.argument)),
                                      QStringLiteral("Choose a place outside of it: an image cannot hold itself."));
        if (destination.existingImage == source.identity || destination.existingCue == source.identity)
            return destinationProblem(
                destination.path, QStringLiteral("the output would replace the source %1").arg(quoted(source.argument)),
                QStringLiteral("Give the output another name."));
    }
    return {};
}

} // namespace Tessaron::Tool
