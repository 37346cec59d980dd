#pragma once

#include <QByteArray>

namespace Tessaron
{

/// Files that must not outlive the process, for the one place that may end it without unwinding: a signal handler. At
/// most four at a time: two images with their cue sheets. See also UnfinishedFiles.h.

/// Notes a file by the folder's descriptor (which must stay open) and its name; returns its number, -1 when there is
/// no room.
[[nodiscard]] int noteForEmergencyRemoval(int folder, const QByteArray &name);
/// Forgets it. -1 is ignored.
void forgetEmergencyRemoval(int number);

} // namespace Tessaron
