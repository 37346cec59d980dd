#include "app/MainWindow.h"

#include "app/AudioIntake.h"
#include "app/AudioPanel.h"
#include "app/BurnDialog.h"
#include "app/DataPanel.h"
#include "app/DiscWords.h"
#include "app/ImagePanel.h"
#include "app/JobBar.h"
#include "app/JobOutcomes.h"
#include "app/JobRunner.h"
#include "app/NoticeBar.h"
#include "app/ProjectActions.h"
#include "app/VideoPanel.h"
#include "app/Words.h"

#include <TessaronClasses/DiscJob.h>

#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QToolBar>
#include <QVBoxLayout>

#include <TessaronClassesUI/ImageSavePanel.h>
#include <algorithm>
#include <platform/foundation/FileSystemRepresentation.h>
#include <utility>

namespace Tessaron::Desktop
{

namespace
{

struct NamedFormat {
    DiscFormat format;
    QString name;
};

QList<NamedFormat> formatsOf(TessaronDiscImageFormat handled)
{
    const QList<NamedFormat> all = {
        {DiscFormat::ISO, MainWindow::tr("ISO image (.iso)")},
        {DiscFormat::BIN, MainWindow::tr("BIN image with cue sheet (.bin)")},
        {DiscFormat::VANT, MainWindow::tr("VANT image (.vant)")},
    };
    QList<NamedFormat> formats;
    std::copy_if(all.begin(), all.end(), std::back_inserter(formats),
                 [handled](const NamedFormat &each) { return (TessaronDiscImageFormat(each.format) & handled) != 0; });
    return formats;
}

} // namespace

/// What panels call: owned by the window, which it may outlive in a panel's hands.
class MainWindow::Host final : public TessaronPanelDelegate
{
public:
    explicit Host(MainWindow &window)
        : m_window(&window)
    {
    }
    void panelDidChange(TessaronPanelProtocol &) override { m_window->updateActions(); }
    void panelTells(const QString &text, const QStringList &details) override
    {
        m_window->m_notices->tell(text, details);
    }
    bool runPanelJob(std::unique_ptr<DiscJob> job, const QString &name) override
    {
        if (m_window->m_runner->isWorking()) {
            m_window->tellOfOtherJob();
            return false;
        }
        m_window->startJob(std::move(job), name);
        return true;
    }
    void panelJobHasEnded(const JobOutcome &outcome) override { m_window->jobHasEnded(outcome); }
    void burnPanelDisc(const BurnSubject &subject, const QString &title, WhenBurnt whenEnded) override
    {
        if (m_window->m_runner->isWorking()) {
            m_window->tellOfOtherJob();
            whenEnded(BurnEnd::Declined, {});
            return;
        }
        m_window->askForDrive(subject, title, whenEnded);
    }

private:
    MainWindow *const m_window;
};

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_host(std::make_shared<Host>(*this))
    , m_dataPanel(std::make_shared<DataPanel>())
    , m_audioPanel(std::make_shared<AudioPanel>())
    , m_imagePanel(std::make_shared<ImagePanel>())
    , m_videoPanel(std::make_shared<VideoPanel>())
{
    auto *const middle = new QWidget(this);
    auto *const row = new QHBoxLayout(middle);
    m_kinds = new QListWidget(middle);
    m_kinds->setAccessibleName(tr("Kinds of disc"));
    m_kinds->setIconSize(QSize(32, 32));
    m_kinds->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    row->addWidget(m_kinds);
    auto *const column = new QVBoxLayout;
    m_notices = new NoticeBar(middle);
    m_stack = new QStackedWidget(middle);
    m_jobBar = new JobBar(middle);
    column->addWidget(m_notices);
    column->addWidget(m_stack, 1);
    column->addWidget(m_jobBar);
    row->addLayout(column, 1);
    setCentralWidget(middle);

    m_runner = std::make_unique<JobRunner>(*m_jobBar, *this);
    m_projects = std::make_unique<ProjectActions>(*m_notices, *this);
    makeMenus();
    m_toolBar = addToolBar(tr("Tools"));
    m_toolBar->setMovable(false);
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    auto *const space = new QWidget(m_toolBar);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_toolBarSpace = m_toolBar->addWidget(space);
    m_toolBar->addActions({m_saveImage, m_burn});
    addPanel(m_dataPanel);
    addPanel(m_audioPanel);
    addPanel(m_imagePanel);
    addPanel(m_videoPanel);
    connect(m_runner.get(), &JobRunner::started, this, &MainWindow::updateActions);
    connect(m_projects.get(), &ProjectActions::opened, this, &MainWindow::updateActions);
    connect(m_projects.get(), &ProjectActions::panelWanted, this, &MainWindow::bringUp);
    m_projects->recover();
    connect(m_kinds, &QListWidget::currentRowChanged, this, &MainWindow::showPanel);
    m_kinds->setVisible(m_panels.size() > 1);
    m_kinds->setCurrentRow(0);
    resize(960, 640);
}

MainWindow::~MainWindow()
{
    for (const std::shared_ptr<DesktopPanel> &panel : m_panels) {
        panel->setDelegate(nullptr);
        panel->view()->setParent(nullptr); // the panel's own
    }
}

void MainWindow::addPanel(const std::shared_ptr<DesktopPanel> &panel)
{
    if (!panel->panelWillLoad())
        return;
    panel->setDelegate(m_host);
    m_panels.push_back(panel);
    m_stack->addWidget(panel->view());
    auto *const item = new QListWidgetItem(QIcon::fromTheme(panel->iconName()), panel->title(), m_kinds);
    item->setToolTip(panel->hint());
    if (QUndoStack *const stack = panel->undoStack())
        m_undoGroup.addStack(stack);
    m_projects->addPanel(*panel);
    panel->panelDidLoad();
    m_kinds->setFixedWidth(m_kinds->sizeHintForColumn(0) + 2 * m_kinds->frameWidth() + 16);
}

DesktopPanel &MainWindow::currentPanel() const
{
    return *m_panels[std::size_t(std::max(m_stack->currentIndex(), 0))];
}

void MainWindow::showPanel(int index)
{
    if (index < 0 || index >= int(m_panels.size()))
        return;
    m_stack->setCurrentIndex(index);
    m_kinds->setCurrentRow(index);
    m_undoGroup.setActiveStack(currentPanel().undoStack());
    m_projects->setCurrentPanel(currentPanel());
    m_discMenu->clear();
    m_discMenu->addActions(currentPanel().customActionMenuItems());
    fillToolBar();
    updateActions();
}

void MainWindow::makeMenus()
{
    QMenu &file = *menuBar()->addMenu(tr("&File"));
    m_projects->addTo(file);
    file.addSeparator();
    m_saveImage = file.addAction(QIcon::fromTheme(QStringLiteral("media-optical")), tr("Save &Image…"), this,
                                 &MainWindow::saveImage);
    m_saveImage->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
    m_saveImage->setToolTip(tr("Make a disc image of what is shown"));
    m_burn = file.addAction(QIcon::fromTheme(QStringLiteral("media-optical-recordable")), tr("&Burn…"), this,
                            &MainWindow::burn);
    m_burn->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_B));
    m_burn->setToolTip(tr("Write what is shown to a disc"));
    m_verify = file.addAction(tr("&Verify Images That Were Saved"));
    m_verify->setCheckable(true);
    m_verify->setChecked(QSettings().value(QStringLiteral("verifyAfterSaving"), true).toBool());
    connect(m_verify, &QAction::toggled, this,
            [](bool isOn) { QSettings().setValue(QStringLiteral("verifyAfterSaving"), isOn); });
    m_cancel = file.addAction(tr("S&top"), m_runner.get(), &JobRunner::cancel);
    m_cancel->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Period));
    file.addSeparator();
    QAction *const quit =
        file.addAction(QIcon::fromTheme(QStringLiteral("application-exit")), tr("&Quit"), this, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);

    QMenu &edit = *menuBar()->addMenu(tr("&Edit"));
    QAction *const undo = m_undoGroup.createUndoAction(this);
    undo->setIcon(QIcon::fromTheme(QStringLiteral("edit-undo")));
    undo->setShortcut(QKeySequence::Undo);
    QAction *const redo = m_undoGroup.createRedoAction(this);
    redo->setIcon(QIcon::fromTheme(QStringLiteral("edit-redo")));
    redo->setShortcut(QKeySequence::Redo);
    edit.addActions({undo, redo});

    m_discMenu = menuBar()->addMenu(tr("&Disc"));
}

