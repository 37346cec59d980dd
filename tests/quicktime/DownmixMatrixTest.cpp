#include "platform/quicktime/decoding/DownmixMatrix.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

std::vector<ChannelWeights> weightsOf(const char *layoutName)
{
    AVChannelLayout layout = {};
    EXPECT_EQ(av_channel_layout_from_string(&layout, layoutName), 0);
    std::vector<ChannelWeights> weights = downmixMatrix(layout);
    EXPECT_EQ(int(weights.size()), layout.nb_channels);
    av_channel_layout_uninit(&layout);
    return weights;
}

void expectWeights(const ChannelWeights &weights, double left, double right)
{
    EXPECT_NEAR(weights.left, left, 1e-9);
    EXPECT_NEAR(weights.right, right, 1e-9);
}

} // namespace

TEST(DownmixMatrix, oneAndTwoChannels_keepTheirLevel)
{
    expectWeights(weightsOf("mono")[0], 1, 1);
    expectWeights(weightsOf("stereo")[0], 1, 0);
    expectWeights(weightsOf("stereo")[1], 0, 1);
    expectWeights(weightsOf("2 channels")[1], 0, 1);
}

TEST(DownmixMatrix, fivePointOne_hasTheCoefficientsOfBS775TurnedDownTogether)
{
    // Front 1, centre and surround 0.7071, no low frequency effects; 1 + 0.7071 + 0.7071 must not be more than 1.
    const double loudest = 1 + std::sqrt(2.0), side = std::sqrt(0.5);
    const std::vector<ChannelWeights> weights = weightsOf("5.1(side)");
    expectWeights(weights[0], 1 / loudest, 0);
    expectWeights(weights[1], 0, 1 / loudest);
    expectWeights(weights[2], side / loudest, side / loudest);
    expectWeights(weights[3], 0, 0);
    expectWeights(weights[4], side / loudest, 0);
    expectWeights(weights[5], 0, side / loudest);
}

TEST(DownmixMatrix, noLayout_canClip_orLoseAllOfAChannelOnASide)
{
    for (const char *name : {"2.1", "3.0", "quad", "4.0", "5.0", "5.1", "6.1", "7.1", "7.1(wide)", "octagonal",
                             "hexadecagonal", "3 channels", "6 channels", "11 channels", "ambisonic 1", "22.2"}) {
        double left = 0, right = 0;
        for (const ChannelWeights &one : weightsOf(name)) {
            left += std::abs(one.left);
            right += std::abs(one.right);
        }
        EXPECT_LE(left, 1 + 1e-9) << name;
        EXPECT_LE(right, 1 + 1e-9) << name;
        EXPECT_GT(left, 0.5) << name;
        EXPECT_GT(right, 0.5) << name;
    }
}
