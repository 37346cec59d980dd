#pragma once

#include "platform/foundation/Export.h"

#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>

namespace Tessaron
{

/// A notification inside of this process.
struct NSNotification {
    QString name;
    QString object; ///< whom it is about; may be empty
    QVariantMap userInfo;
};

/// Notifications inside of this process. Any thread may call anything here.
class TESSARON_EXPORT NSNotificationCenter
{
public:
    [[nodiscard]] static NSNotificationCenter &defaultCenter();
    /// A centre of its own, for the notifications of one subject.
    NSNotificationCenter();

    /// Calls all observers of the name on the calling thread before it returns, in the order in which they came.
    void postNotificationName(const QString &name, const QString &object = {}, const QVariantMap &userInfo = {});

    using Callback = std::function<void(const NSNotification &)>;
    /// Calls back, on the thread of the poster, for each notification of this name, and of this object unless that is
    /// empty. `observer` names whose observation it is, for removeObserver(); it is never dereferenced.
    void addObserver(const void *observer, const QString &name, const QString &object, const Callback &callback);
    /// Ends all observations of `observer`. A callback that another thread makes just now may still be running.
    void removeObserver(const void *observer);

    ~NSNotificationCenter();
    NSNotificationCenter(const NSNotificationCenter &) = delete;
    NSNotificationCenter &operator=(const NSNotificationCenter &) = delete;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace Tessaron
