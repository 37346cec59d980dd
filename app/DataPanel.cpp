#include "app/DataPanel.h"

#include "app/CapacityBar.h"
#include "app/DataView.h"
#include "app/JobOutcomes.h"
#include "app/ShareBurning.h"
#include "app/ShareProjects.h"
#include "app/ShareSaving.h"
#include "app/SplitDialog.h"

#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/VerifyJob.h>

#include <QCoreApplication>
#include <QFileDialog>
#include <QStandardPaths>

#include <platform/discrecording/objects/DRFolder.h>
#include <platform/discrecording/objects/DRTrack.h>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/OSStatus.h>
#include <utility>

namespace Tessaron::Desktop
{

namespace
{

struct DataPanelWords {
    Q_DECLARE_TR_FUNCTIONS(DataPanel)
};

} // namespace

DataPanel::DataPanel() = default;
DataPanel::~DataPanel() = default;

QString DataPanel::title() const
{
    return DataPanelWords::tr("Data");
}

QString DataPanel::hint() const
{
    return DataPanelWords::tr("Files and folders");
}

DataView &DataPanel::dataView()
{
    if (!m_view) {
        m_view = std::make_unique<DataView>(m_document);
        QObject::connect(m_view.get(), &DataView::changed, m_view.get(), [this] { changed(); });
        m_view->capacity().setMediumKey(m_project.mediumKey());
        QObject::connect(&m_view->capacity(), &CapacityBar::mediumChanged, m_view.get(),
                         [this](const QString &key) { m_project.setMediumKey(key); });
        QObject::connect(m_view.get(), &DataView::splitWanted, m_view.get(), [this] { splitDisc(); });
    }
    return *m_view;
}

void DataPanel::projectWasOpened()
{
    dataView().capacity().setMediumKey(m_project.mediumKey());
}

QWidget *DataPanel::view()
{
    return &dataView();
}

QList<QAction *> DataPanel::customActionMenuItems()
{
    return dataView().discActions();
}

std::uint64_t DataPanel::bestSizeApproximation()
{
    return dataView().discSize();
}

TessaronDiscImageFormat DataPanel::handledDiscImageFormats()
{
    return TessaronDiscImageFormatISO | TessaronDiscImageFormatBIN | TessaronDiscImageFormatVANT;
}

QString DataPanel::emptyDiscInformationMessage()
{
    return DataPanelWords::tr("The disc is empty. Drop files and folders into the window first.");
}

bool DataPanel::takeFiles(const QList<QByteArray> &paths)
{
    dataView().addPaths(paths);
    return true;
}

void DataPanel::letGo()
{
    if (m_view) {
        m_view->intake().letGo();
        m_view->preview().letGo();
    }
}

/// What a project knew and cannot be found: no image can hold it.
QStringList DataPanel::lostFiles() const
{
    QStringList lost;
    std::vector<const DiscNode *> waiting = {&m_document.model().root()};
    while (!waiting.empty()) {
        const DiscNode *const node = waiting.back();
        waiting.pop_back();
        if (node->lost)
            lost << node->discPath();
        for (const std::unique_ptr<DiscNode> &child : node->children)
            waiting.push_back(child.get());
    }
    return lost;
}

std::unique_ptr<DiscJob> DataPanel::imageJob(const QByteArray &path, DiscFormat format,
                                             std::function<void(const JobOutcome &)> whenEnded)
{
    if (m_document.model().root().children.empty())
        return nullptr;
    DiscImageOrder order;
    order.tree = copyForJob(m_document.model().root());
    // Another one: the first is the job's until it goes, and the disc may be changed before the image is compared.
    m_savedTree = copyForJob(m_document.model().root());
    order.output = path;
    order.format = format;
    order.volumeName = m_document.volumeName();
    auto job = std::make_unique<DiscImageJob>(std::move(order));
    QObject::connect(job.get(), &DiscImageJob::finished, job.get(),
                     [whenEnded = std::move(whenEnded), lost = lostFiles()](const DiscImageResult &result) {
                         whenEnded(outcomeOf(result, lost));
                     });
    return job;
}

std::unique_ptr<DiscJob> DataPanel::verifyJob(const QByteArray &path, std::function<void(const JobOutcome &)> whenEnded)
{
    if (!m_savedTree)
        return nullptr;
    VerifyOrder order;
    order.image = path;
    order.tree = std::exchange(m_savedTree, nullptr);
    order.filesystems = allDiscFilesystems;
    auto job = std::make_unique<VerifyJob>(std::move(order));
    QObject::connect(
        job.get(), &VerifyJob::finished, job.get(),
        [whenEnded = std::move(whenEnded)](const VerificationResult &result) { whenEnded(outcomeOf(result)); });
    return job;
}

SplitDialog *DataPanel::splitDisc()
{
    if (m_document.model().root().children.empty()) {
        tell(emptyDiscInformationMessage());
        return nullptr;
    }
    auto *const dialog = new SplitDialog([this] { return copyForJob(m_document.model().root()); },
                                         m_document.volumeName(), dataView().capacity().mediumKey(), m_view.get());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &SplitDialog::imagesWanted, dialog, [this, dialog] {
        askForSharesFolder(*dialog, DataPanelWords::tr("Save Images Into a New Folder"),
                           [this, dialog](const QByteArray &folder) {
                               std::vector<DiscShare> discs = dialog->discs();
                               dialog->accept(); // the window shows how far it is, and lets the user stop it
                               saveShares(std::move(discs), folder);
                           });
    });
    QObject::connect(dialog, &SplitDialog::projectsWanted, dialog, [this, dialog] {
        askForSharesFolder(*dialog, DataPanelWords::tr("Save Projects Into a New Folder"),
                           [this, dialog](const QByteArray &folder) {
                               const std::vector<DiscShare> discs = dialog->discs();
                               dialog->accept();
                               saveShareProjects(discs, dialog->mediumKey(), folder);
                           });
    });
    QObject::connect(dialog, &SplitDialog::burningWanted, dialog, [this, dialog] {
        std::vector<DiscShare> discs = dialog->discs();
        dialog->accept();
        burnShares(std::move(discs));
    });
    dialog->open();
    return dialog;
}

