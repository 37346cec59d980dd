#include "platform/quicktime/decoding/DownmixMatrix.h"

#include <algorithm>
#include <cmath>

namespace Tessaron
{

namespace
{

constexpr double threeDecibelsDown = 0.70710678118654752440;

/// By where the loudspeaker stands.
ChannelWeights weightsOfChannel(AVChannel channel)
{
    switch (channel) {
    case AV_CHAN_FRONT_LEFT:
    case AV_CHAN_FRONT_LEFT_OF_CENTER:
    case AV_CHAN_STEREO_LEFT:
        return {1, 0};
    case AV_CHAN_FRONT_RIGHT:
    case AV_CHAN_FRONT_RIGHT_OF_CENTER:
    case AV_CHAN_STEREO_RIGHT:
        return {0, 1};
    case AV_CHAN_FRONT_CENTER:
        return {threeDecibelsDown, threeDecibelsDown};
    case AV_CHAN_BACK_LEFT:
    case AV_CHAN_SIDE_LEFT:
    case AV_CHAN_WIDE_LEFT:
    case AV_CHAN_SURROUND_DIRECT_LEFT:
    case AV_CHAN_TOP_FRONT_LEFT:
    case AV_CHAN_TOP_BACK_LEFT:
    case AV_CHAN_TOP_SIDE_LEFT:
    case AV_CHAN_BOTTOM_FRONT_LEFT:
        return {threeDecibelsDown, 0};
    case AV_CHAN_BACK_RIGHT:
    case AV_CHAN_SIDE_RIGHT:
    case AV_CHAN_WIDE_RIGHT:
    case AV_CHAN_SURROUND_DIRECT_RIGHT:
    case AV_CHAN_TOP_FRONT_RIGHT:
    case AV_CHAN_TOP_BACK_RIGHT:
    case AV_CHAN_TOP_SIDE_RIGHT:
    case AV_CHAN_BOTTOM_FRONT_RIGHT:
        return {0, threeDecibelsDown};
    case AV_CHAN_BACK_CENTER:
    case AV_CHAN_TOP_CENTER:
    case AV_CHAN_TOP_FRONT_CENTER:
    case AV_CHAN_TOP_BACK_CENTER:
    case AV_CHAN_BOTTOM_FRONT_CENTER:
        return {0.5, 0.5}; // Split into two surround channels first, which costs 3 dB more.
    default:
        break;
    }
    // Two loudspeakers in the middle of a sphere: everything, and left against right.
    if (channel == AV_CHAN_AMBISONIC_BASE)
        return {0.5, 0.5};
    if (int(channel) == AV_CHAN_AMBISONIC_BASE + 1)
        return {0.5, -0.5};
    return {};
}

/// Channels that stand nowhere are taken in pairs.
ChannelWeights weightsOfIndex(int index, int count)
{
    if (index == count - 1 && count % 2 == 1)
        return {threeDecibelsDown, threeDecibelsDown};
    return index % 2 == 0 ? ChannelWeights{1, 0} : ChannelWeights{0, 1};
}

std::vector<ChannelWeights> rawWeights(const AVChannelLayout &layout)
{
    const int count = layout.nb_channels;
    std::vector<ChannelWeights> weights;
    weights.reserve(std::size_t(count));
    for (int index = 0; index < count; ++index)
        weights.push_back(weightsOfChannel(av_channel_layout_channel_from_index(&layout, unsigned(index))));
    const bool isSilent =
        std::all_of(weights.begin(), weights.end(), [](const ChannelWeights &one) { return one == ChannelWeights(); });
    for (int index = 0; isSilent && index < count; ++index)
        weights[std::size_t(index)] = weightsOfIndex(index, count);
    return weights;
}

} // namespace

std::vector<ChannelWeights> downmixMatrix(const AVChannelLayout &layout)
{
    if (layout.nb_channels == 1)
        return {{1, 1}};
    if (layout.nb_channels == 2 && layout.order != AV_CHANNEL_ORDER_AMBISONIC)
        return {{1, 0}, {0, 1}};
    AVChannelLayout known = {};
    if (layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&known, layout.nb_channels);
    std::vector<ChannelWeights> weights = rawWeights(layout.order == AV_CHANNEL_ORDER_UNSPEC ? known : layout);
    double left = 0, right = 0;
    for (const ChannelWeights &one : weights) {
        left += std::abs(one.left);
        right += std::abs(one.right);
    }
    const double loudest = std::max({left, right, 1.0});
    for (ChannelWeights &one : weights)
        one = {one.left / loudest, one.right / loudest};
    return weights;
}

} // namespace Tessaron
