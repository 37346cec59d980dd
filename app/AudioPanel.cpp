#include "app/AudioPanel.h"

#include "app/AudioView.h"
#include "app/JobBar.h"
#include "app/JobOutcomes.h"
#include "app/SoundBar.h"
#include "app/TextLanguages.h"
#include "app/Words.h"

#include <TessaronClasses/AudioImageJob.h>

#include <QCoreApplication>
#include <QLocale>

#include <cmath>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MessageTexts.h>

namespace Tessaron::Desktop
{

namespace
{

struct AudioPanelWords {
    Q_DECLARE_TR_FUNCTIONS(AudioPanel)
};

constexpr std::uint64_t bytesPerFrame = 2352;
/// In front of the first track of every disc (IEC 60908).
constexpr std::uint32_t standardPause = 2 * soundFramesPerSecond;

} // namespace

AudioPanel::AudioPanel()
{
    QObject::connect(&m_intake, &AudioIntake::found, &m_tracks, [this](const AudioFound &found) { takeFound(found); });
    QObject::connect(&m_tracks, &AudioTrackModel::discChanged, &m_tracks, [this] { discHasChanged(); });
}

AudioPanel::~AudioPanel() = default;

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
        m_view = std::make_unique<AudioView>(m_tracks, m_waveforms);
        AudioView *const view = m_view.get();
        QObject::connect(&m_tracks, &AudioTrackModel::filesDropped, view,
                         [this](const QList<QByteArray> &paths, int row) { addFiles(paths, row); });
        QObject::connect(view, &AudioView::filesWanted, view,
                         [this](const QList<QByteArray> &paths) { addFiles(paths); });
        QObject::connect(view, &AudioView::cancelWanted, &m_intake, &AudioIntake::cancel);
        QObject::connect(view, &AudioView::conversionWanted, view, [this] {
            if (const std::shared_ptr<TessaronPanelDelegate> host = delegate())
                m_conversion.ask(chosenTracks(), *m_view, host);
        });
        QObject::connect(view, &AudioView::told, view,
                         [this](const QString &text, const QStringList &details) { tell(text, details); });
        QObject::connect(&m_intake, &AudioIntake::started, view,
                         [view] { view->progress().begin(AudioPanelWords::tr("Adding")); });
        QObject::connect(&m_intake, &AudioIntake::progressed, &view->progress(), &JobBar::showProgress);
        QObject::connect(&m_intake, &AudioIntake::ended, &view->progress(), &JobBar::end);
    }
    return *m_view;
}

QList<AudioTrackRow> AudioPanel::chosenTracks()
{
    QList<AudioTrackRow> tracks;
    for (const int row : audioView().chosenRows())
        tracks << m_tracks.tracks()[row];
    return tracks;
}

void AudioPanel::convertChosen(const AudioConvertDialog::Choice &choice)
{
    if (const std::shared_ptr<TessaronPanelDelegate> host = delegate())
        m_conversion.convert(chosenTracks(), choice, audioView(), host);
}

void AudioPanel::discHasChanged()
{
    QList<QByteArray> files;
    for (const AudioTrackRow &track : m_tracks.tracks()) {
        for (const AudioPart &part : track.order.sound) {
            if (!track.isMissing && !files.contains(part.path))
                files << part.path;
        }
    }
    m_waveforms.setWanted(files);
    changed();
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
    const QString title = textOfKind(m_tracks.disc().texts, CDTextKind::Title, m_tracks.language());
    return title.isEmpty() ? AudioPanelWords::tr("Audio CD") : title;
}

std::uint64_t AudioPanel::bestSizeApproximation()
{
    return std::uint64_t(std::ceil(secondsOfDisc(m_tracks.disc()) * soundFramesPerSecond)) * bytesPerFrame;
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
    m_intake.letGo();
    m_waveforms.letGo();
    if (m_view)
        m_view->sound().stop();
}

void AudioPanel::addFiles(const QList<QByteArray> &paths, int row)
{
    (void)audioView(); // which shows how far it is
    m_intake.add(paths, row);
}

