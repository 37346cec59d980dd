#include "tests/imaging/layoutwriter/LayoutWriterFixture.h"

#include <algorithm>
#include <csignal>
#include <sys/resource.h>

namespace Tessaron::Testing
{

namespace
{

/// What panels do that do not keep to their part, and the ends of a writing.
class KRLayoutWriterPanel : public LayoutWriterFixture
{
protected:
    const QByteArray sixteenBlocks = QByteArray(qsizetype{16} * 2048, 'x');
};

} // namespace

TEST_F(KRLayoutWriterPanel, destruction_isSafe_withinThePanelsStart)
{
    panel->isAsync = true;
    panel->starts = false;
    panel->onStart = [this] { writer.reset(); };
    EXPECT_EQ(start(TessaronDiscImageFormatISO).code(), -4960);
}

TEST_F(KRLayoutWriterPanel, writing_isStopped_whenThePanelRefusesAfterItGaveALayout)
{
    panel->isAsync = true;
    panel->starts = false;
    panel->onStart = [this] {
        panel->manager.lock()->TessaronPanelLayoutIsCreated(*panel, layoutOfBlocks(std::uint64_t(4) << 20));
    };
    EXPECT_EQ(start(TessaronDiscImageFormatISO).code(), -4960);
    panel->isAsync = false;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("finish"));
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
}

TEST_F(KRLayoutWriterPanel, refusal_namesTheFileThatWasAskedFor_whileAnotherIsMade)
{
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    tree.makeFile("other.iso");
    EXPECT_EQ(writer->writeLayoutToFSRef(refOf("other.iso"), panel, TessaronDiscImageFormatISO).filePath(),
              tree.pathText("other.iso"));
    waitForEnd();
}

TEST_F(KRLayoutWriterPanel, writer_mayBeStartedAgain_whenItsPanelIsGone)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    panel = std::make_shared<ScriptedPanel>();
    panel->layout = layoutOfBlocks(16);
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
}

TEST_F(KRLayoutWriterPanel, panelsReports_countNoMore_whileTheImageIsWritten)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    writer->TessaronPanelLayoutIsCreated(*panel, panel->layout);
    writer->TessaronPanelLayoutCreationProgress(*panel, 0.5f);
    writer->TessaronPanelLayoutCreationCancel(*panel);
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("finish")}));
    EXPECT_GE(*std::ranges::min_element(progress), 0.25f);
}

TEST_F(KRLayoutWriterPanel, cancel_isNotForwarded_whenThePanelHasCancelled)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    writer->TessaronPanelLayoutCreationCancel(*panel);
    EXPECT_TRUE(writer->cancelLayoutWritingAsync());
    EXPECT_EQ(panel->asked, QStringList{QStringLiteral("async")});
    EXPECT_EQ(heard, QStringList{QStringLiteral("cancel")});
}

TEST_F(KRLayoutWriterPanel, cancel_isTooLate_withinTheFinish)
{
    onEnd = [this] { EXPECT_TRUE(writer->cancelLayoutWritingAsync()); };
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("finish"));
    EXPECT_TRUE(tree.exists("disc.cue"));
}

TEST_F(KRLayoutWriterPanel, lackOfTheCueSheet_isReportedAfterTheFinish)
{
    tree.makeFolder("disc.cue");
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("finish"), QStringLiteral("lack")}));
    EXPECT_EQ(error.filePath(), tree.pathText("disc.cue"));
    EXPECT_FALSE(error.localizedRecoverySuggestion().isEmpty());
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
}

TEST_F(KRLayoutWriterPanel, lackOfTheHeader_isReportedAfterTheFinish)
{
    fileName = "disc.vant";
    rlimit limit;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlim_t before = limit.rlim_cur;
    const auto handlerBefore = std::signal(SIGXFSZ, SIG_IGN);
    onEnd = [&] { // from now on the image cannot grow
        limit.rlim_cur = rlim_t(sixteenBlocks.size()) + 50;
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    };
    EXPECT_FALSE(start(TessaronDiscImageFormatVANT));
    waitForEnd();
    limit.rlim_cur = before;
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, handlerBefore);
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("finish"), QStringLiteral("lack")}));
    EXPECT_EQ(error.filePath(), tree.pathText(fileName));
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
}

TEST_F(KRLayoutWriterPanel, lack_isReportedToTheDelegateThatIsSetWithinTheFinish)
{
    tree.makeFolder("disc.cue");
    int lacks = 0;
    onEnd = [&] {
        KRLayoutWriterDelegate other;
        other.KRLayoutWriterDidNotCompleteImage = [&](KRLayoutWriter &, const NSError &) { ++lacks; };
        writer->setDelegate(other);
    };
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_EQ(lacks, 1);
    EXPECT_EQ(heard.last(), QLatin1String("finish"));
}

TEST_F(KRLayoutWriterPanel, finish_comes_whereAFifoHasTheCueSheetsName)
{
    tree.makeFifo("disc.cue");
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("finish"), QStringLiteral("lack")}));
}

TEST_F(KRLayoutWriterPanel, writer_takesANameThatIsNotUtf8)
{
    fileName = "d\xFFsc.bin";
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
    EXPECT_TRUE(tree.exists("d\xFFsc.cue"));
}

} // namespace Tessaron::Testing
