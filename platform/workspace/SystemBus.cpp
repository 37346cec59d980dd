#include "platform/workspace/SystemBus.h"

namespace Tessaron
{

QDBusConnection systemBus()
{
    // Never destroyed: at the end of the process QtDBus may be gone before it.
    static auto *const connection = new QDBusConnection(
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("org.tessaron.Workspace")));
    return *connection;
}

} // namespace Tessaron
