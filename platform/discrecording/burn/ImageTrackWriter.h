#pragma once

#include "platform/discrecording/burn/BlockPipeline.h"
#include "platform/discrecording/burn/TrackWriter.h"

#include <optional>

namespace Tessaron
{

class DRFolder;

/// Writes one disc image: that of a folder tree, which it plans first, or one that was planned elsewhere.
class ImageTrackWriter final : public TrackWriter
{
public:
    /// The masks of the tree's objects decide which filesystems the image has. The tree is let go of once the image is
    /// planned; until then it must not change.
    explicit ImageTrackWriter(std::shared_ptr<DRFolder> root);
    /// Writes an image that was planned before. With options, their sizes are used; file runs may be left only for a
    /// sink that copies files.
    explicit ImageTrackWriter(std::shared_ptr<const BlockImage> image,
                              std::optional<BlockPipeline::Options> options = {});
    ~ImageTrackWriter() override;

    [[nodiscard]] NSError plan(const std::stop_token &cancellation,
                               const std::function<void(double)> &progress) override;
    [[nodiscard]] DiscTrack track() const override;
    [[nodiscard]] TrackFacts facts() const override { return m_facts; }
    /// Readers may still be at work when it returns with an error: the destructor joins them.
    [[nodiscard]] NSError write(BlockStream &stream) override;

private:
    std::shared_ptr<DRFolder> m_root; ///< null once the image is planned
    std::shared_ptr<const BlockImage> m_image;
    TrackFacts m_facts;
    const std::optional<BlockPipeline::Options> m_options;
    std::unique_ptr<BlockPipeline> m_pipeline; ///< ends before the image that it reads
};

} // namespace Tessaron
