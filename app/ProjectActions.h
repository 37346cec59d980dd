#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class QMenu;

namespace Tessaron::Desktop
{

class DataPanel;
class NoticeBar;
class ProjectKeeper;

/// New, open, save: what a user does with projects, the questions that go with it, and the window's title. On the main
/// thread.
class ProjectActions final : public QObject
{
    Q_OBJECT

public:
    ProjectActions(DataPanel &panel, NoticeBar &notices, QWidget &window);
    ~ProjectActions() override;

    /// True for the name of a project (bytes).
    [[nodiscard]] static bool isProjectName(const QByteArray &path);

    [[nodiscard]] ProjectKeeper &keeper() const { return *m_keeper; }
    /// Puts what there is to choose into a menu.
    void addTo(QMenu &menu);
    /// Looks for a disc that an earlier run of the program left unsaved.
    void recover();

    /// Begins a new disc, once the user does not mind about the present one.
    void begin();
    void open();
    void openAt(const QByteArray &path);
    void save();
    void saveAs();

    [[nodiscard]] bool isSaved() const;
    /// Goes on once the present disc is saved or dropped; not at all when the user stays with it.
    void afterSaving(const std::function<void()> &goOn);
    void letGo();

Q_SIGNALS:
    /// Another disc has been opened.
    void opened();

private:
    void showOpened();
    void showTitle();
    void saveAt(const QByteArray &path);
    void addRecent(const QByteArray &path);
    void showRecent();

    DataPanel &m_panel;
    NoticeBar &m_notices;
    QWidget &m_window;
    std::unique_ptr<ProjectKeeper> m_keeper;
    QMenu *m_recentMenu = nullptr;
    std::function<void()> m_afterSaving; ///< what waits for the project that is being saved
};

} // namespace Tessaron::Desktop
