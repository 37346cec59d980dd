#include "imaging/jobs/SoundFileError.h"

#include "platform/foundation/MessageTexts.h"
#include "platform/foundation/OSStatus.h"
#include <TessaronClasses/DiscJobErrors.h>

namespace Tessaron
{

NSError soundFileError(const QByteArray &path, const NSError &error)
{
    if (error.code() == userCanceledErr)
        return discJobCancellation();
    return discJobError(
        DiscJobErrorCode::Source,
        QStringLiteral("%1 cannot be read as sound: %2").arg(quoted(path), error.localizedFailureReason()),
        error.localizedRecoverySuggestion(), path, error.code());
}

} // namespace Tessaron
