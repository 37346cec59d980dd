#include "app/JobOutcomes.h"

#include "app/Words.h"

#include <TessaronClasses/AudioConvertJob.h>
#include <TessaronClasses/AudioImageJob.h>
#include <TessaronClasses/BurnDiscJob.h>
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/ExtractFilesJob.h>
#include <TessaronClasses/ExtractJob.h>
#include <TessaronClasses/ImageVerification.h>

#include <QCoreApplication>

#include <platform/discimage/volume/VolumeReader.h>
#include <platform/discrecording/objects/DRStorageReport.h>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MessageTexts.h>

namespace Tessaron::Desktop
{

namespace
{

struct JobOutcomes {
    Q_DECLARE_TR_FUNCTIONS(JobOutcomes)
};

/// A window shows that many lines; how many more there are is said.
constexpr std::size_t mostLines = 10'000;

QString fileName(const QByteArray &path)
{
    return displayableText(stringWithFileSystemRepresentation(path.mid(path.lastIndexOf('/') + 1)));
}

void addLine(QStringList &lines, std::size_t *count, const QString &line)
{
    if (++*count <= mostLines)
        lines << line;
}

/// What is lost comes first.
void addReport(const DRStorageReport &report, QStringList &lines)
{
    std::size_t count = 0;
    for (const bool isLost : {true, false}) {
        for (std::size_t index = 0; index < report.count(); ++index) {
            const DRStorageReportItem item = report.item(index);
            if (item.isLost == isLost)
                addLine(lines, &count,
                        QStringLiteral("%1: %2 (%3)")
                            .arg(displayableText(item.path), displayableText(item.reason), discTreeTitle(item.tree)));
        }
    }
    if (count > mostLines)
        lines << JobOutcomes::tr("… and %n more", nullptr, int(count - mostLines));
}

/// What was to be on the disc and is not there as it stands, a line each.
void addLosses(const DiscImageResult &result, const QStringList &missing, QStringList &lines)
{
    for (const QString &path : missing)
        lines << JobOutcomes::tr("%1: the file is missing").arg(displayableText(path));
    for (const UnreadableFolder &folder : result.unreadable)
        lines << JobOutcomes::tr("The folder %1 could not be read: %2")
                     .arg(displayableText(quoted(folder.path)), systemText(folder.errnoValue));
    if (result.isVolumeNameLost)
        lines << JobOutcomes::tr("The name of the disc could not be stored as it was asked for.");
    if (result.report)
        addReport(*result.report, lines);
}

/// The same in sentences, or that nothing is missing.
QString lossesText(const DiscImageResult &result, const QStringList &missing, const JobOutcome &outcome)
{
    QStringList sentences;
    const std::size_t lost = result.report ? result.report->lostCount() : 0;
    if (lost > 0)
        sentences << JobOutcomes::tr("%n item(s) could not be stored as they are.", nullptr, int(lost));
    if (result.isVolumeNameLost)
        sentences << JobOutcomes::tr("The name of the disc is another one.");
    if (!result.unreadable.empty())
        sentences << JobOutcomes::tr("%n folder(s) could not be read.", nullptr, int(result.unreadable.size()));
    if (!missing.isEmpty())
        sentences << JobOutcomes::tr("%n item(s) are not on it: their files are missing.", nullptr,
                                     int(missing.size()));
    if (outcome.isComplete)
        sentences << (outcome.details.isEmpty()
                          ? JobOutcomes::tr("Nothing is missing.")
                          : JobOutcomes::tr("Nothing is missing; some names are changed in some filesystems."));
    return sentences.join(u' ');
}

QString shortTrackText(std::uint32_t track)
{
    return JobOutcomes::tr("Track %1 is shorter than four seconds, which many drives refuse").arg(track);
}

} // namespace

JobOutcome outcomeOf(const DiscImageResult &result, const QStringList &missing)
{
    JobOutcome outcome;
    outcome.error = result.error;
    outcome.path = result.imagePath;
    outcome.isComplete = result.isComplete() && missing.isEmpty();
    addLosses(result, missing, outcome.details);
    if (result.error) {
        outcome.summary = errorText(result.error);
        return outcome;
    }
    outcome.summary = JobOutcomes::tr("%1 was saved: %2, %3.")
                          .arg(fileName(result.imagePath), sizeText(result.bytes),
                               JobOutcomes::tr("%n file(s)", nullptr, int(result.files)));
    outcome.summary += u' ' + lossesText(result, missing, outcome);
    return outcome;
}

JobOutcome outcomeOf(const BurnDiscResult &result, bool isSimulated, const QStringList &missing)
{
    JobOutcome outcome;
    outcome.error = result.error;
    outcome.isComplete = result.isComplete() && missing.isEmpty();
    outcome.details = result.notes;
    if (!result.isImage)
        addLosses(result.data, missing, outcome.details);
    for (const AudioImageTrack &track : result.audioTracks) {
        if (track.isTooShort)
            outcome.details << shortTrackText(track.number);
    }
    for (const QString &path : result.replaced)
        outcome.details
            << JobOutcomes::tr("%1 takes the place of the file that the disc had.").arg(displayableText(path));
    if (result.verification)
        outcome.details << outcomeOf(*result.verification).details;
    if (result.waits > 0)
        outcome.details << JobOutcomes::tr("The drive had to wait for data %n time(s).", nullptr, int(result.waits));
    if (result.error) {
        outcome.summary = errorText(result.error);
        return outcome;
    }
    const QString amount = result.isImage ? JobOutcomes::tr("%n track(s)", nullptr, int(result.tracks))
                                          : JobOutcomes::tr("%n file(s)", nullptr, int(result.data.files));
    const QString form = isSimulated ? JobOutcomes::tr("The writing was simulated, the disc is as it was: %1, %2, %3.")
                                     : JobOutcomes::tr("The disc was written: %1, %2, %3.");
    outcome.summary = form.arg(result.disc.profileName, sizeText(result.data.bytes), amount);
    if (result.keptFiles > 0)
        outcome.summary += u' ' + JobOutcomes::tr("%n file(s) that it had are kept.", nullptr, int(result.keptFiles));
    if (!result.replaced.isEmpty())
        outcome.summary +=
            u' ' + JobOutcomes::tr("%n file(s) that it had were replaced.", nullptr, int(result.replaced.size()));
    if (result.verification || result.bytesCompared > 0)
        outcome.summary += u' ' + JobOutcomes::tr("It was compared with what was to be written, and is the same.");
    if (result.isStartLost && !isSimulated)
        outcome.summary += u' ' + JobOutcomes::tr("Computers cannot be started from it any more.");
    if (!result.isImage)
        outcome.summary += u' ' + lossesText(result.data, missing, outcome);
    else if (result.isAnythingLost)
        outcome.summary += u' '
            + (result.audioTracks.empty()
                   ? JobOutcomes::tr("Something of the image is not on it.")
                   : JobOutcomes::tr("Some of the sound, or of its texts, is not on it as it should be."));
    return outcome;
}

JobOutcome outcomeOf(const AudioImageResult &result)
{
    JobOutcome outcome;
    outcome.error = result.error;
    outcome.path = result.imagePath;
    outcome.isComplete = result.isComplete();
    for (const AudioImageTrack &track : result.tracks) {
        if (!track.damage.isEmpty())
            outcome.details << JobOutcomes::tr("Track %1, %2: the sound is damaged in %n place(s)", nullptr,
                                               int(track.damage.count))
                                   .arg(track.number)
                                   .arg(fileName(track.source));
        if (track.isTooShort)
            outcome.details << shortTrackText(track.number);
    }
    outcome.details << result.changedTexts << result.notes;
    if (result.error) {
        outcome.summary = errorText(result.error);
        return outcome;
    }
    constexpr std::uint64_t framesPerSecond = 75;
    outcome.summary =
        JobOutcomes::tr("%1 was saved: %2, %3.")
            .arg(fileName(result.imagePath), durationText(std::chrono::seconds(result.frames / framesPerSecond)),
                 JobOutcomes::tr("%n track(s)", nullptr, int(result.tracks.size())));
    if (result.areTextsLost)
        outcome.summary += u' ' + JobOutcomes::tr("Some texts could not be put into the CD-TEXT.");
    if (!outcome.isComplete && !result.areTextsLost)
        outcome.summary += u' ' + JobOutcomes::tr("Some of the sound is damaged.");
    return outcome;
}

JobOutcome outcomeOf(const ExtractResult &result)
{
    JobOutcome outcome;
    outcome.error = result.error;
    outcome.isComplete = result.isComplete();
    for (const ExtractedTrack &track : result.tracks) {
        if (outcome.path.isEmpty())
            outcome.path = track.path;
        QString line =
            JobOutcomes::tr("Track %1: %2, %3").arg(track.number).arg(fileName(track.path), sizeText(track.bytes));
        if (track.damagedSectors > 0)
            line += QStringLiteral(", ") + JobOutcomes::tr("%n damaged sector(s)", nullptr, int(track.damagedSectors));
        if (track.cutSectors > 0)
            line += QStringLiteral(", ") + JobOutcomes::tr("%n sector(s) cut", nullptr, int(track.cutSectors));
        outcome.details << line;
    }
    outcome.details << result.notes;
    if (result.error)
        outcome.summary = errorText(result.error);
    else if (outcome.isComplete)
        outcome.summary = JobOutcomes::tr("%n track(s) were taken out.", nullptr, int(result.tracks.size()));
    else
        outcome.summary =
            JobOutcomes::tr("%n track(s) were taken out, with damage.", nullptr, int(result.tracks.size()));
    return outcome;
}

/// Files that a cancel has left out are not failures of their own.
JobOutcome outcomeOf(const AudioConvertResult &result)
{
    JobOutcome outcome;
    outcome.error = result.error;
    outcome.isComplete = result.isComplete();
    int converted = 0;
    int failed = 0;
    int damaged = 0;
    for (const ConvertedFile &file : result.files) {
        const QString name = fileName(file.source);
        if (!file.error)
            ++converted;
        else if (!isDiscJobError(file.error, DiscJobErrorCode::Cancelled)) {
            ++failed;
            outcome.details << QStringLiteral("%1: %2").arg(name, errorText(file.error));
        }
        if (file.isDamaged) {
            ++damaged;
            outcome.details << JobOutcomes::tr("%1 is broken in places; silence stands for them").arg(name);
        }
        for (const QString &place : file.damage)
            outcome.details << QStringLiteral("%1: %2").arg(name, place);
        outcome.details << file.notes;
    }
    const QString sentence = JobOutcomes::tr("%n file(s) were converted.", nullptr, converted);
    if (result.error) {
        outcome.summary = errorText(result.error);
        if (converted > 0)
            outcome.summary += u' ' + sentence;
        return outcome;
    }
    outcome.summary = sentence;
    if (failed > 0)
        outcome.summary += u' ' + JobOutcomes::tr("%n file(s) could not be.", nullptr, failed);
    if (damaged > 0)
        outcome.summary += u' ' + JobOutcomes::tr("%n file(s) are broken in places.", nullptr, damaged);
    return outcome;
}

JobOutcome outcomeOf(const ExtractFilesResult &result)
{
    JobOutcome outcome;
    outcome.error = result.error;
    outcome.isComplete = result.isComplete();
    const auto nameFor = [](const QByteArray &path) {
        return displayableText(stringWithFileSystemRepresentation(path));
    };
    const auto addRest = [&outcome](std::uint64_t count, std::size_t shown) {
        if (count > shown)
            outcome.details << JobOutcomes::tr("… and %n more", nullptr, int(count - shown));
    };
    for (const ExtractFilesResult::Failure &failure : result.failures)
        outcome.details << QStringLiteral("%1: %2").arg(nameFor(failure.path), errorText(failure.error));
    addRest(result.failureCount, result.failures.size());
    for (const ExtractFilesResult::Renaming &renaming : result.renamings)
        outcome.details << JobOutcomes::tr("%1 is %2 now").arg(nameFor(renaming.path), nameFor(renaming.name));
    addRest(result.renamingCount, result.renamings.size());
    outcome.details << result.notes;
    const QString amount =
        JobOutcomes::tr("%n file(s)", nullptr, int(result.files)) + QStringLiteral(", ") + sizeText(result.bytes);
    if (result.error) {
        outcome.summary = errorText(result.error);
        if (result.files > 0)
            outcome.summary += u' ' + JobOutcomes::tr("What was taken out before stays: %1.").arg(amount);
        return outcome;
    }
    outcome.summary = JobOutcomes::tr("Taken out of %1: %2.").arg(volumeKindName(result.filesystem), amount);
    if (result.failureCount > 0)
        outcome.summary += u' ' + JobOutcomes::tr("%n item(s) could not be.", nullptr, int(result.failureCount));
    if (result.renamingCount > 0)
        outcome.summary += u' ' + JobOutcomes::tr("%n item(s) have another name.", nullptr, int(result.renamingCount));
    if (result.unsetTimes > 0)
        outcome.summary +=
            u' ' + JobOutcomes::tr("%n item(s) do not have their dates.", nullptr, int(result.unsetTimes));
    return outcome;
}

JobOutcome outcomeOf(const VerificationResult &result)
{
    JobOutcome outcome;
    outcome.error = result.error;
    const std::uint64_t count = result.differences.count();
    outcome.isComplete = !result.error && count == 0;
    for (const ImageDifference &difference : result.differences.items())
        outcome.details << QStringLiteral("%1: %2").arg(
            displayableText(stringWithFileSystemRepresentation(difference.path)), displayableText(difference.message));
    if (count > std::uint64_t(outcome.details.size()))
        outcome.details << JobOutcomes::tr("… and %n more", nullptr,
                                           int(count - std::uint64_t(outcome.details.size())));
    for (const QString &note : result.notes)
        outcome.details << note;
    if (result.error)
        outcome.summary = errorText(result.error);
    else if (count > 0)
        outcome.summary = JobOutcomes::tr("The image differs from the files in %n place(s).", nullptr, int(count));
    else
        outcome.summary = JobOutcomes::tr("The image was compared with the files: all %1 are the same.")
                              .arg(sizeText(result.bytesCompared));
    return outcome;
}

} // namespace Tessaron::Desktop
