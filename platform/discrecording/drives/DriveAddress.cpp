#include "platform/discrecording/drives/DriveAddress.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/foundation/MessageTexts.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace Tessaron
{

namespace
{

constexpr char filePrefix[] = "stdio:";
constexpr unsigned int majorOfOpticalDrives = 11; // Linux, Documentation/admin-guide/devices.txt

struct FreeText {
    void operator()(char *text) const { std::free(text); }
};

NSError addressError(OSStatus code, const QString &description, const QString &suggestion = {})
{
    return burnError(code, description, suggestion);
}

QString adviceAboutDrives()
{
    return QStringLiteral("Name an optical drive such as /dev/sr0, or \"stdio:\" and the path of a regular file.");
}

Result<DriveAddress> fileAddress(const QByteArray &address, DriveFileIs expected)
{
    DriveAddress result{DriveAddress::Kind::File, address.mid(qsizetype(sizeof filePrefix) - 1), address};
    // What libburn would take for a descriptor, and what leads to one, is not a file that anybody means.
    const bool isDescriptor = result.path == "-" || result.path.startsWith("/dev/fd/")
        || result.path.startsWith("/dev/std") || result.path.startsWith("/proc/");
    if (result.path.isEmpty() || isDescriptor)
        return addressError(paramErr, QStringLiteral("the address %1 names no file").arg(quoted(address)),
                            adviceAboutDrives());
    struct stat status = {};
    if (::stat(result.path.constData(), &status) != 0) {
        const int failure = errno;
        if (failure == ENOENT && expected == DriveFileIs::ThereOrNew)
            return result;
        return addressError(
            statusForErrno(failure),
            QStringLiteral("%1 cannot be used as a drive: %2").arg(quoted(result.path), systemText(failure)));
    }
    if (!S_ISREG(status.st_mode))
        return addressError(paramErr,
                            QStringLiteral("%1 is not a regular file and is not written to").arg(quoted(result.path)),
                            adviceAboutDrives());
    return result;
}

} // namespace

Result<DriveAddress> driveAddress(const QByteArray &address, DriveFileIs expected)
{
    if (address.startsWith(filePrefix))
        return fileAddress(address, expected);
    const std::unique_ptr<char, FreeText> path(::realpath(address.constData(), nullptr));
    struct stat status = {};
    if (!path || ::stat(path.get(), &status) != 0) {
        const int failure = errno;
        return addressError(statusForErrno(failure),
                            QStringLiteral("there is no drive %1: %2").arg(quoted(address), systemText(failure)),
                            QStringLiteral("'tessaron drives' lists those that there are."));
    }
    if (!S_ISBLK(status.st_mode) || major(status.st_rdev) != majorOfOpticalDrives)
        return addressError(paramErr,
                            QStringLiteral("%1 is not an optical drive and is not written to").arg(quoted(address)),
                            adviceAboutDrives());
    return DriveAddress{DriveAddress::Kind::Drive, path.get(), address};
}

} // namespace Tessaron
