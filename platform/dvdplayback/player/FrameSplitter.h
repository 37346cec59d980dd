#pragma once

#include "platform/dvdplayback/player/DecoderHandles.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace Tessaron
{

/// Cuts the bytes of one stream of video or sound into packets of a frame each, as decoders take them. The LPCM of a
/// disc has no frames to look for: its bytes are passed on as they come.
class FrameSplitter
{
public:
    /// Cuts for this opened decoder from now on, which must live as long as bytes are added. False when there is no
    /// memory.
    [[nodiscard]] bool open(AVCodecContext *decoder);
    /// The stream goes on elsewhere: forgets what was begun.
    void forget();

    /// The packet is valid during the call.
    using Visitor = std::function<void(AVPacket *)>;
    /// Takes the next bytes of the stream, a sector's at most (more are dropped), and gives the packets that are
    /// complete. The time, in 90 kHz, is that of the first frame that begins in the bytes.
    void add(std::span<const std::uint8_t> bytes, std::optional<std::int64_t> time, const Visitor &visitor);
    /// The stream ends here: gives the packet that is left, if any.
    void drain(const Visitor &visitor);

private:
    void give(std::uint8_t *data, int size, std::int64_t time, const Visitor &visitor);

    AVCodecContext *m_decoder = nullptr;
    StreamParser m_parser; ///< null for LPCM; without memory, too, and then all bytes are dropped
    DecoderPacket m_packet;
};

} // namespace Tessaron
