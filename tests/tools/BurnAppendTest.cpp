#include "tests/support/RunProgram.h"
#include "tests/tools/BurnFixture.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

namespace Tessaron::Testing
{

namespace
{

class AppendToDisc : public BurnFixture
{
protected:
    /// `tessaron burn --multi` of a folder; the report.
    QJsonObject append(const QByteArray &folder, int expectedStatus = 0, const QList<QByteArray> &options = {}) const
    {
        return burntTo("/dev/sr0", QList<QByteArray>({"--multi"}) + options + QList<QByteArray>({m_tree.path(folder)}),
                       expectedStatus);
    }

    /// The first block of the disc's last session.
    [[nodiscard]] int lastSession() const
    {
        const FakeDisc now = disc();
        EXPECT_FALSE(now.tracks.empty());
        return now.tracks.empty() ? 0 : now.tracks.back().start;
    }

    /// An image of a folder as another program makes it.
    [[nodiscard]] QByteArray foreignImage(const QByteArray &folder, const QList<QByteArray> &options) const
    {
        const ProgramRun run =
            runProgram("genisoimage",
                       QList<QByteArray>({"-quiet"}) + options
                           + QList<QByteArray>({"-o", m_tree.path("foreign.iso"), m_tree.path(folder)}));
        EXPECT_EQ(run.status, 0) << run.errors.constData();
        return m_tree.contents("foreign.iso");
    }

