#pragma once

// What FFmpeg's libraries allocate for the player, owned from birth. For the sources of this folder only.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>

namespace Tessaron
{

/// Calls a function of FFmpeg that takes the address of the pointer, frees, and clears.
template <auto free>
struct FreeWithAddress {
    template <typename Type>
    void operator()(Type *object) const
    {
        free(&object);
    }
};

struct FreeParser {
    void operator()(AVCodecParserContext *parser) const { av_parser_close(parser); }
};
struct FreeScaler {
    void operator()(SwsContext *scaler) const { sws_freeContext(scaler); }
};

using DecoderContext = std::unique_ptr<AVCodecContext, FreeWithAddress<avcodec_free_context>>;
using StreamParser = std::unique_ptr<AVCodecParserContext, FreeParser>;
using DecoderPacket = std::unique_ptr<AVPacket, FreeWithAddress<av_packet_free>>;
using DecodedFrame = std::unique_ptr<AVFrame, FreeWithAddress<av_frame_free>>;
using Scaler = std::unique_ptr<SwsContext, FreeScaler>;
using Converter = std::unique_ptr<SwrContext, FreeWithAddress<swr_free>>;

/// Which speakers the channels of a sound are for; none at first.
class ChannelLayout
{
public:
    ChannelLayout() = default;
    ~ChannelLayout() { av_channel_layout_uninit(&m_layout); }
    ChannelLayout(const ChannelLayout &) = delete;
    ChannelLayout &operator=(const ChannelLayout &) = delete;

    [[nodiscard]] AVChannelLayout *get() { return &m_layout; }

private:
    AVChannelLayout m_layout{};
};

} // namespace Tessaron
