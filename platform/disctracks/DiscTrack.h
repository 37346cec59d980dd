#pragma once

#include "platform/disctracks/BlockAddress.h"
#include "platform/disctracks/SectorForm.h"
#include "platform/foundation/Export.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// What a track's control bits say of the right to copy it (IEC 60908; serial copy management).
enum class CopyState : std::uint8_t {
    Unstated = 0, ///< nothing was said; a drive forbids copies then
    CopyrightFree = 1, ///< may be copied
    ProtectedOriginal = 2, ///< may be copied once
    ProtectedCopy = 3, ///< is such a copy: the copy bit changes back and forth
};

/// Blocks of silence or zeros in front of a track or at its end.
struct TrackGap {
    std::uint64_t length = 0; ///< blocks
    /// Whether the image holds these blocks. When it does not, they are made when the disc is written.
    bool isStored = false;

    /// Without blocks it does not matter whether they are stored.
    friend bool operator==(const TrackGap &one, const TrackGap &other)
    {
        return one.length == other.length && (one.length == 0 || one.isStored == other.isStored);
    }
};

/// What a recorder is told of a track, in the numbers of MMC's cue sheet, where they were stated. They may
/// contradict the track's kind (image makers have their ways) and are carried as they are.
struct RecordingNumbers {
    std::optional<std::int32_t> trackMode; ///< control bits: 0 audio, 4 data, 5 data in increments
    std::optional<std::int32_t> dataForm;
    std::optional<std::int32_t> blockType; ///< 0 audio, 8 mode 1, 9 to 13 the forms of mode 2
    std::optional<std::int32_t> sessionFormat; ///< 0 CD-DA or CD-ROM, 16 CD-I, 32 CD-ROM XA

    friend bool operator==(const RecordingNumbers &, const RecordingNumbers &) = default;
};

/// One track of a disc. A value.
struct TESSARON_EXPORT DiscTrack {
    std::uint32_t number = 1; ///< 1 to 99, through all sessions
    TrackKind kind = TrackKind::Mode1;
    std::uint32_t blockSize = 2048; ///< bytes that the image holds for each block; never 0
    std::uint64_t length = 0; ///< blocks from index 1 to the track's end, the postgap included, the pregap not
    TrackGap pregap; ///< index 0, in front of `length`
    TrackGap postgap; ///< the last blocks of `length`
    std::vector<std::uint64_t> indexPoints; ///< where index 2, 3 … begin, in blocks from index 1; at most 98
    QByteArray isrc; ///< 12 characters (ISO 3901), or empty
    CopyState copyState = CopyState::Unstated;
    bool hasPreEmphasis = false;
    bool hasFourChannels = false;
    RecordingNumbers recording;

    [[nodiscard]] bool isAudio() const { return kind == TrackKind::Audio; }
    /// No value for a block size that no form of sector has.
    [[nodiscard]] std::optional<SectorForm> sectorForm() const { return sectorFormOfSize(blockSize); }
    /// Blocks that the image holds.
    [[nodiscard]] std::uint64_t storedBlocks() const
    {
        return (pregap.isStored ? pregap.length : 0) + length - (postgap.isStored ? 0 : postgap.length);
    }
    [[nodiscard]] std::uint64_t storedBytes() const { return storedBlocks() * blockSize; }
    /// Blocks that the disc has, the pregap included.
    [[nodiscard]] std::uint64_t blocksOnDisc() const { return pregap.length + length; }

    friend bool operator==(const DiscTrack &, const DiscTrack &) = default;
};

/// The numbers that a recorder needs for a track of this kind and size: those stated, and in place of the others the
/// usual ones (MMC, "SEND CUE SHEET"). Absent ones remain for kinds and sizes that a recorder knows no numbers for.
[[nodiscard]] TESSARON_EXPORT RecordingNumbers recordingNumbers(const DiscTrack &track);

/// The kind that MMC's data block type means for sectors of this size.
[[nodiscard]] TESSARON_EXPORT TrackKind trackKindOfBlockType(std::optional<std::int32_t> blockType,
                                                             std::uint32_t blockSize);

} // namespace Tessaron