void DataPanel::askForSharesFolder(const SplitDialog &dialog, const QString &title,
                                   const std::function<void(const QByteArray &folder)> &whenChosen)
{
    auto *const chooser =
        new QFileDialog(m_view.get(), title, QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    chooser->setAcceptMode(QFileDialog::AcceptSave);
    chooser->setFileMode(QFileDialog::AnyFile);
    chooser->setLabelText(QFileDialog::FileName, DataPanelWords::tr("New folder:"));
    chooser->selectFile(displayableText(m_document.volumeName()).replace(u'/', u'-'));
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(chooser, &QFileDialog::fileSelected, &dialog,
                     [whenChosen](const QString &path) { whenChosen(fileSystemRepresentation(path)); });
    chooser->open();
}

void DataPanel::saveShares(std::vector<DiscShare> discs, const QByteArray &folder)
{
    const std::shared_ptr<TessaronPanelDelegate> host = delegate();
    if (!host || discs.empty())
        return;
    auto *const saving = new ShareSaving(std::move(discs), folder, lostFiles(), host, m_view.get());
    saving->start();
}

void DataPanel::saveShareProjects(const std::vector<DiscShare> &discs, const QString &mediumKey,
                                  const QByteArray &folder)
{
    const std::shared_ptr<TessaronPanelDelegate> host = delegate();
    if (!host || discs.empty())
        return;
    auto *const saving = new ShareProjects(discs, mediumKey, folder, lostFiles(), host, m_view.get());
    saving->start();
}

void DataPanel::burnShares(std::vector<DiscShare> discs)
{
    const std::shared_ptr<TessaronPanelDelegate> host = delegate();
    if (!host || discs.empty())
        return;
    auto *const burning = new ShareBurning(std::move(discs), lostFiles(), host, m_view.get());
    burning->start();
}

std::optional<BurnSubject> DataPanel::burnSubject()
{
    if (m_document.model().root().children.empty())
        return std::nullopt;
    BurnSubject subject;
    subject.order.tree = copyForJob(m_document.model().root());
    subject.order.volumeName = m_document.volumeName();
    subject.bytes = bestSizeApproximation();
    subject.name = m_document.volumeName();
    subject.missing = lostFiles();
    return subject;
}

bool DataPanel::createLayoutAsyncAndNotifyLayoutCreationManager(
    const std::weak_ptr<TessaronLayoutCreationManager> &manager)
{
    if (m_layoutTree)
        return false;
    m_manager = manager;
    m_layoutTree = copyForJob(m_document.model().root());
    if (m_layoutTree->createDRLayoutAsyncNotifyProgressToTarget(target()))
        return true;
    m_layoutTree.reset();
    return false;
}

bool DataPanel::cancelLayoutCreationAsync()
{
    return m_layoutTree && m_layoutTree->cancelDRLayoutCreationNotifyTarget(target());
}

KRFileHierarchyItemLayoutTarget DataPanel::target()
{
    KRFileHierarchyItemLayoutTarget target;
    target.context = CallbackContext(m_life);
    target.KRFileHierarchyItemDRLayoutCreationProgress = [this](KRFileHierarchyItem &, float progress) {
        if (const auto manager = m_manager.lock())
            manager->TessaronPanelLayoutCreationProgress(*this, progress);
    };
    target.KRFileHierarchyItemDRLayoutCreationFinished = [this](KRFileHierarchyItem &,
                                                                const std::shared_ptr<DRFSObject> &root) {
        m_layoutTree.reset();
        const auto manager = m_manager.lock();
        const auto folder = std::dynamic_pointer_cast<DRFolder>(root);
        if (!manager)
            return;
        if (!folder) {
            manager->TessaronPanelLayoutCreationDidFailWithError(*this, NSError(NSOSStatusErrorDomain, memFullErr));
            return;
        }
        folder->setBaseName(m_document.volumeName());
        manager->TessaronPanelLayoutIsCreated(*this, DRTrack::trackForRootFolder(folder));
    };
    target.KRFileHierarchyItemDRLayoutCreationDidCancel = [this](KRFileHierarchyItem &) {
        m_layoutTree.reset();
        if (const auto manager = m_manager.lock())
            manager->TessaronPanelLayoutCreationCancel(*this);
    };
    return target;
}

} // namespace Tessaron::Desktop