void MainWindow::bringUp(const DesktopPanel &panel)
{
    const auto found =
        std::find_if(m_panels.begin(), m_panels.end(), [&panel](const auto &each) { return each.get() == &panel; });
    showPanel(int(found - m_panels.begin()));
}

/// The first actions of the panel that is shown, and what can be made of it.
void MainWindow::fillToolBar()
{
    for (QAction *const action : std::as_const(m_panelActions))
        m_toolBar->removeAction(action);
    m_panelActions = currentPanel().customActionMenuItems().mid(0, 3);
    m_toolBar->insertActions(m_toolBarSpace, m_panelActions);
    m_saveImage->setVisible(currentPanel().handledDiscImageFormats() != 0);
}

void MainWindow::updateActions()
{
    DesktopPanel &panel = currentPanel();
    m_saveImage->setEnabled(!m_runner->isWorking() && panel.handledDiscImageFormats() != 0 && panel.enableBurnButton());
    m_burn->setEnabled(!m_runner->isWorking() && panel.canBeBurnt() && panel.enableBurnButton());
    m_cancel->setEnabled(m_runner->isWorking());
}

void MainWindow::openFiles(const QList<QByteArray> &paths)
{
    // Another program can give files at any time: what a dialog asks about must not be replaced behind it.
    if (QApplication::activeModalWidget() && !paths.isEmpty()) {
        m_notices->tell(tr("The files were not opened, since a dialog was open. Open them again."));
        return;
    }
    if (paths.size() == 1 && ProjectActions::isProjectName(paths.front()))
        m_projects->openAt(paths.front());
    else if (paths.size() == 1 && AudioIntake::isListName(paths.front())) {
        bringUp(*m_audioPanel);
        (void)m_audioPanel->takeFiles(paths);
    } else if (paths.size() == 1 && ImagePanel::isImageName(paths.front())
               && !(&currentPanel() == m_audioPanel.get() && AudioIntake::isSheetName(paths.front()))) {
        bringUp(*m_imagePanel);
        m_imagePanel->openImage(paths.front());
    } else if (paths.size() == 1 && VideoPanel::isVideoName(paths.front())) {
        bringUp(*m_videoPanel);
        m_videoPanel->openDisc(paths.front());
    } else if (!paths.isEmpty())
        (void)currentPanel().takeFiles(paths);
}

