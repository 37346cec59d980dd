#pragma once

#include "platform/discrecording/burn/BlockPipeline.h"
#include "platform/discrecording/burn/TrackWriter.h"
#include "platform/disctracks/SectorCoding.h"
#include "platform/disctracks/TrackSubchannel.h"

#include <optional>
#include <vector>

namespace Tessaron
{

class DRFolder;

/// Writes one disc image: that of a folder tree, which it plans first, or one that was planned elsewhere.
class ImageTrackWriter final : public TrackWriter
{
public:
    /// The masks of the tree's objects decide which filesystems the image has. The tree is let go of once the image is
    /// planned; until then it must not change.
    /// `described` says in which form of sectors the image is written and what lies around it; its length is not
    /// looked at. canWrite() must be true of it.
    explicit ImageTrackWriter(std::shared_ptr<DRFolder> root, const DiscTrack &described = {});
    /// Writes an image that was planned before. With options, their sizes are used; file runs may be left only for a
    /// sink that copies files, and for blocks of user data alone.
    explicit ImageTrackWriter(std::shared_ptr<const BlockImage> image,
                              std::optional<BlockPipeline::Options> options = {}, const DiscTrack &described = {});
    ~ImageTrackWriter() override;

    /// True when the track's kind and block size can hold a filesystem: see SectorEncoder.
    [[nodiscard]] static bool canWrite(const DiscTrack &described);

    [[nodiscard]] TrackGap pregap() const override { return m_described.pregap; }
    [[nodiscard]] NSError plan(BlockAddress begin, const std::stop_token &cancellation,
                               const std::function<void(double)> &progress) override;
    [[nodiscard]] DiscTrack track() const override;
    [[nodiscard]] TrackFacts facts() const override { return m_facts; }
    /// Readers may still be at work when it returns with an error: the destructor joins them.
    [[nodiscard]] NSError write(BlockStream &stream) override;

private:
    [[nodiscard]] NSError checkLength(BlockAddress firstBlock) const;
    [[nodiscard]] NSError writePieces(BlockStream &stream);
    [[nodiscard]] NSError writePostgap(BlockStream &stream);
    /// Writes blocks of 2048 bytes in the track's form of sectors.
    [[nodiscard]] NSError writeUserData(BlockStream &stream, const void *userData, std::uint32_t blockCount);

    const DiscTrack m_described; ///< but for the length
    const SectorEncoder m_encoder;
    std::optional<TrackSubchannel> m_subchannel; ///< while it writes
    std::vector<char> m_sectors; ///< of one piece, unless the blocks are user data alone
    std::shared_ptr<DRFolder> m_root; ///< null once the image is planned
    std::shared_ptr<const BlockImage> m_image;
    TrackFacts m_facts;
    const std::optional<BlockPipeline::Options> m_options;
    std::unique_ptr<BlockPipeline> m_pipeline; ///< ends before the image that it reads
};

} // namespace Tessaron
