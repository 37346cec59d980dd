#include "tests/quicktime/Sounds.h"
#include "tests/tools/BurnFixture.h"

#include <QJsonArray>

namespace Tessaron::Testing
{

namespace
{

constexpr int frameSize = 2352;

/// Sound files that are burnt without an image.
class BurnSoundFiles : public BurnFixture
{
protected:
    BurnSoundFiles()
    {
        constexpr std::size_t oneLength = 4 * 44100 + 123;
        constexpr std::size_t otherLength = 5 * 44100 + 400;
        m_tree.makeFile("1.wav", waveFile(noise(oneLength)));
        m_tree.makeFile("2.wav", waveFile(noise(otherLength)));
        m_tree.makeFile("album.cue",
                        "CATALOG 4012345678901\nPERFORMER \"The Band\"\nTITLE \"The Album\"\nFILE \"1.wav\" WAVE\n"
                        "  TRACK 01 AUDIO\n    TITLE \"Morning\"\n    ISRC DEABC2400001\n    INDEX 01 00:00:00\n"
                        "FILE \"2.wav\" WAVE\n  TRACK 02 AUDIO\n    TITLE \"Evening\"\n    INDEX 01 00:00:00\n");
        insert(FakeProfile::CDR, cdBlocks);
    }

    [[nodiscard]] QJsonObject burntSound(int expectedStatus, const QList<QByteArray> &words) const
    {
        return burntTo("/dev/sr0", QList<QByteArray>({"--audio"}) + words, expectedStatus);
    }
    /// The image that `tessaron audio` makes with the same options.
    [[nodiscard]] QByteArray imageOf(const QList<QByteArray> &words) const
    {
        const ChildResult result =
            runTessaron(QList<QByteArray>({"audio", "--no-sync", "-o", m_tree.path("out/album.bin")}) + words);
        EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
        return m_tree.contents("out/album.bin");
    }
    /// The texts of a kind, out of the packs of 18 bytes in the lead-in: 12 bytes in each, behind a header of 4.
    [[nodiscard]] QByteArray textsOnDisc(char kind) const
    {
        const QByteArray packs = QByteArray::fromHex(QByteArray::fromStdString(disc().cdText));
        QByteArray texts;
        for (qsizetype at = 0; at + 18 <= packs.size(); at += 18)
            texts += packs[at] == kind ? packs.mid(at + 4, 12) : QByteArray();
        return texts;
    }
    void expectOnDisc(const QByteArray &image) const
    {
        ASSERT_EQ(image.size() % frameSize, 0);
        EXPECT_EQ(disc().endOfTracks(), image.size() / frameSize);
        EXPECT_TRUE(sectors(0, int(image.size() / frameSize), frameSize) == image);
    }
};

TEST_F(BurnSoundFiles, files_areOnTheDisc_asAnImageHasThem)
{
    const QList<QByteArray> words = {"--gap", "2", m_tree.path("1.wav"), m_tree.path("2.wav")};
    const QByteArray image = imageOf(words);
    const QJsonObject report = burntSound(0, QList<QByteArray>({"--verify"}) + words);
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(report[u"tracks"], 2);
    EXPECT_EQ(report[u"bytesCompared"], image.size());
    const QJsonArray tracks = report[u"audioTracks"].toArray();
    ASSERT_EQ(tracks.size(), 2);
    EXPECT_EQ(tracks[1].toObject()[u"pregapFrames"], 150);
    expectOnDisc(image);
    EXPECT_EQ(disc().status, FakeDisc::Status::Complete);
}

TEST_F(BurnSoundFiles, cueSheet_givesTextsAndCodes)
{
    const QByteArray image = imageOf({"--cd-text", m_tree.path("album.cue")});
    const QJsonObject report = burntSound(0, {"--cd-text", m_tree.path("album.cue")});
    EXPECT_EQ(report[u"audioTracks"].toArray().first().toObject()[u"title"], QStringLiteral("Morning"));
    expectOnDisc(image);
    constexpr char titles = '\x80';
    constexpr char performers = '\x81';
    EXPECT_TRUE(textsOnDisc(titles).startsWith(QByteArray("The Album\0Morning\0Evening\0", 26))) << disc().cdText;
    EXPECT_TRUE(textsOnDisc(performers).startsWith("The Band")) << disc().cdText;
    const std::string sheet = disc().cueSheet;
    EXPECT_EQ(sheet.substr(0, 32), "02343031323334350236373839303100");
    EXPECT_NE(sheet.find("03014445414243320301343030303031"), std::string::npos) << sheet;
}

TEST_F(BurnSoundFiles, list_isBurntInItsOrder)
{
    m_tree.makeFile("album.m3u", "2.wav\n1.wav\n");
    const QByteArray image = imageOf({m_tree.path("2.wav"), m_tree.path("1.wav")});
    EXPECT_EQ(burntSound(0, {m_tree.path("album.m3u")})[u"tracks"], 2);
    expectOnDisc(image);
}

TEST_F(BurnSoundFiles, damagedSound_isWritten_andTold)
{
    m_tree.makeFile("2.wav", m_tree.contents("2.wav").chopped(100'000));
    const QJsonObject report = burntSound(3, {m_tree.path("1.wav"), m_tree.path("2.wav")});
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_TRUE(report[u"notes"].toArray().first().toString().contains(QStringLiteral("2.wav")));
}

TEST_F(BurnSoundFiles, shortTrack_isTold)
{
    m_tree.makeFile("short.wav", waveFile(noise(44'100)));
    const ChildResult result = runWithDrive(
        {"burn", "--audio", "--drive", "/dev/sr0", "--json", m_tree.path("short.wav"), m_tree.path("1.wav")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("track 1 is shorter than four seconds")) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"audioTracks"].toArray().first().toObject()[u"tooShort"], true);
}

TEST_F(BurnSoundFiles, whatIsNoSound_isRefused_beforeAnythingIsWritten)
{
    m_tree.makeFile("text.txt", "no sound");
    const QJsonObject report = burntSound(1, {m_tree.path("1.wav"), m_tree.path("text.txt")});
    EXPECT_EQ(report[u"error"].toObject()[u"kind"], QStringLiteral("source"));
    EXPECT_EQ(report[u"condition"], QStringLiteral("unchanged"));
    EXPECT_EQ(disc().log.find("2a"), std::string::npos) << disc().log;
}

TEST_F(BurnSoundFiles, otherDiscsThanCDs_andFiles_areRefused)
{
    insert(FakeProfile::DVDPlusR, 2'295'104);
    EXPECT_EQ(burntSound(1, {m_tree.path("1.wav")})[u"fault"], QStringLiteral("wrong-disc"));
    const QJsonObject report = burntTo("stdio:" + file(), {"--audio", m_tree.path("1.wav")}, 1);
    EXPECT_EQ(report[u"fault"], QStringLiteral("wrong-disc"));
    EXPECT_FALSE(m_tree.exists("out/disc.iso"));
}

TEST_F(BurnSoundFiles, isrcs_thatCannotBeRead_failBeforeTheDriveIsTouched)
{
    const QJsonObject report = burntSound(1, {"--isrc", m_tree.path("nowhere"), m_tree.path("1.wav")});
    EXPECT_EQ(report[u"error"].toObject()[u"kind"], QStringLiteral("source"));
    EXPECT_TRUE(disc().log.empty()) << disc().log;
}

} // namespace

} // namespace Tessaron::Testing
