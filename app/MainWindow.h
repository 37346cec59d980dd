#pragma once

#include "app/DesktopPanel.h"

#include <QMainWindow>
#include <QUndoGroup>

#include <functional>
#include <memory>
#include <vector>

class QListWidget;
class QToolBar;
class QStackedWidget;

namespace Tessaron::Desktop
{

class AudioPanel;
class DataPanel;
class ImagePanel;
class VideoPanel;
class JobBar;
class JobRunner;
class NoticeBar;
class ProjectActions;

/// The program's one window: the kinds of disc at the side, the panel of the one that is chosen, and what works in the
/// background.
class MainWindow final : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    /// Shows the panel with this index.
    void showPanel(int index);
    [[nodiscard]] DesktopPanel &currentPanel() const;
    [[nodiscard]] DataPanel &dataPanel() const { return *m_dataPanel; }
    [[nodiscard]] AudioPanel &audioPanel() const { return *m_audioPanel; }
    [[nodiscard]] ImagePanel &imagePanel() const { return *m_imagePanel; }
    [[nodiscard]] VideoPanel &videoPanel() const { return *m_videoPanel; }
    [[nodiscard]] NoticeBar &notices() const { return *m_notices; }
    [[nodiscard]] QUndoGroup &undoGroup() { return m_undoGroup; }

    /// Gives files to the program, as its command line or another program does.
    void openFiles(const QList<QByteArray> &paths);

    [[nodiscard]] ProjectActions &projects() const { return *m_projects; }

    /// Asks where to save an image of what the panel holds, and saves it there.
    void saveImage();
    /// Saves it there without asking.
    void saveImageAs(const QByteArray &path, DiscFormat format);

    /// Asks which drive is to write what the panel holds, and lets it.
    void burn();
    /// Lets a drive write it without asking: the drive, and how it writes, are those of `settings`.
    void burnDisc(const BurnSubject &subject, const BurnDiscOrder &settings, DiscFamily family,
                  const WhenBurnt &whenEnded = {});
    [[nodiscard]] bool isWorking() const;
    [[nodiscard]] JobRunner &runner() const { return *m_runner; }

    /// Ends what runs, without waiting for what hangs in the system.
    void letGo();

Q_SIGNALS:
    /// What made, wrote or checked a disc has ended.
    void jobEnded(const Tessaron::Desktop::JobOutcome &outcome);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    class Host;

    void addPanel(const std::shared_ptr<DesktopPanel> &panel);
    void makeMenus();
    void fillToolBar();
    void askForDrive(const BurnSubject &subject, const QString &title, const WhenBurnt &whenEnded);
    void bringUp(const DesktopPanel &panel);
    void updateActions();
    void tellOfOtherJob();
    void startJob(std::unique_ptr<DiscJob> job, const QString &name);
    void imageHasEnded(DesktopPanel &panel, const JobOutcome &saved);
    void jobHasEnded(const JobOutcome &outcome);

    std::shared_ptr<Host> m_host;
    std::shared_ptr<DataPanel> m_dataPanel;
    std::shared_ptr<AudioPanel> m_audioPanel;
    std::shared_ptr<ImagePanel> m_imagePanel;
    std::shared_ptr<VideoPanel> m_videoPanel;
    std::vector<std::shared_ptr<DesktopPanel>> m_panels;
    QUndoGroup m_undoGroup;
    QListWidget *m_kinds = nullptr;
    QStackedWidget *m_stack = nullptr;
    NoticeBar *m_notices = nullptr;
    JobBar *m_jobBar = nullptr;
    QToolBar *m_toolBar = nullptr;
    QAction *m_toolBarSpace = nullptr; ///< between the panel's actions and the window's
    QList<QAction *> m_panelActions; ///< in the tool bar
    QMenu *m_discMenu = nullptr;
    QAction *m_saveImage = nullptr;
    QAction *m_burn = nullptr;
    QAction *m_verify = nullptr;
    QAction *m_cancel = nullptr;
    std::unique_ptr<ProjectActions> m_projects;
    std::unique_ptr<JobRunner> m_runner;
    bool m_isClosing = false; ///< nothing has to be asked any more
    bool m_closesAfterJob = false;
    int m_formatIndex = 0; ///< the one chosen in the save panel
};

} // namespace Tessaron::Desktop
