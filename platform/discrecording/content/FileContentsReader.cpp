#include "platform/discrecording/content/FileContentsReader.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/foundation/DescriptorIO.h"
#include "platform/foundation/DescriptorLimit.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>

namespace Tessaron
{

namespace
{

/// `sentence` holds "%1" where the quoted path goes.
NSError contentsError(const FileContents &file, OSStatus code, const QString &sentence, const QString &suggestion)
{
    const QString path = stringWithFileSystemRepresentation(lastKnownPath(file.ref));
    return NSError(NSOSStatusErrorDomain, code,
                   {{NSLocalizedDescriptionKey, sentence.arg(u'“' + displayableText(path) + u'”')},
                    {NSLocalizedRecoverySuggestionErrorKey, suggestion},
                    {NSFilePathErrorKey, path}});
}

QString leaveAloneSuggestion()
{
    return QStringLiteral("Leave it unchanged until the disc is finished, and try again.");
}

NSError replacedError(const FileContents &file)
{
    return contentsError(file, fBsyErr,
                         QStringLiteral("The file %1 was replaced by another one while the disc was made."),
                         leaveAloneSuggestion());
}

NSError openingError(const FileContents &file, int errnoValue)
{
    if (errnoValue == ENOENT || errnoValue == ENOTDIR || errnoValue == ESTALE)
        return contentsError(file, fnfErr, QStringLiteral("The file %1 has vanished since the disc was prepared."),
                             QStringLiteral("Put it back or leave it out, and try again."));
    if (errnoValue == EACCES || errnoValue == EPERM)
        return contentsError(file, afpAccessDenied, QStringLiteral("The file %1 may not be read."),
                             QStringLiteral("Allow reading it or leave it out, and try again."));
    if (errnoValue == ELOOP) // its place has a symbolic link now, which is not followed
        return replacedError(file);
    if (isLackOfDescriptors(errnoValue))
        return contentsError(file, tmfoErr, QStringLiteral("The file %1 cannot be opened: too many files are open."),
                             adviceOnDescriptors());
    const QString reason = QString::fromStdString(std::generic_category().message(errnoValue));
    return contentsError(file, statusForErrno(errnoValue),
                         QStringLiteral("The file %1 cannot be opened: ") + reason + u'.',
                         QStringLiteral("Leave it out, or try again."));
}

NSError readingError(const FileContents &file, int errnoValue)
{
    const QString reason = QString::fromStdString(std::generic_category().message(errnoValue));
    return contentsError(file, statusForErrno(errnoValue),
                         QStringLiteral("The file %1 cannot be read: ") + reason + u'.',
                         QStringLiteral("Its disk may be damaged; leave the file out, or take a copy of it."));
}

NSError sizeError(const FileContents &file, std::uint64_t sizeNow)
{
    const bool hasShrunk = sizeNow < file.size;
    const QString sentence =
        (hasShrunk ? QStringLiteral("The file %1 has shrunk while the disc was made: it had %2 bytes and now has %3.")
                   : QStringLiteral("The file %1 has grown while the disc was made: it had %2 bytes and now has %3."));
    const QString path = QStringLiteral("%1"); // filled by contentsError()
    return contentsError(file, hasShrunk ? eofErr : fBsyErr,
                         sentence.arg(path, QString::number(file.size), QString::number(sizeNow)),
                         leaveAloneSuggestion());
}

/// Opens without blocking, since in the place of the planned file there may be a fifo by now that no other program has
/// open. A file server may hold a lease on the file (fcntl(2), F_SETLEASE): the first try has then asked it to let go,
/// which the kernel enforces after 45 s by default.
UniqueDescriptor openWithoutBlocking(const FSRef &ref, const std::stop_token &cancellation, int *errnoValue)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (;;) {
        UniqueDescriptor descriptor = openFSRef(ref, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW, errnoValue);
        if (descriptor || *errnoValue != EWOULDBLOCK || cancellation.stop_requested()
            || std::chrono::steady_clock::now() > deadline)
            return descriptor;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

} // namespace

UniqueDescriptor openFileContents(const FileContents &file, NSError *error, const std::stop_token &cancellation)
{
    int errnoValue = 0;
    UniqueDescriptor descriptor = openWithoutBlocking(file.ref, cancellation, &errnoValue);
    if (!descriptor) {
        *error = openingError(file, errnoValue);
        return {};
    }
    *error = verifyFileContentsUnchanged(descriptor.get(), file);
    if (*error)
        descriptor.reset();
    return descriptor;
}

NSError readFileContents(int descriptor, const FileContents &file, std::uint64_t offset, void *buffer,
                         std::uint64_t length)
{
    std::size_t got = 0;
    const int failure = readFully(descriptor, offset, buffer, length, &got);
    return failure == 0 && got == length ? NSError() : fileContentsReadError(descriptor, file, failure);
}

NSError fileContentsReadError(int descriptor, const FileContents &file, int errnoValue)
{
    NSError change = verifyFileContentsUnchanged(descriptor, file);
    if (change)
        return change;
    if (errnoValue != 0)
        return readingError(file, errnoValue);
    return contentsError(file, eofErr, QStringLiteral("The file %1 ends before the size that the system says it has."),
                         QStringLiteral("Leave it out, or take a copy of it."));
}

NSError verifyFileContentsUnchanged(int descriptor, const FileContents &file)
{
    struct stat now;
    if (::fstat(descriptor, &now) != 0)
        return readingError(file, errno);
    if (!S_ISREG(now.st_mode) || now.st_ino != file.inode)
        return replacedError(file);
    if (std::uint64_t(now.st_size) != file.size)
        return sizeError(file, std::uint64_t(now.st_size));
    if (FileTime::from(now.st_mtim) != file.modification || FileTime::from(now.st_ctim) != file.change)
        return contentsError(file, fBsyErr, QStringLiteral("The file %1 was changed while the disc was made."),
                             leaveAloneSuggestion());
    return {};
}

} // namespace Tessaron
