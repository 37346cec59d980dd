#pragma once

#include "platform/discrecording/drives/DRDevice.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QStringList>

#include <memory>

namespace Tessaron
{

/// Opens the drive that an order names, or the only one that the computer has where it names none. Errors are those of
/// a job (DiscJobErrors.h).
[[nodiscard]] Result<std::shared_ptr<DRDevice>> openChosenDrive(const QByteArray &address, bool mayMakeFile);

/// Lets the drive go; see DRDevice::release(). What came of the burn stands even where the disc cannot be put out, so
/// that this is a note.
[[nodiscard]] QStringList releaseDrive(DRDevice &device, bool ejects);

} // namespace Tessaron
