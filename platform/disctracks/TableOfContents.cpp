#include "platform/disctracks/TableOfContents.h"

#include <algorithm>
#include <limits>

namespace Tessaron
{

const QString DiscTracksErrorDomain = QStringLiteral("DiscTracksErrorDomain");

namespace
{

constexpr std::size_t mostTracks = 99;
constexpr std::size_t mostIndexPoints = 98; // index 2 to 99
/// No sum of a disc's blocks or bytes leaves 63 bits when no track exceeds this.
constexpr std::uint64_t mostBlocksOfTrack = std::uint64_t(1) << 38;

NSError contentsError(DiscTracksErrorCode code, const QString &reason)
{
    return NSError(DiscTracksErrorDomain, int(code), {{NSLocalizedFailureReasonErrorKey, reason}});
}

NSError trackError(const DiscTrack &track, const QString &reason)
{
    return contentsError(DiscTracksErrorCode::TrackShape, QStringLiteral("Track %1 %2.").arg(track.number).arg(reason));
}

NSError checkTrack(const DiscTrack &track)
{
    if (track.blockSize == 0 || track.blockSize > std::numeric_limits<std::uint16_t>::max())
        return trackError(track, QStringLiteral("has blocks of %1 bytes").arg(track.blockSize));
    if (std::max(track.length, track.pregap.length) > mostBlocksOfTrack)
        return contentsError(
            DiscTracksErrorCode::TooLarge,
            QStringLiteral("Track %1 of %2 blocks is longer than any disc.").arg(track.number).arg(track.length));
    if (track.postgap.length > track.length)
        return trackError(track, QStringLiteral("is shorter than its postgap"));
    if (track.indexPoints.size() > mostIndexPoints)
        return trackError(track, QStringLiteral("has more index points than 98"));
    std::uint64_t previous = 0;
    for (std::size_t index = 0; index < track.indexPoints.size(); ++index) {
        const std::uint64_t point = track.indexPoints[index];
        if (point <= previous || point >= track.length)
            return trackError(track, QStringLiteral("does not hold its index %1").arg(index + 2));
        previous = point;
    }
    return {};
}

} // namespace

std::uint64_t DiscSession::blocksOnDisc() const
{
    std::uint64_t blocks = 0;
    for (const DiscTrack &track : tracks)
        blocks += track.blocksOnDisc();
    return blocks;
}

TableOfContents TableOfContents::withTrack(const DiscTrack &track)
{
    TableOfContents contents;
    contents.sessions.push_back({BlockAddress(), {track}});
    return contents;
}

std::size_t TableOfContents::trackCount() const
{
    std::size_t count = 0;
    for (const DiscSession &session : sessions)
        count += session.tracks.size();
    return count;
}

std::vector<const DiscTrack *> TableOfContents::tracks() const
{
    std::vector<const DiscTrack *> all;
    for (const DiscSession &session : sessions) {
        for (const DiscTrack &track : session.tracks)
            all.push_back(&track);
    }
    return all;
}

const DiscTrack *TableOfContents::track(std::uint32_t number) const
{
    for (const DiscSession &session : sessions) {
        const auto found = std::ranges::find(session.tracks, number, &DiscTrack::number);
        if (found != session.tracks.end())
            return &*found;
    }
    return nullptr;
}

BlockAddress TableOfContents::firstBlockOfTrack(std::uint32_t number) const
{
    for (const DiscSession &session : sessions) {
        BlockAddress address = session.firstBlock;
        for (const DiscTrack &track : session.tracks) {
            if (track.number == number)
                return address + std::int64_t(track.pregap.length);
            address = address + std::int64_t(track.blocksOnDisc());
        }
    }
    return {};
}

std::uint64_t TableOfContents::storedBytes() const
{
    std::uint64_t bytes = 0;
    for (const DiscTrack *const track : tracks())
        bytes += track->storedBytes();
    return bytes;
}

void TableOfContents::numberTracks()
{
    std::uint32_t number = 0;
    for (DiscSession &session : sessions) {
        for (DiscTrack &track : session.tracks)
            track.number = ++number;
    }
}

/// Tracks may still have any lengths here: check() refuses those that cannot be counted, and must be reached.
void TableOfContents::joinSessions()
{
    constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();
    for (std::size_t index = 1; index < sessions.size(); ++index) {
        const DiscSession &before = sessions[index - 1];
        std::int64_t end = 0;
        if (__builtin_add_overflow(before.firstBlock.number(), before.blocksOnDisc(), &end))
            end = greatest;
        sessions[index].firstBlock = BlockAddress(end);
    }
}

NSError TableOfContents::check() const
{
    if (sessions.empty())
        return contentsError(DiscTracksErrorCode::NoTracks, QStringLiteral("There is no track."));
    std::uint32_t number = 0;
    for (const DiscSession &session : sessions) {
        if (session.tracks.empty())
            return contentsError(DiscTracksErrorCode::NoTracks, QStringLiteral("A session has no track."));
        for (const DiscTrack &track : session.tracks) {
            if (++number > mostTracks)
                return contentsError(DiscTracksErrorCode::TrackNumber,
                                     QStringLiteral("There are more tracks than the 99 that a disc can have."));
            if (track.number != number)
                return contentsError(
                    DiscTracksErrorCode::TrackNumber,
                    QStringLiteral("Track %1 stands where track %2 belongs.").arg(track.number).arg(number));
            if (NSError error = checkTrack(track))
                return error;
        }
    }
    return {};
}

} // namespace Tessaron
