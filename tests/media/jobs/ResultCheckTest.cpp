#include "media/jobs/ResultCheck.h"

#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRAudioConverter.h>

#include <gtest/gtest.h>

// Files by ffmpeg, whole and cut.

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::int32_t wave = KRAudioConverter::waveFormat, aiff = KRAudioConverter::aiffFormat,
                       mp3 = KRAudioConverter::mp3FormatConstant128;

class ResultCheck : public testing::Test
{
protected:
    ResultCheck() { tree.makeFile("a.wav", waveFile(noise(30000))); }

    void expectWholeOnlyAsItIs(const QByteArray &name, std::int32_t format) const
    {
        EXPECT_EQ(flawOfResult(tree.path(name), format), QString());
        const QByteArray whole = tree.contents(name);
        // The shortest of these frames has 144 bytes.
        for (const qsizetype length : {whole.size() - 1, whole.size() - 100, qsizetype(11), qsizetype(1), qsizetype(0)})
            EXPECT_FALSE(flawOfResult(tree.makeFile("cut", whole.first(length)), format).isEmpty()) << length;
        EXPECT_FALSE(flawOfResult(tree.makeFile("long", whole + 'x'), format).isEmpty());
    }

    const TemporaryTree tree;
};

} // namespace

TEST_F(ResultCheck, wave_isAsLongAsItsHeaderSays)
{
    expectWholeOnlyAsItIs("a.wav", wave);
    ffmpeg("-i " + tree.path("a.wav") + " -rf64 always " + tree.path("rf64.wav"));
    ASSERT_TRUE(tree.contents("rf64.wav").startsWith("RF64"));
    expectWholeOnlyAsItIs("rf64.wav", wave);
}

TEST_F(ResultCheck, aiff_isAsLongAsItsHeaderSays)
{
    ffmpeg("-i " + tree.path("a.wav") + ' ' + tree.path("a.aiff"));
    expectWholeOnlyAsItIs("a.aiff", aiff);
    EXPECT_FALSE(flawOfResult(tree.path("a.aiff"), wave).isEmpty());
    EXPECT_FALSE(flawOfResult(tree.path("a.wav"), aiff).isEmpty());
}

TEST_F(ResultCheck, mp3_isFramesToTheLastByte)
{
    for (const QByteArray options : {"-b:a 128k", "-b:a 320k", "-q:a 2", "-ar 48000 -b:a 96k", "-ar 32000 -b:a 32k"}) {
        ffmpeg("-i " + tree.path("a.wav") + " -map_metadata -1 -id3v2_version 0 -write_xing 0 " + options + ' '
               + tree.path("a.mp3"));
        expectWholeOnlyAsItIs("a.mp3", mp3);
        QByteArray bent = tree.contents("a.mp3");
        bent[bent.size() / 2] = char(~bent[bent.size() / 2]);
        bent.replace(QByteArray("\xFF\xFB"), QByteArray("\xFF\x00", 2));
        EXPECT_FALSE(flawOfResult(tree.makeFile("bent", bent), mp3).isEmpty());
    }
}

TEST_F(ResultCheck, whatIsNotThere_isNoResult)
{
    EXPECT_TRUE(flawOfResult(tree.path("missing"), wave).startsWith(QStringLiteral("there is no result: ")));
    tree.makeFifo("fifo");
    EXPECT_FALSE(flawOfResult(tree.path("fifo"), wave).isEmpty());
}
