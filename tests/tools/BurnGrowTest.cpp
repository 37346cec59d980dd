#include "tests/support/RunProgram.h"
#include "tests/tools/BurnFixture.h"

#include <QFile>
#include <QJsonArray>

namespace Tessaron::Testing
{

namespace
{

constexpr int smallDisc = 20'000; // blocks

/// Adding to what is overwritten, which has no sessions.
class GrowBase : public BurnFixture
{
protected:
    GrowBase()
    {
        m_tree.makeFile("first/old.txt", "old");
        m_tree.makeFile("first/shared/one.bin", QByteArray(100'000, '1'));
        m_tree.makeFile("second/new.txt", "new");
        m_tree.makeFile("second/shared/two.bin", QByteArray(70'000, '2'));
    }

    QJsonObject burnTo(const QByteArray &drive, const QByteArray &source, int expectedStatus = 0,
                       const QList<QByteArray> &options = {"--multi"}) const
    {
        return burntTo(drive, options + QList<QByteArray>({m_tree.path(source)}), expectedStatus);
    }

    /// Other programs find the files of both, and nothing of a filesystem that shows the first ones alone.
    void expectBoth(const QByteArray &medium) const
    {
        EXPECT_EQ(namesListed(medium),
                  (std::set<std::string>{"/old.txt", "/new.txt", "/shared", "/shared/one.bin", "/shared/two.bin"}));
        extractWith(medium);
        EXPECT_EQ(m_tree.contents("taken/old.txt"), "old");
        EXPECT_EQ(m_tree.contents("taken/new.txt"), "new");
        EXPECT_EQ(m_tree.contents("taken/shared/one.bin"), QByteArray(100'000, '1'));
        EXPECT_EQ(m_tree.contents("taken/shared/two.bin"), QByteArray(70'000, '2'));
        const ProgramRun kind = runProgram("blkid", {"-p", "-o", "value", "-s", "TYPE", medium});
        EXPECT_EQ(kind.output.trimmed(), "iso9660") << kind.errors.constData();
        EXPECT_NE(runProgram("udfinfo", {medium}).status, 0);
        const QJsonObject inspected = jsonOf(runTessaron({"inspect", "--json", medium}).output);
        QStringList kinds;
        for (const auto &value : inspected[u"filesystems"].toArray()) {
            const QJsonObject volume = value.toObject();
            kinds << volume[u"filesystem"].toString();
            EXPECT_EQ(volume[u"files"], 4) << kinds.back().toStdString();
        }
        EXPECT_EQ(kinds.join(u' '), QStringLiteral("iso9660 rockridge joliet"));
        EXPECT_EQ(inspected[u"problemCount"], 0);
    }
};

class GrowKinds : public GrowBase, public testing::WithParamInterface<KindOfDisc>
{
};

TEST_P(GrowKinds, addedFolder_isSeenBesideTheOld_byOtherPrograms)
{
    insert(GetParam().profile, GetParam().blocks);
    ASSERT_EQ(burnTo("/dev/sr0", "first", 0, {"--multi", "--name", "KEPT"})[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(runProgram("udfinfo", {mediumFile()}).status, 0) << "an empty disc takes all filesystems";
    const QJsonObject report = burnTo("/dev/sr0", "second", 0, {"--multi", "--verify"});
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(report[u"volumeName"], QStringLiteral("KEPT"));
    EXPECT_EQ(report[u"files"], 2);
    EXPECT_EQ(report[u"keptFiles"], 2);
    EXPECT_EQ(report[u"differenceCount"], 0);
    expectBoth(mediumFile());
}

INSTANTIATE_TEST_SUITE_P(GrowKinds, GrowKinds,
                         testing::Values(KindOfDisc{"DVDPlusRW", FakeProfile::DVDPlusRW, smallDisc},
                                         KindOfDisc{"DVDMinusRWOverwrite", FakeProfile::DVDMinusRWOverwrite, smallDisc},
                                         KindOfDisc{"BDRE", FakeProfile::BDRE, smallDisc}),
                         nameOfTest<KindOfDisc>);

class Grow : public GrowBase
{
protected:
    [[nodiscard]] QByteArray fileDrive() const { return "stdio:" + file(); }
};

TEST_F(Grow, file_isAddedTo_andItsOldContentsStayWhereTheyAre)
{
    burnTo(fileDrive(), "first");
    const QByteArray before = m_tree.contents("out/disc.iso");
    const QJsonObject report = burnTo(fileDrive(), "second", 0, {"--multi", "--verify"});
    EXPECT_EQ(report[u"keptFiles"], 2);
    EXPECT_TRUE(report[u"notes"].toArray().contains(QStringLiteral(
        "UDF and HFS+ that the disc had would go on showing its earlier files alone: they are taken away")));
    expectBoth(file());
    const QByteArray after = m_tree.contents("out/disc.iso");
    constexpr qsizetype behindTheAnchor = qsizetype(257) * 2048;
    ASSERT_GT(after.size(), before.size());
    EXPECT_EQ(after.mid(behindTheAnchor, before.size() - behindTheAnchor), before.mid(behindTheAnchor));
}

TEST_F(Grow, thirdAddition_leadsToTheFirst_andReplacesByName)
{
    m_tree.makeFile("third/old.txt", "newest");
    burnTo(fileDrive(), "first");
    burnTo(fileDrive(), "second");
    const QJsonObject report = burnTo(fileDrive(), "third", 0, {"--multi", "--verify"});
    EXPECT_EQ(report[u"keptFiles"], 3);
    EXPECT_EQ(report[u"replaced"].toArray(), QJsonArray{QStringLiteral("/old.txt")});
    extractWith(file());
    EXPECT_EQ(m_tree.contents("taken/old.txt"), "newest");
    EXPECT_EQ(m_tree.contents("taken/shared/one.bin"), QByteArray(100'000, '1'));
}

TEST_F(Grow, imageOfAnotherProgram_isAddedTo)
{
    m_tree.makeFolder("out");
    const ProgramRun run =
        runProgram("genisoimage", {"-quiet", "-R", "-J", "-udf", "-V", "FOREIGN", "-o", file(), m_tree.path("first")});
    ASSERT_EQ(run.status, 0) << run.errors.constData();
    const QJsonObject report = burnTo(fileDrive(), "second", 0, {"--multi", "--verify"});
    EXPECT_EQ(report[u"volumeName"], QStringLiteral("FOREIGN"));
    expectBoth(file());
}

TEST_F(Grow, imageThatStartsComputers_doesNotAnyMore_andThatIsTold)
{
    m_tree.makeFolder("out");
    m_tree.makeFile("first/boot.bin", QByteArray(2048, '\x90'));
    const ProgramRun run = runProgram(
        "genisoimage",
        {"-quiet", "-R", "-b", "boot.bin", "-no-emul-boot", "-c", "boot.cat", "-o", file(), m_tree.path("first")});
    ASSERT_EQ(run.status, 0) << run.errors.constData();
    ASSERT_FALSE(jsonOf(runTessaron({"inspect", "--json", file()}).output)[u"boot"].toArray().isEmpty());
    const QJsonObject report = burnTo(fileDrive(), "second", 3);
    const QString notes = report[u"notes"].toVariant().toStringList().join(u'\n');
    EXPECT_TRUE(notes.contains(QStringLiteral("El Torito"))) << notes.toStdString();
    EXPECT_TRUE(jsonOf(runTessaron({"inspect", "--json", file()}).output)[u"boot"].toArray().isEmpty());
    // What replaces everything has nothing to keep.
    const QJsonObject replaced = burnTo(fileDrive(), "second", 0, {});
    EXPECT_TRUE(replaced[u"notes"].toArray().isEmpty());
}

TEST_F(Grow, withoutTheOption_whatIsThereIsReplaced)
{
    burnTo(fileDrive(), "first");
    burnTo(fileDrive(), "second", 0, {});
    EXPECT_EQ(namesListed(file()), (std::set<std::string>{"/new.txt", "/shared", "/shared/two.bin"}));
}

TEST_F(Grow, unknownContents_areNotWrittenOver_butRefused)
{
    m_tree.makeFile("out/disc.iso", QByteArray(1 << 20, '\x5A'));
    const QJsonObject report = burnTo(fileDrive(), "second", 1);
    EXPECT_EQ(report[u"error"].toObject()[u"kind"], QStringLiteral("destination"));
    EXPECT_EQ(report[u"condition"], QStringLiteral("unchanged"));
    EXPECT_EQ(m_tree.contents("out/disc.iso"), QByteArray(1 << 20, '\x5A'));
}

TEST_F(Grow, image_isNotAdded_sinceItsAddressesAreWrongThere)
{
    ASSERT_EQ(runTessaron({"image", "-o", m_tree.path("second.iso"), m_tree.path("second")}).exitStatus, 0);
    burnTo(fileDrive(), "first");
    const QByteArray before = m_tree.contents("out/disc.iso");
    EXPECT_EQ(burnTo(fileDrive(), "second.iso", 2)[u"error"].toObject()[u"kind"], QStringLiteral("usage"));
    EXPECT_EQ(m_tree.contents("out/disc.iso"), before);
}

TEST_F(Grow, tooMuch_isRefused_beforeTheFirstBlock)
{
    insert(FakeProfile::DVDPlusRW, 2'000);
    burnTo("/dev/sr0", "first");
    makeBigFile("second/big", 4 << 20);
    const std::string log = disc().log;
    EXPECT_EQ(burnTo("/dev/sr0", "second", 1)[u"fault"], QStringLiteral("full"));
    EXPECT_EQ(disc().log, log);
}

TEST_F(Grow, fullDisk_leavesTheFileAsItWas)
{
    burnTo(fileDrive(), "first");
    const QByteArray before = m_tree.contents("out/disc.iso");
    makeBigFile("second/big", 4 << 20);
    ChildSettings settings = tessaron({"burn", "--drive", fileDrive(), "--multi", "--json", m_tree.path("second")});
    settings.fileSizeLimit = 2 << 20;
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 1) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("unchanged"));
    EXPECT_TRUE(m_tree.contents("out/disc.iso") == before);
}

TEST_F(Grow, failure_leavesWhatTheDiscHad)
{
    insert(FakeProfile::DVDPlusRW, smallDisc);
    burnTo("/dev/sr0", "first");
    const QByteArray before = sectors(0, 300, 2048);
    FakeDisc written = disc();
    written.faults = {{writeCommand, 3, 0, 3, 0x0C, 0}};
    insert(written);
    const QJsonObject report = burnTo("/dev/sr0", "second", 1);
    EXPECT_EQ(report[u"fault"], QStringLiteral("write-error"));
    EXPECT_EQ(report[u"condition"], QStringLiteral("appendable"));
    EXPECT_TRUE(report[u"error"].toObject()[u"advice"].toString().contains(QStringLiteral("as before")));
    EXPECT_EQ(sectors(0, 300, 2048), before);
}

} // namespace

} // namespace Tessaron::Testing
