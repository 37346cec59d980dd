#include "app/DataView.h"

#include "app/CapacityBar.h"
#include "app/DiscTreeView.h"
#include "app/FileChoice.h"
#include "app/FileDrops.h"
#include "app/JobBar.h"
#include "app/ListDialog.h"
#include "app/NoticeBar.h"
#include "app/OptionsDialog.h"

#include <TessaronClasses/KRFileReference.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDateTime>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QStandardPaths>
#include <QStyle>
#include <QVBoxLayout>

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

using namespace std::chrono_literals;

/// Between the last key and the search: a fast typist's next key comes first.
constexpr auto filterDelay = 150ms;

QList<QByteArray> bytesOf(const QStringList &paths)
{
    QList<QByteArray> result;
    for (const QString &path : paths)
        result << fileSystemRepresentation(path);
    return result;
}

} // namespace

DataView::DataView(DiscDocument &document, QWidget *parent)
    : QWidget(parent)
    , m_document(document)
    , m_preview(document)
    , m_name(new QLineEdit(document.volumeName(), this))
    , m_filter(new QLineEdit(this))
    , m_subset(new QComboBox(this))
    , m_notices(new NoticeBar(this))
    , m_tree(new DiscTreeView(this))
    , m_progress(new JobBar(this))
    , m_capacity(new CapacityBar(this))
    , m_changes(new QPushButton(this))
{
    makeActions();
    layOut();
    connectModel();
    updateActions();
}

void DataView::makeActions()
{
    m_addFiles = addAction(tr("Add &Files…"), QStringLiteral("document-new"),
                           QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), &DataView::addFiles);
    m_addFolders = addAction(tr("Add F&older…"), QStringLiteral("folder-open"),
                             QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O), &DataView::addFolders);
    m_newFolder = addAction(tr("New Fol&der"), QStringLiteral("folder-new"),
                            QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N), &DataView::newFolder);
    m_paste = addAction(tr("&Paste Files"), QStringLiteral("edit-paste"), QKeySequence::Paste, &DataView::paste);
    m_rename =
        addAction(tr("&Rename"), QStringLiteral("edit-rename"), QKeySequence(Qt::Key_F2), &DataView::renameSelected);
    m_remove = addAction(tr("Re&move from the Disc"), QStringLiteral("list-remove"), QKeySequence::Delete,
                         &DataView::removeSelected);
    m_options = addAction(tr("Opt&ions…"), QStringLiteral("document-properties"),
                          QKeySequence(Qt::ALT | Qt::Key_Return), &DataView::editOptions);
    m_find = new QAction(QIcon::fromTheme(QStringLiteral("edit-find")), tr("Fi&nd"), this);
    m_find->setShortcut(QKeySequence::Find);
    connect(m_find, &QAction::triggered, this, [this] {
        m_filter->setFocus(Qt::ShortcutFocusReason);
        m_filter->selectAll();
    });
    m_check = new QAction(tr("&Check Names and Size"), this);
    m_check->setShortcut(QKeySequence::Refresh);
    connect(m_check, &QAction::triggered, &m_preview, &DiscPreview::look);
    m_split = new QAction(tr("&Split over Several Discs…"), this);
    m_split->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D));
    connect(m_split, &QAction::triggered, this, &DataView::splitWanted);
    // A key that means text while someone types belongs to the field.
    for (QAction *const action : {m_remove, m_rename, m_paste, m_options}) {
        action->setShortcutContext(Qt::WidgetShortcut);
        m_tree->addAction(action);
    }
}

QAction *DataView::addAction(const QString &text, const QString &iconName, const QKeySequence &shortcut,
                             void (DataView::*operation)())
{
    auto *const action = new QAction(QIcon::fromTheme(iconName), text, this);
    action->setShortcut(shortcut);
    connect(action, &QAction::triggered, this, operation);
    return action;
}

QList<QAction *> DataView::discActions() const
{
    return {m_addFiles, m_addFolders, m_newFolder, m_paste, m_rename, m_options, m_remove, m_find, m_check, m_split};
}

