#pragma once

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/disctracks/TableOfContents.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QVariantMap>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

// The one place that reads and writes the keys of track properties. To know what a track is, ask for its
// DiscTrack.

/// Whether a track's length must be among its properties already.
enum class TrackLengthIs {
    Stated,
    PlannedLater, ///< as with filesystems: 0 until then, and a block size that is missing is 2048
};

/// The track that the properties describe, numbered 1. Numbers for a recorder are kept as they are stated, odd pairs
/// included; what a property does not say is absent or 0. Gaps are taken as not stored: who stores them says so.
///
/// An error of NSOSStatusErrorDomain (paramErr) when the block size is missing, 0 or above 65536, when a length is
/// missing or no number, or when a track's postgap is longer than the track.
[[nodiscard]] TESSARON_EXPORT Result<DiscTrack> discTrackOfProperties(const QVariantMap &properties,
                                                                      TrackLengthIs length = TrackLengthIs::Stated);

/// Block size (bytes), block type and length (blocks) as the properties state them, sound or not; no value where they
/// do not.
struct TESSARON_EXPORT StatedBlocks {
    std::optional<std::uint64_t> size;
    std::optional<std::int32_t> type;
    std::optional<std::uint64_t> length;

    /// Length times size, where what is not stated counts as 0; no value beyond 64 bits.
    [[nodiscard]] std::optional<std::uint64_t> bytes() const;
};
[[nodiscard]] TESSARON_EXPORT StatedBlocks statedBlocks(const QVariantMap &properties);

/// What the maker of a track states of it, whether it makes sense or not. Unlike a DiscTrack it tells what is stated
/// as 0 from what is not stated.
struct StatedTrack {
    std::optional<std::uint32_t> blockSize; ///< bytes
    std::optional<std::uint64_t> length; ///< blocks
    std::optional<std::uint64_t> pregap; ///< blocks
    std::vector<std::uint32_t> indexPoints; ///< frames; not stated when empty
    RecordingNumbers recording;
    CopyState copyState = CopyState::Unstated;
    bool hasPreEmphasis = false; ///< not stated when false, as the next one
    bool hasFourChannels = false;
};
/// The properties that say what is stated, put over `others`; what is not stated stays as it is there.
[[nodiscard]] TESSARON_EXPORT QVariantMap propertiesOfStatedTrack(const StatedTrack &stated,
                                                                  const QVariantMap &others = {});

/// The properties that describe the track, put over `others`, which keep the keys that do not describe the track.
/// discTrackOfProperties() leads back, except for the number and what no property says: ISRC, whether gaps are stored,
/// and a kind without numbers for a recorder.
[[nodiscard]] TESSARON_EXPORT QVariantMap propertiesOfDiscTrack(const DiscTrack &track, const QVariantMap &others = {});

/// The sessions and tracks of a layout, numbered, each session behind the one before; a session without tracks is left
/// out, as it is when the layout is written. `lengthOfFilesystem` is for the tracks that have a folder. An error for a
/// layout without tracks, a null track, or a track that discTrackOfProperties() refuses.
[[nodiscard]] TESSARON_EXPORT Result<TableOfContents>
tableOfContentsOfLayout(const DRLayout &layout, TrackLengthIs lengthOfFilesystem = TrackLengthIs::PlannedLater);

/// Puts the lengths that were planned among the properties of the layout's tracks that have a folder
/// (DRTrackLengthKey), so that the layout describes what was written. `contents` is the table of this layout.
TESSARON_EXPORT void putPlannedLengths(const TableOfContents &contents, const DRLayout &layout);

} // namespace Tessaron
