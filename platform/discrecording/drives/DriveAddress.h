#pragma once

#include "platform/foundation/Result.h"

#include <QByteArray>

#include <cstdint>

namespace Tessaron
{

/// What a program names to write to: an optical drive, or "stdio:" and a regular file that stands for one. Nothing
/// else is ever opened: a disk, a partition or a terminal of that name is refused.
struct DriveAddress {
    enum class Kind : std::uint8_t { Drive, File };

    Kind kind = Kind::Drive;
    QByteArray path; ///< of the device file, links followed; or of the regular file as it was named
    QByteArray shown; ///< as it was named, for people
};

/// Whether a file that is not there may be named.
enum class DriveFileIs : std::uint8_t { There, ThereOrNew };

/// Looks at what stands at the address, without opening it. Errors (NSOSStatusErrorDomain) say what it is instead.
[[nodiscard]] Result<DriveAddress> driveAddress(const QByteArray &address, DriveFileIs expected);

} // namespace Tessaron
