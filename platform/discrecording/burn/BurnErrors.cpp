#include "platform/discrecording/burn/BurnErrors.h"

#include "platform/discrecording/burn/DRBurn.h"
#include "platform/foundation/FileSystemRepresentation.h"

#include <cerrno>
#include <system_error>

namespace Tessaron
{

namespace
{

QString adviceForWriteError(int errnoValue)
{
    switch (errnoValue) {
    case ENOSPC:
        return QStringLiteral("Free some space there, or write to another disk.");
    case EDQUOT:
        return QStringLiteral("Delete files of your own there, or write to another disk.");
    case EFBIG:
        return QStringLiteral("Write to a disk whose file system takes files of this size.");
    case EROFS:
        return QStringLiteral("Write to a disk that is not read-only.");
    case EIO:
        return QStringLiteral("The disk may be damaged or gone; write to another one.");
    default:
        return QStringLiteral("Check the disk, or write to another one.");
    }
}

} // namespace

NSError burnError(OSStatus code, const QString &description, const QString &suggestion)
{
    QVariantMap userInfo = {{NSLocalizedDescriptionKey, description}};
    if (!suggestion.isEmpty())
        userInfo.insert(NSLocalizedRecoverySuggestionErrorKey, suggestion);
    return NSError(NSOSStatusErrorDomain, code, userInfo);
}

NSError burnCancelledError(const NSError &known)
{
    if (known.code() == kDRUserCanceledErr)
        return known;
    return burnError(kDRUserCanceledErr, QStringLiteral("The burn was cancelled."));
}

NSError burnOutputError(int errnoValue, const QString &outputName)
{
    const QString place =
        outputName.isEmpty() ? QStringLiteral("the output") : QStringLiteral("“%1”").arg(displayableText(outputName));
    QString description;
    if (errnoValue == ENOSPC)
        description = QStringLiteral("The disk holding %1 is full.").arg(place);
    else if (errnoValue == EDQUOT)
        description = QStringLiteral("Your share of the disk holding %1 is used up.").arg(place);
    else
        description = QStringLiteral("Writing to %1 failed: %2.")
                          .arg(place, QString::fromStdString(std::generic_category().message(errnoValue)));
    QVariantMap userInfo = {{NSLocalizedDescriptionKey, description},
                            {NSLocalizedRecoverySuggestionErrorKey, adviceForWriteError(errnoValue)}};
    if (!outputName.isEmpty())
        userInfo.insert(NSFilePathErrorKey, outputName);
    return NSError(NSOSStatusErrorDomain, statusForErrno(errnoValue), userInfo);
}

QString meaningOfStatus(OSStatus code)
{
    switch (code) {
    case kDRUserCanceledErr:
        return QStringLiteral("The operation was cancelled.");
    case dskFulErr:
        return QStringLiteral("The disk is full.");
    case fnfErr:
        return QStringLiteral("A file was not found.");
    case eofErr:
        return QStringLiteral("A file ended too early.");
    case fBsyErr:
        return QStringLiteral("A file was changed while it was in use.");
    case afpAccessDenied:
    case permErr:
        return QStringLiteral("Access was denied.");
    case wPrErr:
        return QStringLiteral("The disk is read-only.");
    case paramErr:
        return QStringLiteral("The layout cannot be written as it is.");
    case memFullErr:
        return QStringLiteral("There is not enough memory.");
    case tmfoErr:
        return QStringLiteral("Too many files are open.");
    default:
        return QStringLiteral("Reading or writing failed.");
    }
}

QVariantMap errorStatusOf(const NSError &error)
{
    QString information = error.localizedDescription();
    if (const QString suggestion = error.localizedRecoverySuggestion(); !suggestion.isEmpty())
        information += u' ' + suggestion;
    if (information.startsWith(QStringLiteral("0x")))
        information.prepend(u' ');
    QVariantMap status = {{DRErrorStatusErrorKey, qint32(error.code())},
                          {DRErrorStatusErrorStringKey, meaningOfStatus(OSStatus(error.code()))},
                          {DRErrorStatusErrorInfoStringKey, information}};
    if (const QString path = error.filePath(); !path.isNull())
        status.insert(NSFilePathErrorKey, path);
    return status;
}

} // namespace Tessaron
