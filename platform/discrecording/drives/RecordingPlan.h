#pragma once

#include "platform/discrecording/drives/DriveDescription.h"
#include "platform/discrecording/drives/DriveGrowth.h"
#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// How a disc is to be written.
struct RecordingOptions {
    bool isSimulated = false; ///< with the laser off
    bool leavesOpen = false; ///< further sessions may follow; also: a disc that has some is written to
    std::uint32_t speed = 0; ///< thousands of bytes a second; 0 for the fastest
    bool overburns = false; ///< asks for more than the disc says that it holds
    std::optional<DriveGrowth> growth = {}; ///< of what is overwritten: keeps what is there
};

/// How a session is brought onto the disc.
enum class RecordingMode : std::uint8_t {
    AtOnce, ///< session at once on a CD, disc at once on a DVD
    TrackByTrack, ///< track at once on a CD; incrementally, or with a track for each session, on others
};

/// One track as a drive takes it.
struct RecordedTrack {
    DiscTrack track; ///< as the table has it
    std::uint64_t blocks = 0; ///< that come from the maker of the disc
    std::uint32_t blockSize = 2048; ///< bytes that the drive takes of each: 2048 of data, 2352 of sound
    std::uint32_t keptFrom = 0; ///< where these begin in a stored block
    std::uint64_t madePregap = 0; ///< blocks of silence that the drive is told to write in front
    std::uint64_t madePostgap = 0; ///< and behind
    std::vector<std::uint64_t> indexPoints; ///< from index 0 or 1 on, in blocks of the source; empty for the usual ones
    bool hasIndex0 = false; ///< the first of these is index 0
};

struct RecordedSession {
    std::vector<RecordedTrack> tracks;
    RecordingMode mode = RecordingMode::AtOnce;
    bool leavesOpen = false;
    std::optional<std::uint64_t> firstBlock; ///< where what is overwritten is written from; none for its begin
    QByteArray cdTextPacks; ///< empty for none
    QByteArray mediaCatalogNumber; ///< 13 digits, or empty
    std::uint64_t blocksOnDisc = 0; ///< all that it needs
};

/// A disc as a drive is told to write it.
struct RecordingPlan {
    std::vector<RecordedSession> sessions;
    std::uint64_t blocksOnDisc = 0; ///< sessions, and what lies between them
    QStringList lost; ///< what the table says and this disc cannot have, each a sentence without the full stop
};

/// Fits a table of contents to the disc that is in a drive. Refuses, before anything is written, what the disc cannot
/// take: errors of NSOSStatusErrorDomain with what to do about it, and a DriveFaultKey.
[[nodiscard]] Result<RecordingPlan> planRecording(const TableOfContents &contents, const DiscDescription &disc,
                                                  const RecordingOptions &options);

} // namespace Tessaron
