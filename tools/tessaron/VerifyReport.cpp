#include "tools/tessaron/VerifyReport.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include "tools/tessaron/VolumeJson.h"

#include <QStringList>

#include <algorithm>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

constexpr std::size_t shownDifferences = 20;

constexpr VolumeKind allKinds[] = {VolumeKind::ISO9660, VolumeKind::RockRidge, VolumeKind::Joliet, VolumeKind::UDF,
                                   VolumeKind::HFSPlus};

QString kindNames(VolumeSet volumes)
{
    QStringList names;
    for (const VolumeKind kind : allKinds) {
        if ((volumes & setOf(kind)) != 0)
            names += volumeKindName(kind);
    }
    return names.isEmpty() ? QStringLiteral("sources") : names.join(QStringLiteral(", "));
}

QString lineAbout(const ImageDifference &difference)
{
    QString line = QStringLiteral("%1: %2: %3")
                       .arg(kindNames(difference.volumes), stringWithFileSystemRepresentation(difference.path),
                            difference.message);
    if (difference.offset && difference.kind != ImageDifference::Kind::Damage)
        line += QStringLiteral(" (at byte %1 of the image)").arg(*difference.offset);
    return line;
}

/// What was held against what, for each kind: the report must not promise more than was looked at.
QString comparedIn(VolumeKind kind)
{
    switch (kind) {
    case VolumeKind::ISO9660:
        return QStringLiteral("short names by its rules, sizes, contents, times");
    case VolumeKind::Joliet:
        return QStringLiteral("names as it allows them, sizes, contents, times");
    case VolumeKind::RockRidge:
    case VolumeKind::UDF:
    case VolumeKind::HFSPlus:
        break;
    }
    return QStringLiteral("names, sizes, contents, times, link targets");
}

QByteArray resultLine(const VolumeVerification &result, std::uint64_t differences)
{
    const VolumeKind kind = result.kind;
    QString line = QStringLiteral("%1: %2, %3")
                       .arg(volumeKindName(kind), counted(result.files, "file", "files"),
                            counted(result.folders, "folder", "folders"));
    if (result.renamed > 0 && kind != VolumeKind::ISO9660)
        line += QStringLiteral(", ") + counted(result.renamed, "changed name", "changed names");
    if (result.leftOut > 0)
        line += QStringLiteral(", ") + counted(result.leftOut, "item", "items") + QStringLiteral(" it cannot hold");
    line += differences == 0 ? QStringLiteral(": same (%1)").arg(comparedIn(kind))
                             : QStringLiteral(": ") + counted(differences, "difference", "differences");
    return line.toUtf8() + '\n';
}

void writeDifference(JsonWriter &writer, const ImageDifference &difference)
{
    writer.beginObject();
    writer.member("kind", nameOfDifference(difference.kind));
    writer.key("filesystems");
    writer.beginArray();
    for (const VolumeKind kind : allKinds) {
        if ((difference.volumes & setOf(kind)) != 0)
            writer.value(volumeKindKey(kind));
    }
    writer.endArray();
    writer.pathMember("path", difference.path);
    if (difference.offset)
        writer.member("offset", *difference.offset);
    writer.member("message", difference.message);
    writer.endObject();
}

} // namespace

ExitStatus exitStatusFor(const VerifyOutcome &outcome)
{
    if (outcome.problem)
        return exitStatusFor(outcome.problem);
    return outcome.result.differences.count() > 0 ? ExitStatus::Failed : ExitStatus::Done;
}

void printDifferences(const Arguments &arguments, const ImageDifferenceList &differences)
{
    const std::size_t limit = arguments.verbosity == Verbosity::Verbose ? differences.items().size() : shownDifferences;
    const std::size_t shown = std::min(limit, differences.items().size());
    for (std::size_t index = 0; index < shown; ++index)
        printDiagnostic(lineAbout(differences.items()[index]));
    if (differences.count() > shown)
        printDiagnostic(QStringLiteral("… and %1 more").arg(differences.count() - shown));
}

void writeDifferenceMembers(JsonWriter &writer, const ImageDifferenceList &differences)
{
    writer.member("differenceCount", differences.count());
    writer.key("differences");
    writer.beginArray();
    for (const ImageDifference &difference : differences.items())
        writeDifference(writer, difference);
    writer.endArray();
}

bool printVerifyReport(const Arguments &arguments, const VerifyOutcome &outcome)
{
    printDifferences(arguments, outcome.result.differences);
    if (arguments.verbosity != Verbosity::Quiet) {
        for (const QString &note : outcome.result.notes)
            printDiagnostic(note);
    }
    if (outcome.problem) {
        printProblem(outcome.problem);
        return true;
    }
    if (arguments.verbosity == Verbosity::Quiet)
        return true;
    QByteArray text;
    for (const VolumeVerification &volume : outcome.result.volumes)
        text += resultLine(volume, outcome.result.differences.countIn(volume.kind));
    text += sizeText(outcome.result.bytesCompared).toUtf8() + " of contents compared; "
        + (outcome.result.differences.count() == 0 ? QByteArrayLiteral("the image is as its sources\n")
                                                   : QByteArrayLiteral("the image and its sources differ\n"));
    return writeAll(STDOUT_FILENO, text);
}

bool writeVerifyJson(const QByteArray &image, const VerifyOutcome &outcome, double seconds)
{
    JsonWriter writer(STDOUT_FILENO);
    const bool isDifferent = !outcome.problem && outcome.result.differences.count() > 0;
    beginReport(writer, QStringLiteral("verify"),
                isDifferent ? QStringLiteral("different") : resultName(exitStatusFor(outcome)));
    writer.pathMember("image", image);
    writer.member("files", outcome.result.files);
    writer.member("folders", outcome.result.folders);
    writer.member("bytesCompared", outcome.result.bytesCompared);
    writer.key("seconds");
    writer.value(seconds, 3);
    writer.key("filesystems");
    writer.beginArray();
    for (const VolumeVerification &volume : outcome.result.volumes) {
        writer.beginObject();
        writer.member("filesystem", volumeKindKey(volume.kind));
        writer.member("files", volume.files);
        writer.member("folders", volume.folders);
        writer.member("renamed", volume.renamed);
        writer.member("leftOut", volume.leftOut);
        writer.member("differences", outcome.result.differences.countIn(volume.kind));
        writer.endObject();
    }
    writer.endArray();
    writer.textsMember("notes", outcome.result.notes);
    writeDifferenceMembers(writer, outcome.result.differences);
    return endReport(writer, outcome.problem);
}

} // namespace Tessaron::Tool
