#include "platform/quicktime/FlacFile.h"

#include "platform/foundation/OSStatus.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tests/quicktime/Sounds.h"
#include "tests/support/TemporaryTree.h"

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>

// FLAC files, read by the format's own program.

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class FlacFiles : public testing::Test
{
protected:
    /// Writes the samples in pieces of that many; the path of the file.
    QByteArray write(const Samples &samples, std::size_t inPiece, const QMap<QString, QString> &tags = {}) const
    {
        QByteArray path = tree.makeFile("a.flac");
        const UniqueDescriptor file(::open(path.constData(), O_RDWR | O_TRUNC | O_CLOEXEC));
        const Result<std::unique_ptr<FlacFile>> flac = FlacFile::create(file.get(), path, tags);
        EXPECT_TRUE(flac);
        for (std::size_t at = 0; at < samples.size() / 2; at += inPiece) {
            const std::size_t count = std::min(inPiece, samples.size() / 2 - at);
            EXPECT_FALSE((*flac)->write(reinterpret_cast<const char *>(samples.data() + 2 * at), count));
        }
        EXPECT_FALSE((*flac)->finish());
        return path;
    }
    static Samples decoded(const QByteArray &path)
    {
        return samplesOf(outputOfProgram(
            "flac", {"-d", "-s", "-c", "--force-raw-format", "--endian=little", "--sign=signed", path}));
    }

    const TemporaryTree tree;
};

} // namespace

TEST_F(FlacFiles, samples_comeBack_whateverTheirNumber)
{
    for (const std::size_t count : {1u, 588u, 4607u, 4608u, 4609u, 50000u}) {
        const Samples source = count % 2 == 0 ? noise(count) : tone(count);
        for (const std::size_t inPiece : {std::size_t(1000), count}) {
            const QByteArray path = write(source, inPiece);
            EXPECT_EQ(decoded(path), source) << count;
            // The length and the sum of all samples are in the head.
            EXPECT_EQ(outputOfProgram("metaflac", {"--show-total-samples", path}), QByteArray::number(count) + '\n');
            EXPECT_NE(outputOfProgram("metaflac", {"--show-md5sum", path}).trimmed(), QByteArray(32, '0'));
            outputOfProgram("flac", {"-t", "-s", "-w", path});
        }
    }
}

TEST_F(FlacFiles, sound_takesLessRoom)
{
    const QByteArray path = write(tone(100000), 10000);
    EXPECT_LT(tree.contents("a.flac").size(), 300000);
    EXPECT_EQ(decoded(path), tone(100000));
}

TEST_F(FlacFiles, tags_areVorbisComments)
{
    const QByteArray path = write(noise(1000), 1000,
                                  {{QStringLiteral("title"), QStringLiteral("Größe = 3")},
                                   {QStringLiteral("album_artist"), QStringLiteral("音楽")},
                                   {QStringLiteral("track"), QStringLiteral("7")},
                                   {QStringLiteral("isrc"), QStringLiteral("DEA620212345")}});
    const QList<QByteArray> tags =
        outputOfProgram("metaflac", {"--export-tags-to=-", "--no-utf8-convert", path}).split('\n');
    for (const char *const tag : {"TITLE=Größe = 3", "ALBUMARTIST=音楽", "TRACKNUMBER=7", "ISRC=DEA620212345"})
        EXPECT_TRUE(tags.contains(tag)) << tag;
}

TEST_F(FlacFiles, write_fails_whenTheDiskIsFull)
{
    const UniqueDescriptor full(::open("/dev/full", O_RDWR | O_CLOEXEC));
    const Result<std::unique_ptr<FlacFile>> flac = FlacFile::create(full.get(), "a.flac", {});
    NSError error = flac ? NSError() : flac.error();
    const Samples source = noise(200000);
    if (!error)
        error = (*flac)->write(reinterpret_cast<const char *>(source.data()), source.size() / 2);
    if (!error)
        error = (*flac)->finish();
    EXPECT_EQ(error.code(), dskFulErr);
    EXPECT_TRUE(error.localizedRecoverySuggestion().contains(QStringLiteral("room")));
}
