#include "app/AudioConversion.h"

#include "app/DesktopPanel.h"
#include "app/JobOutcomes.h"
#include "app/Words.h"

#include <QPointer>
#include <QStandardPaths>

#include <TessaronClassesUI/AudioConverterSheet.h>
#include <algorithm>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MessageTexts.h>

namespace Tessaron::Desktop
{

namespace
{

constexpr double wholeInPercent = 100;

/// Each file once, in the order of the tracks.
struct FilesOfTracks {
    QList<QByteArray> files;
    QList<QByteArray> missing;
    QList<QByteArray> inPart; ///< in which several tracks may lie
};

FilesOfTracks filesOf(const QList<AudioTrackRow> &tracks)
{
    FilesOfTracks found;
    for (const AudioTrackRow &track : tracks) {
        for (const AudioPart &part : track.order.sound) {
            QList<QByteArray> &list = track.isMissing ? found.missing : found.files;
            if (!list.contains(part.path))
                list << part.path;
            if (!track.isMissing && !track.order.hasOwnFile && !found.inPart.contains(part.path))
                found.inPart << part.path;
        }
    }
    return found;
}

} // namespace

AudioConversion::AudioConversion(QObject *parent)
    : QObject(parent)
{
    m_choice.format = KRAudioConverter::waveFormat;
    m_choice.folder = fileSystemRepresentation(QStandardPaths::writableLocation(QStandardPaths::MusicLocation));
}

AudioConversion::~AudioConversion() = default;

void AudioConversion::ask(const QList<AudioTrackRow> &tracks, QWidget &view,
                          const std::shared_ptr<TessaronPanelDelegate> &host)
{
    if (tracks.isEmpty())
        return;
    auto *const dialog = new AudioConvertDialog(m_choice, filesOf(tracks).files.size(), &view);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this,
            [this, dialog, tracks, view = QPointer<QWidget>(&view), weakHost = std::weak_ptr(host)] {
                m_choice = dialog->choice();
                const std::shared_ptr<TessaronPanelDelegate> stillThere = weakHost.lock();
                if (view && stillThere)
                    convert(tracks, m_choice, *view, stillThere);
            });
    dialog->open();
}

void AudioConversion::convert(const QList<AudioTrackRow> &tracks, const AudioConvertDialog::Choice &choice,
                              QWidget &view, const std::shared_ptr<TessaronPanelDelegate> &host)
{
    const FilesOfTracks found = filesOf(tracks);
    QStringList notes;
    for (const QByteArray &path : found.missing)
        notes << tr("%1: the file is missing").arg(displayableText(quoted(path)));
    for (const QByteArray &path : found.inPart)
        notes << tr("%1 is converted as a whole, not track by track").arg(displayableText(quoted(path)));
    if (found.files.isEmpty()) {
        host->panelTells(tr("There is no file to convert."), notes);
        return;
    }
    AudioConvertOrder order;
    order.sources = found.files;
    order.destination = choice.folder;
    order.format = choice.format;
    order.isFlat = true;
    order.carriesTags = choice.carriesTags && AudioConvertDialog::hasTags(choice.format);
    auto job = std::make_unique<AudioConvertJob>(std::move(order));
    AudioConvertJob &started = *job;
    connect(&started, &AudioConvertJob::finished, this,
            [this, host, notes, isWhole = found.missing.isEmpty()](const AudioConvertResult &result) {
                endSheet();
                JobOutcome outcome = outcomeOf(result);
                outcome.details += notes;
                outcome.isComplete = outcome.isComplete && isWhole;
                host->panelJobHasEnded(outcome);
            });
    if (host->runPanelJob(std::move(job), stringWithFileSystemRepresentation(choice.folder)))
        showSheet(started, view);
}

/// The sheet goes with the job, also with one that is given up.
void AudioConversion::showSheet(AudioConvertJob &job, QWidget &view)
{
    m_sheet = loadAudioConverterSheet([job = QPointer<DiscJob>(&job)] {
        if (job)
            job->cancel();
    });
    if (!m_sheet)
        return; // the window shows how far it is, too
    connect(&job, &DiscJob::progressed, this, [this](const DiscJobProgress &progress) {
        if (!m_sheet || progress.bytesTotal == 0)
            return;
        m_sheet->setIndeterminate(false);
        m_sheet->setDoubleValue(progress.percent() / wholeInPercent);
    });
    connect(&job, &QObject::destroyed, this, &AudioConversion::endSheet);
    m_sheet->setIndeterminate(true);
    m_sheet->beginSheet(view);
}

void AudioConversion::endSheet()
{
    if (!m_sheet)
        return;
    m_sheet->endSheetAndClose();
    m_sheet.reset();
}

} // namespace Tessaron::Desktop
