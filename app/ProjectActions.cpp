#include "app/ProjectActions.h"

#include "app/CapacityBar.h"
#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/NoticeBar.h"
#include "app/ProjectKeeper.h"
#include "app/Words.h"

#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>
#include <QStandardPaths>

#include <platform/foundation/FileSystemRepresentation.h>
#include <utility>

namespace Tessaron::Desktop
{

namespace
{

const QByteArray projectEnding = QByteArrayLiteral(".tessaron");
constexpr qsizetype mostRecent = 8;

} // namespace

ProjectActions::ProjectActions(DataPanel &panel, NoticeBar &notices, QWidget &window)
    : m_panel(panel)
    , m_notices(notices)
    , m_window(window)
    , m_keeper(std::make_unique<ProjectKeeper>(
          panel.document(),
          fileSystemRepresentation(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)) + "/recovery"))
{
    connect(m_keeper.get(), &ProjectKeeper::pathChanged, this, &ProjectActions::showTitle);
    connect(&m_panel.document().undoStack(), &QUndoStack::cleanChanged, this, &ProjectActions::showTitle);
    connect(m_keeper.get(), &ProjectKeeper::opened, this, &ProjectActions::showOpened);
    connect(&m_panel.dataView().capacity(), &CapacityBar::mediumChanged, m_keeper.get(), &ProjectKeeper::setMediumKey);
    showTitle();
}

ProjectActions::~ProjectActions() = default;

bool ProjectActions::isProjectName(const QByteArray &path)
{
    return path.endsWith(projectEnding);
}

void ProjectActions::addTo(QMenu &menu)
{
    const auto add = [this, &menu](const QString &text, const char *icon, QKeySequence::StandardKey key,
                                   void (ProjectActions::*operation)()) {
        QAction *const action = menu.addAction(QIcon::fromTheme(QString::fromLatin1(icon)), text, this, operation);
        action->setShortcut(key);
    };
    add(tr("&New Disc"), "document-new", QKeySequence::New, &ProjectActions::begin);
    add(tr("&Open…"), "document-open", QKeySequence::Open, &ProjectActions::open);
    m_recentMenu = menu.addMenu(tr("Open &Recent"));
    connect(m_recentMenu, &QMenu::aboutToShow, this, &ProjectActions::showRecent);
    add(tr("&Save Project"), "document-save", QKeySequence::Save, &ProjectActions::save);
    add(tr("Save Project &As…"), "document-save-as", QKeySequence::SaveAs, &ProjectActions::saveAs);
}

void ProjectActions::recover()
{
    m_keeper->recover([this] {
        m_notices.tell(tr("This is the disc that was open when the program ended unexpectedly. It is not saved."));
        showTitle();
    });
}

void ProjectActions::showOpened()
{
    m_panel.dataView().capacity().setMediumKey(m_keeper->mediumKey());
    const QStringList missing = m_keeper->missingPaths();
    m_notices.clear();
    if (!missing.isEmpty())
        m_notices.tell(
            tr("%n file(s) of this project are missing: they were moved or removed.", nullptr, int(missing.size())),
            missing);
    Q_EMIT opened();
}

void ProjectActions::showTitle()
{
    const QByteArray path = m_keeper->path();
    const QString name = path.isEmpty()
        ? tr("New disc")
        : displayableText(stringWithFileSystemRepresentation(path.mid(path.lastIndexOf('/') + 1)));
    m_window.setWindowTitle(tr("%1[*] — Tessaron").arg(name));
    m_window.setWindowModified(!isSaved());
}

void ProjectActions::begin()
{
    afterSaving([this] { m_keeper->close(); });
}

void ProjectActions::open()
{
    auto *const dialog = new QFileDialog(&m_window, tr("Open Project"));
    dialog->setNameFilters({tr("Projects (*.tessaron)"), tr("All files (*)")});
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString &path) { openAt(fileSystemRepresentation(path)); });
    dialog->open();
}

void ProjectActions::openAt(const QByteArray &path)
{
    afterSaving([this, path] {
        m_keeper->open(path, [this, path](const NSError &error) {
            if (error)
                m_notices.tell(errorText(error));
            else
                addRecent(path);
        });
    });
}

void ProjectActions::save()
{
    if (m_keeper->path().isEmpty())
        saveAs();
    else
        saveAt(m_keeper->path());
}

void ProjectActions::saveAs()
{
    auto *const dialog = new QFileDialog(&m_window, tr("Save Project"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilter(tr("Projects (*.tessaron)"));
    dialog->setDefaultSuffix(QStringLiteral("tessaron"));
    dialog->setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->selectFile(fileNameFor(m_panel.suggestedName()) + stringWithFileSystemRepresentation(projectEnding));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString &path) { saveAt(fileSystemRepresentation(path)); });
    connect(dialog, &QDialog::rejected, this, [this] { m_afterSaving = nullptr; });
    dialog->open();
}

void ProjectActions::saveAt(const QByteArray &path)
{
    m_keeper->save(path, [this, path](const NSError &error) {
        const std::function<void()> goOn = std::exchange(m_afterSaving, nullptr);
        if (error) {
            m_notices.tell(tr("The project was not saved: %1").arg(errorText(error)));
            return;
        }
        addRecent(path);
        if (goOn)
            goOn();
    });
}

bool ProjectActions::isSaved() const
{
    return m_panel.document().undoStack().isClean();
}

void ProjectActions::afterSaving(const std::function<void()> &goOn)
{
    if (isSaved()) {
        goOn();
        return;
    }
    auto *const question = new QMessageBox(QMessageBox::Question, tr("Tessaron"),
                                           tr("This disc is not saved as a project. Save it first?"),
                                           QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, &m_window);
    question->setInformativeText(tr("Without saving, what you put together is lost. The files themselves stay."));
    question->setAttribute(Qt::WA_DeleteOnClose);
    connect(question, &QMessageBox::buttonClicked, this, [this, question, goOn](QAbstractButton *button) {
        switch (question->standardButton(button)) {
        case QMessageBox::Save:
            m_afterSaving = goOn;
            save();
            break;
        case QMessageBox::Discard:
            m_keeper->forgetCopy();
            goOn();
            break;
        default:
            break;
        }
    });
    question->open();
}

void ProjectActions::addRecent(const QByteArray &path)
{
    QSettings settings;
    QStringList recent = settings.value(QStringLiteral("recent")).toStringList();
    const QString text = QString::fromLatin1(path.toPercentEncoding("/"));
    recent.removeAll(text);
    recent.prepend(text);
    settings.setValue(QStringLiteral("recent"), recent.mid(0, mostRecent));
}

/// Names are shown as they are remembered: whether the files are there is found when one is opened.
void ProjectActions::showRecent()
{
    m_recentMenu->clear();
    for (const QString &text : QSettings().value(QStringLiteral("recent")).toStringList()) {
        const QByteArray path = QByteArray::fromPercentEncoding(text.toLatin1());
        QString shown = displayableText(stringWithFileSystemRepresentation(path));
        m_recentMenu->addAction(shown.replace(u'&', QStringLiteral("&&")), this, [this, path] { openAt(path); });
    }
    if (m_recentMenu->isEmpty())
        m_recentMenu->addAction(tr("No projects yet"))->setEnabled(false);
}

void ProjectActions::letGo()
{
    m_keeper->letGo();
}

} // namespace Tessaron::Desktop
