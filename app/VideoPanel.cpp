#include "app/VideoPanel.h"

#include "app/AbandonedJob.h"
#include "app/FileChoice.h"
#include "app/JobBar.h"
#include "app/JobOutcomes.h"
#include "app/VideoView.h"
#include "app/Words.h"

#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscNames.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/VerifyJob.h>

#include <QCoreApplication>

#include <platform/discrecording/objects/DRStorageReport.h>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MessageTexts.h>

namespace Tessaron::Desktop
{

namespace
{

struct VideoPanelWords {
    Q_DECLARE_TR_FUNCTIONS(VideoPanel)
};

/// What players read: UDF, and ISO 9660 beside it, as DVD-Video has them.
constexpr DiscFilesystems filesystemsOfVideo = DiscFilesystems(DiscFilesystem::ISO9660) | DiscFilesystem::UDF;

/// Structures of the disc besides its files.
constexpr std::uint64_t structureBytes = 1'000'000;

QString videoNameOf(const QByteArray &path)
{
    return displayableText(stringWithFileSystemRepresentation(lastComponent(path)));
}

/// A tree of the same files: each job has one of its own.
std::shared_ptr<KRFileHierarchyItem> copyOfTree(const std::shared_ptr<KRFileHierarchyItem> &item)
{
    const auto copyOfOne = [](const KRFileHierarchyItem &each) {
        return KRFileHierarchyItem::initWithFileReference(
            KRFileReference::initWithFSRef(*each.fileReference()->fileRef()));
    };
    std::shared_ptr<KRFileHierarchyItem> top = copyOfOne(*item);
    std::vector<std::pair<const KRFileHierarchyItem *, KRFileHierarchyItem *>> waiting = {{item.get(), top.get()}};
    while (!waiting.empty()) {
        const auto [from, to] = waiting.back();
        waiting.pop_back();
        for (const std::shared_ptr<KRFileHierarchyItem> &child : from->items()) {
            const std::shared_ptr<KRFileHierarchyItem> copy = copyOfOne(*child);
            to->addItem(copy);
            waiting.emplace_back(child.get(), copy.get());
        }
    }
    return top;
}

QStringList videoProblemsOf(const DVDInspectResult &result)
{
    QStringList lines;
    for (const DVDFileProblem &problem : result.problems)
        lines << QStringLiteral("%1 %2").arg(videoNameOf(problem.name), displayableText(problem.message));
    for (const QString &note : result.disc.notes)
        lines << displayableText(note);
    for (const DVDTitle &title : result.disc.titles) {
        if (!title.damage.isEmpty())
            lines << VideoPanelWords::tr("Title %1: %2").arg(title.number).arg(displayableText(title.damage));
    }
    if (result.disc.isEncrypted)
        lines << VideoPanelWords::tr("The disc is copy-protected: its contents are scrambled and cannot be played.");
    return lines;
}

/// What the finished disc cannot have as the folder has it. Short names of ISO 9660 are those that the files have.
QStringList layoutProblemsOf(const DRStorageReport &report)
{
    QStringList lines;
    for (std::size_t index = 0; index < report.count(); ++index) {
        const DRStorageReportItem item = report.item(index);
        if (item.isLost || item.kind == DRStorageReportItem::Kind::Altered)
            lines << QStringLiteral("%1: %2").arg(displayableText(item.path), displayableText(item.reason));
    }
    return lines;
}

QString nothingFoundInFolder()
{
    return VideoPanelWords::tr("Names, lengths and backups of the files, and where they will lie on the disc, are as "
                               "players need them. Pictures and sound are not checked.");
}

QString nothingFoundInImage()
{
    return VideoPanelWords::tr("Its tables are as players need them. Where its files lie, and pictures and sound, are "
                               "not checked.");
}

} // namespace

VideoPanel::VideoPanel()
{
    QObject::connect(&m_player, &PlayerProcess::ended, &m_player, [this](const QString &reason) {
        if (!reason.isEmpty())
            tell(reason);
    });
}

VideoPanel::~VideoPanel()
{
    abandonJob(std::move(m_inspecting));
    abandonJob(std::move(m_scanning));
    abandonJob(std::move(m_planning));
}

bool VideoPanel::isVideoName(const QByteArray &path)
{
    return lastComponent(path).toUpper() == "VIDEO_TS";
}

QString VideoPanel::title() const
{
    return VideoPanelWords::tr("Video DVD");
}

QString VideoPanel::hint() const
{
    return VideoPanelWords::tr("Folders VIDEO_TS for DVD players");
}

/// The name of the folder that holds VIDEO_TS says more than that one.
QString VideoPanel::suggestedName() const
{
    const QByteArray folder =
        isVideoName(m_path) && m_path.lastIndexOf('/') > 0 ? m_path.first(m_path.lastIndexOf('/')) : m_path;
    const QString name = videoNameOf(folder);
    return m_files ? name : name.section(u'.', 0, 0);
}

VideoView &VideoPanel::videoView()
{
    if (!m_view) {
        m_view = std::make_unique<VideoView>();
        VideoView *const view = m_view.get();
        QObject::connect(view, &VideoView::openWanted, view, [this] { askForFolder(); });
        QObject::connect(view, &VideoView::openImageWanted, view, [this] { askForImage(); });
        QObject::connect(view, &VideoView::playWanted, view, [this] { play(); });
        QObject::connect(view, &VideoView::discDropped, view, [this](const QByteArray &path) { openDisc(path); });
        QObject::connect(view, &VideoView::cancelWanted, view, [this] {
            m_view->progress().showCancelling();
            if (m_inspecting)
                m_inspecting->cancel();
            if (m_scanning)
                m_scanning->cancel();
            if (m_planning)
                m_planning->cancel();
        });
    }
    return *m_view;
}

QWidget *VideoPanel::view()
{
    return &videoView();
}

QList<QAction *> VideoPanel::customActionMenuItems()
{
    return videoView().actions();
}

TessaronDiscImageFormat VideoPanel::handledDiscImageFormats()
{
    return m_files || m_path.isEmpty() ? TessaronDiscImageFormatISO | TessaronDiscImageFormatVANT : 0;
}

QString VideoPanel::emptyDiscInformationMessage()
{
    return VideoPanelWords::tr("No video DVD is open. Open one first.");
}

bool VideoPanel::takeFiles(const QList<QByteArray> &paths)
{
    if (paths.size() != 1)
        return false;
    openDisc(paths.front());
    return true;
}

void VideoPanel::letGo()
{
    abandonJob(std::move(m_inspecting));
    abandonJob(std::move(m_scanning));
    abandonJob(std::move(m_planning));
}

void VideoPanel::forgetDisc()
{
    m_path.clear();
    m_summary.clear();
    m_files.reset();
    m_bytes = 0;
    m_view->progress().end();
    m_view->showSummary({}, false);
    changed();
}

void VideoPanel::openDisc(const QByteArray &path)
{
    letGo();
    VideoView &view = videoView();
    m_path = path;
    m_bytes = 0;
    m_files.reset();
    m_summary = videoNameOf(path);
    view.showDisc({});
    m_problems.clear();
    view.showProblems({}, {});
    view.showSummary(m_summary, false);
    view.progress().begin(VideoPanelWords::tr("Looking at %1").arg(videoNameOf(path)));
    m_inspecting = std::make_unique<DVDInspectJob>(path);
    QObject::connect(m_inspecting.get(), &DVDInspectJob::finished, &view, [this](const DVDInspectResult &result) {
        m_inspecting.release()->deleteLater(); // which has the result until then
        inspected(result);
    });
    m_inspecting->start();
    changed();
}

void VideoPanel::inspected(const DVDInspectResult &result)
{
    m_problems = videoProblemsOf(result);
    if (result.error) {
        tell(errorText(result.error), m_problems);
        forgetDisc();
        return;
    }
    m_view->showDisc(result.disc);
    m_view->showProblems(m_problems, {});
    std::chrono::milliseconds longest{0};
    for (const DVDTitle &title : result.disc.titles)
        longest = std::max(longest, title.length);
    m_summary = VideoPanelWords::tr("%1: %2, the longest of %3")
                    .arg(suggestedName(), VideoPanelWords::tr("%n title(s)", nullptr, int(result.disc.titles.size())),
                         durationText(std::chrono::duration_cast<std::chrono::seconds>(longest)));
    m_view->showSummary(m_summary, !result.disc.titles.empty() && !result.disc.isEncrypted);
    m_scanning = std::make_unique<ScanJob>(QList<QByteArray>{m_path});
    QObject::connect(m_scanning.get(), &ScanJob::finished, m_view.get(), [this](const ScanResult &found) {
        m_scanning.release()->deleteLater();
        scanned(found);
    });
    m_scanning->start();
}

/// A folder becomes a disc; an image is one.
void VideoPanel::scanned(const ScanResult &result)
{
    if (result.error || result.sources.empty()) {
        tell(errorText(result.error));
        forgetDisc();
        return;
    }
    const ScannedSource &source = result.sources.front();
    const std::shared_ptr<KRFileHierarchyItem> &found = source.tree;
    m_files = isVideoName(m_path) ? found : found->childWithDesiredName(QStringLiteral("VIDEO_TS"));
    if (found->items().empty())
        m_files.reset();
    if (m_files) {
        plan();
        return;
    }
    m_bytes = source.sizeOnDisk;
    m_view->showProblems(m_problems, nothingFoundInImage());
    showSize();
}

void VideoPanel::plan()
{
    DiscPlanOrder order;
    order.tree = discTree();
    order.volumeName = dvdName(suggestedName());
    order.filesystems = filesystemsOfVideo;
    m_planning = std::make_unique<DiscPlanJob>(std::move(order));
    QObject::connect(m_planning.get(), &DiscPlanJob::finished, m_view.get(), [this](const DiscPlanResult &result) {
        m_planning.release()->deleteLater(); // which has the result until then
        planned(result);
    });
    m_planning->start();
}

void VideoPanel::planned(const DiscPlanResult &result)
{
    m_bytes = result.error ? m_files->contentsPhysicalSize() + structureBytes : result.bytes;
    if (result.error)
        m_problems << VideoPanelWords::tr("It was not found out where the files will lie on the disc: %1")
                          .arg(errorText(result.error));
    else if (result.report)
        m_problems += layoutProblemsOf(*result.report);
    m_view->showProblems(m_problems, nothingFoundInFolder());
    showSize();
}

void VideoPanel::showSize()
{
    m_view->progress().end();
    m_summary += QStringLiteral(", ") + sizeText(m_bytes);
    m_view->showSummary(m_summary, m_view->actions().last()->isEnabled());
    changed();
}

/// The root of the disc: its folder VIDEO_TS, in capitals as players look for it, and an empty AUDIO_TS, without which
/// some of them take it for no DVD.
std::shared_ptr<KRFileHierarchyItem> VideoPanel::discTree() const
{
    std::shared_ptr<KRFileHierarchyItem> root =
        KRFileHierarchyItem::initWithFileReference(KRFileReference::virtualFolderWithName(suggestedName()));
    const std::shared_ptr<KRFileHierarchyItem> video = copyOfTree(m_files);
    video->fileReference()->setDesiredName(QStringLiteral("VIDEO_TS"));
    root->addItem(
        KRFileHierarchyItem::initWithFileReference(KRFileReference::virtualFolderWithName(QStringLiteral("AUDIO_TS"))));
    root->addItem(video);
    return root;
}

std::unique_ptr<DiscJob> VideoPanel::imageJob(const QByteArray &path, DiscFormat format,
                                              std::function<void(const JobOutcome &)> whenEnded)
{
    if (!m_files)
        return nullptr;
    DiscImageOrder order;
    order.tree = discTree();
    order.output = path;
    order.format = format;
    order.volumeName = dvdName(suggestedName());
    order.filesystems = filesystemsOfVideo;
    auto job = std::make_unique<DiscImageJob>(std::move(order));
    QObject::connect(
        job.get(), &DiscImageJob::finished, job.get(),
        [whenEnded = std::move(whenEnded)](const DiscImageResult &result) { whenEnded(outcomeOf(result, {})); });
    return job;
}

std::unique_ptr<DiscJob> VideoPanel::verifyJob(const QByteArray &path,
                                               std::function<void(const JobOutcome &)> whenEnded)
{
    if (!m_files)
        return nullptr;
    VerifyOrder order;
    order.image = path;
    order.tree = discTree();
    order.filesystems = filesystemsOfVideo;
    auto job = std::make_unique<VerifyJob>(std::move(order));
    QObject::connect(
        job.get(), &VerifyJob::finished, job.get(),
        [whenEnded = std::move(whenEnded)](const VerificationResult &result) { whenEnded(outcomeOf(result)); });
    return job;
}

std::optional<BurnSubject> VideoPanel::burnSubject()
{
    if (m_path.isEmpty() || m_bytes == 0)
        return std::nullopt;
    BurnSubject subject;
    subject.bytes = m_bytes;
    subject.name = suggestedName();
    if (m_files) {
        subject.order.tree = discTree();
        subject.order.volumeName = dvdName(suggestedName());
        subject.order.filesystems = filesystemsOfVideo;
    } else {
        subject.order.sources = {m_path};
    }
    return subject;
}

void VideoPanel::play()
{
    if (m_path.isEmpty())
        return;
    const auto [title, chapter] = m_view->chosenPlace();
    QString reason;
    if (!m_player.play(m_path, title, chapter, &reason))
        tell(reason);
}

void VideoPanel::askForFolder()
{
    chooseFolder(*m_view, VideoPanelWords::tr("Open Video DVD"), QStandardPaths::MoviesLocation,
                 [this](const QByteArray &path) { openDisc(path); });
}

void VideoPanel::askForImage()
{
    chooseFile(
        *m_view, VideoPanelWords::tr("Open Image of a Video DVD"), QStandardPaths::MoviesLocation,
        {VideoPanelWords::tr("Disc images (*.iso *.bin *.img *.vant *.udf)"), VideoPanelWords::tr("All files (*)")},
        [this](const QByteArray &path) { openDisc(path); });
}

} // namespace Tessaron::Desktop
