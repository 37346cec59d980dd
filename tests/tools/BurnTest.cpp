#include "tests/tools/BurnFixture.h"
#include "tests/tools/WriteGate.h"

#include <QFile>

namespace Tessaron::Testing
{

namespace
{

class BurnToFile : public BurnFixture
{
};

TEST_F(BurnToFile, folder_isWritten_asVerifyAndOtherProgramsReadIt)
{
    makeOrdinaryTree();
    const ChildResult result = burnToFile();
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("wrote a file")) << result.errors.constData();
    EXPECT_EQ(runTessaron({"verify", file(), m_tree.path("source")}).exitStatus, 0);
    EXPECT_EQ(QFile(QFile::decodeName(extracted() + "/folder/two.txt")).size(), 100000);
}

TEST_F(BurnToFile, blocks_areTheSame_asThoseOfTheImage)
{
    makeOrdinaryTree();
    qputenv("SOURCE_DATE_EPOCH", "1700000000");
    ASSERT_EQ(burnToFile({"--name", "DISC"}).exitStatus, 0);
    const QByteArray burnt = m_tree.contents("out/disc.iso");
    ASSERT_EQ(runTessaron(imageArguments({"--name", "DISC"})).exitStatus, 0);
    EXPECT_EQ(burnt, m_tree.contents("out/disc.iso"));
}

TEST_F(BurnToFile, longerFile_endsWithTheLastBlock)
{
    makeOrdinaryTree();
    m_tree.makeFile("out/disc.iso", QByteArray(30'000'000, 'x'));
    ASSERT_EQ(burnToFile({"--verify"}).exitStatus, 0);
    EXPECT_LT(m_tree.contents("out/disc.iso").size(), 30'000'000);
    EXPECT_EQ(runTessaron({"verify", file(), m_tree.path("source")}).exitStatus, 0);
}

TEST_F(BurnToFile, verify_comparesWhatWasWritten_andSaysSo)
{
    makeOrdinaryTree();
    const ChildResult result = burnToFile({"--verify", "--json"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QJsonObject report = jsonOf(result.output);
    EXPECT_EQ(report[u"command"], QStringLiteral("burn"));
    EXPECT_EQ(report[u"result"], QStringLiteral("done"));
    EXPECT_EQ(report[u"condition"], QStringLiteral("written"));
    EXPECT_EQ(report[u"files"], 4);
    EXPECT_EQ(report[u"differenceCount"], 0);
    EXPECT_EQ(report[u"bytesCompared"], 100108);
    EXPECT_EQ(report[u"bytes"], m_tree.contents("out/disc.iso").size());
}

TEST_F(BurnToFile, simulation_leavesNoFile)
{
    makeOrdinaryTree();
    const ChildResult result = burnToFile({"--simulate", "--json"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("unchanged"));
    EXPECT_TRUE(outNames().empty());
}

TEST_F(BurnToFile, image_isWrittenBlockByBlock_andCompared)
{
    makeOrdinaryTree();
    ASSERT_EQ(runTessaron({"image", "-o", m_tree.path("source.iso"), m_tree.path("source")}).exitStatus, 0);
    const ChildResult result =
        runTessaron({"burn", "--drive", "stdio:" + file(), "--verify", "--json", m_tree.path("source.iso")});
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(m_tree.contents("out/disc.iso"), m_tree.contents("source.iso"));
    const QJsonObject report = jsonOf(result.output);
    EXPECT_EQ(report[u"image"], true);
    EXPECT_EQ(report[u"bytesCompared"], m_tree.contents("source.iso").size());
}

TEST_F(BurnToFile, strictOrder_writesNothing_whenSomethingCannotBeStored)
{
    m_tree.makeFile("source/" + QByteArray(200, 'n'), "x");
    const ChildResult result = burnToFile({"--strict", "--filesystems", "joliet", "--json"});
    EXPECT_EQ(result.exitStatus, 1) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"error"].toObject()[u"kind"], QStringLiteral("not-stored"));
    EXPECT_TRUE(outNames().empty());
}

TEST_F(BurnToFile, fileAmongTheSources_isRefused_beforeItIsOpened)
{
    makeOrdinaryTree();
    const ChildResult inside =
        runTessaron({"burn", "--drive", "stdio:" + m_tree.path("source/new.iso"), m_tree.path("source")});
    EXPECT_EQ(inside.exitStatus, 1);
    EXPECT_FALSE(m_tree.exists("source/new.iso"));
    m_tree.makeFile("image.iso", QByteArray(1 << 20, '\0'));
    const ChildResult itself =
        runTessaron({"burn", "--drive", "stdio:" + m_tree.path("image.iso"), m_tree.path("image.iso")});
    EXPECT_EQ(itself.exitStatus, 1);
    EXPECT_TRUE(itself.errors.contains("written over")) << itself.errors.constData();
    EXPECT_EQ(m_tree.contents("image.iso"), QByteArray(1 << 20, '\0'));
}

TEST_F(BurnToFile, otherThanAFile_isNeverWrittenTo)
{
    makeOrdinaryTree();
    for (const QByteArray drive : {"stdio:/dev/null", "stdio:/dev/full", "/dev/null", "stdio:-", "stdio:/dev/fd/1"}) {
        const ChildResult result = runTessaron({"burn", "--drive", drive, m_tree.path("source")});
        EXPECT_EQ(result.exitStatus, 1) << drive.constData();
        EXPECT_TRUE(result.output.isEmpty());
    }
}

TEST_F(BurnToFile, sound_isRefused_withoutWriting)
{
    m_tree.makeFile("album.bin", QByteArray(qsizetype(2352) * 600, '\1'));
    m_tree.makeFile("album.cue", "FILE \"album.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n");
    const ChildResult result = runTessaron({"burn", "--drive", "stdio:" + file(), m_tree.path("album.cue")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("only CDs have")) << result.errors.constData();
    EXPECT_TRUE(outNames().empty());
}

TEST_F(BurnToFile, fullDisk_isAFailure_thatSaysWhatTheFileIsWorth)
{
    makeBigFile("source/big", 4 << 20);
    ChildSettings settings = tessaron({"burn", "--drive", "stdio:" + file(), "--json", m_tree.path("source")});
    settings.fileSizeLimit = 1 << 20;
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 1) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("overwritable"));
    EXPECT_TRUE(result.errors.contains("not whole")) << result.errors.constData();
}

TEST_F(BurnToFile, vanishingSource_neverEndsAsWrittenWell)
{
    makeBigFile("source/a gate", 1 << 20);
    makeBigFile("source/b", 20 << 20);
    makeBigFile("source/c shrinks", 4 << 20);
    WriteGate gate(m_tree.path("source/a gate"));
    if (!gate.isClosed())
        GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
    ChildProcess process(tessaron({"burn", "--drive", "stdio:" + file(), "--json", m_tree.path("source")}));
    ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); })) << process.errorsSoFar().constData();
    QFile::resize(QFile::decodeName(m_tree.path("source/c shrinks")), 100);
    gate.open();
    const ChildResult result = process.finish();
    EXPECT_EQ(result.exitStatus, 1) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("overwritable"));
    EXPECT_TRUE(result.errors.contains("shrinks")) << result.errors.constData();
}

} // namespace

} // namespace Tessaron::Testing
