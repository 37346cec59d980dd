#include "platform/disctracks/CueSheetPlacer.h"

#include "platform/disctracks/CueSheetErrors.h"
#include "platform/disctracks/DescribedFilePath.h"

#include <algorithm>

namespace Tessaron
{

CueSheetPlacer::CueSheetPlacer(CueSheet *sheet, std::vector<SpokenTrack> &tracks,
                               const std::vector<std::uint32_t> &fileLines, const CueSheetFiles &files)
    : m_sheet(*sheet)
    , m_tracks(tracks)
    , m_fileLines(fileLines)
    , m_files(files)
{
}

NSError CueSheetPlacer::place()
{
    m_sheet.places.resize(m_tracks.size());
    std::vector<CuePoint> points;
    for (std::size_t track = 0; track < m_tracks.size(); ++track) {
        for (const CueIndex &index : m_tracks[track].indexes)
            points.push_back({track, index});
    }
    for (std::size_t at = 0; at < points.size(); ++at) {
        const bool isLastOfFile = at + 1 == points.size() || points[at + 1].index.file != points[at].index.file;
        NSError error = begin(points[at], at > 0 ? &points[at - 1] : nullptr);
        if (!error && isLastOfFile)
            error = takeRest(points[at]);
        if (error)
            return error;
    }
    reportUnusedFiles(points);
    return finishTracks();
}

NSError CueSheetPlacer::begin(const CuePoint &point, const CuePoint *before)
{
    const CueIndex &index = point.index;
    const bool isFirstOfFile = !before || before->index.file != index.file;
    if (before && index.file < before->index.file)
        return cueSheetError(index.line, QStringLiteral("This INDEX lies in an earlier file than the one in front."),
                             QStringLiteral("Put the indexes into the order of their numbers."));
    if (NSError error = isFirstOfFile ? openFile(index.file) : NSError())
        return error;
    if (index.frame < m_frame)
        return cueSheetError(index.line, QStringLiteral("This INDEX lies before the one in front of it."),
                             QStringLiteral("Put the indexes of a file into the order of their times."));
    // At the start of a file there may be the rest of what the track began in another one, or its pregap.
    const bool isPregap = isFirstOfFile ? index.number < 2 : before->index.number == 0;
    const std::size_t owner = isFirstOfFile ? point.track : before->track;
    if (NSError error = takeBlocks(index.frame - m_frame, owner, isPregap, index))
        return error;
    DiscTrack &track = m_tracks[point.track].track;
    if (index.number < 2)
        return {};
    if (track.length <= (track.indexPoints.empty() ? 0 : track.indexPoints.back()))
        return cueSheetError(index.line, QStringLiteral("This INDEX lies where the one in front of it does."),
                             QStringLiteral("Remove it, or correct its time."));
    track.indexPoints.push_back(track.length);
    return {};
}

NSError CueSheetPlacer::openFile(std::size_t file)
{
    m_offset = 0;
    m_frame = 0;
    m_length.reset();
    if (!m_files.measure)
        return {};
    const Result<std::optional<std::uint64_t>> length = m_files.measure(&m_sheet.files[file]);
    if (!length) {
        const QString remedy = length.error().localizedRecoverySuggestion();
        return cueSheetError(
            m_fileLines[file],
            QStringLiteral("\"%1\" cannot be read: %2").arg(nameOf(file), length.error().localizedFailureReason()),
            remedy.isEmpty() ? QStringLiteral("Put the file beside the sheet, or correct its name there.") : remedy);
    }
    m_length = *length;
    if (const QString note = noteOfOtherName(m_sheet.files[file]); !note.isEmpty())
        m_sheet.notes.push_back({m_fileLines[file], note});
    return {};
}

NSError CueSheetPlacer::takeBlocks(std::uint64_t blocks, std::size_t owner, bool isPregap, const CueIndex &upTo)
{
    DiscTrack &track = m_tracks[owner].track;
    const std::uint64_t bytes = blocks * track.blockSize; // times have nine digits at most: far below 2^63
    if (m_length && bytes > *m_length - m_offset) {
        const std::uint64_t end = m_frame + (*m_length - m_offset) / track.blockSize;
        return cueSheetError(upTo.line,
                             QStringLiteral("%1 lies beyond the end of \"%2\", which is at %3.")
                                 .arg(MSF::ofFrames(std::int64_t(upTo.frame)).text(), nameOf(upTo.file),
                                      MSF::ofFrames(std::int64_t(end)).text()),
                             QStringLiteral("Use the file that the sheet was made for, or correct the time."));
    }
    CueTrackPlace &place = m_sheet.places[owner];
    place.restBytes = 0; // it was not the last file
    std::vector<CueRun> &runs = isPregap ? place.pregap : place.data;
    const bool continues = !runs.empty() && runs.back().file == upTo.file
        && runs.back().offset + runs.back().blocks * track.blockSize == m_offset;
    if (continues)
        runs.back().blocks += blocks;
    else if (blocks > 0)
        runs.push_back({upTo.file, m_offset, blocks});
    (isPregap ? track.pregap.length : track.length) += blocks;
    m_offset += bytes;
    m_frame += blocks;
    return {};
}

NSError CueSheetPlacer::takeRest(const CuePoint &point)
{
    if (!m_length) {
        m_sheet.places[point.track].isLengthKnown = false;
        return {};
    }
    const std::uint32_t blockSize = m_tracks[point.track].track.blockSize;
    const std::uint64_t rest = *m_length - m_offset;
    if (rest % blockSize != 0)
        m_sheet.notes.push_back({m_fileLines[point.index.file],
                                 QStringLiteral("\"%1\" ends with %2 bytes that fill no block of %3.")
                                     .arg(nameOf(point.index.file))
                                     .arg(rest % blockSize)
                                     .arg(blockSize)});
    const bool isPregap = point.index.number == 0;
    if (NSError error = takeBlocks(rest / blockSize, point.track, isPregap, point.index))
        return error;
    if (!isPregap && m_sheet.files[point.index.file].isSound())
        m_sheet.places[point.track].restBytes = std::uint32_t(rest % blockSize);
    return {};
}

void CueSheetPlacer::reportUnusedFiles(const std::vector<CuePoint> &points)
{
    for (std::size_t file = 0; file < m_sheet.files.size(); ++file) {
        const auto liesIn = [file](const CuePoint &point) { return point.index.file == file; };
        if (std::ranges::none_of(points, liesIn))
            m_sheet.notes.push_back({m_fileLines[file], QStringLiteral("No track lies in \"%1\".").arg(nameOf(file))});
    }
}

NSError CueSheetPlacer::finishTracks()
{
    std::vector<DiscSession> &sessions = m_sheet.contents.sessions;
    std::size_t session = 0;
    for (std::size_t number = 0; number < m_tracks.size(); ++number) {
        const SpokenTrack &spoken = m_tracks[number];
        DiscTrack track = spoken.track;
        if (track.length == 0 && m_sheet.places[number].isLengthKnown)
            return cueSheetError(spoken.line, QStringLiteral("TRACK %1 has no blocks.").arg(track.number),
                                 QStringLiteral("Correct the times of its INDEX lines, or of the next track's."));
        if (m_sheet.places[number].isLengthKnown && !track.indexPoints.empty()
            && track.indexPoints.back() >= track.length)
            return cueSheetError(spoken.line, QStringLiteral("TRACK %1 ends at its last INDEX.").arg(track.number),
                                 QStringLiteral("Remove that INDEX, or correct its time or the next track's."));
        track.pregap.isStored = track.pregap.length > 0;
        if (spoken.pregap && track.pregap.isStored)
            return cueSheetError(
                spoken.line,
                QStringLiteral("TRACK %1 has a PREGAP, but also blocks of its file in front.").arg(track.number),
                QStringLiteral("Remove PREGAP, or let INDEX 01 be at 00:00:00."));
        if (spoken.pregap)
            track.pregap.length = *spoken.pregap;
        track.length += track.postgap.length;
        if (sessions.empty() || spoken.session > session)
            sessions.emplace_back();
        session = std::max(session, spoken.session);
        sessions.back().tracks.push_back(std::move(track));
    }
    if (m_tracks.front().track.number != 1) {
        m_sheet.notes.push_back({m_tracks.front().line, QStringLiteral("The tracks are counted from 1 here.")});
        m_sheet.contents.numberTracks();
    }
    m_sheet.contents.joinSessions();
    return {};
}

} // namespace Tessaron
