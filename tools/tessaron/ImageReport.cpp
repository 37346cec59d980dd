#include "tools/tessaron/ImageReport.h"

#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/StorageSummary.h"
#include "tools/tessaron/Text.h"

#include <limits>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

using Kind = DRStorageReportItem::Kind;

constexpr std::size_t shownObjects = 20;

void printLostObjects(const DRStorageReport &report)
{
    const std::vector<LostObject> objects = lostObjects(report, shownObjects);
    for (const LostObject &object : objects) {
        // What is not stored is in no filesystem at all.
        const QString where =
            object.isRefused ? QString() : QStringLiteral(" (%1)").arg(object.trees.join(QStringLiteral(", ")));
        printDiagnostic(QStringLiteral("%1: %2%3: %4").arg(object.path, object.fate, where, object.reason));
    }
    if (report.lostCount() > objects.size())
        printDiagnostic(QStringLiteral("… and %1 more; --json lists all").arg(report.lostCount() - objects.size()));
}

void printStorage(const Arguments &arguments, const DRStorageReport &report)
{
    if (arguments.verbosity == Verbosity::Verbose) {
        forEachTelling(report, [](const DRStorageReportItem &item) { printDiagnostic(lineAbout(item)); });
        return;
    }
    printLostObjects(report);
    for (const QString &difference : harmlessDifferences(report))
        printDiagnostic(difference);
}

void writeItem(JsonWriter &writer, const DRStorageReportItem &item)
{
    writer.beginObject();
    writer.pathMember("path", fileSystemRepresentation(item.path));
    if (!item.sourcePath.isEmpty())
        writer.pathMember("source", fileSystemRepresentation(item.sourcePath));
    if (item.kind != Kind::Refused || !item.isLost) // what is lost so is in none
        writer.member("filesystem", discTreeName(item.tree));
    if (item.kind == Kind::Renamed)
        writer.pathMember("name", fileSystemRepresentation(item.nameGiven));
    writer.member("reason", item.reason);
    writer.member("lost", item.isLost);
    writer.endObject();
}

void writeItems(JsonWriter &writer, const char *name, Kind kind, const DRStorageReport *report)
{
    writer.key(name);
    writer.beginArray();
    if (report != nullptr) {
        forEachTelling(*report, [&](const DRStorageReportItem &item) {
            if (item.kind == kind)
                writeItem(writer, item);
        });
    }
    writer.endArray();
}

void writeRenamedCounts(JsonWriter &writer, const DRStorageReport *report)
{
    writer.key("renamedCounts");
    writer.beginObject();
    for (const DRDiscTree tree : allDiscTrees()) {
        if (const std::size_t count = report != nullptr ? report->count(tree, Kind::Renamed) : 0; count > 0)
            writer.member(discTreeName(tree).toLatin1().constData(), count);
    }
    writer.endObject();
}

QString formatName(ImageFormat format)
{
    switch (format) {
    case ImageFormat::Iso:
        return QStringLiteral("iso");
    case ImageFormat::Bin:
        return QStringLiteral("bin");
    case ImageFormat::Vant:
        return QStringLiteral("vant");
    }
    return {};
}

} // namespace

ExitStatus exitStatusFor(const ImageOutcome &outcome)
{
    if (outcome.problem)
        return exitStatusFor(outcome.problem);
    const bool isIncomplete = !outcome.gatheringErrors.empty() || (outcome.report && outcome.report->lostCount() > 0);
    return isIncomplete ? ExitStatus::Incomplete : ExitStatus::Done;
}

void printImageReport(const Arguments &arguments, const ImageOutcome &outcome, double seconds)
{
    const bool isQuiet = arguments.verbosity == Verbosity::Quiet;
    for (const GatheringError &error : outcome.gatheringErrors)
        printDiagnostic(QStringLiteral("%1 cannot be listed: %2").arg(quoted(error.path), error.message));
    const bool tellsWhy = !outcome.problem || outcome.problem.kind == Problem::Kind::NotStored;
    if (outcome.report && tellsWhy && !isQuiet)
        printStorage(arguments, *outcome.report);
    if (outcome.report && tellsWhy && isQuiet)
        printLostObjects(*outcome.report);
    if (outcome.problem) {
        printProblem(outcome.problem);
        return;
    }
    if (isQuiet)
        return;
    QString line = QStringLiteral("made %1: %2, %3, %4, %5 s")
                       .arg(stringWithFileSystemRepresentation(arguments.output), sizeText(outcome.bytes),
                            counted(outcome.files, "file", "files"), counted(outcome.folders, "folder", "folders"),
                            QString::number(seconds, 'f', 1));
    if (exitStatusFor(outcome) == ExitStatus::Incomplete)
        line += QStringLiteral("; not everything could be stored, see above");
    printDiagnostic(line);
}

bool writeImageJson(const Arguments &arguments, const QByteArray &output, const QByteArray &cueSheet,
                    const QString &volumeName, const ImageOutcome &outcome, double seconds)
{
    const DRStorageReport *const report = outcome.report.get();
    JsonWriter writer(STDOUT_FILENO);
    writer.beginObject();
    writer.member("version", jsonVersion);
    writer.member("command", QStringLiteral("image"));
    writer.member("result", resultName(exitStatusFor(outcome)));
    writer.pathMember("output", output);
    if (!cueSheet.isEmpty())
        writer.pathMember("cueSheet", cueSheet);
    writer.member("format", formatName(arguments.format));
    writer.member("volumeName", volumeName);
    writer.member("bytes", outcome.bytes);
    writer.member("files", outcome.files);
    writer.member("folders", outcome.folders);
    writer.key("seconds");
    writer.value(seconds, 3);
    writeItems(writer, "renamed", Kind::Renamed, report);
    writeItems(writer, "refused", Kind::Refused, report);
    writeItems(writer, "altered", Kind::Altered, report);
    writeRenamedCounts(writer, report);
    writeGatheringErrors(writer, "unreadable", outcome.gatheringErrors);
    writeErrorMember(writer, outcome.problem);
    writer.endObject();
    return writer.finish();
}

bool writeUsageErrorJson(const Arguments &arguments)
{
    JsonWriter writer(STDOUT_FILENO);
    writer.beginObject();
    writer.member("version", jsonVersion);
    writer.member("command", QString::fromLatin1(arguments.command));
    writer.member("result", resultName(ExitStatus::WrongUsage));
    writeErrorMember(writer, {Problem::Kind::Usage, arguments.usageError, {}, {}});
    writer.endObject();
    return writer.finish();
}

} // namespace Tessaron::Tool
