#include "tests/tools/BurnFixture.h"
#include "tests/tools/WriteGate.h"

#include <QFile>
#include <QJsonArray>

namespace Tessaron::Testing
{

namespace
{

constexpr int trayCommand = 0x1B;

class BurnOptions : public BurnFixture
{
protected:
    BurnOptions() { makeOrdinaryTree(); }

    [[nodiscard]] static QString notesOf(const QJsonObject &report)
    {
        return report[u"notes"].toVariant().toStringList().join(u'\n');
    }
};

TEST_F(BurnOptions, disc_staysIn_unlessItIsToBeEjected)
{
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    EXPECT_EQ(burnt(0)[u"condition"], QStringLiteral("written"));
    EXPECT_FALSE(disc().isTrayOut);
    // Opened, let go after the writing, and opened once more to see what became of the disc.
    EXPECT_EQ(disc().tray, "unlock in lock start start unlock stop unlock in lock start start unlock stop");
}

TEST_F(BurnOptions, ejectedDisc_isOut_onceAllIsWrittenAndCompared)
{
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    const QJsonObject report = burnt(0, {"--eject", "--verify"});
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(notesOf(report), QString());
    EXPECT_TRUE(disc().isTrayOut);
    EXPECT_EQ(disc().tray, "unlock in lock start start unlock stop unlock in lock start start unlock out stop");
}

TEST_F(BurnOptions, ejectedDisc_isOut_afterAFailureAsWell)
{
    insert(FakeProfile::CDR, cdBlocks, {{writeCommand, 3, 0, 3, 0x0C, 0}});
    const QJsonObject report = burnt(1, {"--eject"});
    EXPECT_EQ(report[u"fault"], QStringLiteral("write-error"));
    EXPECT_EQ(report[u"condition"], QStringLiteral("spoiled"));
    EXPECT_TRUE(disc().isTrayOut);
}

TEST_F(BurnOptions, discThatIsHeld_isWritten_andThatItStaysInIsTold)
{
    constexpr int loadings = 2; // before the writing, and after it
    insert(FakeProfile::CDR, cdBlocks, {{trayCommand, loadings, 0, 5, 0x53, 2}});
    const ChildResult result =
        runWithDrive({"burn", "--drive", "/dev/sr0", "--eject", "--json", m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("did not put the disc out. Press the button")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("wrote a CD-R")) << result.errors.constData();
    const QJsonObject report = jsonOf(result.output);
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_TRUE(notesOf(report).contains(QStringLiteral("did not put the disc out")));
    EXPECT_FALSE(disc().isTrayOut);
}

TEST_F(BurnOptions, file_isNotEjected)
{
    const ChildResult result = burnToFile({"--eject", "--json"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(notesOf(jsonOf(result.output)), QString());
}

TEST_F(BurnOptions, speed_isCountedFromThatOfTheKindOfDisc)
{
    insert(FakeProfile::CDR, cdBlocks);
    EXPECT_EQ(burnt(0, {"--speed", "8"})[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(disc().writeSpeed, 1412); // 8 times 176.4
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    EXPECT_EQ(burnt(0, {"--speed", "4x"})[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(disc().writeSpeed, 5540); // 4 times 1385
}

TEST_F(BurnOptions, drives_tellsTheSpeeds_fromTheSlowestOn)
{
    insert(FakeProfile::DVDPlusR, dvdPlusBlocks);
    const ChildResult result = runWithDrive({"drives", "--json", "/dev/sr0"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QJsonObject drive = jsonOf(result.output)[u"drives"].toArray().first().toObject();
    const QStringList speeds = drive[u"disc"].toObject()[u"speeds"].toVariant().toStringList();
    EXPECT_EQ(speeds.join(u' '), QStringLiteral("1412 8468"));
    EXPECT_EQ(disc().writeSpeed, 0) << "looking changes nothing";
}

TEST_F(BurnOptions, sourceThatFails_neverEndsAsWrittenWell_onADisc)
{
    makeBigFile("source/b", 40 << 20); // more than fits into all buffers: the drive writes by then
    makeBigFile("source/c gate", 1 << 20);
    makeBigFile("source/d shrinks", 4 << 20);
    insert(FakeProfile::CDRW, cdBlocks);
    WriteGate gate(m_tree.path("source/c gate"));
    if (!gate.isClosed())
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    ChildProcess process(withDrive({"burn", "--drive", "/dev/sr0", "--json", m_tree.path("source")}));
    ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); })) << process.errorsSoFar().constData();
    QFile::resize(QFile::decodeName(m_tree.path("source/d shrinks")), 100);
    gate.open();
    const ChildResult result = process.finish();
    EXPECT_EQ(result.exitStatus, 1) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("needs-blanking"));
    EXPECT_TRUE(result.errors.contains("shrinks")) << result.errors.constData();
    EXPECT_NE(disc().status, FakeDisc::Status::Complete);
}

} // namespace

} // namespace Tessaron::Testing
