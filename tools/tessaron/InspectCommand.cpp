#include "tools/tessaron/InspectCommand.h"

#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"
#include "tools/tessaron/VolumeJson.h"

#include <algorithm>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

QString volumeLine(const VolumeReader &reader, const VolumeCensus &census)
{
    const DiscVolumeFacts &facts = reader.facts();
    QString line = QStringLiteral("%1 “%2”: %3 of %4 bytes, %5, %6")
                       .arg(volumeKindName(facts.kind), facts.name, counted(facts.blockCount, "block", "blocks"))
                       .arg(facts.blockSize)
                       .arg(counted(census.files, "file", "files"), counted(census.folders, "folder", "folders"));
    if (census.symbolicLinks > 0)
        line += QStringLiteral(", ") + counted(census.symbolicLinks, "symbolic link", "symbolic links");
    if (census.others > 0)
        line += QStringLiteral(", ") + counted(census.others, "special file", "special files");
    line += QStringLiteral(", ") + sizeText(census.bytes);
    if (facts.created)
        line += QStringLiteral(", made ") + timeText(*facts.created) + QStringLiteral(" UTC");
    return line;
}

/// "iso" is what that word means to people, an image with a filesystem of optical discs; others are plain blocks.
QString formatName(const OpenedDiscImage &image)
{
    const auto isOfDisc = [](const FoundVolume &volume) { return volume.kind != VolumeKind::HFSPlus; };
    switch (image.layout) {
    case DiscImageLayout::Blocks:
        return std::any_of(image.volumes.begin(), image.volumes.end(), isOfDisc) ? QStringLiteral("iso")
                                                                                 : QStringLiteral("blocks");
    case DiscImageLayout::CueSheet:
        if (const QByteArray end = image.cueSheet.right(4).toLower(); end == ".ccd" || end == ".toc")
            return QString::fromLatin1(end.sliced(1));
        return QStringLiteral("bin");
    case DiscImageLayout::RawSectors:
        return QStringLiteral("raw");
    case DiscImageLayout::VANT:
        return QStringLiteral("vant");
    }
    return {};
}

QString trackLine(const DiscImageTrack &track)
{
    QString line = QStringLiteral("session %1, track %2: %3, %4 at byte %5")
                       .arg(track.session)
                       .arg(track.number)
                       .arg(QString::fromLatin1(track.mode), counted(track.length, "block", "blocks"))
                       .arg(track.offset);
    if (track.pregap > 0)
        line += QStringLiteral(", pregap %1").arg(track.pregap);
    if (track.isPregapInFile)
        line += QStringLiteral(" (in the file)");
    if (track.postgap > 0)
        line += QStringLiteral(", postgap %1").arg(track.postgap);
    if (!track.file.isEmpty())
        line += QStringLiteral(", in %1").arg(quoted(track.file));
    return line;
}

QString bootLine(const BootEntry &entry)
{
    QString line = QStringLiteral("starts computers: %1, %2, %3 of 512 bytes at byte %4")
                       .arg(bootPlatformName(entry.platform), bootEmulationName(entry.emulation),
                            counted(entry.sectorCount, "sector", "sectors"))
                       .arg(entry.offset);
    if (!entry.isBootable)
        line += QStringLiteral(", marked as not bootable");
    return line;
}

QString nameOf(VolumeProblem::Kind kind)
{
    switch (kind) {
    case VolumeProblem::Kind::Damaged:
        return QStringLiteral("damaged");
    case VolumeProblem::Kind::Truncated:
        return QStringLiteral("truncated");
    case VolumeProblem::Kind::Remains:
        return QStringLiteral("remains");
    case VolumeProblem::Kind::Unsupported:
        return QStringLiteral("unsupported");
    }
    return {};
}

} // namespace

InspectCommand::InspectCommand(const Arguments &arguments)
    : m_arguments(arguments)
{
}