void MainWindow::saveImage()
{
    const QList<NamedFormat> formats = formatsOf(currentPanel().handledDiscImageFormats());
    QStringList extensions;
    QStringList names;
    for (const NamedFormat &format : formats) {
        extensions << nameOfDiscFormat(format.format);
        names << format.name;
    }
    ImageSavePanel *const save =
        ImageSavePanel::savePanelWithExtensions(extensions, names, &m_formatIndex, this).release();
    save->setAttribute(Qt::WA_DeleteOnClose);
    save->setWindowTitle(tr("Save Image"));
    const QSettings settings;
    save->setDirectory(
        settings
            .value(QStringLiteral("imageFolder"), QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation))
            .toString());
    save->selectFile(fileNameFor(currentPanel().suggestedName()) + u'.' + extensions.front());
    connect(save, &QFileDialog::fileSelected, this, [this, formats](const QString &path) {
        QSettings().setValue(QStringLiteral("imageFolder"), QFileInfo(path).path());
        saveImageAs(fileSystemRepresentation(path), formats[m_formatIndex].format);
    });
    save->open();
}

void MainWindow::saveImageAs(const QByteArray &path, DiscFormat format)
{
    if (m_runner->isWorking()) {
        tellOfOtherJob();
        return;
    }
    const std::shared_ptr<DesktopPanel> panel = m_panels[std::size_t(m_stack->currentIndex())];
    // A job that was let go of may end after the window.
    std::unique_ptr<DiscJob> job =
        panel->imageJob(path, format, [window = QPointer<MainWindow>(this), panel](const JobOutcome &outcome) {
            if (window)
                window->imageHasEnded(*panel, outcome);
        });
    if (!job) {
        m_notices->tell(currentPanel().emptyDiscInformationMessage());
        return;
    }
    startJob(std::move(job), displayableText(stringWithFileSystemRepresentation(path.mid(path.lastIndexOf('/') + 1))));
}

bool MainWindow::isWorking() const
{
    return m_runner->isWorking();
}

void MainWindow::tellOfOtherJob()
{
    m_notices->tell(tr("Something else is being done. Wait for its end, or stop it."));
}

void MainWindow::startJob(std::unique_ptr<DiscJob> job, const QString &name)
{
    m_notices->clear();
    m_runner->start(std::move(job), name);
}

