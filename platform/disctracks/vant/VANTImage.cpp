#include "platform/disctracks/vant/VANTImage.h"

namespace Tessaron
{

const QString VANTErrorDomain = QStringLiteral("VANTErrorDomain");
const QString VANTErrorOffsetKey = QStringLiteral("VANTErrorOffset");

} // namespace Tessaron
