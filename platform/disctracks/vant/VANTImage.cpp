#include "platform/disctracks/vant/VANTImage.h"

namespace Tessaron
{

const QString VANTErrorDomain = QStringLiteral("VANTErrorDomain");
const QString VANTErrorOffsetKey = QStringLiteral("VANTErrorOffset");
const QString VANTErrorReasonKey = QStringLiteral("VANTErrorReason");

} // namespace Tessaron
