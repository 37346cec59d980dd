#pragma once

#include "platform/dvdplayback/player/DecoderHandles.h"
#include "platform/dvdplayback/player/FrameSplitter.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace Tessaron
{

/// A decoded picture, in the order of showing.
struct VideoPicture {
    DecodedFrame frame; ///< never null
    std::int64_t duration = 0; ///< 90 kHz; three fields for pictures of films on NTSC discs
    std::optional<std::int64_t> time; ///< 90 kHz; absent for one that follows on the picture before
};

/// Decodes the MPEG-2 (or MPEG-1) video of a disc. Broken bytes give broken pictures, or none.
class VideoDecoder
{
public:
    /// Null when there is no decoder, or no memory.
    [[nodiscard]] static std::unique_ptr<VideoDecoder> create();

    using Visitor = std::function<void(VideoPicture)>;
    /// Takes the next bytes of the stream, a sector's at most, and gives the pictures that are complete. The time is
    /// that of the first picture that begins in the bytes.
    void add(std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time, const Visitor &visitor);
    /// The stream ends or pauses here: gives the pictures that are left.
    void drain(const Visitor &visitor);
    /// The stream goes on elsewhere: forgets what was begun.
    void forget();

private:
    VideoDecoder() = default;
    void decode(AVPacket *packet, const Visitor &visitor);

    DecoderContext m_context;
    FrameSplitter m_packets;
};

} // namespace Tessaron
