#include "platform/discimage/source/DiscImageErrors.h"

namespace Tessaron
{

const QString DiscImageErrorDomain = QStringLiteral("DiscImageErrorDomain");
const QString DiscImageErrorOffsetKey = QStringLiteral("DiscImageErrorOffset");
const QString DiscImageErrorReasonKey = QStringLiteral("DiscImageErrorReason");

NSError discImageError(DiscImageErrorCode code, std::uint64_t offset, const QString &reason)
{
    return NSError(DiscImageErrorDomain, int(code),
                   {{NSLocalizedFailureReasonErrorKey,
                     QStringLiteral("%1 (at byte %2 of the image)").arg(reason, QString::number(offset))},
                    {DiscImageErrorReasonKey, reason},
                    {DiscImageErrorOffsetKey, quint64(offset)}});
}

} // namespace Tessaron