    void makeTwoFolders() const
    {
        m_tree.makeFile("first/old.txt", "old");
        m_tree.makeFile("first/shared/one.bin", QByteArray(100'000, '1'));
        m_tree.makeFile("first/empty");
        m_tree.makeSymbolicLink("first/link", "shared/one.bin");
        m_tree.makeFile("second/new.txt", "new");
        m_tree.makeFile("second/shared/two.bin", QByteArray(70'000, '2'));
    }
};

class AppendToKinds : public AppendToDisc, public testing::WithParamInterface<KindOfDisc>
{
};

TEST_P(AppendToKinds, secondSession_listsTheFilesOfBoth_forOtherPrograms)
{
    makeTwoFolders();
    insert(GetParam().profile, GetParam().blocks);
    ASSERT_EQ(append("first", 0, {"--name", "KEPT"})[u"condition"], QStringLiteral("written"));
    const QJsonObject report = append("second", 0, {"--verify"});
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(report[u"volumeName"], QStringLiteral("KEPT"));
    EXPECT_EQ(report[u"files"], 2);
    EXPECT_EQ(report[u"keptFiles"], 4);
    EXPECT_EQ(report[u"differenceCount"], 0);
    ASSERT_EQ(disc().sessions(), 2);
    EXPECT_EQ(disc().status, FakeDisc::Status::Appendable);

    const QByteArray medium = mediumFile();
    EXPECT_EQ(namesListed(medium, lastSession()),
              (std::set<std::string>{"/old.txt", "/new.txt", "/empty", "/link", "/shared", "/shared/one.bin",
                                     "/shared/two.bin"}));
    extractWith(medium, lastSession());
    EXPECT_EQ(m_tree.contents("taken/old.txt"), "old");
    EXPECT_EQ(m_tree.contents("taken/new.txt"), "new");
    EXPECT_EQ(m_tree.contents("taken/shared/one.bin"), QByteArray(100'000, '1'));
    EXPECT_EQ(m_tree.contents("taken/shared/two.bin"), QByteArray(70'000, '2'));
    EXPECT_EQ(QFile::symLinkTarget(QFile::decodeName(m_tree.path("taken/link"))),
              QFile::decodeName(m_tree.path("taken/shared/one.bin")));
}

INSTANTIATE_TEST_SUITE_P(AppendToKinds, AppendToKinds,
                         testing::Values(KindOfDisc{"CDR", FakeProfile::CDR, cdBlocks},
                                         KindOfDisc{"CDRW", FakeProfile::CDRW, cdBlocks},
                                         KindOfDisc{"DVDMinusR", FakeProfile::DVDMinusR, dvdMinusBlocks},
                                         KindOfDisc{"DVDMinusRW", FakeProfile::DVDMinusRW, dvdMinusBlocks},
                                         KindOfDisc{"DVDPlusR", FakeProfile::DVDPlusR, dvdPlusBlocks},
                                         KindOfDisc{"BDR", FakeProfile::BDR, 11'826'176}),
                         nameOfTest<KindOfDisc>);

TEST_F(AppendToDisc, contentsOfEarlierFiles_areNotWrittenAgain)
{
    makeBigFile("first/big", 20 << 20);
    m_tree.makeFile("second/small", "x");
    insert(FakeProfile::CDR, cdBlocks);
    append("first");
    append("second");
    EXPECT_LT(disc().tracks.back().length, 1000);
    extractWith(mediumFile(), lastSession());
    EXPECT_EQ(m_tree.contents("taken/big"), m_tree.contents("first/big"));
}

TEST_F(AppendToDisc, thirdSession_leadsToTheFirst)
{
    makeTwoFolders();
    m_tree.makeFile("third/last.txt", "last");
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    append("first");
    append("second");
    EXPECT_EQ(append("third", 0, {"--verify"})[u"keptFiles"], 6);
    extractWith(mediumFile(), lastSession());
    EXPECT_EQ(m_tree.contents("taken/shared/one.bin"), QByteArray(100'000, '1'));
    EXPECT_EQ(m_tree.contents("taken/shared/two.bin"), QByteArray(70'000, '2'));
    EXPECT_EQ(m_tree.contents("taken/last.txt"), "last");
}

TEST_F(AppendToDisc, fileOfTheSamePath_isReplaced_andThatIsSaid)
{
    makeTwoFolders();
    m_tree.makeFile("second/old.txt", "newer");
    insert(FakeProfile::CDR, cdBlocks);
    append("first");
    const ChildResult result =
        runWithDrive({"burn", "--drive", "/dev/sr0", "--multi", "--verify", "-q", "--json", m_tree.path("second")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"replaced"].toArray(), QJsonArray{QStringLiteral("/old.txt")});
    EXPECT_TRUE(result.errors.contains("/old.txt takes the place")) << result.errors.constData();
    extractWith(mediumFile(), lastSession());
    EXPECT_EQ(m_tree.contents("taken/old.txt"), "newer");
}

TEST_F(AppendToDisc, folderInThePlaceOfAFile_isRefused_beforeWriting)
{
    m_tree.makeFile("first/name", "a file");
    m_tree.makeFile("second/name/file", "a folder");
    insert(FakeProfile::CDR, cdBlocks);
    append("first");
    const QJsonObject report = append("second", 1);
    EXPECT_EQ(report[u"error"].toObject()[u"kind"], QStringLiteral("layout"));
    EXPECT_TRUE(report[u"error"].toObject()[u"message"].toString().contains(QStringLiteral("“/name” is a file")));
    EXPECT_EQ(report[u"condition"], QStringLiteral("unchanged"));
    EXPECT_EQ(disc().sessions(), 1);
}

TEST_F(AppendToDisc, sessionOfAnotherProgram_isKept_withItsAttributes)
{
    m_tree.makeFile("first/script.sh", "#!/bin/sh\n");
    m_tree.setMode("first/script.sh", 0755);
    m_tree.setModificationTime("first/script.sh", 1'000'000'000);
    m_tree.makeFile("first/Långt namn med mellanslag.txt", QByteArray(5000, 'n'));
    m_tree.makeFile("second/new.txt", "new");
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    addForeignSession(foreignImage("first", {"-R", "-J", "-V", "FOREIGN"}));
    const QJsonObject report = append("second", 0, {"--verify"});
    EXPECT_EQ(report[u"volumeName"], QStringLiteral("FOREIGN"));
    const QByteArray medium = mediumFile();
    extractWith(medium, lastSession());
    EXPECT_EQ(m_tree.contents("taken/Långt namn med mellanslag.txt"), QByteArray(5000, 'n'));
    const QFileInfo script(QFile::decodeName(m_tree.path("taken/script.sh")));
    EXPECT_TRUE(script.isExecutable());
    EXPECT_EQ(script.lastModified().toSecsSinceEpoch(), 1'000'000'000);
}

/// An image that other programs have made, left with one of its filesystems alone: without the descriptors of ISO 9660.
QByteArray withoutIso9660(QByteArray image)
{
    constexpr qsizetype blockSize = 2048;
    qsizetype free = 16 * blockSize;
    for (qsizetype block = 16; block < 32; ++block) {
        const QByteArray descriptor = image.mid(block * blockSize, blockSize);
        const QByteArray identifier = descriptor.mid(1, 5);
        if (identifier != "CD001" && !QByteArray("BEA01 NSR02 NSR03 TEA01").contains(identifier))
            break;
        image.replace(block * blockSize, blockSize, QByteArray(blockSize, '\0'));
        if (identifier == "CD001")
            continue;
        image.replace(free, blockSize, descriptor); // what says that there is UDF follows at once
        free += blockSize;
    }
    return image;
}

TEST_F(AppendToDisc, sessionOfUDFAlone_isKept)
{
    makeTwoFolders();
    m_tree.makeFile("first/Långt namn.txt", QByteArray(5000, 'n'));
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    addForeignSession(withoutIso9660(foreignImage("first", {"-R", "-udf", "-V", "FOREIGN"})));
    const QJsonObject report = append("second", 0, {"--verify"});
    EXPECT_EQ(report[u"volumeName"], QStringLiteral("FOREIGN"));
    extractWith(mediumFile(), lastSession());
    EXPECT_EQ(m_tree.contents("taken/old.txt"), "old");
    EXPECT_EQ(m_tree.contents("taken/new.txt"), "new");
    EXPECT_EQ(m_tree.contents("taken/shared/one.bin"), QByteArray(100'000, '1'));
    EXPECT_EQ(m_tree.contents("taken/Långt namn.txt"), QByteArray(5000, 'n'));
}

TEST_F(AppendToDisc, sessionOfHFSPlusAlone_isKept_withItsAttributes)
{
    makeTwoFolders();
    m_tree.setMode("first/old.txt", 0640);
    m_tree.setModificationTime("first/old.txt", 1'000'000'000);
    const ProgramRun run = runProgram(
        "xorriso", {"-as", "mkisofs", "-quiet", "-R", "-hfsplus", "-o", m_tree.path("mac.iso"), m_tree.path("first")});
    ASSERT_EQ(run.status, 0) << run.errors.constData();
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    addForeignSession(withoutIso9660(m_tree.contents("mac.iso")));
    append("second", 0, {"--verify"});
    extractWith(mediumFile(), lastSession());
    EXPECT_EQ(m_tree.contents("taken/old.txt"), "old");
    EXPECT_EQ(m_tree.contents("taken/shared/one.bin"), QByteArray(100'000, '1'));
    EXPECT_EQ(m_tree.contents("taken/shared/two.bin"), QByteArray(70'000, '2'));
    EXPECT_EQ(QFile::symLinkTarget(QFile::decodeName(m_tree.path("taken/link"))),
              QFile::decodeName(m_tree.path("taken/shared/one.bin")));
    EXPECT_EQ(QFileInfo(QFile::decodeName(m_tree.path("taken/old.txt"))).lastModified().toSecsSinceEpoch(),
              1'000'000'000);
}

TEST_F(AppendToDisc, names_areThoseThatAnotherProgramMakes_ofTheSameSessions)
{
    makeTwoFolders();
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    addForeignSession(foreignImage("first", {"-R"}));
    const QByteArray begin = QByteArray::number(disc().nextBlock());
    append("second");
    const std::set<std::string> ours = namesListed(mediumFile(), lastSession());
    // The same session, made by a program that reads the first one itself.
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    addForeignSession(foreignImage("first", {"-R"}));
    m_tree.makeFile("begin.img", m_tree.contents("foreign.iso"));
    addForeignSession(foreignImage("second", {"-R", "-C", "0," + begin, "-M", m_tree.path("begin.img")}));
    EXPECT_EQ(ours, namesListed(mediumFile(), lastSession()));
}

TEST_F(AppendToDisc, discThatStartsComputers_doesNotAnyMore_andThatIsTold)
{
    makeTwoFolders();
    m_tree.makeFile("first/boot.bin", QByteArray(2048, '\x90'));
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    addForeignSession(foreignImage("first", {"-R", "-b", "boot.bin", "-no-emul-boot", "-c", "boot.cat"}));
    const QJsonObject report = append("second", 3);
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(report[u"result"], QStringLiteral("incomplete"));
    const QString notes = report[u"notes"].toVariant().toStringList().join(u'\n');
    EXPECT_TRUE(notes.contains(QStringLiteral("El Torito"))) << notes.toStdString();
    EXPECT_TRUE(notes.contains(QStringLiteral("onto another disc"))) << notes.toStdString();
    // What it has started with is a file like the others.
    extractWith(mediumFile(), lastSession());
    EXPECT_EQ(m_tree.contents("taken/boot.bin"), QByteArray(2048, '\x90'));
}

TEST_F(AppendToDisc, soundBeforeData_needsNothingKept)
{
    m_tree.makeFile("album.bin", QByteArray(qsizetype(2352) * 600, '\1'));
    m_tree.makeFile("album.cue", "FILE \"album.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n");
    m_tree.makeFile("second/new.txt", "new");
    insert(FakeProfile::CDR, cdBlocks);
    ASSERT_EQ(append("album.cue")[u"condition"], QStringLiteral("written"));
    const QJsonObject report = append("second", 0, {"--verify"});
    EXPECT_EQ(report[u"keptFiles"], 0);
    ASSERT_EQ(disc().tracks.size(), 2u);
    EXPECT_FALSE(disc().tracks[1].isAudio);
    EXPECT_EQ(disc().tracks[1].session, 2);
}

TEST_F(AppendToDisc, unknownContents_areNotHidden_butRefused)
{
    m_tree.makeFile("second/new.txt", "new");
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    addForeignSession(QByteArray(1 << 20, '\x5A'));
    const QJsonObject report = append("second", 1);
    EXPECT_EQ(report[u"error"].toObject()[u"kind"], QStringLiteral("destination"));
    EXPECT_TRUE(report[u"error"].toObject()[u"message"].toString().contains(QStringLiteral("no filesystem")));
    EXPECT_EQ(report[u"condition"], QStringLiteral("unchanged"));
    EXPECT_EQ(disc().sessions(), 1);
}

TEST_F(AppendToDisc, damagedDirectory_isRefused_byItsName)
{
    makeTwoFolders();
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    QByteArray image = foreignImage("first", {"-R"});
    const ProgramRun run = runProgram("isoinfo", {"-l", "-i", m_tree.path("foreign.iso")});
    // The record "." of the folder leads to itself: the folder's block ends with it when its length is wrong.
    const qsizetype record = image.indexOf("ONE.BIN;1");
    ASSERT_GT(record, 33) << run.output.constData();
    image[record - 33] = char(1); // the length of a record
    addForeignSession(image);
    const QJsonObject report = append("second", 1);
    EXPECT_TRUE(report[u"error"].toObject()[u"message"].toString().contains(QStringLiteral("/shared")))
        << report[u"error"].toObject()[u"message"].toString().toStdString();
    EXPECT_EQ(disc().sessions(), 1);
}

TEST_F(AppendToDisc, filesystemsThatCannotGoOn_areRefused_whenTheyAreNamed)
{
    makeTwoFolders();
    insert(FakeProfile::CDR, cdBlocks);
    append("first");
    const QJsonObject report = append("second", 2, {"--filesystems", "iso9660,udf"});
    EXPECT_EQ(report[u"error"].toObject()[u"kind"], QStringLiteral("usage"));
    EXPECT_EQ(disc().sessions(), 1);
}

TEST_F(AppendToDisc, imageOfData_isRefused_sinceItsAddressesAreWrongThere)
{
    makeTwoFolders();
    ASSERT_EQ(runTessaron({"image", "-o", m_tree.path("second.iso"), m_tree.path("second")}).exitStatus, 0);
    insert(FakeProfile::CDR, cdBlocks);
    append("first");
    EXPECT_EQ(append("second.iso", 1)[u"condition"], QStringLiteral("unchanged"));
    EXPECT_EQ(disc().sessions(), 1);
}

} // namespace

} // namespace Tessaron::Testing
