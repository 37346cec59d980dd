#include "app/JobOutcomes.h"

#include "app/Words.h"

#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/ImageVerification.h>

#include <QCoreApplication>

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
                            .arg(displayableText(item.path), displayableText(item.reason), discTreeName(item.tree)));
        }
    }
    if (count > mostLines)
        lines << JobOutcomes::tr("… and %n more", nullptr, int(count - mostLines));
}

} // namespace

JobOutcome outcomeOf(const DiscImageResult &result, const QStringList &missing)
{
    JobOutcome outcome;
    outcome.error = result.error;
    outcome.path = result.imagePath;
    outcome.isComplete = result.isComplete() && missing.isEmpty();
    for (const QString &path : missing)
        outcome.details << JobOutcomes::tr("%1: the file is missing").arg(displayableText(path));
    for (const UnreadableFolder &folder : result.unreadable)
        outcome.details << JobOutcomes::tr("The folder %1 could not be read: %2")
                               .arg(displayableText(quoted(folder.path)), systemText(folder.errnoValue));
    if (result.isVolumeNameLost)
        outcome.details << JobOutcomes::tr("The name of the disc could not be stored as it was asked for.");
    const std::size_t lost = result.report ? result.report->lostCount() : 0;
    if (result.report)
        addReport(*result.report, outcome.details);
    if (result.error) {
        outcome.summary = errorText(result.error);
        return outcome;
    }
    outcome.summary = JobOutcomes::tr("%1 was saved: %2, %3.")
                          .arg(fileName(result.imagePath), sizeText(result.bytes),
                               JobOutcomes::tr("%n file(s)", nullptr, int(result.files)));
    if (lost > 0)
        outcome.summary += u' ' + JobOutcomes::tr("%n item(s) could not be stored as they are.", nullptr, int(lost));
    if (!result.unreadable.empty())
        outcome.summary +=
            u' ' + JobOutcomes::tr("%n folder(s) could not be read.", nullptr, int(result.unreadable.size()));
    if (!missing.isEmpty())
        outcome.summary +=
            u' ' + JobOutcomes::tr("%n item(s) are not on it: their files are missing.", nullptr, int(missing.size()));
    if (outcome.isComplete)
        outcome.summary += u' '
            + (outcome.details.isEmpty()
                   ? JobOutcomes::tr("Nothing is missing.")
                   : JobOutcomes::tr("Nothing is missing; some names are changed in some filesystems."));
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
