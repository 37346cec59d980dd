#include "app/ProjectActions.h"

#include "app/NoticeBar.h"
#include "app/ProjectFile.h"
#include "app/ProjectKeeper.h"
#include "app/Words.h"

#include <QAbstractButton>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <platform/foundation/FileSystemRepresentation.h>
#include <utility>

namespace Tessaron::Desktop
{

namespace
{

const QByteArray projectEnding = QByteArrayLiteral(".tessaron");
constexpr qsizetype mostRecent = 8;

} // namespace

ProjectActions::ProjectActions(NoticeBar &notices, QWidget &window)
    : m_notices(notices)
    , m_window(window)
{
}

ProjectActions::~ProjectActions() = default;

bool ProjectActions::isProjectName(const QByteArray &path)
{
    return path.endsWith(projectEnding);
}

void ProjectActions::addPanel(DesktopPanel &panel)
{
    ProjectSubject *const subject = panel.projectSubject();
    if (!subject)
        return;
    // Each kind has a folder of its own: a copy comes back into the panel that it is from.
    const QByteArray folder =
        fileSystemRepresentation(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)) + "/recovery/"
        + subject->kind().toUtf8();
    m_entries.push_back(std::make_unique<Entry>(Entry{&panel, std::make_unique<ProjectKeeper>(*subject, folder)}));
    const Entry &entry = *m_entries.back();
    connect(entry.keeper.get(), &ProjectKeeper::pathChanged, this, &ProjectActions::showTitle);
    connect(&subject->undoStack(), &QUndoStack::cleanChanged, this, &ProjectActions::showTitle);
    connect(entry.keeper.get(), &ProjectKeeper::opened, this, [this, &entry] { showOpened(entry); });
}

void ProjectActions::setCurrentPanel(const DesktopPanel &panel)
{
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [&panel](const auto &each) { return each->panel == &panel; });
    m_current = found == m_entries.end() ? nullptr : found->get();
    for (QAction *const action : std::as_const(m_ofPanel))
        action->setEnabled(m_current != nullptr);
    showTitle();
}

void ProjectActions::addTo(QMenu &menu)
{
    const auto add = [this, &menu](const QString &text, const char *icon, QKeySequence::StandardKey key,
                                   auto operation) {
        QAction *const action = menu.addAction(QIcon::fromTheme(QString::fromLatin1(icon)), text, this, operation);
        action->setShortcut(key);
        return action;
    };
    m_ofPanel << add(tr("&New Disc"), "document-new", QKeySequence::New, &ProjectActions::begin);
    add(tr("&Open…"), "document-open", QKeySequence::Open, &ProjectActions::open);
    m_recentMenu = menu.addMenu(tr("Open &Recent"));
    connect(m_recentMenu, &QMenu::aboutToShow, this, &ProjectActions::showRecent);
    m_ofPanel << add(tr("&Save Project"), "document-save", QKeySequence::Save, [this] { save(); });
    m_ofPanel << add(tr("Save Project &As…"), "document-save-as", QKeySequence::SaveAs, [this] { saveAs(); });
}

void ProjectActions::recover()
{
    for (const std::unique_ptr<Entry> &entry : m_entries)
        entry->keeper->recover([this, panel = entry->panel] {
            Q_EMIT panelWanted(*panel);
            m_notices.tell(tr("This is the disc that was open when the program ended unexpectedly. It is not saved."));
            showTitle();
        });
}

void ProjectActions::showOpened(const Entry &entry)
{
    entry.panel->projectWasOpened();
    const QStringList missing = entry.keeper->missingPaths();
    m_notices.clear();
    if (!missing.isEmpty())
        m_notices.tell(
            tr("%n file(s) of this project are missing: they were moved or removed.", nullptr, int(missing.size())),
            missing);
    Q_EMIT opened();
}

void ProjectActions::showTitle()
{
    if (!m_current) {
        m_window.setWindowTitle(tr("Tessaron"));
        m_window.setWindowModified(false);
        return;
    }
    const QByteArray path = m_current->keeper->path();
    const QString name = path.isEmpty()
        ? tr("New disc")
        : displayableText(stringWithFileSystemRepresentation(path.mid(path.lastIndexOf('/') + 1)));
    m_window.setWindowTitle(tr("%1[*] — Tessaron").arg(name));
    m_window.setWindowModified(!m_current->keeper->isSaved());
}

