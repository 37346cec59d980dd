#pragma once

#include "app/DiscDocument.h"
#include "app/DiscPreview.h"
#include "app/SourceIntake.h"

#include <QPersistentModelIndex>
#include <QTimer>
#include <QWidget>

class QAction;
class QComboBox;
class QLineEdit;
class QMimeData;
class QPushButton;

namespace Tessaron::Desktop
{

class CapacityBar;
class DiscTreeView;
class JobBar;
class NoticeBar;

/// The window's view of a data disc: its name, its tree, how full it is, and what can be done with it.
class DataView final : public QWidget
{
    Q_OBJECT

public:
    explicit DataView(DiscDocument &document, QWidget *parent = nullptr);

    /// For menus; each has its shortcut.
    [[nodiscard]] QList<QAction *> discActions() const;
    [[nodiscard]] DiscTreeView &tree() const { return *m_tree; }
    [[nodiscard]] NoticeBar &notices() const { return *m_notices; }
    [[nodiscard]] CapacityBar &capacity() const { return *m_capacity; }
    [[nodiscard]] SourceIntake &intake() { return m_intake; }
    [[nodiscard]] DiscPreview &preview() { return m_preview; }
    /// Says how many names change, and lists them when it is pressed; not visible when none do.
    [[nodiscard]] QPushButton &changesButton() const { return *m_changes; }
    [[nodiscard]] QLineEdit &filterField() const { return *m_filter; }
    [[nodiscard]] QLineEdit &nameField() const { return *m_name; }

    /// Adds what lies at these paths to the folder that is selected, or to the disc itself.
    void addPaths(const QList<QByteArray> &paths);
    /// An exact size of the disc as it is now, in place of the estimate.
    void setExactSize(std::uint64_t bytes);
    [[nodiscard]] std::uint64_t discSize() const;

    void addFiles();
    void addFolders();
    void newFolder();
    void renameSelected();
    void removeSelected();
    void editOptions();
    void paste();

Q_SIGNALS:
    /// The disc is to be shared out among several ones.
    void splitWanted();
    /// The tree or its name has changed.
    void changed();

private:
    void makeActions();
    void layOut();
    void connectModel();
    void showContextMenu(const QPoint &place);
    void updateActions();
    void treeHasChanged();
    void applyFilter();
    void showChanges();
    void listChanges();
    void addTo(const QList<QByteArray> &paths, const DiscNode &folder);
    void taken(const std::shared_ptr<TakenIn> &result);
    void tell(const QString &text, const QStringList &details);
    [[nodiscard]] std::vector<DiscNode *> selected() const;
    [[nodiscard]] DiscNode &targetFolder() const;
    QAction *addAction(const QString &text, const QString &iconName, const QKeySequence &shortcut,
                       void (DataView::*operation)());

    DiscDocument &m_document;
    SourceIntake m_intake;
    DiscPreview m_preview;
    QTimer m_filterDelay;
    std::uint64_t m_exactSize = 0; ///< 0 while the tree has changed since
    QLineEdit *const m_name;
    QLineEdit *const m_filter;
    QComboBox *const m_subset;
    NoticeBar *const m_notices;
    DiscTreeView *const m_tree;
    JobBar *const m_progress;
    CapacityBar *const m_capacity;
    QPushButton *const m_changes;
    QAction *m_addFiles = nullptr;
    QAction *m_addFolders = nullptr;
    QAction *m_newFolder = nullptr;
    QAction *m_rename = nullptr;
    QAction *m_remove = nullptr;
    QAction *m_options = nullptr;
    QAction *m_paste = nullptr;
    QAction *m_find = nullptr;
    QAction *m_check = nullptr;
    QAction *m_split = nullptr;
};

} // namespace Tessaron::Desktop