void DataView::layOut()
{
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    auto *const row = new QHBoxLayout;
    auto *const label = new QLabel(tr("Disc &name:"), this);
    label->setBuddy(m_name);
    row->addWidget(label);
    row->addWidget(m_name, 2);
    m_filter->setPlaceholderText(tr("Find by name"));
    m_filter->setAccessibleName(m_filter->placeholderText());
    m_filter->setClearButtonEnabled(true);
    // Not every desktop has a theme: an action without an icon is a gap.
    if (QIcon::hasThemeIcon(QStringLiteral("edit-find")))
        m_filter->addAction(QIcon::fromTheme(QStringLiteral("edit-find")), QLineEdit::LeadingPosition);
    row->addWidget(m_filter, 1);
    m_subset->addItem(tr("Everything"), int(DiscSubset::All));
    m_subset->addItem(tr("Names that change"), int(DiscSubset::Renamed));
    m_subset->addItem(tr("Missing or not storable"), int(DiscSubset::Troubled));
    m_subset->addItem(tr("On the disc more than once"), int(DiscSubset::Repeated));
    m_subset->setAccessibleName(tr("What is shown"));
    m_subset->setToolTip(m_subset->accessibleName());
    row->addWidget(m_subset);
    column->addLayout(row);
    column->addWidget(m_notices);
    column->addWidget(m_tree, 1);
    column->addWidget(m_progress);
    auto *const last = new QHBoxLayout;
    last->addWidget(m_changes);
    last->addWidget(m_capacity, 1);
    column->addLayout(last);
    m_changes->setFlat(true);
    m_changes->hide();

    m_tree->setModel(&m_document.model());
    m_tree->setAccessibleName(tr("Files on the disc"));
    m_tree->setFocus(); // not the name, which the first key would change
    m_tree->setEmptyText(tr("Drop files and folders here"),
                         tr("They go onto the disc as you see them here. The originals stay where they are."));
    m_tree->sortByColumn(DiscTreeModel::Name, Qt::AscendingOrder);
    m_tree->setColumnHidden(DiscTreeModel::Place, true);
    QHeaderView &header = *m_tree->header();
    header.setSectionResizeMode(DiscTreeModel::Name, QHeaderView::Stretch);
    const QFontMetrics metrics = fontMetrics();
    header.resizeSection(DiscTreeModel::Size, metrics.horizontalAdvance(QStringLiteral("0000.0 Bytes000")));
    header.resizeSection(DiscTreeModel::Kind, metrics.horizontalAdvance(QStringLiteral("OpenDocument text 00")));
    const QDateTime longDate(QDate(2028, 12, 28), QTime(20, 58, 58));
    header.resizeSection(
        DiscTreeModel::Modified,
        metrics.horizontalAdvance(QLocale().toString(longDate, QLocale::ShortFormat) + QStringLiteral("000")));
}

void DataView::connectModel()
{
    DiscTreeModel &model = m_document.model();
    connect(&model, &DiscTreeModel::treeChanged, this, &DataView::treeHasChanged);
    connect(&model, &DiscTreeModel::filesDropped, this,
            [this](const QList<QByteArray> &paths, const DiscNode *folder) { addTo(paths, *folder); });
    connect(&model, &DiscTreeModel::moveWanted, this, [this](const std::vector<DiscNode *> &nodes, DiscNode *folder) {
        tell(tr("Some items could not be moved as they are."), m_document.move(nodes, *folder));
    });
    connect(&model, &DiscTreeModel::renameWanted, this, [this](DiscNode *node, const QString &name) {
        const QString reason = m_document.rename(*node, name);
        if (!reason.isEmpty())
            m_notices->tell(reason);
        else
            m_tree->scrollTo(m_tree->currentIndex()); // sorted elsewhere by its new name
    });
    connect(&m_document, &DiscDocument::volumeNameChanged, this, [this](const QString &name) {
        if (m_name->text() != name)
            m_name->setText(name);
        Q_EMIT changed();
    });
    connect(m_name, &QLineEdit::textEdited, &m_document, &DiscDocument::setVolumeName);
    connect(m_tree->selectionModel(), &QItemSelectionModel::selectionChanged, this, &DataView::updateActions);
    connect(m_tree, &QWidget::customContextMenuRequested, this, &DataView::showContextMenu);
    connect(&m_intake, &SourceIntake::started, this, [this] { m_progress->begin(tr("Adding")); });
    connect(&m_intake, &SourceIntake::progressed, this,
            [this] { m_progress->showText(tr("%n item(s) found", nullptr, int(m_intake.found()))); });
    connect(&m_intake, &SourceIntake::finished, this, &DataView::taken);
    connect(m_progress, &JobBar::cancelWanted, this, [this] {
        m_progress->showCancelling();
        m_intake.cancel();
    });
    connect(&m_preview, &DiscPreview::outdated, m_changes, &QWidget::hide);
    connect(&m_preview, &DiscPreview::looked, this, [this](std::uint64_t bytes) {
        setExactSize(bytes);
        showChanges();
    });
    connect(m_changes, &QPushButton::clicked, this, &DataView::listChanges);
    m_filterDelay.setSingleShot(true);
    m_filterDelay.setInterval(filterDelay);
    connect(m_filter, &QLineEdit::textChanged, &m_filterDelay, qOverload<>(&QTimer::start));
    connect(&m_filterDelay, &QTimer::timeout, this, &DataView::applyFilter);
    connect(m_subset, &QComboBox::currentIndexChanged, this, &DataView::applyFilter);
}

void DataView::applyFilter()
{
    m_document.model().setFilter(m_filter->text(), static_cast<DiscSubset>(m_subset->currentData().toInt()));
    m_tree->setColumnHidden(DiscTreeModel::Place, !m_document.model().isFiltered());
    updateActions();
}

std::vector<DiscNode *> DataView::selected() const
{
    QModelIndexList indexes;
    // By ranges: one index for each cell of a hundred thousand rows takes a second.
    for (const QItemSelectionRange &range : m_tree->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            indexes << m_document.model().index(row, 0, range.parent());
    }
    return m_document.model().nodesAt(indexes);
}

