#pragma once

#include <TessaronClasses/BurnDiscJob.h>
#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscJob.h>
#include <TessaronClasses/TessaronPanel.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <platform/foundation/NSError.h>

class QUndoStack;

namespace Tessaron
{

namespace Desktop
{
struct BurnSubject;
struct JobOutcome;

/// How the writing of a disc that a panel asked for has ended.
enum class BurnEnd : std::uint8_t {
    Declined, ///< the user, or the window, wants no disc now
    Failed, ///< or the disc is not as it should be
    Simulated,
    Written,
};
/// Without a drive that has done something, the outcome is an empty one.
using WhenBurnt = std::function<void(BurnEnd end, const JobOutcome &outcome)>;
} // namespace Desktop

/// What panels call on the window that shows them.
class TessaronPanelDelegate
{
public:
    virtual ~TessaronPanelDelegate() = default;

    /// What the panel holds has changed: its size, what can be done with it, or whether it is saved.
    virtual void panelDidChange(TessaronPanelProtocol &panel) = 0;
    /// Something that the user has to know of, and a list behind it.
    virtual void panelTells(const QString &text, const QStringList &details) = 0;
    /// Runs a job of the panel's, whose signal finished() leads to panelJobHasEnded(). One at a time: false, and a
    /// message, while another one runs.
    virtual bool runPanelJob(std::unique_ptr<DiscJob> job, const QString &name) = 0;
    virtual void panelJobHasEnded(const Desktop::JobOutcome &outcome) = 0;
    /// Asks under this title which drive is to write a disc, and lets it; `whenEnded` is called once.
    virtual void burnPanelDisc(const Desktop::BurnSubject &subject, const QString &title,
                               Desktop::WhenBurnt whenEnded) = 0;

protected:
    TessaronPanelDelegate() = default;
    TessaronPanelDelegate(const TessaronPanelDelegate &) = default;
    TessaronPanelDelegate &operator=(const TessaronPanelDelegate &) = default;
};

} // namespace Tessaron

namespace Tessaron::Desktop
{

/// How something that was made or checked has turned out.
struct JobOutcome {
    NSError error; ///< null when it is whole
    QString summary; ///< one sentence
    QStringList details; ///< what was lost, renamed or could not be read, a line each
    bool isComplete = true; ///< nothing is missing
    QByteArray path; ///< of what was made
};

/// What a drive is to write.
struct BurnSubject {
    BurnDiscOrder order; ///< the drive and how it writes are not in it
    std::uint64_t bytes = 0; ///< about as long as it will be
    QString name; ///< for people
    QStringList missing; ///< paths on the disc of what was to be on it and cannot be found
};

class ProjectSubject;

/// A panel of the program's window: one for each kind of disc.
class DesktopPanel : public TessaronPanel
{
public:
    /// For the list of kinds.
    [[nodiscard]] virtual QString title() const = 0;
    [[nodiscard]] virtual QString iconName() const = 0;
    /// A few words under the title.
    [[nodiscard]] virtual QString hint() const = 0;

    /// Its steps; null for a panel that changes nothing.
    [[nodiscard]] virtual QUndoStack *undoStack() { return nullptr; }
    /// What is saved as a project; null for a panel that keeps nothing.
    [[nodiscard]] virtual ProjectSubject *projectSubject() { return nullptr; }
    /// The disc is another one now: that of a project, or a new one.
    virtual void projectWasOpened() { }
    /// A file name without extension for what it makes.
    [[nodiscard]] virtual QString suggestedName() const { return {}; }
    /// Makes the image: the job, not started yet; `whenEnded` is called once, after it. Null when there is nothing to
    /// make it of.
    [[nodiscard]] virtual std::unique_ptr<DiscJob> imageJob(const QByteArray &, DiscFormat,
                                                            std::function<void(const JobOutcome &)>)
    {
        return nullptr;
    }
    /// Compares the image that was made last with what it was made of; see imageJob(). Null where that cannot be done.
    [[nodiscard]] virtual std::unique_ptr<DiscJob> verifyJob(const QByteArray &,
                                                             std::function<void(const JobOutcome &)>)
    {
        return nullptr;
    }
    /// False for a panel whose discs no drive writes.
    [[nodiscard]] virtual bool canBeBurnt() const { return true; }
    /// What a drive would write; absent when there is nothing, or for a panel whose discs no drive writes.
    [[nodiscard]] virtual std::optional<BurnSubject> burnSubject() { return std::nullopt; }
    /// Takes files that were given to the program; false when they are nothing for this panel.
    virtual bool takeFiles(const QList<QByteArray> &) { return false; }
    /// Ends what runs in the background without waiting for what hangs in the system.
    virtual void letGo() { }

protected:
    // What the window hears, while there is one.

    /// See TessaronPanelDelegate::panelDidChange().
    void changed();
    /// See TessaronPanelDelegate::panelTells().
    void tell(const QString &text, const QStringList &details = {});
};

} // namespace Tessaron::Desktop