ExitStatus InspectCommand::run()
{
    inspect();
    m_problem = problemOf(m_result.error);
    if (!m_problem)
        m_problem = judge();
    printErrors();
    if (m_problem)
        printProblem(m_problem);
    const bool hasReport = !m_result.error
        && (!m_result.image->volumes.empty() || !m_result.image->tracks.empty()
            || !m_result.image->source->partitions().empty());
    const bool isWritten = m_arguments.json ? writeJson() : (!hasReport || writeText());
    return exitStatusAfterReport(isWritten, exitStatusFor(m_problem));
}

void InspectCommand::inspect()
{
    InspectJob job(m_arguments.paths.first());
    m_result = m_run.resultOf(job);
}

Problem InspectCommand::judge() const
{
    const OpenedDiscImage &image = *m_result.image;
    const QByteArray &path = image.path;
    const auto isUnsupported = [](const FoundVolume &volume) {
        return volume.error.domain() == DiscImageErrorDomain
            && volume.error.code() == qint64(DiscImageErrorCode::Unsupported);
    };
    const auto isDamaged = [&](const FoundVolume &volume) { return volume.error && !isUnsupported(volume); };
    bool hasDamage = m_result.problemCount > m_result.unsupportedCount;
    bool hasUnsupported = m_result.unsupportedCount > 0;
    bool isEmpty = image.tracks.empty();
    forEachVolume([&](const FoundVolume &volume, const VolumeCensus &census, const QString &) {
        isEmpty = false;
        hasUnsupported = hasUnsupported || isUnsupported(volume);
        hasDamage = hasDamage || isDamaged(volume) || census.failureCount > 0;
    });
    for (const DiscImagePart &part : image.parts)
        hasDamage = hasDamage || part.error;
    if (hasDamage)
        return {Problem::Kind::Source, QStringLiteral("the image %1 is damaged").arg(quoted(path)), {}, path};
    if (hasUnsupported)
        return {Problem::Kind::Source,
                QStringLiteral("the image %1 has a filesystem or a trailer of a kind that is not supported")
                    .arg(quoted(path)),
                {},
                path};
    if (isEmpty && !image.source->partitions().empty())
        return {
            Problem::Kind::Source,
            QStringLiteral("no filesystem that is known here was found in %1, which has partitions").arg(quoted(path)),
            QStringLiteral("Copy a partition into a file of its own to have that looked at."), path};
    if (isEmpty)
        return {
            Problem::Kind::Source, QStringLiteral("nothing that is known here was found in %1").arg(quoted(path)),
            QStringLiteral("Known are ISO 9660, Rock Ridge, Joliet, UDF, HFS+, VANT, cue sheets, .ccd and .toc files."),
            path};
    return {};
}

void InspectCommand::printErrors() const
{
    if (!m_result.image)
        return;
    const OpenedDiscImage &image = *m_result.image;
    for (const QString &note : image.notes)
        printDiagnostic(note);
    for (const VolumeProblem &problem : m_result.problems)
        printDiagnostic(volumeProblemText(problem));
    if (m_result.problemCount > m_result.problems.size())
        printDiagnostic(QStringLiteral("… and %1 more").arg(m_result.problemCount - m_result.problems.size()));
    for (const DiscImagePart &part : image.parts) {
        if (part.error)
            printDiagnostic(
                QStringLiteral("%1 cannot be read: %2").arg(part.name, part.error.localizedFailureReason()));
    }
    forEachVolume([this](const FoundVolume &volume, const VolumeCensus &census, const QString &part) {
        const QString place = part.isEmpty() ? QString() : part + QStringLiteral(", ");
        const QString kind = place + volumeKindName(volume.kind);
        if (volume.error && !hasProblemIn(volume.kind, part))
            printDiagnostic(QStringLiteral("%1: %2").arg(kind, volume.error.localizedFailureReason()));
        for (const VolumeCensus::Failure &failure : census.failures)
            printDiagnostic(QStringLiteral("%1, %2: %3")
                                .arg(kind, quoted('/' + failure.path), failure.error.localizedFailureReason()));
        if (census.failureCount > census.failures.size())
            printDiagnostic(QStringLiteral("… and %1 more").arg(census.failureCount - census.failures.size()));
    });
}

