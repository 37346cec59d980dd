#pragma once

#include "platform/foundation/Export.h"

#include <QString>

namespace Tessaron
{

// Of the record that describes a medium to producers (DRTrackProducer::prepareTrack()).
TESSARON_EXPORT extern const QString DRDeviceMediaClassKey; ///< QString, one of those below
TESSARON_EXPORT extern const QString DRDeviceMediaClassCD;
TESSARON_EXPORT extern const QString DRDeviceMediaClassDVD;

} // namespace Tessaron
