#include "platform/dvdplayback/DVDErrors.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"

namespace Tessaron
{

namespace
{

QString suggestionFor(OSStatus status)
{
    switch (status) {
    case kDVDErrorNoValidMedia:
        return QStringLiteral(
            "Name a folder VIDEO_TS or the one that holds it, the image of a video DVD, or a device.");
    case kDVDErrorEncryptedMedia:
        return QStringLiteral("Only discs without copy protection can be played.");
    case kDVDErrorDamagedMedia:
    case kDVDErrorPlaybackOpen:
        return QStringLiteral("Try another copy of the disc.");
    default:
        return {};
    }
}

} // namespace

NSError dvdError(OSStatus status, const QByteArray &path, const QString &reason)
{
    return NSError(
        DVDErrorDomain, status,
        {{NSLocalizedDescriptionKey, QStringLiteral("%1 cannot be read as a DVD: %2").arg(quoted(path), reason)},
         {NSLocalizedFailureReasonErrorKey, reason},
         {NSLocalizedRecoverySuggestionErrorKey, suggestionFor(status)},
         {NSFilePathErrorKey, stringWithFileSystemRepresentation(path)}});
}

} // namespace Tessaron