void InspectCommand::forEachVolume(
    const std::function<void(const FoundVolume &, const VolumeCensus &, const QString &part)> &function) const
{
    for (std::size_t index = 0; index < m_result.censuses.size(); ++index)
        function(m_result.image->volumes[index], m_result.censuses[index], {});
    for (std::size_t part = 0; part < m_result.partCensuses.size(); ++part) {
        const DiscImagePart &description = m_result.image->parts[part];
        for (std::size_t index = 0; index < m_result.partCensuses[part].size(); ++index)
            function(description.volumes[index], m_result.partCensuses[part][index], description.name);
    }
}

/// What was found in a partition, for people.
QString InspectCommand::contentsOf(std::size_t partition) const
{
    const OpenedDiscImage &image = *m_result.image;
    const DiscImagePartition &entry = image.source->partitions()[partition];
    QStringList names;
    for (const FoundVolume &volume : image.volumes) {
        const bool isThere = volume.kind == VolumeKind::HFSPlus
            ? volume.reader && volume.reader->facts().offset >= entry.offset
                && volume.reader->facts().offset - entry.offset < entry.length
            : entry.offset == 0;
        if (isThere)
            names << volumeKindName(volume.kind);
    }
    for (const DiscImagePart &part : image.parts) {
        if (!part.partition || image.source->partitions()[*part.partition].offset != entry.offset)
            continue;
        for (const FoundVolume &volume : part.volumes)
            names << volumeKindName(volume.kind);
    }
    return names.isEmpty() ? QStringLiteral("not read") : QStringLiteral("holds ") + names.join(QStringLiteral(", "));
}

bool InspectCommand::writeText() const
{
    const OpenedDiscImage &image = *m_result.image;
    QByteArray text = printable(image.path) + ": " + sizeText(image.source->fileLength()).toUtf8() + " ("
        + QByteArray::number(qulonglong(image.source->fileLength())) + " bytes), " + formatName(image).toUtf8() + '\n';
    forEachVolume([&text](const FoundVolume &volume, const VolumeCensus &census, const QString &part) {
        const QString place = part.isEmpty() ? QString() : part + QStringLiteral(": ");
        if (volume.reader)
            text += "  " + printable(place + volumeLine(*volume.reader, census)) + '\n';
    });
    for (const DiscImageTrack &track : image.tracks)
        text += "  " + printable(trackLine(track)) + '\n';
    for (std::size_t index = 0; index < image.source->partitions().size(); ++index) {
        const DiscImagePartition &partition = image.source->partitions()[index];
        const bool isMapItself = partition.type == QStringLiteral("Apple_partition_map");
        text += "  "
            + printable(QStringLiteral("%1: partition “%2” of type %3: %4 bytes at byte %5%6")
                            .arg(partitionSchemeName(partition.scheme), partition.name, partition.type)
                            .arg(partition.length)
                            .arg(partition.offset)
                            .arg(isMapItself ? QString() : QStringLiteral(", ") + contentsOf(index)))
            + '\n';
    }
    if (m_result.bootCatalog) {
        for (const BootEntry &entry : m_result.bootCatalog->entries)
            text += "  " + printable(bootLine(entry)) + '\n';
    }
    if (image.source->vantImage() && !image.source->vantImage()->cdTextBlocks.isEmpty())
        text += "  "
            + counted(std::uint64_t(image.source->vantImage()->cdTextBlocks.size()), "block", "blocks").toUtf8()
            + " of CD-TEXT\n";
    return writeAll(STDOUT_FILENO, text);
}

void InspectCommand::writeVolumes(JsonWriter &writer) const
{
    writer.key("filesystems");
    writer.beginArray();
    forEachVolume([&writer](const FoundVolume &volume, const VolumeCensus &census, const QString &part) {
        writer.beginObject();
        writer.member("filesystem", volumeKindKey(volume.kind));
        if (!part.isEmpty())
            writer.member("part", part);
        if (volume.reader)
            writeVolumeFacts(writer, volume.reader->facts());
        writer.member("files", census.files);
        writer.member("folders", census.folders);
        writer.member("symbolicLinks", census.symbolicLinks);
        writer.member("specialFiles", census.others);
        writer.member("bytes", census.bytes);
        writer.member("damageCount", census.failureCount + (volume.error ? 1 : 0));
        writer.key("damage");
        writer.beginArray();
        if (volume.error)
            writeImageError(writer, {}, volume.error);
        for (const VolumeCensus::Failure &failure : census.failures)
            writeImageError(writer, '/' + failure.path, failure.error);
        writer.endArray();
        writer.endObject();
    });
    writer.endArray();
}

