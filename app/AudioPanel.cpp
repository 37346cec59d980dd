#include "app/AudioPanel.h"

#include "app/AbandonedJob.h"
#include "app/AudioView.h"
#include "app/JobBar.h"
#include "app/JobOutcomes.h"
#include "app/Words.h"

#include <TessaronClasses/AudioImageJob.h>

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MessageTexts.h>

namespace Tessaron::Desktop
{

namespace
{

struct AudioPanelWords {
    Q_DECLARE_TR_FUNCTIONS(AudioPanel)
};

constexpr std::uint32_t framesPerSecond = 75;
constexpr std::uint64_t bytesPerFrame = 2352;

QString metadataOf(const MovieDescription &movie, const char *key, const char *otherKey)
{
    for (const MovieMetadataItem &item : movie.metadata) {
        if (item.key == key || item.key == otherKey)
            return QString::fromUtf8(item.value).simplified();
    }
    return {};
}

AudioTrackRow rowOf(const MovieFileInfo &file)
{
    AudioTrackRow row;
    row.path = file.path;
    row.title = metadataOf(file.movie, "\251nam", "title");
    row.performer = metadataOf(file.movie, "\251ART", "artist");
    const QTTime &duration = file.movie.duration;
    row.seconds = duration.timeScale > 0 ? double(duration.timeValue) / double(duration.timeScale) : 0;
    return row;
}

} // namespace

AudioPanel::AudioPanel() = default;

AudioPanel::~AudioPanel()
{
    abandonJob(std::move(m_info));
}

QString AudioPanel::title() const
{
    return AudioPanelWords::tr("Audio");
}

QString AudioPanel::hint() const
{
    return AudioPanelWords::tr("Sound for every CD player");
}

AudioView &AudioPanel::audioView()
{
    if (!m_view) {
        m_view = std::make_unique<AudioView>(m_tracks);
        AudioView *const view = m_view.get();
        QObject::connect(&m_tracks, &AudioTrackModel::tracksChanged, view, [this, view] {
            view->showLength(discSeconds());
            if (const std::shared_ptr<TessaronPanelDelegate> host = delegate())
                host->panelDidChange(*this);
        });
        QObject::connect(view, &AudioView::gapChanged, view, [this, view] { view->showLength(discSeconds()); });
        QObject::connect(&m_tracks, &AudioTrackModel::filesDropped, view,
                         [this](const QList<QByteArray> &paths, int row) { addFiles(paths, row); });
        QObject::connect(view, &AudioView::filesWanted, view,
                         [this](const QList<QByteArray> &paths) { addFiles(paths); });
        QObject::connect(view, &AudioView::cancelWanted, view, [this] {
            m_waiting.clear();
            if (m_info)
                m_info->cancel();
        });
    }
    return *m_view;
}

QWidget *AudioPanel::view()
{
    return &audioView();
}

QList<QAction *> AudioPanel::customActionMenuItems()
{
    return audioView().actions();
}

QString AudioPanel::emptyDiscInformationMessage()
{
    return AudioPanelWords::tr("There is no track yet. Drop sound files into the window first.");
}

QString AudioPanel::suggestedName() const
{
    const QString title = m_view ? m_view->discTitle() : QString();
    return title.isEmpty() ? AudioPanelWords::tr("Audio CD") : title;
}

double AudioPanel::discSeconds()
{
    const QList<AudioTrackRow> &tracks = m_tracks.tracks();
    const double sound = std::accumulate(tracks.begin(), tracks.end(), 0.0,
                                         [](double sum, const AudioTrackRow &track) { return sum + track.seconds; });
    return tracks.isEmpty() ? 0 : sound + double(tracks.size() - 1) * audioView().gapSeconds();
}

std::uint64_t AudioPanel::bestSizeApproximation()
{
    return std::uint64_t(std::ceil(discSeconds() * framesPerSecond)) * bytesPerFrame;
}

TessaronDiscImageFormat AudioPanel::handledDiscImageFormats()
{
    return TessaronDiscImageFormatBIN | TessaronDiscImageFormatVANT;
}

bool AudioPanel::takeFiles(const QList<QByteArray> &paths)
{
    addFiles(paths);
    return true;
}

void AudioPanel::letGo()
{
    m_waiting.clear();
    abandonJob(std::move(m_info));
}

void AudioPanel::addFiles(const QList<QByteArray> &paths, int row)
{
    if (paths.isEmpty())
        return;
    m_waiting << Request{paths, row};
    if (!m_info)
        startNext();
}

void AudioPanel::startNext()
{
    AudioView &view = audioView();
    view.progress().begin(AudioPanelWords::tr("Adding"));
    InfoOrder order;
    order.paths = m_waiting.front().paths;
    m_info = std::make_unique<InfoJob>(std::move(order));
    QObject::connect(m_info.get(), &DiscJob::progressed, &view.progress(), &JobBar::showProgress);
    QObject::connect(m_info.get(), &InfoJob::finished, &view, [this](const InfoResult &result) {
        m_info.release()->deleteLater(); // which has the result until then
        takeInfo(result);
    });
    m_info->start();
}

void AudioPanel::takeInfo(const InfoResult &result)
{
    m_view->progress().end();
    const Request request = m_waiting.isEmpty() ? Request{{}, -1} : m_waiting.takeFirst();
    QList<AudioTrackRow> rows;
    QStringList problems;
    for (const UnreadableFolder &folder : result.unreadable)
        problems << AudioPanelWords::tr("The folder %1 cannot be listed: %2")
                        .arg(displayableText(quoted(folder.path)), systemText(folder.errnoValue));
    for (const MovieFileInfo &file : result.files) {
        const QString name = displayableText(quoted(file.path));
        const bool hasSound = std::any_of(file.movie.tracks.begin(), file.movie.tracks.end(),
                                          [](const QTTrack &track) { return track.sound.has_value(); });
        if (file.error)
            problems << errorText(file.error);
        else if (!hasSound)
            problems << AudioPanelWords::tr("%1 holds no sound.").arg(name);
        else if (m_tracks.tracks().size() + rows.size() >= AudioTrackModel::mostTracks)
            problems << AudioPanelWords::tr("%1 is left out: a CD has 99 tracks at most.").arg(name);
        else
            rows << rowOf(file);
    }
    const bool isCancelled = result.error && result.files.empty();
    if (result.error && !isCancelled)
        problems << errorText(result.error);
    if (!rows.isEmpty())
        m_tracks.add(rows, request.row);
    if (rows.isEmpty() && problems.isEmpty() && !result.error)
        problems << AudioPanelWords::tr("No sound files were found.");
    if (!problems.isEmpty())
        tell(problems.size() == 1
                 ? problems.front()
                 : AudioPanelWords::tr("%n file(s) could not be added.", nullptr, int(problems.size())),
             problems.size() == 1 ? QStringList() : problems);
    if (!m_waiting.isEmpty())
        startNext();
}

void AudioPanel::tell(const QString &text, const QStringList &details)
{
    if (const std::shared_ptr<TessaronPanelDelegate> host = delegate())
        host->panelTells(text, details);
}

std::unique_ptr<DiscJob> AudioPanel::imageJob(const QByteArray &path, DiscFormat format,
                                              std::function<void(const JobOutcome &)> whenEnded)
{
    if (m_tracks.tracks().isEmpty())
        return nullptr;
    const AudioView &view = audioView();
    AudioImageOrder order;
    order.output = path;
    order.format = format;
    order.gap = std::uint32_t(std::lround(view.gapSeconds() * framesPerSecond));
    order.isGapless = view.isGapless();
    order.normalization = view.isNormalized() ? AudioNormalization::Album : AudioNormalization::None;
    order.hasCDText = view.hasCDText();
    order.discTitle = {view.discTitle(), view.discPerformer()};
    for (const AudioTrackRow &track : m_tracks.tracks()) {
        order.sources << track.path;
        order.titles << AudioTitle{track.title, track.performer};
    }
    auto job = std::make_unique<AudioImageJob>(std::move(order));
    QObject::connect(
        job.get(), &AudioImageJob::finished, &audioView(),
        [this, saved = m_tracks.undoStack().index(), whenEnded = std::move(whenEnded)](const AudioImageResult &result) {
            if (!result.error && m_tracks.undoStack().index() == saved)
                m_tracks.undoStack().setClean();
            whenEnded(outcomeOf(result));
        });
    return job;
}

} // namespace Tessaron::Desktop
