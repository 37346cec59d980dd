#include "platform/dvdplayback/player/PacketSplitter.h"

#include "tests/dvdplayback/DiscFixture.h"
#include "tests/support/RunProgram.h"

#include <QFile>

#include <map>

namespace Tessaron::Testing
{

namespace
{

class PacketSplitter : public DiscTest
{
};

std::span<const std::uint8_t> bytesOf(const QByteArray &bytes)
{
    return {reinterpret_cast<const std::uint8_t *>(bytes.constData()), std::size_t(bytes.size())};
}

/// A stream of the contents of title set 1, as another program takes it out.
QByteArray byAnotherProgram(const QByteArray &contents, const QByteArray &stream, const QByteArray &format)
{
    const ProgramRun run =
        runProgram("ffmpeg", {"-v", "error", "-i", contents, "-map", stream, "-c", "copy", "-f", format, "-"});
    EXPECT_EQ(run.status, 0) << run.errors.constData();
    return run.output;
}

TEST_F(PacketSplitter, streams_areThoseThatAnotherProgramFinds)
{
    const QByteArray path = disc() + "/VIDEO_TS/VTS_01_1.VOB";
    QFile contents(QString::fromUtf8(path));
    ASSERT_TRUE(contents.open(QIODevice::ReadOnly));
    std::map<ElementaryKind, QByteArray> streams;
    std::optional<std::int64_t> first;
    while (!contents.atEnd()) {
        const QByteArray sector = contents.read(qint64(discSectorSize));
        splitSector(bytesOf(sector), [&](const ElementaryPiece &piece) {
            streams[piece.kind].append(reinterpret_cast<const char *>(piece.bytes.data()),
                                       qsizetype(piece.bytes.size()));
            if (piece.kind == ElementaryKind::Video && !first)
                first = piece.presentation;
        });
    }
    EXPECT_TRUE(first);
    EXPECT_EQ(streams[ElementaryKind::Video], byAnotherProgram(path, "0:v:0", "mpeg2video"));
    EXPECT_EQ(streams[ElementaryKind::AC3], byAnotherProgram(path, "0:i:0x80", "ac3"));
    EXPECT_FALSE(streams[ElementaryKind::LPCM].isEmpty());
    EXPECT_FALSE(streams[ElementaryKind::Subpicture].isEmpty());
}

TEST_F(PacketSplitter, nothing_isToldOfLengthsThatDoNotFit)
{
    QFile contents(QString::fromUtf8(disc() + "/VIDEO_TS/VTS_01_1.VOB"));
    ASSERT_TRUE(contents.open(QIODevice::ReadOnly) && contents.seek(qint64(discSectorSize)));
    QByteArray sector = contents.read(qint64(discSectorSize));
    int told = 0;
    const auto count = [&](const ElementaryPiece &) { ++told; };
    splitSector(bytesOf(sector), count);
    EXPECT_GE(told, 1);
    told = 0;
    for (qsizetype length = 0; length < 30; ++length)
        splitSector(bytesOf(sector.first(length)), count);
    EXPECT_EQ(told, 0);
    sector[18] = '\x7f'; // longer than the sector
    splitSector(bytesOf(sector), count);
    EXPECT_EQ(told, 0);
}

} // namespace

} // namespace Tessaron::Testing
