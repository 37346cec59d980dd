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

/// Gives one track after the other its place.
class TrackPlacer
{
public:
    TrackPlacer(bool isGapless, std::uint64_t firstFrame)
        : m_isGapless(isGapless)
        , m_position(firstFrame * samplesPerFrame)
    {
        m_layout.firstFrame = firstFrame;
    }

    void place(const AlbumTrack &track)
    {
        AudioTrackPlace place;
        if (!m_isGapless || track.silence > 0)
            align();
        const std::uint64_t begin = framesHolding(m_position);
        m_position += track.silence * samplesPerFrame;
        put(track.pregap);
        const std::uint64_t firstSample = m_position;
        place.firstFrame = framesHolding(firstSample);
        const bool hasPregap = track.silence > 0 || !track.pregap.empty();
        place.pregap = hasPregap ? place.firstFrame - begin : 0;
        for (const std::uint64_t point : track.indexPoints)
            place.indexPoints.push_back(framesHolding(firstSample + point) - place.firstFrame);
        put(track.sound);
        if (track.postgap > 0)
            align();
        place.postgap = track.postgap;
        m_position += track.postgap * samplesPerFrame;
        place.frames = framesHolding(m_position) - place.firstFrame;
        m_layout.places.push_back(std::move(place));
    }

    [[nodiscard]] AudioLayout take()
    {
        m_layout.frames = framesHolding(m_position) - m_layout.firstFrame;
        return std::move(m_layout);
    }

private:
    void align() { m_position = framesHolding(m_position) * samplesPerFrame; }

    void put(const std::vector<SoundRun> &runs)
    {
        for (const SoundRun &run : runs) {
            m_layout.pieces.push_back({run, m_position});
            m_position += run.samples;
        }
    }

    const bool m_isGapless;
    std::uint64_t m_position; ///< samples
    AudioLayout m_layout;
};

} // namespace

AudioLayout audioLayoutOf(const std::vector<AlbumTrack> &tracks, bool isGapless, std::uint64_t firstFrame)
{
    TrackPlacer placer(isGapless, firstFrame);
    for (const AlbumTrack &track : tracks)
        placer.place(track);
    return placer.take();
}

std::vector<DiscTrack> discTracksOf(const std::vector<AlbumTrack> &tracks, const AudioLayout &layout)
{
    std::vector<DiscTrack> result;
    for (std::size_t number = 0; number < tracks.size(); ++number) {
        const AudioTrackPlace &place = layout.places[number];
        DiscTrack track;
        track.kind = TrackKind::Audio;
        track.blockSize = CDSound::bytesPerFrame;
        track.length = place.frames;
        track.pregap = {place.pregap, true};
        track.postgap = {place.postgap, true};
        track.indexPoints = place.indexPoints;
        const DiscTrack &marks = tracks[number].marks;
        track.isrc = marks.isrc;
        track.copyState = marks.copyState;
        track.hasPreEmphasis = marks.hasPreEmphasis;
        track.hasFourChannels = marks.hasFourChannels;
        result.push_back(std::move(track));
    }
    return result;
}

TableOfContents contentsOf(std::vector<DiscTrack> tracks)
{
    TableOfContents contents;
    DiscSession &session = contents.sessions.emplace_back();
    session.tracks = std::move(tracks);
    DiscTrack &first = session.tracks.front();
    if (first.pregap.length == 0) {
        session.firstBlock = BlockAddress(-firstPregap);
        first.pregap = {std::uint64_t(firstPregap), false};
    }
    contents.numberTracks();
    return contents;
}

} // namespace Tessaron
