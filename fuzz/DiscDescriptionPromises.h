#pragma once

#include "fuzz/FuzzTarget.h"

#include "platform/disctracks/CueSheetReader.h"
#include "platform/disctracks/CueSheetWriter.h"

inline constexpr std::uint64_t describedFileLength = std::uint64_t(80) * 60 * 75 * 2352;

/// Files of any name, all of this length.
inline Tessaron::CueSheetFiles describedFiles()
{
    Tessaron::CueSheetFiles files;
    files.measure = [](Tessaron::CueFile *) -> Tessaron::Result<std::optional<std::uint64_t>> {
        return std::optional(describedFileLength);
    };
    files.cdText = [](const QByteArray &name) -> Tessaron::Result<QByteArray> { return name; };
    return files;
}

inline std::uint64_t blocksWithinTheirFile(const std::vector<Tessaron::CueRun> &runs, std::uint32_t blockSize)
{
    std::uint64_t blocks = 0;
    for (const Tessaron::CueRun &run : runs) {
        require(run.offset <= describedFileLength && run.blocks <= (describedFileLength - run.offset) / blockSize,
                "a run lies within its file");
        blocks += run.blocks;
    }
    return blocks;
}

/// What every reader of descriptions promises of what it makes of any bytes.
inline void checkDescription(const Tessaron::Result<Tessaron::CueSheet> &sheet)
{
    if (!sheet) {
        require(!sheet.error().localizedFailureReason().isEmpty()
                    && !sheet.error().localizedRecoverySuggestion().isEmpty(),
                "an error says what is wrong and what to do");
        return;
    }
    require(!sheet->contents.check(), "the table makes sense");
    const std::vector<const Tessaron::DiscTrack *> tracks = sheet->contents.tracks();
    require(tracks.size() == sheet->places.size(), "each track has a place");
    for (std::size_t index = 0; index < tracks.size(); ++index) {
        const Tessaron::DiscTrack &track = *tracks[index];
        const Tessaron::CueTrackPlace &place = sheet->places[index];
        const std::uint64_t blocks =
            blocksWithinTheirFile(place.pregap, track.blockSize) + blocksWithinTheirFile(place.data, track.blockSize);
        require(blocks == track.storedBlocks(), "a track's runs are its blocks");
    }
    const Tessaron::Result<Tessaron::CueSheetText> written = Tessaron::cueSheetForImage(sheet->contents, "disc.bin");
    require(written || !written.error().localizedFailureReason().isEmpty(), "a sheet or a reason");
}
