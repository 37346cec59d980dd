#pragma once

#include "platform/quicktime/decoding/FFmpegHandles.h"

#include <vector>

namespace Tessaron
{

/// What each channel of a layout gives to the left (first) and to the right ear (second).
struct ChannelWeights {
    double left = 0;
    double right = 0;
    friend bool operator==(const ChannelWeights &, const ChannelWeights &) = default;
};

/// How any layout becomes stereo: one channel goes to both ears at full level, two stay as they are, more are mixed
/// with the coefficients of Recommendation ITU-R BS.775 (centre and surround at -3 dB, without the low frequency
/// effects), all turned down together until full level in every channel cannot clip.
[[nodiscard]] std::vector<ChannelWeights> downmixMatrix(const AVChannelLayout &layout);

} // namespace Tessaron
