#include "tools/tessaron/AudioCommand.h"

#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/DiscOrders.h"
#include "tools/tessaron/ImageReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/SoundReport.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"

#include <algorithm>
#include <unistd.h>

namespace Tessaron::Tool
{

namespace
{

constexpr std::size_t shownPlaces = 20;

QString lengthText(std::uint64_t frames)
{
    return MSF::ofFrames(std::int64_t(frames)).text();
}

void printDamage(const AudioImageTrack &track, std::size_t most)
{
    const AudioDamageReport &damage = track.damage;
    const std::size_t shown = std::min(most, damage.places.size());
    for (std::size_t place = 0; place < shown; ++place)
        printDiagnostic(QStringLiteral("%1, at %2 s: %3")
                            .arg(stringWithFileSystemRepresentation(track.source),
                                 QString::number(damage.places[place].seconds, 'f', 3), damage.places[place].what));
    if (damage.count > shown)
        printDiagnostic(QStringLiteral("%1: and %2 more places like these")
                            .arg(stringWithFileSystemRepresentation(track.source))
                            .arg(damage.count - shown));
}

/// What normalizing has found and done.
QString loudnessText(const AudioImageTrack &track)
{
    if (!track.loudness)
        return QStringLiteral(", silent");
    return QStringLiteral(", %1 LUFS, true peak %2 dBTP, gain %3 dB")
        .arg(*track.loudness, 0, 'f', 1)
        .arg(track.truePeak.value_or(0), 0, 'f', 1)
        .arg(*track.gain, 0, 'f', 1);
}

void writeData(JsonWriter &writer, const DiscImageResult &data)
{
    writer.key("data");
    writer.beginObject();
    writer.member("volumeName", data.volumeName);
    writer.member("bytes", data.bytes);
    writer.member("files", data.files);
    writer.member("folders", data.folders);
    writeStorageMembers(writer, data);
    writer.endObject();
}

} // namespace

AudioCommand::AudioCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_run(arguments)
{
}

ExitStatus AudioCommand::run()
{
    m_problem = problemOfStandardOutput(m_arguments);
    if (!m_problem)
        makeImage();
    const double seconds = m_run.seconds();
    print(seconds);
    return exitStatusAfterReport(!m_arguments.json || writeJson(seconds), exitStatus());
}

void AudioCommand::makeImage()
{
    AudioImageOrder order;
    m_problem = setSoundOptions(&order, m_arguments);
    if (m_problem)
        return;
    if (m_arguments.output == "-")
        order.outputDescriptor = STDOUT_FILENO;
    else
        order.output = m_arguments.output;
    order.dataFolder = m_arguments.dataFolder;
    order.volumeName = m_arguments.volumeName;
    order.format = m_arguments.format;
    order.capacity = m_arguments.capacity;
    order.isSynchronized = m_arguments.isSynchronized;
    AudioImageJob job(order);
    m_result = m_run.resultOf(job);
    m_problem = problemOf(m_result.error);
}

ExitStatus AudioCommand::exitStatus() const
{
    if (m_problem)
        return exitStatusFor(m_problem);
    return m_result.isComplete() ? ExitStatus::Done : ExitStatus::Incomplete;
}

void AudioCommand::printTracks() const
{
    for (const AudioImageTrack &track : m_result.tracks) {
        QString line = QStringLiteral("track %1: %2 at %3, %4")
                           .arg(track.number, 2, 10, QLatin1Char('0'))
                           .arg(lengthText(track.frames), lengthText(track.firstFrame),
                                stringWithFileSystemRepresentation(track.source));
        if (track.gain)
            line += loudnessText(track);
        printDiagnostic(line);
    }
}

void AudioCommand::print(double seconds) const
{
    const bool isQuiet = m_arguments.verbosity == Verbosity::Quiet;
    const bool isVerbose = m_arguments.verbosity == Verbosity::Verbose;
    const bool hasData = !m_arguments.dataFolder.isEmpty();
    if (hasData)
        printStorage(m_arguments, m_result.data, !m_problem);
    if (m_problem) {
        printProblem(m_problem);
        return;
    }
    if (isVerbose)
        printTracks();
    else if (!isQuiet && m_arguments.normalization == AudioNormalization::Album)
        printDiagnostic(
            QStringLiteral("gain %1 dB for all tracks").arg(m_result.tracks.front().gain.value_or(0), 0, 'f', 1));
    for (const QString &note : m_result.notes) {
        if (!isQuiet)
            printDiagnostic(note);
    }
    for (const AudioImageTrack &track : m_result.tracks)
        printDamage(track, isVerbose ? AudioDamageReport::mostDescribed : shownPlaces);
    if (!isQuiet)
        printShortTracks(m_result.tracks);
    if (!isQuiet || m_result.areTextsLost) {
        for (const QString &change : m_result.changedTexts)
            printDiagnostic(change);
    }
    if (isQuiet)
        return;
    QString line = QStringLiteral("made %1: %2, %3, %4 (minutes, seconds, frames), %5 s")
                       .arg(stringWithFileSystemRepresentation(m_arguments.output),
                            counted(m_result.tracks.size() + (hasData ? 1 : 0), "track", "tracks"),
                            sizeText(m_result.bytes), lengthText(m_result.frames), QString::number(seconds, 'f', 1));
    if (exitStatus() == ExitStatus::Incomplete)
        line += QStringLiteral("; not everything is as it should be, see above");
    printDiagnostic(line);
}

bool AudioCommand::writeJson(double seconds) const
{
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("audio"), exitStatus());
    writer.pathMember("output", m_result.imagePath.isEmpty() ? m_arguments.output : m_result.imagePath);
    if (!m_result.cueSheetPath.isEmpty())
        writer.pathMember("cueSheet", m_result.cueSheetPath);
    if (!m_result.cdTextPath.isEmpty())
        writer.pathMember("cdTextFile", m_result.cdTextPath);
    writer.member("format", nameOfDiscFormat(m_arguments.format));
    writer.member("bytes", m_result.bytes);
    writer.member("frames", m_result.frames);
    writer.key("seconds");
    writer.value(seconds, 3);
    writeSoundTracks(writer, "tracks", m_result.tracks);
    if (!m_arguments.dataFolder.isEmpty())
        writeData(writer, m_result.data);
    writer.textsMember("notes", m_result.notes);
    writer.textsMember("changedTexts", m_result.changedTexts);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
