#include "tools/tessaron/ImageReport.h"

#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/StorageSummary.h"
#include "tools/tessaron/Text.h"

#include <algorithm>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

using Kind = DRStorageReportItem::Kind;

constexpr std::size_t shownObjects = 20;

/// What is lost, but for folders that were named as unreadable already, with the reason that the system gave.
void printLostObjects(const DRStorageReport &report, const std::vector<UnreadableFolder> &unreadable)
{
    const std::vector<LostObject> objects = lostObjects(report, shownObjects);
    for (const LostObject &object : objects) {
        const auto isObject = [path = fileSystemRepresentation(object.path)](const UnreadableFolder &folder) {
            return folder.path == path;
        };
        if (object.isRefused && std::any_of(unreadable.begin(), unreadable.end(), isObject))
            continue;
        // What is not stored is in no filesystem at all.
        const QString where =
            object.isRefused ? QString() : QStringLiteral(" (%1)").arg(object.trees.join(QStringLiteral(", ")));
        printDiagnostic(QStringLiteral("%1: %2%3: %4").arg(object.path, object.fate, where, object.reason));
    }
    if (report.lostCount() > objects.size())
        printDiagnostic(QStringLiteral("… and %1 more; --json lists all").arg(report.lostCount() - objects.size()));
}

void printReport(const Arguments &arguments, const DRStorageReport &report,
                 const std::vector<UnreadableFolder> &unreadable)
{
    if (arguments.verbosity == Verbosity::Verbose) {
        forEachTelling(report, [](const DRStorageReportItem &item) { printDiagnostic(lineAbout(item)); });
        return;
    }
    printLostObjects(report, unreadable);
    for (const QString &difference : harmlessDifferences(report))
        printDiagnostic(difference);
}

void writeItem(JsonWriter &writer, const DRStorageReportItem &item)
{
    writer.beginObject();
    writer.pathMember("path", fileSystemRepresentation(item.path));
    if (!item.sourcePath.isEmpty())
        writer.pathMember("source", fileSystemRepresentation(item.sourcePath));
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

} // namespace

ExitStatus exitStatusFor(const DiscImageResult &result, const Problem &problem)
{
    if (problem)
        return exitStatusFor(problem);
    return result.isComplete() ? ExitStatus::Done : ExitStatus::Incomplete;
}

namespace
{

/// The volume has another name than the user has given it; -q does not hide that.
void printVolumeName(const Arguments &arguments, const DiscImageResult &result)
{
    const bool isForVideo = !arguments.volumeName.isEmpty() && result.volumeName != arguments.volumeName;
    if (isForVideo)
        printDiagnostic(QStringLiteral("the volume is named “%1”, since it holds DVD-Video").arg(result.volumeName));
    else if (result.isVolumeNameLost && arguments.verbosity == Verbosity::Quiet)
        printDiagnostic(volumeNameText(*result.report));
}

} // namespace

void printStorage(const Arguments &arguments, const DiscImageResult &result, bool tellsStorage)
{
    const bool isQuiet = arguments.verbosity == Verbosity::Quiet;
    printUnreadable(result.unreadable);
    if (!tellsStorage)
        return;
    if (result.report && isQuiet)
        printLostObjects(*result.report, result.unreadable);
    else if (result.report)
        printReport(arguments, *result.report, result.unreadable);
    if (result.isVolumeNameLost || !isQuiet)
        printVolumeName(arguments, result);
}

void printImageReport(const Arguments &arguments, const DiscImageResult &result, const Problem &problem, double seconds)
{
    const bool isQuiet = arguments.verbosity == Verbosity::Quiet;
    printStorage(arguments, result, !problem || problem.kind == Problem::Kind::NotStored);
    if (problem) {
        printProblem(problem);
        return;
    }
    if (isQuiet)
        return;
    QString line = QStringLiteral("made %1: %2, %3, %4, %5 s")
                       .arg(stringWithFileSystemRepresentation(arguments.output), sizeText(result.bytes),
                            counted(result.files, "file", "files"), counted(result.folders, "folder", "folders"),
                            QString::number(seconds, 'f', 1));
    if (exitStatusFor(result, problem) == ExitStatus::Incomplete)
        line += QStringLiteral("; not everything could be stored, see above");
    printDiagnostic(line);
}

void writeStorageMembers(JsonWriter &writer, const DiscImageResult &result)
{
    const DRStorageReport *const report = result.report.get();
    writeItems(writer, "renamed", Kind::Renamed, report);
    writeItems(writer, "refused", Kind::Refused, report);
    writeItems(writer, "altered", Kind::Altered, report);
    writeRenamedCounts(writer, report);
    writeUnreadableMember(writer, result.unreadable);
}

bool writeImageJson(const Arguments &arguments, const DiscImageResult &result, const Problem &problem, double seconds)
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("image"), exitStatusFor(result, problem));
    writer.pathMember("output", result.imagePath.isEmpty() ? arguments.output : result.imagePath);
    if (!result.cueSheetPath.isEmpty())
        writer.pathMember("cueSheet", result.cueSheetPath);
    writer.member("format", nameOfDiscFormat(arguments.format));
    writer.member("volumeName", result.volumeName);
    writer.member("bytes", result.bytes);
    writer.member("files", result.files);
    writer.member("folders", result.folders);
    writer.key("seconds");
    writer.value(seconds, 3);
    writeStorageMembers(writer, result);
    return endReport(writer, problem);
}

bool writeUsageErrorJson(const Arguments &arguments)
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QString::fromLatin1(arguments.command), ExitStatus::WrongUsage);
    return endReport(writer, {Problem::Kind::Usage, arguments.usageError, {}, {}});
}

} // namespace Tessaron::Tool
