#pragma once

// What FFmpeg's libraries allocate, owned from birth. For the sources of this folder only: no other sees FFmpeg's
// types.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/common.h>
#include <libavutil/frame.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <memory>

namespace Tessaron
{

/// Calls a function of FFmpeg that takes the address of the pointer, frees, and clears.
template <auto free>
struct FreeByAddress {
    template <typename Type>
    void operator()(Type *object) const
    {
        free(&object);
    }
};

/// The buffer may have been replaced by FFmpeg since it was allocated.
struct FreeIOContext {
    void operator()(AVIOContext *context) const
    {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};

struct FreeOutputContext {
    void operator()(AVFormatContext *context) const { avformat_free_context(context); }
};

using InputContext = std::unique_ptr<AVFormatContext, FreeByAddress<avformat_close_input>>;
using OutputContext = std::unique_ptr<AVFormatContext, FreeOutputContext>;
using IOContext = std::unique_ptr<AVIOContext, FreeIOContext>;
using CodecContext = std::unique_ptr<AVCodecContext, FreeByAddress<avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, FreeByAddress<av_packet_free>>;
using Frame = std::unique_ptr<AVFrame, FreeByAddress<av_frame_free>>;
using Resampler = std::unique_ptr<SwrContext, FreeByAddress<swr_free>>;

} // namespace Tessaron
