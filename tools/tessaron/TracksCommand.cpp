#include "tools/tessaron/TracksCommand.h"

#include "platform/foundation/FileSystemRepresentation.h"
#include "tools/tessaron/CommonReport.h"
#include "tools/tessaron/JsonWriter.h"
#include "tools/tessaron/StandardStreams.h"
#include "tools/tessaron/Text.h"

#include <algorithm>
#include <array>
#include <unistd.h>
#include <utility>

namespace Tessaron::Tool
{

namespace
{

struct TextName {
    CDTextKind kind;
    const char *name;
};
constexpr std::array textNames = {
    TextName{CDTextKind::Title, "title"},
    TextName{CDTextKind::Performer, "performer"},
    TextName{CDTextKind::Songwriter, "songwriter"},
    TextName{CDTextKind::Composer, "composer"},
    TextName{CDTextKind::Arranger, "arranger"},
    TextName{CDTextKind::Message, "message"},
    TextName{CDTextKind::DiscIdentification, "discIdentification"},
    TextName{CDTextKind::Genre, "genre"},
};

/// The text of a block for the disc (0) or its n-th track; empty without one.
QString textAt(const CDTextBlock &block, CDTextKind kind, std::size_t place)
{
    const auto found = block.texts.find(kind);
    // Texts begin with the disc's, then come those of the tracks from the block's first one on.
    const std::size_t first = block.firstTrack > 0 ? block.firstTrack - 1 : 0;
    if (found == block.texts.end() || (place > 0 && place <= first))
        return {};
    const std::size_t index = place == 0 ? 0 : place - first;
    return index < found->second.size() ? found->second[index] : QString();
}

/// “Title” by Performer, as far as the first language has them.
QString titleOf(const CDText &text, std::size_t place)
{
    if (text.isEmpty())
        return {};
    const QString title = textAt(text.blocks.front(), CDTextKind::Title, place);
    const QString performer = textAt(text.blocks.front(), CDTextKind::Performer, place);
    QString line = title.isEmpty() ? QString() : QStringLiteral("“%1”").arg(title);
    if (!performer.isEmpty())
        line += (line.isEmpty() ? QStringLiteral("by ") : QStringLiteral(" by ")) + performer;
    return line;
}

QString lengthText(std::uint64_t blocks)
{
    return QStringLiteral("%1 (%2)").arg(MSF::ofFrames(std::int64_t(blocks)).text(),
                                         counted(blocks, "block", "blocks"));
}

QString kindName(TrackKind kind)
{
    switch (kind) {
    case TrackKind::Unstated:
        return QStringLiteral("unknown");
    case TrackKind::Audio:
        return QStringLiteral("audio");
    case TrackKind::Mode1:
        return QStringLiteral("mode1");
    case TrackKind::Mode2Formless:
        return QStringLiteral("mode2");
    case TrackKind::Mode2Form1:
        return QStringLiteral("mode2form1");
    case TrackKind::Mode2Form2:
        return QStringLiteral("mode2form2");
    case TrackKind::Mode2Mixed:
        return QStringLiteral("mode2mixed");
    }
    return {};
}

QString trackLine(const DiscTrack &track, BlockAddress start, const CueTrackPlace &place, const QString &title)
{
    QString line = QStringLiteral("%1  %2/%3  at %4, %5")
                       .arg(track.number, 2)
                       .arg(kindName(track.kind))
                       .arg(track.blockSize)
                       .arg(MSF::ofFrames(std::max<std::int64_t>(start.number(), 0)).text(),
                            place.isLengthKnown ? lengthText(track.length) : QStringLiteral("length not known"));
    if (track.pregap.length > 0)
        line += QStringLiteral(", pregap %1%2")
                    .arg(MSF::ofFrames(std::int64_t(track.pregap.length)).text(),
                         track.pregap.isStored ? QString() : QStringLiteral(" (in no file)"));
    if (track.postgap.length > 0)
        line += QStringLiteral(", postgap %1").arg(MSF::ofFrames(std::int64_t(track.postgap.length)).text());
    for (std::size_t index = 0; index < track.indexPoints.size(); ++index)
        line += QStringLiteral(", index %1 at %2")
                    .arg(index + 2)
                    .arg(MSF::ofFrames(std::int64_t(track.indexPoints[index])).text());
    if (!track.isrc.isEmpty())
        line += QStringLiteral(", ISRC %1").arg(QString::fromLatin1(track.isrc));
    if (!title.isEmpty())
        line += QStringLiteral("  ") + title;
    return line;
}

} // namespace

TracksCommand::TracksCommand(const Arguments &arguments)
    : m_arguments(arguments)
{
}

ExitStatus TracksCommand::run()
{
    findTracks();
    for (const QString &note : m_result.disc.notes)
        printDiagnostic(note);
    m_problem = problemOf(m_result.error);
    if (m_problem)
        printProblem(m_problem);
    const bool isWritten = m_arguments.json ? writeJson() : (m_problem || writeText());
    return exitStatusAfterReport(isWritten, exitStatusFor(m_problem));
}

void TracksCommand::findTracks()
{
    TracksJob job(m_arguments.paths.first());
    m_result = m_run.resultOf(job);
}

bool TracksCommand::writeText() const
{
    const TableOfContents &contents = m_result.disc.disc.contents;
    QString head = stringWithFileSystemRepresentation(m_arguments.paths.first()) + QStringLiteral(": ")
        + counted(contents.trackCount(), "track", "tracks");
    if (!m_result.disc.isDescribed)
        head += QStringLiteral(", described by nothing: taken for data");
    if (const QString title = titleOf(contents.cdText, 0); !title.isEmpty())
        head += QStringLiteral(", ") + title;
    QByteArray text = printable(head) + '\n';
    std::size_t index = 0;
    for (std::size_t session = 0; session < contents.sessions.size(); ++session) {
        if (contents.sessions.size() > 1)
            text += "session " + QByteArray::number(qulonglong(session) + 1) + '\n';
        for (const DiscTrack &track : contents.sessions[session].tracks) {
            const CueTrackPlace &place = m_result.disc.disc.places[index++];
            text += printable(trackLine(track, contents.firstBlockOfTrack(track.number), place,
                                        titleOf(contents.cdText, track.number)))
                + '\n';
        }
    }
    return writeAll(STDOUT_FILENO, text);
}

/// Member "cdText": for each language that has some the texts of the disc (0) or a track.
void TracksCommand::writeTexts(JsonWriter &writer, std::size_t place) const
{
    writer.key("cdText");
    writer.beginArray();
    for (const CDTextBlock &block : m_result.disc.disc.contents.cdText.blocks) {
        bool isOpen = false;
        for (const TextName &known : textNames) {
            const QString text = textAt(block, known.kind, place);
            if (text.isEmpty())
                continue;
            if (!std::exchange(isOpen, true)) {
                writer.beginObject();
                writer.member("language", block.language);
            }
            writer.member(known.name, text);
        }
        if (isOpen)
            writer.endObject();
    }
    writer.endArray();
}

void TracksCommand::writeTrack(JsonWriter &writer, std::size_t session, const DiscTrack &track,
                               const CueTrackPlace &place) const
{
    const CueSheet &disc = m_result.disc.disc;
    writer.beginObject();
    writer.member("session", session + 1);
    writer.member("track", track.number);
    writer.member("kind", kindName(track.kind));
    writer.member("blockSize", track.blockSize);
    writer.member("start", disc.contents.firstBlockOfTrack(track.number).number());
    writer.key("length");
    if (place.isLengthKnown)
        writer.value(track.length);
    else
        writer.null();
    writer.member("pregap", track.pregap.length);
    writer.member("pregapInFile", track.pregap.length > 0 && track.pregap.isStored);
    writer.member("postgap", track.postgap.length);
    writer.key("indexes");
    writer.beginArray();
    for (const std::uint64_t point : track.indexPoints)
        writer.value(point);
    writer.endArray();
    if (!track.isrc.isEmpty())
        writer.member("isrc", QString::fromLatin1(track.isrc));
    writer.member("preEmphasis", track.hasPreEmphasis);
    writer.member("fourChannels", track.hasFourChannels);
    writer.member("copyPermitted", track.copyState == CopyState::CopyrightFree);
    if (!place.data.empty()) {
        writer.pathMember("file", disc.files[place.data.front().file].path);
        writer.member("offset", place.data.front().offset);
    }
    writeTexts(writer, track.number);
    writer.endObject();
}

bool TracksCommand::writeJson() const
{
    const TableOfContents &contents = m_result.disc.disc.contents;
    JsonWriter writer(STDOUT_FILENO);
    beginReport(writer, QStringLiteral("tracks"), exitStatusFor(m_problem));
    writer.pathMember("image", m_arguments.paths.first());
    if (!m_result.disc.description.isEmpty())
        writer.pathMember("description", m_result.disc.description);
    writer.member("described", !m_problem && m_result.disc.isDescribed);
    if (!contents.mediaCatalogNumber.isEmpty())
        writer.member("catalogNumber", QString::fromLatin1(contents.mediaCatalogNumber));
    writeTexts(writer, 0);
    writer.key("tracks");
    writer.beginArray();
    std::size_t index = 0;
    for (std::size_t session = 0; session < contents.sessions.size(); ++session) {
        for (const DiscTrack &track : contents.sessions[session].tracks)
            writeTrack(writer, session, track, m_result.disc.disc.places[index++]);
    }
    writer.endArray();
    writer.textsMember("notes", m_result.disc.notes);
    writer.key("seconds");
    writer.value(m_run.seconds(), 3);
    return endReport(writer, m_problem);
}

} // namespace Tessaron::Tool
