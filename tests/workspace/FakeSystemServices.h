#pragma once

#include "platform/foundation/UniqueDescriptor.h"
#include "tests/support/PrivateBus.h"

#include <QByteArrayList>
#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QStringList>

#include <vector>

namespace Tessaron::Testing
{

/// A system bus of the test's own, named in the environment, with those parts of udisks2 and logind that the workspace
/// uses. To be made before anything asks for the bus.
class FakeSystemServices : public QDBusVirtualObject
{
public:
    FakeSystemServices();
    ~FakeSystemServices() override;

    void startDisks();
    void startLogin();
    /// Makes the mount that a file lies on the one of the volume.
    void mountWhereIs(const QByteArray &path);

    /// Tells that the volume of that name is mounted there now, and nowhere else.
    void tellMountPoints(const QString &volume, const QByteArrayList &points);
    /// Tells other changes of a volume: of its size, and of mount points of some other interface.
    void tellOtherChanges(const QString &volume);
    void tellSleep(bool begins);

    /// Locks that delay sleep, given out and not closed yet.
    [[nodiscard]] int heldDelays() const;

    QByteArray mountPoint; ///< of the one volume that there is, "sr0"
    bool isEjectable = true;
    bool refusesUnmount = false;
    QStringList calls; ///< each method with its object, and the texts that it was given

    [[nodiscard]] QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void tell(const QString &volume, const QString &interface, const QVariantMap &changed);
    [[nodiscard]] QVariant managedObjects() const;
    [[nodiscard]] QVariant newDelay();

    const PrivateBus m_bus;
    QDBusConnection m_connection;
    std::vector<UniqueDescriptor> m_delays; ///< the reading ends of pipes whose writing ends are the locks
};

} // namespace Tessaron::Testing
