#include "platform/disctracks/CDTextPacks.h"
#include "platform/disctracks/CueSheetWriter.h"
#include "platform/disctracks/SectorCoding.h"
#include "tests/support/RunProgram.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// What others make of our images: cd-info and cd-read (libcdio), cdrdao and bchunk.

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

constexpr std::size_t dataBlocks = 400;

class DiscPrograms : public testing::Test
{
protected:
    void SetUp() override
    {
        m_userData.resize(qsizetype(dataBlocks) * 2048);
        for (qsizetype at = 0; at < m_userData.size(); ++at)
            m_userData[at] = char(at * 31 >> 3);
    }

    void write(const char *name, const QByteArray &contents)
    {
        QFile file(m_folder.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(contents), contents.size());
    }
    [[nodiscard]] QByteArray contents(const char *name) const
    {
        QFile file(m_folder.filePath(QString::fromLatin1(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// What the program prints; both streams.
    QString run(const char *program, const QList<QByteArray> &arguments)
    {
        const ProgramRun result = runProgram(program, arguments, m_folder.path().toUtf8());
        EXPECT_EQ(result.status, 0) << program << " is a package of the tests";
        return QString::fromUtf8(result.output + result.errors);
    }

    /// Sectors of the user data.
    [[nodiscard]] QByteArray sectors(TrackKind kind) const
    {
        QByteArray raw(qsizetype(dataBlocks * 2352), Qt::Uninitialized);
        SectorEncoder::encoderFor(kind, SectorForm::Raw)
            ->encode(m_userData.constData(), dataBlocks, BlockAddress(0), raw.data());
        return raw;
    }

    /// A track of data, one of audio with a stored pregap, and one without.
    void writeMixedDisc()
    {
        DiscTrack data;
        data.blockSize = 2352;
        data.length = dataBlocks;
        DiscTrack audio;
        audio.kind = TrackKind::Audio;
        audio.blockSize = 2352;
        audio.length = 450;
        audio.isrc = "DEA123456789";
        audio.pregap = {150, true};
        DiscTrack last = audio;
        last.pregap = {};
        TableOfContents disc;
        disc.sessions = {{BlockAddress(), {data, audio, last}}};
        disc.numberTracks();
        disc.mediaCatalogNumber = "4006381333931";
        const Result<CueSheetText> sheet = cueSheetForImage(disc, "disc.bin");
        ASSERT_TRUE(sheet);
        write("disc.bin", sectors(TrackKind::Mode1) + QByteArray(qsizetype{1050} * 2352, 'a'));
        CDText texts;
        CDTextBlock block;
        block.texts[CDTextKind::Title] = {QStringLiteral("The Album Title That Is Long"), QStringLiteral("Data"),
                                          QStringLiteral("First Song"), QStringLiteral("Second Song")};
        block.texts[CDTextKind::Performer] = {QStringLiteral("Some Band"), QString(), QStringLiteral("Singer A"),
                                              QStringLiteral("Singer A")};
        texts.blocks.push_back(block);
        write("disc.cdt", *cdTextPacks(texts, 3) + QByteArray(1, '\0'));
        write("disc.cue", "CDTEXTFILE \"disc.cdt\"\r\n" + sheet->text);
    }

    QTemporaryDir m_folder; ///< cd-info takes NAME.bin beside NAME.cue, whatever FILE says: one name for both
    QByteArray m_userData;
};

} // namespace

TEST_F(DiscPrograms, cdrdao_readsTheTable)
{
    writeMixedDisc();
    const QString table = run("cdrdao", {"show-toc", "disc.cue"});
    for (const char *const expected :
         {"CATALOG NUMBER: 4006381333931", "Mode MODE1_RAW", "END    00:05:25(   400)", "ISRC DE A12 34 56789",
          "PREGAP 00:02:00(   150)", "START  00:07:25(   550)", "START  00:13:25(  1000)", "END    00:19:25(  1450)"})
        EXPECT_TRUE(table.contains(QString::fromLatin1(expected))) << expected << "\n" << table.toStdString();
}

TEST_F(DiscPrograms, cdInfo_readsTableAndTexts)
{
    writeMixedDisc();
    const QString report = run("cd-info", {"--no-device-info", "--cue-file=disc.cue"});
    for (const char *const expected :
         {"2: 00:09:25  000550 audio", "3: 00:15:25  001000 audio", "170: 00:21:25  001450 leadout", "4006381333931",
          "TITLE: The Album Title That Is Long", "PERFORMER: Some Band", "TITLE: First Song", "TITLE: Second Song"})
        EXPECT_TRUE(report.contains(QString::fromLatin1(expected))) << expected << "\n" << report.toStdString();
    EXPECT_EQ(report.count(QStringLiteral("PERFORMER: Singer A")), 2) << "the second is a tab on the disc";
}

TEST_F(DiscPrograms, cdRead_findsUserDataAndSound)
{
    writeMixedDisc();
    const auto read = [this](const char *mode, int first, int last) {
        run("cd-read",
            {"--no-header", "--no-hexdump", "--cue-file=disc.cue", QByteArray("--mode=") + mode,
             "--start=" + QByteArray::number(first), "--end=" + QByteArray::number(last), "--output-file=read.out"});
        return contents("read.out");
    };
    EXPECT_TRUE(read("m1f1", 0, 399) == m_userData);
    EXPECT_TRUE(read("audio", 550, 1449) == contents("disc.bin").mid(qsizetype{550} * 2352));
}

TEST_F(DiscPrograms, bchunk_findsTheUserData)
{
    writeMixedDisc();
    run("bchunk", {"disc.bin", "disc.cue", "mode1-"});
    EXPECT_TRUE(contents("mode1-01.iso") == m_userData);
    write("xa.bin", sectors(TrackKind::Mode2Form1));
    write("xa.cue", "FILE \"xa.bin\" BINARY\r\n  TRACK 01 MODE2/2352\r\n    INDEX 01 00:00:00\r\n");
    run("bchunk", {"xa.bin", "xa.cue", "mode2-"});
    EXPECT_TRUE(contents("mode2-01.iso") == m_userData);
}