DiscNode &DataView::targetFolder() const
{
    const std::vector<DiscNode *> nodes = selected();
    if (nodes.size() != 1)
        return m_document.model().root();
    return nodes.front()->isFolder() ? *nodes.front() : *nodes.front()->parent;
}

void DataView::updateActions()
{
    const bool isAny = m_tree->selectionModel()->hasSelection();
    for (QAction *const action : {m_rename, m_remove, m_options})
        action->setEnabled(isAny);
    m_newFolder->setEnabled(!m_document.model().isFiltered());
}

void DataView::treeHasChanged()
{
    m_exactSize = 0;
    m_capacity->setUsed(discSize(), false);
    updateActions();
    Q_EMIT changed();
}

void DataView::showChanges()
{
    const int lost = int(m_preview.lostCount());
    const int count = int(m_preview.changes().size());
    m_changes->setVisible(count > 0);
    const QStyle::StandardPixmap icon = lost > 0 ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    m_changes->setIcon(style()->standardIcon(icon));
    m_changes->setText(lost > 0 ? tr("%n item(s) cannot be stored as they are…", nullptr, lost)
                                : tr("%n name(s) or detail(s) change…", nullptr, count));
}

void DataView::listChanges()
{
    auto *const dialog = new ListDialog(
        tr("This is how filesystems of the disc differ from what is shown. Every system reads one that it knows."),
        m_preview.changes(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

std::uint64_t DataView::discSize() const
{
    return m_exactSize != 0 ? m_exactSize : estimatedDiscSize(m_document.model().root());
}

void DataView::setExactSize(std::uint64_t bytes)
{
    m_exactSize = bytes;
    m_capacity->setUsed(bytes, true);
}

void DataView::addPaths(const QList<QByteArray> &paths)
{
    addTo(paths, targetFolder());
}

void DataView::addTo(const QList<QByteArray> &paths, const DiscNode &folder)
{
    m_notices->clear();
    m_intake.add(paths, folder);
}

void DataView::taken(const std::shared_ptr<TakenIn> &result)
{
    m_progress->end();
    tell(tr("Not everything was added as it is."), m_document.addTaken(*result));
}

/// One detail is the sentence itself.
void DataView::tell(const QString &text, const QStringList &details)
{
    if (details.size() == 1)
        m_notices->tell(details.front());
    else if (!details.isEmpty())
        m_notices->tell(text + u' ' + tr("%n message(s).", nullptr, int(details.size())), details);
}

void DataView::addFiles()
{
    auto *const dialog =
        new QFileDialog(this, tr("Add Files"), QStandardPaths::writableLocation(QStandardPaths::HomeLocation));
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::filesSelected, this, [this](const QStringList &paths) { addPaths(bytesOf(paths)); });
    dialog->open();
}

void DataView::addFolders()
{
    chooseFolder(*this, tr("Add Folder"), QStandardPaths::HomeLocation,
                 [this](const QByteArray &path) { addPaths({path}); });
}

void DataView::newFolder()
{
    const DiscNode &folder = m_document.addFolder(targetFolder());
    const QModelIndex index = m_document.model().indexOf(folder);
    m_tree->expand(index.parent());
    m_tree->setCurrentIndex(index);
    m_tree->scrollTo(index);
    m_tree->edit(index);
}

void DataView::renameSelected()
{
    const QModelIndex current = m_tree->currentIndex();
    if (current.isValid())
        m_tree->edit(current.siblingAtColumn(DiscTreeModel::Name));
}

void DataView::removeSelected()
{
    m_document.remove(selected());
}

void DataView::editOptions()
{
    const std::vector<DiscNode *> nodes = selected();
    if (nodes.empty())
        return;
    const QString what = nodes.size() == 1 ? nodes.front()->shownName() : tr("%n item(s)", nullptr, int(nodes.size()));
    auto *const dialog = new OptionsDialog(what, *nodes.front()->item->fileReference()->tessaronAttributes(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this,
            [this, dialog, nodes] { m_document.setOptions(nodes, dialog->options()); });
    dialog->open();
}

void DataView::paste()
{
    const QMimeData *const copied = QApplication::clipboard()->mimeData();
    if (!copied || pathsOfFiles(*copied).isEmpty())
        m_notices->tell(tr("There are no files to paste. Copy some in the file manager first."));
    else if (holdsLentFiles(*copied))
        m_notices->tell(tr("These files of an image are there for a while only. Take them out into a folder, and add "
                           "them from there."));
    else
        addPaths(pathsOfFiles(*copied));
}

void DataView::showContextMenu(const QPoint &place)
{
    QMenu menu(this);
    menu.addActions({m_newFolder, m_addFiles, m_addFolders, m_paste});
    menu.addSeparator();
    menu.addActions({m_rename, m_options, m_remove});
    menu.exec(m_tree->viewport()->mapToGlobal(place));
}

} // namespace Tessaron::Desktop
