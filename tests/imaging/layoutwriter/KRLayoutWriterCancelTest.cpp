#include "tests/imaging/layoutwriter/LayoutWriterFixture.h"
#include "tests/support/EventLoop.h"

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

using KRLayoutWriterTest = LayoutWriterFixture;

constexpr quint64 manyBlocks = std::uint64_t{4} * 1024 * 1024; // 8 GiB: never finished by the time of a cancel

} // namespace

TEST_F(KRLayoutWriterTest, cancel_isTrueAndChangesNothing_whenTheWriterIsIdle)
{
    EXPECT_TRUE(writer->cancelLayoutWritingAsync());
    drainEventLoop();
    EXPECT_EQ(heard, QStringList());
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("finish"));
}

TEST_F(KRLayoutWriterTest, cancel_returnsThePanelsAnswer_whileThePanelMakesTheLayout)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    panel->canCancel = false;
    EXPECT_FALSE(writer->cancelLayoutWritingAsync());
    panel->canCancel = true;
    EXPECT_TRUE(writer->cancelLayoutWritingAsync());
    EXPECT_EQ(panel->asked, (QStringList{QStringLiteral("async"), QStringLiteral("cancel"), QStringLiteral("cancel")}));
    EXPECT_EQ(heard, QStringList()) << "only the panel knows when it has stopped";
    writer->TessaronPanelLayoutCreationCancel(*panel);
    EXPECT_EQ(heard, QStringList{QStringLiteral("cancel")});
    EXPECT_EQ(tree.contents(fileName), "what was there before");
}

TEST_F(KRLayoutWriterTest, cancel_isFalse_whenThePanelIsGone)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    panel.reset();
    EXPECT_FALSE(writer->cancelLayoutWritingAsync());
}

TEST_F(KRLayoutWriterTest, cancel_leavesTheFileAlone_whenTheWritingHasNotBegun)
{
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    EXPECT_TRUE(writer->cancelLayoutWritingAsync());
    EXPECT_EQ(heard, QStringList());
    waitForEnd();
    EXPECT_EQ(heard, QStringList{QStringLiteral("cancel")});
    EXPECT_EQ(tree.contents(fileName), "what was there before");
}

TEST_F(KRLayoutWriterTest, cancel_isHeardOnce_whenItIsAskedForTwice)
{
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    EXPECT_TRUE(writer->cancelLayoutWritingAsync());
    EXPECT_TRUE(writer->cancelLayoutWritingAsync());
    waitForEnd();
    EXPECT_EQ(heard, QStringList{QStringLiteral("cancel")});
}

TEST_F(KRLayoutWriterTest, cancel_worksWithinTheFirstProgressReport)
{
    onProgress = [this] { EXPECT_TRUE(writer->cancelLayoutWritingAsync()); };
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("cancel")}));
    EXPECT_EQ(tree.contents(fileName), "what was there before");
}

TEST_F(KRLayoutWriterTest, cancel_removesTheImage_whileItIsWritten)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    writer->TessaronPanelLayoutIsCreated(*panel, layoutOfBlocks(manyBlocks));
    EXPECT_TRUE(writer->cancelLayoutWritingAsync()) << "the panel has done its part";
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("cancel"));
    EXPECT_EQ(heard.count(QStringLiteral("cancel")), 1);
    EXPECT_EQ(panel->asked, QStringList{QStringLiteral("async")});
    EXPECT_FALSE(tree.exists(fileName));
    EXPECT_FALSE(tree.exists("disc.cue"));
}

TEST_F(KRLayoutWriterTest, cancel_worksAfterTheFirstBlocksWereWritten)
{
    panel->layout = layoutOfBlocks(manyBlocks);
    EXPECT_FALSE(start(TessaronDiscImageFormatVANT));
    ASSERT_TRUE(runEventLoopUntil([this] { return progress.size() >= 3; }));
    EXPECT_TRUE(writer->cancelLayoutWritingAsync());
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("cancel")}));
    EXPECT_FALSE(tree.exists(fileName));
}

TEST_F(KRLayoutWriterTest, destruction_stopsQuietly_whenTheWritingHasNotBegun)
{
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    writer.reset();
    drainEventLoop();
    EXPECT_EQ(heard, QStringList());
    EXPECT_EQ(tree.contents(fileName), "what was there before");
}

TEST_F(KRLayoutWriterTest, destruction_removesTheImage_whileItIsWritten)
{
    panel->layout = layoutOfBlocks(manyBlocks);
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    ASSERT_TRUE(runEventLoopUntil([this] { return progress.size() >= 2; }));
    writer.reset();
    drainEventLoop();
    EXPECT_EQ(heard, QStringList{QStringLiteral("progress")});
    EXPECT_FALSE(tree.exists(fileName));
}

TEST_F(KRLayoutWriterTest, destruction_isSafe_withinAProgressReport)
{
    panel->layout = layoutOfBlocks(manyBlocks);
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    ASSERT_TRUE(runEventLoopUntil([this] { return !progress.empty(); }));
    onProgress = [this] { writer.reset(); };
    ASSERT_TRUE(runEventLoopUntil([this] { return !writer; }));
    drainEventLoop();
    EXPECT_EQ(heard, QStringList{QStringLiteral("progress")});
    EXPECT_FALSE(tree.exists(fileName));
}

TEST_F(KRLayoutWriterTest, destruction_leavesThePanelWithoutAManager)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    EXPECT_FALSE(panel->manager.expired());
    writer.reset();
    EXPECT_TRUE(panel->manager.expired()) << "nobody else may keep the writer alive";
}

TEST_F(KRLayoutWriterTest, writer_doesNotOwnThePanel)
{
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    const std::weak_ptr<ScriptedPanel> weakPanel = panel;
    panel.reset();
    EXPECT_TRUE(weakPanel.expired());
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("finish")) << "the layout is all that is needed";
}
