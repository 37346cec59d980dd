#pragma once

#include "platform/discrecording/drives/DriveAddress.h"
#include "platform/foundation/NSError.h"

namespace Tessaron
{

/// To be asked once a drive was let go of with its tray out: libburn does not say whether that was done. An error when
/// the disc is still in; the null error where it is out, where the drive does not tell, and for files.
[[nodiscard]] NSError errorOfEjecting(const DriveAddress &address);

} // namespace Tessaron
