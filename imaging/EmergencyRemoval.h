#pragma once

#include <QByteArray>

#include <cstdint>

namespace Tessaron
{

/// Files that must not outlive the process, for the one place that may end it without unwinding: a signal handler. At
/// most 128 at a time: 64 conversions side by side have a file and a folder each. See also UnfinishedFiles.h.

enum class EmergencyKind : std::uint8_t {
    File,
    Folder, ///< removed behind all files, if it is empty then
};

/// Notes a file by the folder's descriptor (which must stay open) and its name; returns its number, -1 when there is
/// no room.
[[nodiscard]] int noteForEmergencyRemoval(int folder, const QByteArray &name, EmergencyKind kind = EmergencyKind::File);
/// Forgets it. -1 is ignored.
void forgetEmergencyRemoval(int number);

} // namespace Tessaron