void InspectCommand::writeTracks(JsonWriter &writer) const
{
    writer.key("tracks");
    writer.beginArray();
    for (const DiscImageTrack &track : m_result.image ? m_result.image->tracks : std::vector<DiscImageTrack>()) {
        writer.beginObject();
        writer.member("session", track.session);
        writer.member("track", track.number);
        writer.member("mode", QString::fromLatin1(track.mode));
        writer.member("blockSize", track.blockSize);
        writer.member("offset", track.offset);
        writer.member("blocks", track.length);
        writer.member("pregap", track.pregap);
        writer.member("pregapInFile", track.isPregapInFile);
        writer.member("postgap", track.postgap);
        if (!track.file.isEmpty())
            writer.pathMember("file", track.file);
        writer.endObject();
    }
    writer.endArray();
    writer.key("partitions");
    writer.beginArray();
    if (m_result.image) {
        for (const DiscImagePartition &partition : m_result.image->source->partitions()) {
            writer.beginObject();
            writer.member("map", partitionSchemeName(partition.scheme));
            writer.member("name", partition.name);
            writer.member("type", partition.type);
            writer.member("offset", partition.offset);
            writer.member("bytes", partition.length);
            writer.endObject();
        }
    }
    writer.endArray();
}

void InspectCommand::writeProblems(JsonWriter &writer) const
{
    writer.member("problemCount", m_result.problemCount);
    writer.key("problems");
    writer.beginArray();
    for (const VolumeProblem &problem : m_result.problems) {
        writer.beginObject();
        writer.member("kind", nameOf(problem.kind));
        if (problem.volume)
            writer.member("filesystem", volumeKindKey(*problem.volume));
        if (!problem.part.isEmpty())
            writer.member("part", problem.part);
        writer.member("structure", problem.structure);
        writer.member("message", problem.message);
        writer.member("offset", problem.offset);
        writer.member("visible", problem.isVisible);
        writer.endObject();
    }
    writer.endArray();
}

void InspectCommand::writeBootCatalog(JsonWriter &writer) const
{
    writer.key("boot");
    writer.beginArray();
    for (const BootEntry &entry : m_result.bootCatalog ? m_result.bootCatalog->entries : std::vector<BootEntry>()) {
        writer.beginObject();
        writer.member("platform", bootPlatformName(entry.platform));
        writer.member("emulation", bootEmulationName(entry.emulation));
        writer.member("bootable", entry.isBootable);
        writer.member("sectors", entry.sectorCount);
        writer.member("offset", entry.offset);
        writer.endObject();
    }
    writer.endArray();
}

bool InspectCommand::hasProblemIn(VolumeKind volume, const QString &part) const
{
    return std::any_of(m_result.problems.begin(), m_result.problems.end(),
                       [&](const VolumeProblem &problem) { return problem.volume == volume && problem.part == part; });
}

bool InspectCommand::writeJson() const
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("inspect"), exitStatusFor(m_problem));
    writer.pathMember("image", m_result.image ? m_result.image->path : m_arguments.paths.first());
    if (m_result.image && !m_result.image->cueSheet.isEmpty())
        writer.pathMember("cueSheet", m_result.image->cueSheet);
    writer.key("format");
    if (m_result.image)
        writer.value(formatName(*m_result.image));
    else
        writer.null();
    writer.member("bytes", m_result.image ? m_result.image->source->fileLength() : 0);
    writer.key("seconds");
    writer.value(m_run.seconds(), 3);
    writeVolumes(writer);
    writeTracks(writer);
    writeBootCatalog(writer);
    writeProblems(writer);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