/// Compares the image with its sources, if that is wanted and possible; what is said at the end speaks of both.
void MainWindow::imageHasEnded(DesktopPanel &panel, const JobOutcome &saved)
{
    std::unique_ptr<DiscJob> verify;
    if (!saved.error && m_verify->isChecked() && !m_closesAfterJob)
        verify = panel.verifyJob(saved.path, [window = QPointer<MainWindow>(this), saved](const JobOutcome &checked) {
            if (!window)
                return;
            JobOutcome both = saved;
            both.error = checked.error;
            both.summary += u' ' + checked.summary;
            both.details += checked.details;
            both.isComplete = saved.isComplete && checked.isComplete;
            window->jobHasEnded(both);
        });
    if (!verify) {
        jobHasEnded(saved);
        return;
    }
    m_notices->clear();
    m_runner->startNext(std::move(verify));
}

void MainWindow::jobHasEnded(const JobOutcome &outcome)
{
    m_runner->end();
    m_notices->tell(outcome.summary, outcome.details);
    updateActions();
    Q_EMIT jobEnded(outcome);
    if (std::exchange(m_closesAfterJob, false))
        close();
}

void MainWindow::burn()
{
    if (m_runner->isWorking())
        return;
    const std::optional<BurnSubject> subject = currentPanel().burnSubject();
    if (!subject) {
        m_notices->tell(currentPanel().emptyDiscInformationMessage());
        return;
    }
    askForDrive(*subject, {}, {});
}

void MainWindow::askForDrive(const BurnSubject &subject, const QString &title, const WhenBurnt &whenEnded)
{
    auto *const dialog = new BurnDialog(subject, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    if (!title.isEmpty())
        dialog->setWindowTitle(title);
    connect(dialog, &QDialog::accepted, this, [this, dialog, subject, whenEnded] {
        burnDisc(subject, dialog->settings(), dialog->disc() ? dialog->disc()->family : DiscFamily::None, whenEnded);
    });
    if (whenEnded)
        connect(dialog, &QDialog::rejected, this, [whenEnded] { whenEnded(BurnEnd::Declined, {}); });
    dialog->open();
    dialog->lookForDrives();
}

void MainWindow::burnDisc(const BurnSubject &subject, const BurnDiscOrder &settings, DiscFamily family,
                          const WhenBurnt &whenEnded)
{
    if (m_runner->isWorking()) {
        tellOfOtherJob();
        if (whenEnded)
            whenEnded(BurnEnd::Declined, {});
        return;
    }
    BurnDiscOrder order = settings;
    order.sources = subject.order.sources;
    order.tree = subject.order.tree;
    order.audio = subject.order.audio;
    order.volumeName = subject.order.volumeName;
    order.filesystems = subject.order.filesystems;
    auto job = std::make_unique<BurnDiscJob>(std::move(order));
    connect(
        job.get(), &BurnDiscJob::finished, this,
        [this, isSimulated = settings.isSimulated, missing = subject.missing, whenEnded](const BurnDiscResult &result) {
            const bool isDifferent = result.verification && result.verification->differences.count() > 0;
            const BurnEnd end = m_closesAfterJob ? BurnEnd::Declined
                : result.error || isDifferent    ? BurnEnd::Failed
                : isSimulated                    ? BurnEnd::Simulated
                                                 : BurnEnd::Written;
            const JobOutcome outcome = outcomeOf(result, isSimulated, missing);
            jobHasEnded(outcome);
            if (whenEnded)
                whenEnded(end, outcome);
        });
    startJob(std::move(job), displayableText(subject.name));
    m_runner->setForDrive(settings.isSimulated ? QString() : spoiledText(family));
}

void MainWindow::letGo()
{
    m_runner->letGo();
    for (const std::shared_ptr<DesktopPanel> &panel : m_panels)
        panel->letGo();
    m_projects->letGo();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_isClosing || (!isWorking() && m_projects->isAllSaved())) {
        event->accept();
        return;
    }
    event->ignore();
    if (isWorking()) {
        // The window stays until the job has ended: a drive is let go first.
        m_runner->askBeforeQuitting([this] {
            m_closesAfterJob = true;
            m_runner->stop();
        });
        return;
    }
    m_projects->afterSavingAll([this] {
        m_isClosing = true;
        close();
    });
}

} // namespace Tessaron::Desktop
