#include "platform/foundation/NSError.h"

#include "platform/foundation/DescriptorLimit.h"

#include <cerrno>
#include <system_error>

namespace Tessaron
{

const QString NSOSStatusErrorDomain = QStringLiteral("NSOSStatusErrorDomain");
const QString NSPOSIXErrorDomain = QStringLiteral("NSPOSIXErrorDomain");
const QString NSCocoaErrorDomain = QStringLiteral("NSCocoaErrorDomain");

const QString NSLocalizedDescriptionKey = QStringLiteral("NSLocalizedDescription");
const QString NSLocalizedFailureReasonErrorKey = QStringLiteral("NSLocalizedFailureReason");
const QString NSLocalizedRecoverySuggestionErrorKey = QStringLiteral("NSLocalizedRecoverySuggestion");
const QString NSFilePathErrorKey = QStringLiteral("NSFilePath");

NSError::NSError(const QString &domain, qint64 code, const QVariantMap &userInfo)
    : m_domain(domain)
    , m_code(code)
    , m_userInfo(userInfo)
{
    Q_ASSERT_X(!domain.isEmpty(), "NSError", "an error needs a domain");
}

NSError NSError::errorWithErrno(int errnoValue, const QString &path)
{
    const QString reason = QString::fromStdString(std::generic_category().message(errnoValue));
    QVariantMap userInfo{{NSLocalizedFailureReasonErrorKey, reason}};
    if (!path.isEmpty())
        userInfo.insert(NSFilePathErrorKey, path);
    if (isLackOfDescriptors(errnoValue))
        userInfo.insert(NSLocalizedRecoverySuggestionErrorKey, adviceOnDescriptors());
    return NSError(NSOSStatusErrorDomain, statusForErrno(errnoValue), userInfo);
}

QString NSError::localizedDescription() const
{
    QString description = m_userInfo.value(NSLocalizedDescriptionKey).toString();
    if (!description.isEmpty() || isNull())
        return description;
    const QString reason = localizedFailureReason();
    return reason.isEmpty() ? QStringLiteral("%1 error %2").arg(m_domain).arg(m_code) : reason;
}

QString NSError::localizedFailureReason() const
{
    return m_userInfo.value(NSLocalizedFailureReasonErrorKey).toString();
}

QString NSError::localizedRecoverySuggestion() const
{
    return m_userInfo.value(NSLocalizedRecoverySuggestionErrorKey).toString();
}

QString NSError::filePath() const
{
    return m_userInfo.value(NSFilePathErrorKey).toString();
}

OSErr statusForErrno(int errnoValue)
{
    switch (errnoValue) {
    case 0:
        return noErr;
    case ENOENT:
    case ESTALE:
        return fnfErr;
    case ENOTDIR:
        return errFSNotAFolder;
    case EACCES:
        return afpAccessDenied;
    case EPERM:
        return permErr;
    case EEXIST:
        return dupFNErr;
    case ENOSPC:
    case EDQUOT:
        return dskFulErr;
    case EROFS:
        return wPrErr;
    case EMFILE:
    case ENFILE:
        return tmfoErr;
    case ENAMETOOLONG:
        return errFSNameTooLong;
    case EBUSY:
    case ETXTBSY:
        return fBsyErr;
    case EINVAL:
        return paramErr;
    case ENOMEM:
        return memFullErr;
    case ENODEV:
    case ENXIO:
        return nsvErr;
    case ELOOP:
        return bdNamErr;
    default:
        return ioErr;
    }
}

} // namespace Tessaron
