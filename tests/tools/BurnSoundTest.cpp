#include "tests/tools/BurnFixture.h"

#include <QJsonArray>

#include <random>

namespace Tessaron::Testing
{

namespace
{

constexpr qsizetype sectorSize = 2352;

/// Two tracks of sound that does not repeat: 600 sectors, and 700 behind a gap of 75 that is in the file.
class BurnSound : public BurnFixture
{
protected:
    BurnSound()
    {
        std::mt19937 random(7);
        QByteArray sound(sectorSize * 1375, '\0');
        for (char &byte : sound)
            byte = char(random() & 0xFF);
        m_tree.makeFile("album.bin", sound);
        m_tree.makeFile("album.cue",
                        "FILE \"album.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                        "  TRACK 02 AUDIO\n    INDEX 00 00:08:00\n    INDEX 01 00:09:00\n");
    }

    void insertDisplaced(int samples, const std::vector<int> &badSectors = {}) const
    {
        FakeDisc disc;
        disc.profile = FakeProfile::CDR;
        disc.capacity = cdBlocks;
        disc.displacement = samples;
        disc.badSectors = badSectors;
        insert(disc);
    }

    ChildResult burnAlbum(const QList<QByteArray> &options = {}) const
    {
        return runWithDrive(QList<QByteArray>({"burn", "--drive", "/dev/sr0", "--verify", "--json"}) + options
                            + QList<QByteArray>({m_tree.path("album.cue")}));
    }
};

TEST_F(BurnSound, sound_isReadBackAndCompared)
{
    insertDisplaced(0);
    const ChildResult result = burnAlbum();
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QJsonObject report = jsonOf(result.output);
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(report[u"bytesCompared"], sectorSize * 1375);
    EXPECT_TRUE(report[u"notes"].toArray().isEmpty());
}

TEST_F(BurnSound, displacementOfTheDrive_isFoundOut_andSaid)
{
    insertDisplaced(667);
    const ChildResult result = burnAlbum();
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("667 samples later")) << result.errors.constData();
    EXPECT_GE(jsonOf(result.output)[u"bytesCompared"].toInteger(), sectorSize * 1371);
}

TEST_F(BurnSound, unreadableSectors_areNamed_inTheirTrack)
{
    insertDisplaced(0, {650, 651});
    const ChildResult result = burnAlbum();
    EXPECT_EQ(result.exitStatus, 1);
    const QJsonObject report = jsonOf(result.output);
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    const QString message = report[u"error"].toObject()[u"message"].toString();
    // Sector 650 of the disc is the 50th behind index 0 of the second track.
    EXPECT_TRUE(message.contains(QStringLiteral("track 2"))) << message.toStdString();
    EXPECT_TRUE(message.contains(QStringLiteral("2 sectors cannot be read, the first 00:00:50")))
        << message.toStdString();
}

TEST_F(BurnSound, tracksWrittenOneByOne_areComparedWhereTheyLie)
{
    m_tree.makeFile("mixed.bin", QByteArray(qsizetype(2048) * 400, '\3') + m_tree.contents("album.bin"));
    m_tree.makeFile("mixed.toc",
                    "CD_ROM\nTRACK MODE1\nDATAFILE \"mixed.bin\" 00:05:25\n"
                    "TRACK AUDIO\nFILE \"mixed.bin\" #819200 0 00:09:25\n");
    insertDisplaced(-30);
    const ChildResult result =
        runWithDrive({"burn", "--drive", "/dev/sr0", "--verify", "--json", m_tree.path("mixed.toc")});
    EXPECT_EQ(result.exitStatus, 3) << result.errors.constData(); // the gap of two seconds is told
    EXPECT_GE(jsonOf(result.output)[u"bytesCompared"].toInteger(), qsizetype(2048) * 400 + 690 * sectorSize);
}

} // namespace

} // namespace Tessaron::Testing
