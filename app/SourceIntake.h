#pragma once

#include "app/BackgroundWork.h"
#include "app/DiscNode.h"

#include <QObject>
#include <QStringList>

#include <atomic>
#include <memory>
#include <vector>

namespace Tessaron
{
class ScanJob;
struct ScanResult;
} // namespace Tessaron

namespace Tessaron::Desktop
{

/// What was found at the paths that someone added.
struct TakenIn {
    std::vector<std::unique_ptr<DiscNode>> nodes; ///< one for each path that could be read, in their order
    QStringList problems; ///< what could not be read, a sentence each
    QStringList folder; ///< names of the folders from the root to the one that was to take them
};

/// Finds out what files and folders hold and makes nodes of it, in the background; what is added meanwhile waits for
/// its turn. On the main thread.
class SourceIntake final : public QObject
{
    Q_OBJECT

public:
    explicit SourceIntake(QObject *parent = nullptr);
    ~SourceIntake() override;

    /// Adds paths for a folder of the disc. Touches nothing before it returns.
    void add(const QList<QByteArray> &paths, const DiscNode &folder);
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    /// Objects found and looked at so far.
    [[nodiscard]] std::uint64_t found() const;
    /// Gives up what runs and what waits, without waiting for it; finished() comes at once, with nothing.
    void cancel();
    /// Does not wait for what hangs in the system; for the end of the program.
    void letGo();

Q_SIGNALS:
    void started();
    /// A few times a second.
    void progressed();
    /// The receiver takes the nodes out.
    void finished(const std::shared_ptr<Tessaron::Desktop::TakenIn> &result);

private:
    struct Request {
        QList<QByteArray> paths;
        QStringList folder;
    };
    struct Work;

    void startNext();
    void lookAtPaths();
    void scan();
    void scanned(const ScanResult &result);
    void describe(const ScanResult &result);
    void end();

    QList<Request> m_waiting;
    bool m_isRunning = false;
    std::shared_ptr<Work> m_work; ///< shared with the thread
    std::unique_ptr<ScanJob> m_scan;
    BackgroundWork m_background;
};

} // namespace Tessaron::Desktop
