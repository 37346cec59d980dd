#pragma once

#include <QByteArray>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// A track as a cue sheet describes it.
struct CueTrack {
    std::uint32_t number = 0;
    QByteArray mode; ///< as written: "MODE1/2048", "AUDIO" …
    std::uint32_t blockSize = 0; ///< bytes of the file for one block; 0 for an unknown mode
    bool isData = false;
    std::uint32_t dataOffset = 0; ///< of the 2048 bytes of user data in a block
    QByteArray fileName; ///< as written in the sheet
    std::uint32_t pregap = 0; ///< frames that are not in the file
    std::int64_t firstFrame = -1; ///< where the track begins in its file, its own pregap in the file included
    std::int64_t startFrame = -1; ///< where index 1 is
};

/// Reads a cue sheet. What is no line of one is passed over, as other programs do; a sheet without a track is empty. At
/// most 99 tracks.
[[nodiscard]] std::vector<CueTrack> tracksOfCueSheet(const QByteArray &text);

} // namespace Tessaron
