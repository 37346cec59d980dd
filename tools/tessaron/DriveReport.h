#pragma once

#include "platform/discrecording/drives/DriveDescription.h"
#include "tools/tessaron/JsonWriter.h"

#include <QString>

namespace Tessaron::Tool
{

/// "a CD-R", "a file" …; for people.
[[nodiscard]] QString discText(const DiscDescription &disc);

/// "no-disc", "blank", "appendable", "closed", "unsuitable" or "unknown".
[[nodiscard]] QString nameOfDiscState(DiscState state);

/// The object that describes a disc: state, profile, profileName, erasable, simulates, appends, freeBlocks, freeBytes,
/// readableBlocks, sessions, tracks, lastSession, nextBlock, speeds (thousands of bytes a second), maker.
void writeDiscObject(JsonWriter &writer, const DiscDescription &disc);

} // namespace Tessaron::Tool
