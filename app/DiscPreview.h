#pragma once

#include <TessaronClasses/DiscPlanJob.h>

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <memory>

namespace Tessaron::Desktop
{

class DiscDocument;

/// Finds out, a moment after each change, what a disc will be: its exact size, and what its filesystems call otherwise
/// or cannot hold, which the rows of the tree are marked with. The work is done in the background on a copy. A disc
/// with very many objects is looked at only when that is asked for, since the copy of each takes a microsecond or two
/// of the window's time. On the main thread.
class DiscPreview final : public QObject
{
    Q_OBJECT

public:
    explicit DiscPreview(DiscDocument &document, QObject *parent = nullptr);
    ~DiscPreview() override;

    /// Looks now, however large the disc is.
    void look();
    [[nodiscard]] bool isRunning() const { return m_job != nullptr; }
    /// True when the disc is as it was when it was looked at last.
    [[nodiscard]] bool isCurrent() const { return m_isCurrent; }
    /// What is called otherwise in some filesystem, or lost, a line each; the losses first.
    [[nodiscard]] const QStringList &changes() const { return m_changes; }
    [[nodiscard]] std::size_t lostCount() const { return m_lostCount; }
    /// Does not wait for what hangs in the system; for the end of the program.
    void letGo();

Q_SIGNALS:
    /// The disc has been looked at; `bytes` is what an image of it will have.
    void looked(std::uint64_t bytes);
    /// What was known is not true any more.
    void outdated();

private:
    void discHasChanged();
    void take(const DiscPlanResult &result);
    void mark(const DRStorageReport &report);

    DiscDocument &m_document;
    QTimer m_delay;
    std::unique_ptr<DiscPlanJob> m_job; ///< null when nothing is asked
    bool m_isCurrent = false;
    QStringList m_changes;
    std::size_t m_lostCount = 0;
};

} // namespace Tessaron::Desktop
