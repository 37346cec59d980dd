#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>

namespace Tessaron
{

/// A notification from a process of the same session.
struct NSDistributedNotification {
    QString name;
    QString object; ///< whom it is about; may be empty
    QVariantMap userInfo; ///< text, numbers, booleans, byte arrays, and lists and records of these
};

/// Notifications between the processes of a session: broadcast signals on the D-Bus session bus. One interface and one
/// member serve all of them; the name is an argument, so any text may be one.
///
/// Nothing is kept for observers that come later, and a notification that is lost is not told: whatever must be known
/// travels another way.
class TESSARON_EXPORT NSDistributedNotificationCenter : public QObject
{
    Q_OBJECT

public:
    /// Connected to the bus of the session on first use, which may wait for the bus. Each thread may post.
    [[nodiscard]] static NSDistributedNotificationCenter &defaultCenter();

    ~NSDistributedNotificationCenter() override;

    /// False in a session without a bus: nothing is posted then, and nothing observed.
    [[nodiscard]] bool isConnected() const;

    /// Hands a notification to the bus; the null error when the bus took it.
    NSError postNotificationName(const QString &name, const QString &object = {}, const QVariantMap &userInfo = {});

    /// Waits until the bus has all that this process posted, `milliseconds` at most; false when it does not say so.
    /// A process that is about to end calls this, or its last notifications are lost.
    bool waitUntilPosted(int milliseconds) const;

    using Callback = std::function<void(const NSDistributedNotification &)>;
    /// Calls back on the main thread for each notification of this name, and of this object unless that is empty. Call
    /// on the main thread. The observation ends with `context`, or with removeObserver().
    NSError addObserver(QObject *context, const QString &name, const QString &object, const Callback &callback);
    /// Ends all observations of `context`. Call on the main thread.
    void removeObserver(QObject *context);

private Q_SLOTS:
    void deliver(const QString &name, const QString &object, const QVariantMap &userInfo);

private:
    NSDistributedNotificationCenter();

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace Tessaron
