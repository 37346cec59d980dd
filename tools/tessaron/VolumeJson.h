#pragma once

#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/NSError.h"

#include <QByteArray>
#include <QString>

namespace Tessaron::Tool
{

class JsonWriter;

/// "iso9660", "rockridge", "joliet", "udf", "hfs+": the names that reports on the making of an image use, too.
[[nodiscard]] QString volumeKindKey(VolumeKind kind);

/// The members name, offset, blockSize, blocks, created and modified (ISO 8601 or null) of the object that is open.
void writeVolumeFacts(JsonWriter &writer, const DiscVolumeFacts &facts);

/// An object with path, message and offset (in the image, where it is known).
void writeImageError(JsonWriter &writer, const QByteArray &path, const NSError &error);

} // namespace Tessaron::Tool
