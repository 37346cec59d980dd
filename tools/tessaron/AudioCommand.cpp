#include "tools/tessaron/AudioCommand.h"

#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JobRun.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
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

void writeTrack(JsonWriter &writer, const AudioImageTrack &track)
{
    writer.beginObject();
    writer.pathMember("source", track.source);
    writer.member("samples", track.samples);
    writer.member("pregapFrames", track.pregap);
    writer.member("firstFrame", track.firstFrame);
    writer.member("frames", track.frames);
    writer.member("title", track.title);
    writer.member("performer", track.performer);
    writer.member("isrc", QString::fromLatin1(track.isrc));
    writer.member("tooShort", track.isTooShort);
    writer.member("damagedPlaces", track.damage.count);
    writer.key("damage");
    writer.beginArray();
    for (const AudioDamage &place : track.damage.places) {
        writer.beginObject();
        writer.key("seconds");
        writer.value(place.seconds, 3);
        writer.member("message", place.what);
        writer.endObject();
    }
    writer.endArray();
    writer.endObject();
}

} // namespace

AudioCommand::AudioCommand(const Arguments &arguments)
    : m_arguments(arguments)
    , m_start(std::chrono::steady_clock::now())
    , m_display(ProgressDisplay::create(arguments.progress, arguments.verbosity))
{
}

AudioCommand::~AudioCommand() = default;

ExitStatus AudioCommand::run()
{
    QList<QByteArray> isrcs;
    m_problem = readIsrcs(&isrcs);
    if (!m_problem)
        makeImage(isrcs);
    m_display->clear();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
    print(time.count());
    if (!m_arguments.json || writeJson(time.count()))
        return exitStatus();
    printDiagnostic(QStringLiteral("the report cannot be written to standard output: %1").arg(systemText(errno)));
    return ExitStatus::Failed;
}

Problem AudioCommand::readIsrcs(QList<QByteArray> *isrcs) const
{
    if (m_arguments.isrcFile.isEmpty())
        return {};
    QFile file(QFile::decodeName(m_arguments.isrcFile));
    constexpr qint64 longestText = 1 << 16; // 99 lines are some 1500 bytes
    if (!QFileInfo(file.fileName()).isFile() || !file.open(QIODevice::ReadOnly) || file.size() > longestText)
        return {Problem::Kind::Source,
                QStringLiteral("the ISRCs in %1 cannot be read").arg(quoted(m_arguments.isrcFile)),
                QStringLiteral("Name a text with one code in a line."), m_arguments.isrcFile};
    QByteArray text = file.readAll();
    text.replace("\r\n", "\n");
    while (text.endsWith('\n'))
        text.chop(1);
    for (const QByteArray &line : text.split('\n'))
        *isrcs << line.trimmed();
    return {};
}

void AudioCommand::makeImage(const QList<QByteArray> &isrcs)
{
    AudioImageOrder order;
    order.sources = m_arguments.paths;
    order.output = m_arguments.output;
    order.format = m_arguments.format;
    order.gap = m_arguments.gap;
    order.isGapless = m_arguments.isGapless;
    order.capacity = m_arguments.capacity;
    order.hasCDText = m_arguments.hasCDText;
    order.isrcs = isrcs;
    order.isSynchronized = m_arguments.isSynchronized;
    AudioImageJob job(order);
    m_result = runToItsEnd(job, m_display.get());
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
    for (std::size_t number = 0; number < m_result.tracks.size(); ++number) {
        const AudioImageTrack &track = m_result.tracks[number];
        printDiagnostic(QStringLiteral("track %1: %2 at %3, %4")
                            .arg(number + 1, 2, 10, QLatin1Char('0'))
                            .arg(lengthText(track.frames), lengthText(track.firstFrame),
                                 stringWithFileSystemRepresentation(track.source)));
    }
}

void AudioCommand::print(double seconds) const
{
    const bool isQuiet = m_arguments.verbosity == Verbosity::Quiet;
    const bool isVerbose = m_arguments.verbosity == Verbosity::Verbose;
    if (m_problem) {
        printProblem(m_problem);
        return;
    }
    if (isVerbose)
        printTracks();
    for (const AudioImageTrack &track : m_result.tracks)
        printDamage(track, isVerbose ? AudioDamageReport::mostDescribed : shownPlaces);
    for (std::size_t number = 0; number < m_result.tracks.size() && !isQuiet; ++number) {
        if (m_result.tracks[number].isTooShort)
            printDiagnostic(
                QStringLiteral("track %1 is shorter than four seconds, which many recorders refuse").arg(number + 1));
    }
    if (!isQuiet || m_result.areTextsLost) {
        for (const QString &change : m_result.changedTexts)
            printDiagnostic(change);
    }
    if (isQuiet)
        return;
    QString line = QStringLiteral("made %1: %2, %3, %4 (minutes, seconds, frames), %5 s")
                       .arg(stringWithFileSystemRepresentation(m_arguments.output),
                            counted(m_result.tracks.size(), "track", "tracks"), sizeText(m_result.bytes),
                            lengthText(m_result.frames), QString::number(seconds, 'f', 1));
    if (exitStatus() == ExitStatus::Incomplete)
        line += QStringLiteral("; not everything is as it should be, see above");
    printDiagnostic(line);
}

bool AudioCommand::writeJson(double seconds) const
{
    JsonWriter writer(STDOUT_FILENO);
    writer.beginObject();
    writer.member("version", jsonVersion);
    writer.member("command", QStringLiteral("audio"));
    writer.member("result", resultName(exitStatus()));
    writer.pathMember("output", m_result.imagePath.isEmpty() ? m_arguments.output : m_result.imagePath);
    if (!m_result.cueSheetPath.isEmpty())
        writer.pathMember("cueSheet", m_result.cueSheetPath);
    writer.member("format", nameOfDiscFormat(m_arguments.format));
    writer.member("bytes", m_result.bytes);
    writer.member("frames", m_result.frames);
    writer.key("seconds");
    writer.value(seconds, 3);
    writer.key("tracks");
    writer.beginArray();
    for (const AudioImageTrack &track : m_result.tracks)
        writeTrack(writer, track);
    writer.endArray();
    writer.key("changedTexts");
    writer.beginArray();
    for (const QString &change : m_result.changedTexts)
        writer.value(change);
    writer.endArray();
    writeErrorMember(writer, m_problem);
    writer.endObject();
    return writer.finish();
}

} // namespace Tessaron::Tool
