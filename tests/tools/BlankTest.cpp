#include "tests/tools/BurnFixture.h"

#include <QJsonArray>

namespace Tessaron::Testing
{

namespace
{

constexpr int bdBlocks = 11'826'176;
constexpr int formatCommand = 0x04;

/// `tessaron blank` with the fake drive.
class Blank : public BurnFixture
{
protected:
    Blank() { makeOrdinaryTree(); }

    [[nodiscard]] ChildResult blank(const QList<QByteArray> &options) const
    {
        return runWithDrive(QList<QByteArray>({"blank", "--drive", "/dev/sr0", "--json"}) + options);
    }
    /// A report's disc after the blanking.
    [[nodiscard]] static QJsonObject after(const ChildResult &result)
    {
        return jsonOf(result.output)[u"after"].toObject();
    }
};

TEST_F(Blank, format_makesADVDRWOverwritable_andItIsWrittenAgainAndAgain)
{
    insert(FakeProfile::DVDMinusRW, dvdMinusBlocks);
    const ChildResult result = blank({"--format"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("formatted a DVD-RW")) << result.errors.constData();
    EXPECT_EQ(disc().log, "1b5504351b");
    EXPECT_EQ(disc().format, "0023128000000800"); // a full format of all its blocks
    EXPECT_EQ(after(result)[u"profile"], int(FakeProfile::DVDMinusRWOverwrite));
    for (int time = 0; time < 2; ++time)
        EXPECT_EQ(burnt(0, {"--verify"})[u"condition"], QStringLiteral("written"));
}

struct FormatCase {
    const char *name;
    FakeProfile profile;
    int blocks;
    const char *format; ///< as the drive is told
};

void PrintTo(const FormatCase &one, std::ostream *out)
{
    *out << one.name;
}

class BlankFormats : public Blank, public testing::WithParamInterface<FormatCase>
{
};

TEST_P(BlankFormats, format_isToldTheDrive_whetherTheDiscIsNewOrUsed)
{
    FakeDisc unused;
    unused.profile = GetParam().profile;
    unused.capacity = GetParam().blocks;
    insert(unused);
    for (int time = 0; time < 2; ++time) {
        const ChildResult result = blank({"--format"});
        ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
        EXPECT_EQ(disc().log, "1b04351b");
        EXPECT_EQ(disc().format, GetParam().format);
        EXPECT_TRUE(disc().isFormatted);
        EXPECT_EQ(after(result)[u"state"], QStringLiteral("blank"));
        EXPECT_EQ(after(result)[u"freeBlocks"], GetParam().blocks);
        EXPECT_EQ(burnt(0, {"--verify"})[u"condition"], QStringLiteral("written"));
        FakeDisc used = disc();
        used.log.clear();
        used.format.clear();
        insert(used);
    }
}

INSTANTIATE_TEST_SUITE_P(BlankFormats, BlankFormats,
                         testing::Values(FormatCase{"DVDPlusRW", FakeProfile::DVDPlusRW, 2'295'104, "ffffffff98000000"},
                                         FormatCase{"BDRE", FakeProfile::BDRE, bdBlocks, "00b47400c0000800"}),
                         nameOfTest<FormatCase>);

TEST_F(Blank, format_isRefused_whereADiscHasNone)
{
    insert(FakeProfile::CDRW, cdBlocks);
    const ChildResult result = blank({"--format"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("cannot be formatted")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("Put a DVD-RW")) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"fault"], QStringLiteral("wrong-disc"));
    EXPECT_EQ(disc().format, "");
}

TEST_F(Blank, failingFormat_saysWhatTheDiscIsWorth)
{
    insert(FakeProfile::DVDMinusRW, dvdMinusBlocks);
    ASSERT_EQ(burnt(0)[u"condition"], QStringLiteral("written"));
    FakeDisc written = disc();
    written.faults = {{formatCommand, 0, 0, 3, 0x31, 0}};
    insert(written);
    const ChildResult result = blank({"--format"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("blank it in full")) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[u"condition"], QStringLiteral("needs-blanking"));
}

TEST_F(Blank, missingDisc_isTold_withWhatToDo)
{
    insert(FakeProfile::None, 0);
    for (const QByteArray option : {"--full", "--format"}) {
        const ChildResult result = blank({option});
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_EQ(jsonOf(result.output)[u"fault"], QStringLiteral("no-disc"));
        EXPECT_TRUE(result.errors.contains("Put one in")) << result.errors.constData();
    }
}

TEST_F(Blank, ejectedDisc_isOut_andOneThatIsHeldIsTold)
{
    insert(FakeProfile::CDRW, cdBlocks);
    const ChildResult result = blank({"--eject"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(disc().isTrayOut);
    EXPECT_TRUE(jsonOf(result.output)[u"notes"].toArray().isEmpty());
    FakeDisc held = disc();
    held.faults = {{0x1B, 2, 0, 5, 0x53, 2}};
    insert(held);
    const ChildResult second = blank({"--eject"});
    EXPECT_EQ(second.exitStatus, 0) << second.errors.constData();
    EXPECT_TRUE(second.errors.contains("did not put the disc out. Press the button")) << second.errors.constData();
    EXPECT_EQ(jsonOf(second.output)[u"notes"].toArray().size(), 1);
    EXPECT_FALSE(disc().isTrayOut);
}

} // namespace

} // namespace Tessaron::Testing