void ProjectActions::begin()
{
    if (m_current)
        afterSaving(*m_current, [entry = m_current] { entry->keeper->close(); });
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

/// Which panel it is for the project itself says.
void ProjectActions::openAt(const QByteArray &path)
{
    const auto found = std::make_shared<Result<QJsonObject>>(QJsonObject());
    m_reading.start([path, found](const std::stop_token &) { *found = projectAt(path); },
                    [this, path, found] {
                        if (!*found) {
                            m_notices.tell(errorText(found->error()));
                            return;
                        }
                        const QString kind = kindOfProject(**found);
                        for (const std::unique_ptr<Entry> &entry : m_entries) {
                            if (entry->keeper->subject().kind() == kind)
                                return openIn(*entry, path, **found);
                        }
                        m_notices.tell(
                            errorText(notAProject(path, tr("this program has no panel for discs of its kind"))));
                    });
}

void ProjectActions::openIn(const Entry &entry, const QByteArray &path, const QJsonObject &project)
{
    Q_EMIT panelWanted(*entry.panel);
    afterSaving(entry, [this, &entry, path, project] {
        entry.keeper->open(path, project, [this, path](const NSError &error) {
            if (error)
                m_notices.tell(errorText(error));
            else
                addRecent(path);
        });
    });
}

void ProjectActions::save()
{
    if (m_current)
        save(*m_current);
}

void ProjectActions::saveAs()
{
    if (m_current)
        saveAs(*m_current);
}

void ProjectActions::save(const Entry &entry)
{
    if (entry.keeper->path().isEmpty())
        saveAs(entry);
    else
        saveAt(entry, entry.keeper->path());
}

void ProjectActions::saveAs(const Entry &entry)
{
    auto *const dialog = new QFileDialog(&m_window, tr("Save Project"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilter(tr("Projects (*.tessaron)"));
    dialog->setDefaultSuffix(QStringLiteral("tessaron"));
    dialog->setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->selectFile(fileNameFor(entry.panel->suggestedName()) + stringWithFileSystemRepresentation(projectEnding));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, &entry](const QString &path) { saveAt(entry, fileSystemRepresentation(path)); });
    connect(dialog, &QDialog::rejected, this, [this] { m_afterSaving = nullptr; });
    dialog->open();
}

void ProjectActions::saveAt(const Entry &entry, const QByteArray &path)
{
    entry.keeper->save(path, [this, path](const NSError &error) {
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

bool ProjectActions::isAllSaved() const
{
    return std::all_of(m_entries.begin(), m_entries.end(), [](const auto &each) { return each->keeper->isSaved(); });
}

void ProjectActions::afterSavingAll(const std::function<void()> &goOn)
{
    // One after the other; one that was dropped stays as it is and must not be asked about again. Copies are kept until
    // the last one is decided on: the user may stay.
    std::function<void()> then = [this, goOn] {
        for (const std::unique_ptr<Entry> &entry : m_entries)
            entry->keeper->forgetCopy();
        goOn();
    };
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry) {
        then = [this, &entry = **entry, next = std::move(then)] { afterSaving(entry, next); };
    }
    then();
}

void ProjectActions::afterSaving(const Entry &entry, const std::function<void()> &goOn)
{
    if (entry.keeper->isSaved()) {
        goOn();
        return;
    }
    Q_EMIT panelWanted(*entry.panel);
    auto *const question = new QMessageBox(QMessageBox::Question, tr("Tessaron"),
                                           tr("This disc is not saved as a project. Save it first?"),
                                           QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, &m_window);
    question->setInformativeText(tr("Without saving, what you put together is lost. The files themselves stay."));
    question->setAttribute(Qt::WA_DeleteOnClose);
    connect(question, &QMessageBox::buttonClicked, this, [this, question, &entry, goOn](QAbstractButton *button) {
        switch (question->standardButton(button)) {
        case QMessageBox::Save:
            // What was changed while it was being saved is asked about again.
            m_afterSaving = [this, &entry, goOn] { afterSaving(entry, goOn); };
            save(entry);
            break;
        case QMessageBox::Discard:
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
    m_reading.letGo();
    for (const std::unique_ptr<Entry> &entry : m_entries)
        entry->keeper->letGo();
}

} // namespace Tessaron::Desktop
