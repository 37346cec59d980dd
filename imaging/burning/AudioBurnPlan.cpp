#include "imaging/burning/AudioBurnPlan.h"

#include "platform/discrecording/burn/TrackWriter.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace Tessaron
{

namespace
{

class PipedTrackWriter final : public TrackWriter
{
public:
    /// `isLast`: nothing may come behind this track.
    PipedTrackWriter(DiscTrack track, bool isLast, SoundPipe &pipe)
        : m_track(std::move(track))
        , m_isLast(isLast)
        , m_pipe(pipe)
    {
    }

    [[nodiscard]] TrackGap pregap() const override { return m_track.pregap; }
    [[nodiscard]] NSError plan(BlockAddress, const std::stop_token &, const std::function<void(double)> &) override
    {
        return {};
    }
    [[nodiscard]] DiscTrack track() const override { return m_track; }

    [[nodiscard]] NSError write(BlockStream &stream) override
    {
        constexpr std::uint64_t mostBlocks = 256;
        std::vector<char> buffer;
        for (std::uint64_t left = m_track.storedBlocks(); left > 0;) {
            const std::uint64_t count = std::min(left, mostBlocks);
            buffer.resize(std::size_t(count * m_track.blockSize));
            if (NSError error = m_pipe.take(buffer.data(), buffer.size()))
                return error;
            if (NSError error = stream.writeBlocks(buffer.data(), std::uint32_t(count), m_track.blockSize))
                return error;
            left -= count;
        }
        return m_isLast ? m_pipe.finish() : NSError();
    }

private:
    const DiscTrack m_track;
    const bool m_isLast;
    SoundPipe &m_pipe;
};

} // namespace

BurnPlan planPipedDisc(const TableOfContents &contents, SoundPipe &pipe)
{
    BurnPlan plan;
    plan.contents = contents;
    plan.bytes = contents.storedBytes();
    const std::vector<const DiscTrack *> tracks = plan.contents.tracks();
    for (const DiscTrack *const track : tracks)
        plan.writers.push_back(std::make_unique<PipedTrackWriter>(*track, track == tracks.back(), pipe));
    return plan;
}

} // namespace Tessaron
