#include "imaging/jobs/AudioTrackLayout.h"

#include "platform/quicktime/CDSound.h"

namespace Tessaron
{

namespace
{

constexpr std::uint64_t samplesPerFrame = CDSound::samplesPerFrame;
/// What every CD has in front of its first track, and no image (IEC 60908).
constexpr std::int64_t firstPregap = 150;

std::uint64_t framesHolding(std::uint64_t samples)
{
    return (samples + samplesPerFrame - 1) / samplesPerFrame;
}

} // namespace

std::vector<AudioTrackPlace> audioTrackPlaces(const std::vector<std::uint64_t> &lengths, std::uint32_t gap,
                                              bool isGapless)
{
    std::vector<AudioTrackPlace> places;
    places.reserve(lengths.size());
    std::uint64_t position = 0; // samples
    for (const std::uint64_t length : lengths) {
        AudioTrackPlace place;
        if (!isGapless || gap > 0)
            position = framesHolding(position) * samplesPerFrame;
        if (!places.empty()) {
            place.pregap = gap;
            position += gap * samplesPerFrame;
        }
        place.firstSample = position;
        place.samples = length;
        place.firstFrame = framesHolding(position);
        position += length;
        place.frames = framesHolding(position) - place.firstFrame;
        places.push_back(place);
    }
    return places;
}

std::uint64_t framesOf(const std::vector<AudioTrackPlace> &places)
{
    return places.empty() ? 0 : places.back().firstFrame + places.back().frames;
}

TableOfContents contentsOf(const std::vector<AudioTrackPlace> &places)
{
    TableOfContents contents;
    DiscSession &session = contents.sessions.emplace_back();
    session.firstBlock = BlockAddress(-firstPregap);
    for (const AudioTrackPlace &place : places) {
        DiscTrack track;
        track.kind = TrackKind::Audio;
        track.blockSize = CDSound::bytesPerFrame;
        track.length = place.frames;
        track.pregap = {place.pregap, true};
        if (session.tracks.empty())
            track.pregap = {std::uint64_t(firstPregap), false};
        session.tracks.push_back(track);
    }
    contents.numberTracks();
    return contents;
}

} // namespace Tessaron
