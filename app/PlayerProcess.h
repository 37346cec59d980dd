#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <memory>
#include <platform/foundation/UniqueDescriptor.h>
#include <sys/types.h>

namespace Tessaron::Desktop
{

/// The player of video DVDs, which is a program with a window of its own. It plays on when this object goes. On the
/// main thread.
class PlayerProcess final : public QObject
{
    Q_OBJECT

public:
    explicit PlayerProcess(QObject *parent = nullptr);
    ~PlayerProcess() override;

    /// Starts it with the disc at the path, from a title and chapter on; 0 for where the disc was left. False, with the
    /// reason, when it cannot be started, or runs already.
    [[nodiscard]] bool play(const QByteArray &path, int title, int chapter, QString *reason);
    [[nodiscard]] bool isRunning() const { return m_child > 0; }

Q_SIGNALS:
    /// `reason` is what it has said, where it has failed; else empty.
    void ended(const QString &reason);

private:
    void end();

    pid_t m_child = -1; ///< that is not reaped yet
    UniqueDescriptor m_process; ///< readable when the child has ended
    UniqueDescriptor m_errors; ///< what it says: a file in memory
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace Tessaron::Desktop
