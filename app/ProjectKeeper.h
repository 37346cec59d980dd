#pragma once

#include "app/BackgroundWork.h"
#include "app/ProjectSubject.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <platform/foundation/NSError.h>
#include <platform/foundation/UniqueDescriptor.h>

namespace Tessaron::Desktop
{

/// Saves a disc as a project and opens it again, in the background; and keeps a copy of what is not saved, which comes
/// back when the program ended unexpectedly. On the main thread.
class ProjectKeeper final : public QObject
{
    Q_OBJECT

public:
    using WhenEnded = std::function<void(const NSError &)>;

    /// `recoveryFolder` (bytes) takes the copies of what is not saved. Nothing is looked at before it is needed.
    ProjectKeeper(ProjectSubject &subject, QByteArray recoveryFolder, QObject *parent = nullptr);
    ~ProjectKeeper() override;

    /// Of the project that is open; empty for one that was never saved.
    [[nodiscard]] QByteArray path() const { return m_path; }
    [[nodiscard]] ProjectSubject &subject() const { return m_subject; }
    /// True when the project has all of the disc as it is now.
    [[nodiscard]] bool isSaved() const { return m_subject.undoStack().isClean(); }

    /// Writes the disc as it is now; it may be changed meanwhile. One at a time: an error otherwise.
    void save(const QByteArray &path, WhenEnded whenEnded);
    /// Replaces the disc by that of a project, which was read from the path. Files that are missing are in it, and are
    /// told by missingPaths().
    void open(const QByteArray &path, const QJsonObject &project, WhenEnded whenEnded);
    /// Begins an empty disc.
    void close();
    /// Files that the project just opened could not find.
    [[nodiscard]] QStringList missingPaths() const { return m_missing; }

    /// Looks for a disc that an earlier run of the program left unsaved, and opens it as one that was never saved;
    /// `whenFound` is called only then.
    void recover(std::function<void()> whenFound);
    /// Keeps a copy of what is not saved, now and a while after each change.
    void keepCopy();
    /// Removes the copy: the user has saved the disc or dropped it.
    void forgetCopy();
    [[nodiscard]] bool isBusy() const { return m_opening.isRunning() || m_saving.isRunning(); }
    void letGo();

Q_SIGNALS:
    void pathChanged();
    /// Another disc has been opened.
    void opened();

private:
    void show(const ProjectSubject::Replacement &replacement);
    void setPath(const QByteArray &path);
    /// Keeps a copy, which takes the place of an older one (empty for none).
    void startCopy(const QByteArray &older);
    void removeCopy();
    [[nodiscard]] QByteArray copyPath() const;

    ProjectSubject &m_subject;
    const QByteArray m_recoveryFolder;
    const QByteArray m_copyName; ///< of this run's copy
    QByteArray m_path;
    QStringList m_missing;
    QTimer m_copyDelay;
    bool m_hasCopy = false;
    bool m_isSavingOlder = false; ///< the disc has been changed since saving began
    const std::shared_ptr<UniqueDescriptor> m_lock = std::make_shared<UniqueDescriptor>(); ///< the copies' thread's
    BackgroundWork m_opening; ///< one that hangs gives way to the next one
    BackgroundWork m_saving;
    BackgroundWork m_copyWork;
};

} // namespace Tessaron::Desktop
