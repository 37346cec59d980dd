#pragma once

#include "platform/discrecording/drives/DRDevice.h"
#include "platform/foundation/Result.h"

#include <QByteArray>

#include <memory>

namespace Tessaron
{

/// Opens the drive that an order names, or the only one that the computer has where it names none. Errors are those of
/// a job (DiscJobErrors.h).
[[nodiscard]] Result<std::shared_ptr<DRDevice>> openChosenDrive(const QByteArray &address, bool mayMakeFile);

} // namespace Tessaron