void AudioPanel::takeFound(const AudioFound &found)
{
    QStringList problems = found.problems;
    QList<AudioTrackRow> rows;
    for (AudioTrackRow row : found.tracks) {
        m_waveforms.forget(row.path());
        if (m_tracks.tracks().size() + rows.size() >= AudioTrackModel::mostTracks) {
            problems << AudioPanelWords::tr("%1 is left out: a CD has 99 tracks at most.")
                            .arg(displayableText(quoted(row.path())));
            continue;
        }
        if (row.order.hasOwnFile && row.order.gap == 0)
            row.order.gap = m_tracks.disc().gap;
        if (row.order.hasOwnFile)
            adaptTextLanguage(row, m_tracks.disc());
        rows << row;
    }
    QStringList notes = found.notes;
    const bool comeFirst = m_tracks.tracks().isEmpty() || found.row == 0;
    if (!rows.isEmpty() && comeFirst && !found.sheet.isEmpty() && rows.front().order.gap > standardPause) {
        notes << AudioPanelWords::tr("%1 has a pause of %2 s in front of track 1, which is left out: every disc begins "
                                     "with two seconds of silence.")
                     .arg(displayableText(quoted(found.sheet)),
                          QLocale().toString(double(rows.front().order.gap) / soundFramesPerSecond, 'f', 2));
        rows.front().order.gap = 0;
    }
    if (!rows.isEmpty())
        m_tracks.add(rows, found.row, [&found, &rows](AudioDisc &disc) {
            // Not where they come to others: what was added first has given the disc its name.
            if (disc.tracks.size() > rows.size())
                return;
            if (disc.texts.empty())
                disc.texts = found.texts;
            if (disc.mediaCatalogNumber.isEmpty())
                disc.mediaCatalogNumber = found.mediaCatalogNumber;
        });
    if (rows.isEmpty() && problems.isEmpty())
        problems << AudioPanelWords::tr("No sound files were found.");
    const QStringList all = problems + notes;
    if (all.isEmpty())
        return;
    QString text = all.front();
    if (all.size() > 1)
        text = problems.isEmpty()
            ? AudioPanelWords::tr("Not all that the cue sheet says was taken.")
            : AudioPanelWords::tr("%n file(s) could not be added.", nullptr, int(problems.size()));
    tell(text, all.size() == 1 ? QStringList() : all);
}

AudioImageOrder AudioPanel::imageOrder() const
{
    const AudioDisc &disc = m_tracks.disc();
    AudioImageOrder order;
    order.isGapless = disc.isGapless;
    order.normalization = disc.isNormalized ? AudioNormalization::Album : AudioNormalization::None;
    order.hasCDText = disc.hasCDText;
    order.texts = disc.texts;
    order.mediaCatalogNumber = disc.mediaCatalogNumber;
    for (const AudioTrackRow &track : disc.tracks)
        order.tracks.push_back(track.order);
    if (!order.tracks.empty())
        order.tracks.front().gap = 0; // every disc has its own silence there
    return order;
}

std::optional<BurnSubject> AudioPanel::burnSubject()
{
    if (m_tracks.tracks().isEmpty())
        return std::nullopt;
    BurnSubject subject;
    subject.order.audio = imageOrder();
    subject.bytes = bestSizeApproximation();
    subject.name = suggestedName();
    return subject;
}

std::unique_ptr<DiscJob> AudioPanel::imageJob(const QByteArray &path, DiscFormat format,
                                              std::function<void(const JobOutcome &)> whenEnded)
{
    if (m_tracks.tracks().isEmpty())
        return nullptr;
    AudioImageOrder order = imageOrder();
    order.output = path;
    order.format = format;
    auto job = std::make_unique<AudioImageJob>(std::move(order));
    QObject::connect(
        job.get(), &AudioImageJob::finished, &audioView(),
        [whenEnded = std::move(whenEnded)](const AudioImageResult &result) { whenEnded(outcomeOf(result)); });
    return job;
}

} // namespace Tessaron::Desktop
