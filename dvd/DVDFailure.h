#pragma once

#include "platform/foundation/NSAssertionHandler.h"
#include "platform/foundation/OSStatus.h"

namespace Tessaron
{

/// Reports a call of the DVD session that failed, as "DVDPlay returned -70015"; nothing for 0. Throws where the handler
/// does.
inline void reportDVDFailure(OSStatus status, const char *function, const char *method, const void *object,
                             const char *file, int line)
{
    if (status == noErr)
        return;
    NSAssertionHandler::currentHandler()->handleFailureInMethod(
        QString::fromLatin1(method), object, QString::fromLatin1(file), line,
        QStringLiteral("%1 returned %2").arg(QLatin1String(function)).arg(status));
}

} // namespace Tessaron
