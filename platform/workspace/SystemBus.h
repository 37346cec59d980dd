#pragma once

#include <QDBusConnection>

namespace Tessaron
{

/// The connection of the workspace to the system's D-Bus, one for all; not connected where there is no such bus. It is
/// our own: the one that QtDBus shares would carry our observation into the program's.
[[nodiscard]] QDBusConnection systemBus();

} // namespace Tessaron
