#pragma once

#include "app/BackgroundWork.h"
#include "app/DesktopPanel.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class QAction;
class QMenu;

namespace Tessaron::Desktop
{

class NoticeBar;
class ProjectKeeper;

/// New, open, save: what a user does with projects, one for each panel that can be saved as one; the questions that go
/// with it; and the window's title. On the main thread.
class ProjectActions final : public QObject
{
    Q_OBJECT

public:
    ProjectActions(NoticeBar &notices, QWidget &window);
    ~ProjectActions() override;

    /// True for the name of a project (bytes).
    [[nodiscard]] static bool isProjectName(const QByteArray &path);

    /// Takes a panel in; one that cannot be saved as a project is passed over.
    void addPanel(DesktopPanel &panel);
    /// The panel that the user sees: what is saved and begun anew is its disc.
    void setCurrentPanel(const DesktopPanel &panel);
    /// Of the panel that the user sees; null where that has none.
    [[nodiscard]] ProjectKeeper *keeper() const { return m_current ? m_current->keeper.get() : nullptr; }
    /// Puts what there is to choose into a menu.
    void addTo(QMenu &menu);
    /// Looks for discs that an earlier run of the program left unsaved.
    void recover();

    /// Begins a new disc, once the user does not mind about the present one.
    void begin();
    void open();
    void openAt(const QByteArray &path);
    void save();
    void saveAs();

    /// True when no disc of any panel has changes that are not saved.
    [[nodiscard]] bool isAllSaved() const;
    /// Goes on once every disc is saved or dropped, and forgets what was dropped; not at all when the user stays with
    /// one.
    void afterSavingAll(const std::function<void()> &goOn);
    void letGo();

Q_SIGNALS:
    /// Another disc has been opened, or the panel's own has been.
    void opened();
    /// The user has to see this panel.
    void panelWanted(const Tessaron::Desktop::DesktopPanel &panel);

private:
    struct Entry {
        DesktopPanel *panel;
        std::unique_ptr<ProjectKeeper> keeper;
    };

    void showOpened(const Entry &entry);
    void showTitle();
    void openIn(const Entry &entry, const QByteArray &path, const QJsonObject &project);
    void saveAt(const Entry &entry, const QByteArray &path);
    void save(const Entry &entry);
    void saveAs(const Entry &entry);
    void addRecent(const QByteArray &path);
    void showRecent();
    /// Goes on once the disc is saved, or the user no longer wants it. It stays until something takes its place.
    void afterSaving(const Entry &entry, const std::function<void()> &goOn);

    NoticeBar &m_notices;
    QWidget &m_window;
    std::vector<std::unique_ptr<Entry>> m_entries;
    Entry *m_current = nullptr;
    QMenu *m_recentMenu = nullptr;
    QList<QAction *> m_ofPanel; ///< what is there only for panels with a project
    std::function<void()> m_afterSaving; ///< what waits for the project that is being saved
    BackgroundWork m_reading;
};

} // namespace Tessaron::Desktop
