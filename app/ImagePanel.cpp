#include "app/ImagePanel.h"

#include "app/AbandonedJob.h"
#include "app/FileChoice.h"
#include "app/FileDrops.h"
#include "app/ImageTreeView.h"
#include "app/ImageView.h"
#include "app/JobBar.h"
#include "app/JobOutcomes.h"
#include "app/Words.h"

#include <TessaronClasses/ExtractFilesJob.h>
#include <TessaronClasses/ExtractJob.h>
#include <TessaronClasses/VerifyJob.h>

#include <QCoreApplication>
#include <QFileDialog>
#include <QMimeData>
#include <QPointer>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <platform/discimage/volume/VolumeReader.h>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MainThread.h>

namespace Tessaron::Desktop
{

namespace
{

struct ImagePanelWords {
    Q_DECLARE_TR_FUNCTIONS(ImagePanel)
};

constexpr std::uint64_t sectorSize = 2352;
constexpr std::uint64_t dataSize = 2048;

QString nameOf(const QByteArray &path)
{
    return displayableText(stringWithFileSystemRepresentation(path.mid(path.lastIndexOf('/') + 1)));
}

/// Blocks count as bytes of user data, as a disc's room does.
std::uint64_t bytesOnDisc(const TableOfContents &contents)
{
    std::uint64_t blocks = 0;
    for (const DiscTrack *const track : contents.tracks())
        blocks += track->blocksOnDisc();
    return blocks * dataSize;
}

/// What a walk could not read, and what a check found, a line each.
QStringList problemsOf(const ImageInspection &result)
{
    QStringList lines;
    for (const VolumeProblem &problem : result.problems) {
        const QString place = problem.volume ? volumeKindName(*problem.volume) : ImagePanelWords::tr("Image");
        lines << QStringLiteral("%1, %2: %3 (%4)")
                     .arg(place, problem.structure, displayableText(problem.message))
                     .arg(problem.offset);
    }
    for (const VolumeCensus &census : result.censuses) {
        for (const VolumeCensus::Failure &failure : census.failures)
            lines << QStringLiteral("%1: %2").arg(
                displayableText(stringWithFileSystemRepresentation('/' + failure.path)), errorText(failure.error));
    }
    if (result.problemCount > result.problems.size())
        lines << ImagePanelWords::tr("… and %n more", nullptr, int(result.problemCount - result.problems.size()));
    return lines;
}

/// What is chosen below a folder that is chosen, too, comes with that.
QList<QByteArray> outermostPaths(const QList<ImagePlace> &places)
{
    QList<QByteArray> paths;
    for (const ImagePlace &place : places) {
        const bool isInside = std::any_of(places.begin(), places.end(), [&place](const ImagePlace &other) {
            return place != other && (other.path.isEmpty() || place.path.startsWith(other.path + '/'));
        });
        if (!isInside)
            paths << place.path;
    }
    return paths;
}

/// Places of one filesystem; everything for none.
ExtractFilesOrder extraction(const QByteArray &image, const QList<ImagePlace> &places)
{
    ExtractFilesOrder order;
    order.image = image;
    if (!places.isEmpty()) {
        order.filesystem = places.front().filesystem;
        order.part = places.front().part;
    }
    order.paths = outermostPaths(places);
    return order;
}

} // namespace

ImagePanel::ImagePanel() = default;

ImagePanel::~ImagePanel()
{
    abandonJob(std::move(m_inspecting));
    abandonJob(std::move(m_finding));
}

bool ImagePanel::isImageName(const QByteArray &path)
{
    static constexpr std::array<const char *, 9> endings = {".iso", ".bin", ".img", ".vant", ".udf",
                                                            ".cdr", ".cue", ".ccd", ".toc"};
    const QByteArray name = path.toLower();
    return std::any_of(endings.begin(), endings.end(), [&name](const char *ending) { return name.endsWith(ending); });
}

QString ImagePanel::title() const
{
    return ImagePanelWords::tr("Image");
}

QString ImagePanel::hint() const
{
    return ImagePanelWords::tr("Images of discs that are there already");
}

ImageView &ImagePanel::imageView()
{
    if (!m_view) {
        m_view = std::make_unique<ImageView>(m_contents);
        ImageView *const view = m_view.get();
        QObject::connect(view, &ImageView::openWanted, view, [this] { askForImage(); });
        QObject::connect(view, &ImageView::compareWanted, view, [this] { askForFolder(); });
        QObject::connect(view, &ImageView::takeOutWanted, view, [this] { askForDestination(); });
        QObject::connect(view, &ImageView::takeFilesWanted, view, [this] { askForFilesFolder(); });
        QObject::connect(view, &ImageView::copyWanted, view, [this] { copyFiles(m_view->chosenPlaces()); });
        QObject::connect(view, &ImageView::dragWanted, view, [this] { dragFiles(m_view->chosenPlaces()); });
        QObject::connect(view, &ImageView::imageDropped, view, [this](const QByteArray &path) { openImage(path); });
        QObject::connect(view, &ImageView::cancelWanted, view, [this] {
            m_view->progress().showCancelling();
            if (m_inspecting)
                m_inspecting->cancel();
            if (m_finding)
                m_finding->cancel();
        });
        QObject::connect(&m_contents, &ImageContentsModel::listed, view, [this](const QString &error) {
            if (!error.isEmpty())
                tell(error);
        });
    }
    return *m_view;
}

QWidget *ImagePanel::view()
{
    return &imageView();
}

QList<QAction *> ImagePanel::customActionMenuItems()
{
    return imageView().actions();
}

QString ImagePanel::emptyDiscInformationMessage()
{
    return ImagePanelWords::tr("No image is open. Open one first.");
}

bool ImagePanel::takeFiles(const QList<QByteArray> &paths)
{
    if (paths.size() != 1)
        return false;
    openImage(paths.front());
    return true;
}

void ImagePanel::letGo()
{
    abandonJob(std::move(m_inspecting));
    abandonJob(std::move(m_finding));
    m_contents.letGo();
}

void ImagePanel::openImage(const QByteArray &path)
{
    abandonJob(std::move(m_inspecting));
    abandonJob(std::move(m_finding));
    m_path = path;
    m_bytes = 0;
    m_summary = nameOf(path);
    m_contents.setImage(nullptr, {}, {});
    m_lentPlaces.clear();
    ImageView &view = imageView();
    view.showSummary(m_summary, false);
    view.progress().begin(ImagePanelWords::tr("Looking at %1").arg(nameOf(path)));
    m_inspecting = std::make_unique<InspectJob>(path);
    QObject::connect(m_inspecting.get(), &DiscJob::progressed, &view.progress(), &JobBar::showProgress);
    QObject::connect(m_inspecting.get(), &InspectJob::finished, &view, [this](const ImageInspection &result) {
        m_inspecting.release()->deleteLater(); // which has the result until then
        inspected(result);
    });
    m_inspecting->start();
    changed();
}

void ImagePanel::inspected(const ImageInspection &result)
{
    if (!result.image) {
        m_view->progress().end();
        m_path.clear();
        m_summary.clear();
        m_view->showSummary(m_summary, false);
        tell(errorText(result.error));
        changed();
        return;
    }
    m_contents.setImage(result.image, result.censuses, result.partCensuses);
    QStringList kinds;
    for (const FoundVolume &volume : result.image->volumes)
        kinds << volumeKindName(volume.kind);
    m_summary = kinds.isEmpty() ? ImagePanelWords::tr("%1: no filesystem was found in it.").arg(nameOf(m_path))
                                : QStringLiteral("%1: %2").arg(nameOf(m_path), kinds.join(QStringLiteral(", ")));
    const QStringList problems = problemsOf(result);
    if (result.error)
        tell(errorText(result.error), problems);
    else if (!problems.isEmpty())
        tell(ImagePanelWords::tr("The image is not as it should be in %n place(s).", nullptr, int(problems.size())),
             problems);
    m_finding = std::make_unique<TracksJob>(m_path);
    QObject::connect(m_finding.get(), &TracksJob::finished, m_view.get(), [this](const TracksResult &found) {
        m_finding.release()->deleteLater();
        foundTracks(found);
    });
    m_finding->start();
}

void ImagePanel::foundTracks(const TracksResult &result)
{
    m_view->progress().end();
    if (result.error) {
        tell(errorText(result.error));
    } else {
        const TableOfContents &contents = result.disc.disc.contents;
        m_bytes = bytesOnDisc(contents);
        if (result.disc.isDescribed)
            m_contents.setTracks(result.disc);
        m_summary += u'\n' + ImagePanelWords::tr("%n track(s)", nullptr, int(contents.trackCount()))
            + QStringLiteral(", ") + sizeText(m_bytes / dataSize * (result.disc.isDescribed ? sectorSize : dataSize));
        if (!result.disc.notes.isEmpty())
            tell(ImagePanelWords::tr("The description of the image was read with reservations."), result.disc.notes);
    }
    m_view->showSummary(m_summary, true);
    changed();
}

std::optional<BurnSubject> ImagePanel::burnSubject()
{
    if (m_path.isEmpty() || m_bytes == 0)
        return std::nullopt;
    BurnSubject subject;
    subject.order.sources = {m_path};
    subject.bytes = m_bytes;
    subject.name = nameOf(m_path);
    return subject;
}

void ImagePanel::compareWithFolder(const QByteArray &folder)
{
    const std::shared_ptr<TessaronPanelDelegate> host = delegate();
    if (!host || m_path.isEmpty())
        return;
    auto job = std::make_unique<VerifyJob>(VerifyOrder{m_path, {folder}, {}});
    QObject::connect(job.get(), &VerifyJob::finished, m_view.get(),
                     [host](const VerificationResult &result) { host->panelJobHasEnded(outcomeOf(result)); });
    host->runPanelJob(std::move(job), nameOf(m_path));
}

void ImagePanel::takeOutTracks(std::uint32_t track, const QByteArray &output)
{
    const std::shared_ptr<TessaronPanelDelegate> host = delegate();
    if (!host || m_path.isEmpty())
        return;
    ExtractOrder order;
    order.image = m_path;
    order.output = output;
    if (track != 0)
        order.track = track;
    auto job = std::make_unique<ExtractJob>(std::move(order));
    QObject::connect(job.get(), &ExtractJob::finished, m_view.get(),
                     [host](const ExtractResult &result) { host->panelJobHasEnded(outcomeOf(result)); });
    host->runPanelJob(std::move(job), nameOf(m_path));
}

void ImagePanel::takeOutFiles(const QList<ImagePlace> &places, const QByteArray &folder)
{
    const std::shared_ptr<TessaronPanelDelegate> host = delegate();
    if (!host || m_path.isEmpty())
        return;
    ExtractFilesOrder order = extraction(m_path, places);
    order.folder = folder;
    auto job = std::make_unique<ExtractFilesJob>(std::move(order));
    QObject::connect(job.get(), &ExtractFilesJob::finished, m_view.get(),
                     [host](const ExtractFilesResult &result) { host->panelJobHasEnded(outcomeOf(result)); });
    host->runPanelJob(std::move(job), nameOf(m_path));
}

/// Each filesystem has names of its own for the same files: what is chosen in several would come several times.
bool ImagePanel::areOfOneFilesystem(const QList<ImagePlace> &places)
{
    const bool isOfOne = std::all_of(places.begin(), places.end(), [&places](const ImagePlace &place) {
        return place.filesystem == places.front().filesystem && place.part == places.front().part;
    });
    if (!isOfOne)
        tell(ImagePanelWords::tr("Choose files of one filesystem only."));
    return isOfOne;
}

void ImagePanel::lend(const QList<ImagePlace> &places, FileLending::WhenReady whenReady)
{
    const std::shared_ptr<TessaronPanelDelegate> host = delegate();
    if (!host || m_path.isEmpty())
        return;
    if (m_lending.isWorking()) {
        tell(ImagePanelWords::tr("Files are being taken out already. Wait for the end of that, or stop it."));
        return;
    }
    if (places.isEmpty()) {
        tell(ImagePanelWords::tr("Choose files or folders of a filesystem first."));
        return;
    }
    if (!areOfOneFilesystem(places))
        return;
    m_lending.lend(extraction(m_path, places), nameOf(m_path), host,
                   [this, places, image = m_path, whenReady = std::move(whenReady)](const QList<QByteArray> &paths,
                                                                                    JobOutcome &outcome) {
                       m_lentPlaces = image == m_path ? places : QList<ImagePlace>();
                       whenReady(paths, outcome);
                   });
}

void ImagePanel::copyFiles(const QList<ImagePlace> &places)
{
    lend(places, [this](const QList<QByteArray> &, JobOutcome &outcome) {
        m_lending.putOnClipboard();
        outcome.summary += u' ' + ImagePanelWords::tr("Paste it in the file manager.");
    });
}

void ImagePanel::dragFiles(const QList<ImagePlace> &places)
{
    if (!places.isEmpty() && places == m_lentPlaces && !m_lending.isWorking()) {
        m_view->tree().drag(offerOfLentFiles(m_lending.paths()));
        return;
    }
    lend(places, [this](const QList<QByteArray> &paths, JobOutcome &outcome) {
        if (!m_view->tree().isDragWanted()) {
            outcome.summary += u' ' + ImagePanelWords::tr("Drag it once more to drop it.");
            return;
        }
        // Dragging runs an event loop of its own: the job is to be over by then.
        performOnMainThread([tree = QPointer<ImageTreeView>(&m_view->tree()), paths] {
            if (tree)
                tree->drag(offerOfLentFiles(paths));
        });
    });
}

void ImagePanel::askForFilesFolder()
{
    const QList<ImagePlace> places = m_view->chosenPlaces();
    if (!areOfOneFilesystem(places))
        return;
    chooseFolder(*m_view, ImagePanelWords::tr("Take Files Out Into a Folder"), QStandardPaths::DocumentsLocation,
                 [this, places](const QByteArray &path) { takeOutFiles(places, path); });
}

void ImagePanel::askForImage()
{
    chooseFile(*m_view, ImagePanelWords::tr("Open Image"), QStandardPaths::DocumentsLocation,
               {ImagePanelWords::tr("Disc images (*.iso *.bin *.img *.vant *.udf *.cdr *.cue *.ccd *.toc)"),
                ImagePanelWords::tr("All files (*)")},
               [this](const QByteArray &path) { openImage(path); });
}

void ImagePanel::askForFolder()
{
    chooseFolder(*m_view, ImagePanelWords::tr("Compare with a Folder"), QStandardPaths::HomeLocation,
                 [this](const QByteArray &path) { compareWithFolder(path); });
}

/// A file for the track that is chosen; else a new folder for all of them, so that nothing in it is replaced unasked.
void ImagePanel::askForDestination()
{
    const std::uint32_t track = m_view->chosenTrack();
    auto *const dialog = new QFileDialog(m_view.get(),
                                         track == 0 ? ImagePanelWords::tr("Take All Tracks Out Into a Folder")
                                                    : ImagePanelWords::tr("Take Track %1 Out").arg(track),
                                         QStandardPaths::writableLocation(QStandardPaths::MusicLocation));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    const QString name = nameOf(m_path).section(u'.', 0, -2);
    if (track == 0) {
        dialog->setLabelText(QFileDialog::FileName, ImagePanelWords::tr("New folder:"));
        dialog->selectFile(ImagePanelWords::tr("%1 tracks").arg(name));
    } else {
        const QString ending = m_contents.isSound(track) ? QStringLiteral("wav") : QStringLiteral("iso");
        dialog->setDefaultSuffix(ending);
        dialog->selectFile(ImagePanelWords::tr("%1, track %2").arg(name).arg(track) + u'.' + ending);
    }
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &QFileDialog::fileSelected, m_view.get(),
                     [this, track](const QString &path) { takeOutTracks(track, fileSystemRepresentation(path)); });
    dialog->open();
}

} // namespace Tessaron::Desktop
