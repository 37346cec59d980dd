#pragma once

#include "platform/discrecording/burn/BlockPipeline.h"
#include "platform/discrecording/burn/BurnSink.h"

namespace Tessaron
{

/// Writes one disc image. Used by the burn thread.
class ImageTrackWriter
{
public:
    ImageTrackWriter(const BlockImage &image, BurnSink &sink, const BurnCancellation &cancellation);
    /// With chosen sizes; file runs must be left only for a sink that takes them.
    ImageTrackWriter(const BlockImage &image, BurnSink &sink, const BlockPipeline::Options &options,
                     const BurnCancellation &cancellation);

    /// Returns as soon as the image is written, something failed or the burn was cancelled. Readers may be at work
    /// still then: they are joined by the destructor.
    [[nodiscard]] NSError write();

private:
    [[nodiscard]] static BlockPipeline::Options pipelineOptions(const BurnSink &sink);

    const BlockImage &m_image;
    BurnSink &m_sink;
    BlockPipeline m_pipeline;
};

} // namespace Tessaron
