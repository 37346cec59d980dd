#include "platform/discrecording/objects/DRDeviceMedia.h"

namespace Tessaron
{

const QString DRDeviceMediaClassKey = QStringLiteral("DRDeviceMediaClassKey");
const QString DRDeviceMediaClassCD = QStringLiteral("DRDeviceMediaClassCD");
const QString DRDeviceMediaClassDVD = QStringLiteral("DRDeviceMediaClassDVD");

} // namespace Tessaron
