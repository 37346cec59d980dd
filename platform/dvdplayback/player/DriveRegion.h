#pragma once

#include "platform/dvdplayback/DVDDescription.h"

#include <QByteArray>

#include <optional>

namespace Tessaron
{

/// The region of the drive that holds the file or folder at the path, or that is the device there; absent where it is
/// in no drive, or the drive does not tell (MMC, REPORT KEY with the RPC state).
[[nodiscard]] std::optional<DVDDriveRegion> regionOfDrive(const QByteArray &path);

} // namespace Tessaron
