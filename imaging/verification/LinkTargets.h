#pragma once

#include "platform/discimage/volume/VolumeReader.h"

#include <QByteArray>

namespace Tessaron
{

/// True when the filesystem may record the target of a symbolic link in this form. Filesystems that record the names on
/// the way one by one have no place for slashes in a row or at the end; UDF changes names that it does not hold.
[[nodiscard]] bool mayBeLinkTargetOf(VolumeKind kind, const QByteArray &recorded, const QByteArray &target);

/// True when every writer finds room for a link with this target. UDF has one block for it (UDF 2.3.6).
[[nodiscard]] bool surelyHasRoom(VolumeKind kind, const QByteArray &target);

} // namespace Tessaron
