#include "platform/quicktime/PCMHeaders.h"

#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <QFile>

#include <gtest/gtest.h>

// Files of any length, by their headers: what is behind them occupies no space.

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::uint64_t gibibyte = std::uint64_t(1) << 30;

/// Samples of both channels that ffprobe finds in a file of this header and as many bytes behind it.
std::uint64_t samplesSeen(const TemporaryTree &tree, const QByteArray &name, const QByteArray &header,
                          std::uint64_t bytes)
{
    tree.makeSparseFile(name, qint64(header.size()) + qint64(bytes));
    QFile file(tree.pathText(name));
    EXPECT_TRUE(file.open(QIODevice::ReadWrite));
    EXPECT_EQ(file.write(header), header.size());
    file.close();
    const QByteArray seen =
        outputOfProgram("ffprobe",
                        {"-v", "error", "-show_entries", "stream=duration_ts,sample_rate,channels,bits_per_sample",
                         "-of", "csv=p=0", tree.path(name)});
    const QList<QByteArray> fields = seen.trimmed().split(',');
    EXPECT_EQ(fields.mid(0, 3), (QList<QByteArray>{"44100", "2", "16"})) << seen.constData();
    return fields.value(3).toULongLong();
}

} // namespace

TEST(PCMHeaders, wave_isReadByOthers_atAnyLength)
{
    const TemporaryTree tree;
    for (const std::uint64_t bytes : {std::uint64_t(0) + 4, 2 * gibibyte, 3 * gibibyte, 4 * gibibyte - 76,
                                      4 * gibibyte - 72, 5 * gibibyte, 40 * gibibyte}) {
        for (const bool hasRoom : {false, true}) {
            const QByteArray header = waveHeader({}, bytes, hasRoom);
            const bool isGreat = bytes > mostBytesInWave;
            EXPECT_EQ(header.first(4), isGreat ? "RF64" : "RIFF") << bytes;
            EXPECT_EQ(header.size(), hasRoom || isGreat ? 80 : 44);
            EXPECT_EQ(samplesSeen(tree, "a.wav", header, bytes), bytes / 4) << bytes;
        }
    }
}

TEST(PCMHeaders, aiff_isReadByOthers_upToItsLimit)
{
    const TemporaryTree tree;
    for (const std::uint64_t bytes : {std::uint64_t(4), gibibyte, mostBytesInAiff / 4 * 4}) {
        const QByteArray header = aiffHeader({}, bytes);
        EXPECT_EQ(header.size(), 54);
        EXPECT_EQ(samplesSeen(tree, "a.aiff", header, bytes), bytes / 4) << bytes;
    }
}
