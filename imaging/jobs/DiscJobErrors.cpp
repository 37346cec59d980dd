#include "platform/foundation/FileSystemRepresentation.h"
#include <TessaronClasses/DiscJobErrors.h>

namespace Tessaron
{

const QString DiscJobErrorDomain = QStringLiteral("DiscJobErrorDomain");
const QString DiscJobUnderlyingStatusKey = QStringLiteral("DiscJobUnderlyingStatus");

NSError discJobError(DiscJobErrorCode code, const QString &description, const QString &suggestion,
                     const QByteArray &path, qint64 status)
{
    QVariantMap userInfo = {{NSLocalizedDescriptionKey, description}};
    if (!suggestion.isEmpty())
        userInfo.insert(NSLocalizedRecoverySuggestionErrorKey, suggestion);
    if (!path.isEmpty())
        userInfo.insert(NSFilePathErrorKey, stringWithFileSystemRepresentation(path));
    if (status != 0)
        userInfo.insert(DiscJobUnderlyingStatusKey, status);
    return NSError(DiscJobErrorDomain, qint64(code), userInfo);
}

NSError outOfMemoryError()
{
    return discJobError(DiscJobErrorCode::Layout, QStringLiteral("there is not enough memory"),
                        QStringLiteral("Close other programs, or take fewer files at a time."), {}, memFullErr);
}

NSError discJobCancellation()
{
    return discJobError(DiscJobErrorCode::Cancelled, QStringLiteral("cancelled"));
}

bool isDiscJobError(const NSError &error, DiscJobErrorCode code)
{
    return error.domain() == DiscJobErrorDomain && error.code() == qint64(code);
}

} // namespace Tessaron
