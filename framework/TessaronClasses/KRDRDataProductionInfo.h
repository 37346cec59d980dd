#pragma once

#include <array>
#include <cstdint>

namespace Tessaron
{

/// Where the sectors of one track lie in an image file, and what the track is; see KRDRDataProducer. Frames are
/// sectors. The numbers are the maker's: nothing here is checked.
struct KRDRDataProductionInfo {
    std::int64_t offsetInFile = 0; ///< bytes; of frame 0 of the numbers below
    std::uint32_t sectorSize = 0; ///< bytes in the file: 2048, 2324, 2332, 2336, 2352 or 2448
    std::uint32_t frameStart = 0; ///< first sector of the data
    std::uint32_t framesCount = 0; ///< sectors of data
    char hasPregapInfo = 0; ///< whether the track has a pregap
    char producePregapFromFile = 0; ///< whether the file holds its sectors; else it is zeros
    std::uint32_t pregapFrameStart = 0; ///< first sector of the pregap
    std::uint32_t pregapFramesCount = 0;
    std::uint32_t postgapFramesCount = 0; ///< zero sectors behind the data
    std::uint32_t numberOfIndexPoints = 0; ///< how many of the next are used
    std::array<std::uint32_t, 98> indexPointFrames = {};
    // Of audio that is decoded, in the source.
    float quickTimeStartSeconds = 0;
    float quickTimeDurationSeconds = 0; ///< rewritten when the next one is set
    char quickTimeDurationGoTillEndOfFile = 0;
    std::int32_t trackMode = 0; ///< one of KRDRTrackMode
    std::uint32_t options = 0; ///< bits of KRDRProductionOption

    friend bool operator==(const KRDRDataProductionInfo &, const KRDRDataProductionInfo &) = default;
};

/// What `trackMode` says.
namespace KRDRTrackMode
{
inline constexpr std::int32_t mode1 = 0;
inline constexpr std::int32_t mode2 = 1;
inline constexpr std::int32_t mode2Form1 = 2;
inline constexpr std::int32_t mode2Form2 = 3;
inline constexpr std::int32_t audio = 4;
inline constexpr std::int32_t decodedAudio = 5; ///< of an audio file or a movie
inline constexpr std::int32_t interactive = 6; ///< CD-I
} // namespace KRDRTrackMode

/// The bits of `options`.
namespace KRDRProductionOption
{
inline constexpr std::uint32_t copyrightFree = 1;
inline constexpr std::uint32_t copyrightProtectedOriginal = 4; ///< wins over copyrightFree
inline constexpr std::uint32_t preEmphasis = 8; ///< of audio
inline constexpr std::uint32_t fourChannels = 16; ///< of audio
/// The file's sectors have 2448 bytes, with subchannels; the 2048 bytes of user data of each are produced.
inline constexpr std::uint32_t sectorsWithSubchannel = 32;
} // namespace KRDRProductionOption

} // namespace Tessaron
