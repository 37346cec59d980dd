#include "tools/tessaron/ExtractCommand.h"

#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"

#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

/// What is wrong with a track that was taken out all the same.
QStringList complaintsAbout(const ExtractedTrack &track)
{
    QStringList lines;
    if (track.damagedSectors > 0)
        lines << QStringLiteral("track %1: %2 damaged, the first one is block %3; their data was taken as it is")
                     .arg(track.number)
                     .arg(counted(track.damagedSectors, "sector is", "sectors are"))
                     .arg(track.firstDamagedSector);
    if (track.cutSectors > 0)
        lines << QStringLiteral("track %1: %2 longer data, of which 2048 bytes were taken; the first one is block %3")
                     .arg(track.number)
                     .arg(counted(track.cutSectors, "sector has", "sectors have"))
                     .arg(track.firstCutSector);
    for (const AudioDamage &place : track.damage.places)
        lines << QStringLiteral("track %1: at %2 s of its file: %3")
                     .arg(track.number)
                     .arg(place.seconds, 0, 'f', 3)
                     .arg(place.what);
    if (track.damage.count > track.damage.places.size())
        lines << QStringLiteral("track %1: and %2 more places like these")
                     .arg(track.number)
                     .arg(track.damage.count - track.damage.places.size());
    return lines;
}

} // namespace

ExtractCommand::ExtractCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

ExitStatus ExtractCommand::run()
{
    extract();
    const double seconds = m_run.seconds();
    print(seconds);
    return exitStatusAfterReport(!m_arguments.json || writeJson(seconds), status());
}

void ExtractCommand::extract()
{
    ExtractOrder order;
    order.image = m_arguments.paths.first();
    order.track = m_arguments.track;
    order.output = m_arguments.output;
    order.sound = m_arguments.sound;
    order.isHiddenSoundTaken = m_arguments.takesHiddenSound;
    order.isSynchronized = m_arguments.isSynchronized;
    ExtractJob job(order);
    m_result = m_run.resultOf(job);
    m_problem = problemOf(m_result.error);
}

ExitStatus ExtractCommand::status() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    return m_result.isComplete() ? ExitStatus::Done : ExitStatus::Incomplete;
}

void ExtractCommand::print(double seconds) const
{
    for (const QString &note : m_result.notes)
        printDiagnostic(note);
    if (m_problem) {
        printProblem(m_problem);
        return;
    }
    const bool isQuiet = m_arguments.verbosity == Verbosity::Quiet;
    for (const ExtractedTrack &track : m_result.tracks) {
        for (const QString &complaint : complaintsAbout(track))
            printDiagnostic(complaint);
        if (isQuiet)
            continue;
        QString line = QStringLiteral("track %1: %2, %3, %4")
                           .arg(track.number)
                           .arg(stringWithFileSystemRepresentation(track.path), sizeText(track.bytes),
                                track.isAudio ? MSF::ofFrames(std::int64_t(track.blocks)).text()
                                              : counted(track.blocks, "block", "blocks"));
        if (track.pregapLeftOut > 0)
            line += QStringLiteral("; without its pregap of %1").arg(counted(track.pregapLeftOut, "block", "blocks"));
        if (track.hasPreEmphasis)
            line += QStringLiteral("; with pre-emphasis, which the file cannot say and a player has to undo");
        printDiagnostic(line);
    }
    if (!isQuiet && m_result.tracks.size() > 1)
        printDiagnostic(QStringLiteral("took out %1 in %2 s")
                            .arg(counted(m_result.tracks.size(), "track", "tracks"), QString::number(seconds, 'f', 1)));
}

bool ExtractCommand::writeJson(double seconds) const
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("extract"), status());
    writer.pathMember("image", m_arguments.paths.first());
    writer.pathMember("output", m_arguments.output);
    writer.key("tracks");
    writer.beginArray();
    for (const ExtractedTrack &track : m_result.tracks) {
        writer.beginObject();
        writer.member("track", track.number);
        writer.member("kind", track.isAudio ? QStringLiteral("audio") : QStringLiteral("data"));
        writer.pathMember("path", track.path);
        writer.member("bytes", track.bytes);
        writer.member("blocks", track.blocks);
        writer.member("pregapLeftOut", track.pregapLeftOut);
        writer.member("preEmphasis", track.hasPreEmphasis);
        writer.member("checked", track.isChecked);
        writer.member("damagedSectors", track.damagedSectors);
        writer.member("cutSectors", track.cutSectors);
        writer.member("damagedPlaces", track.damage.count);
        writer.endObject();
    }
    writer.endArray();
    writer.textsMember("notes", m_result.notes);
    writer.key("seconds");
    writer.value(seconds, 3);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
