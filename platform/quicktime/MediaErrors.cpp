#include "platform/quicktime/MediaErrors.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"

namespace Tessaron
{

NSError mediaError(OSErr status, const QByteArray &path, const QString &reason, const QString &suggestion)
{
    QVariantMap information{{NSLocalizedFailureReasonErrorKey, reason},
                            {NSLocalizedRecoverySuggestionErrorKey, suggestion}};
    if (!path.isEmpty()) {
        information.insert(NSFilePathErrorKey, stringWithFileSystemRepresentation(path));
        information.insert(NSLocalizedDescriptionKey, QStringLiteral("%1: %2").arg(quoted(path), reason));
    }
    return NSError(NSOSStatusErrorDomain, status, information);
}

NSError mediaCancelledError(const QByteArray &path)
{
    return mediaError(userCanceledErr, path, QStringLiteral("cancelled"), QStringLiteral("Start again."));
}

} // namespace Tessaron
