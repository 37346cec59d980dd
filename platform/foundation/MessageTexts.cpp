#include "platform/foundation/MessageTexts.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/OSStatus.h"

#include <QDateTime>

#include <array>
#include <cerrno>
#include <system_error>

namespace Tessaron
{

namespace
{

struct StatusMeaning {
    OSStatus status;
    int errnoValue;
};

constexpr std::array meanings = {
    StatusMeaning{dskFulErr, ENOSPC},
    StatusMeaning{nsvErr, ENODEV},
    StatusMeaning{ioErr, EIO},
    StatusMeaning{bdNamErr, EINVAL},
    StatusMeaning{tmfoErr, EMFILE},
    StatusMeaning{fnfErr, ENOENT},
    StatusMeaning{wPrErr, EROFS},
    StatusMeaning{fBsyErr, EBUSY},
    StatusMeaning{dupFNErr, EEXIST},
    StatusMeaning{paramErr, EINVAL},
    StatusMeaning{permErr, EACCES},
    StatusMeaning{memFullErr, ENOMEM},
    StatusMeaning{dirNFErr, ENOENT},
    StatusMeaning{userCanceledErr, EINTR},
    StatusMeaning{afpAccessDenied, EACCES},
    StatusMeaning{errFSNameTooLong, ENAMETOOLONG},
    StatusMeaning{errFSNotAFolder, ENOTDIR},
    StatusMeaning{errFSBadFSRef, ENOENT},
};

} // namespace

QString quoted(const QByteArray &path)
{
    return QStringLiteral("“%1”").arg(stringWithFileSystemRepresentation(path));
}

QString counted(std::uint64_t count, const char *singular, const char *plural)
{
    return QString::number(count) + u' ' + QString::fromUtf8(count == 1 ? singular : plural);
}

QString timeText(FileTime time)
{
    return QDateTime::fromSecsSinceEpoch(time.seconds, Qt::UTC).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QByteArray lastComponent(const QByteArray &path)
{
    qsizetype end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    if (end == 1 && path[0] == '/')
        return QByteArrayLiteral("/");
    const qsizetype slash = path.lastIndexOf('/', end - 1);
    return path.mid(slash + 1, end - slash - 1);
}

QString systemText(int errnoValue)
{
    return QString::fromStdString(std::generic_category().message(errnoValue));
}

QString reasonOfStatus(qint64 status)
{
    for (const StatusMeaning &meaning : meanings) {
        if (meaning.status == status)
            return systemText(meaning.errnoValue);
    }
    return QStringLiteral("the system does not say why (code %1)").arg(status);
}

} // namespace Tessaron
