#pragma once

#include "platform/disctracks/CDText.h"
#include "platform/disctracks/DiscTrack.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QByteArray>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// Domain of the errors that concern descriptions of discs; the codes are DiscTracksErrorCode.
TESSARON_EXPORT extern const QString DiscTracksErrorDomain;

enum class DiscTracksErrorCode : int {
    NoTracks = 1, ///< no session, or a session without tracks
    TrackNumber = 2, ///< more than 99 tracks, or numbers that do not follow each other
    TrackShape = 3, ///< lengths, gaps or index points of a track contradict each other
    TooLarge = 4, ///< sizes beyond what 64 bits or a format can say
    CueSheet = 5, ///< a cue sheet cannot be read, or cannot say what it should
    CDText = 6, ///< packs cannot be read, or texts do not fit
};

/// The tracks that are written in one go.
struct DiscSession {
    /// Address of the session's first block, which is the first one of its first track's pregap: -150 on a CD whose
    /// first track has the usual pregap of two seconds.
    BlockAddress firstBlock;
    std::vector<DiscTrack> tracks; ///< not empty

    /// Blocks from `firstBlock` to the end of the last track.
    [[nodiscard]] TESSARON_EXPORT std::uint64_t blocksOnDisc() const;

    friend bool operator==(const DiscSession &, const DiscSession &) = default;
};

/// What a disc or an image of one consists of: sessions of tracks, and what is said of the whole disc. A value; it
/// knows nothing of the files that hold the blocks.
struct TESSARON_EXPORT TableOfContents {
    std::vector<DiscSession> sessions;
    QByteArray mediaCatalogNumber; ///< 13 digits (EAN), or empty
    CDText cdText;

    /// The table of a disc with one session of one track.
    [[nodiscard]] static TableOfContents withTrack(const DiscTrack &track);

    [[nodiscard]] std::size_t trackCount() const;
    /// The tracks of all sessions in order. The pointers hold until the table changes.
    [[nodiscard]] std::vector<const DiscTrack *> tracks() const;
    /// The track with this number, or null.
    [[nodiscard]] const DiscTrack *track(std::uint32_t number) const;
    /// The address of the track's index 1. The track must exist.
    [[nodiscard]] BlockAddress firstBlockOfTrack(std::uint32_t number) const;
    /// Bytes of all blocks that an image of this disc holds.
    [[nodiscard]] std::uint64_t storedBytes() const;
    /// Numbers the tracks from 1 through all sessions.
    void numberTracks();
    /// Lets each session but the first begin where the one before it ends, as it does in an image. On a disc a lead-out
    /// and a lead-in lie in between.
    void joinSessions();
    /// The null error when the table makes sense: 1 to 99 tracks in order, no session without tracks, block sizes, gaps
    /// and index points within their tracks, sums within 63 bits. What counts or is written by the table may rely on
    /// it.
    [[nodiscard]] NSError check() const;

    friend bool operator==(const TableOfContents &, const TableOfContents &) = default;
};

} // namespace Tessaron
