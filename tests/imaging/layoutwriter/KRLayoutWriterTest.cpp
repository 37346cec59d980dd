#include "platform/discrecording/objects/DRFolder.h"
#include "platform/disctracks/BlockAddress.h"
#include "platform/disctracks/vant/VANTReader.h"
#include "platform/foundation/DelayedPerform.h"
#include "tests/imaging/layoutwriter/LayoutWriterFixture.h"
#include "tests/support/EventLoop.h"
#include <TessaronClasses/KRTrackWriter.h>
#include <TessaronClasses/VANTHeader.h>

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

using KRLayoutWriterTest = LayoutWriterFixture;

const QByteArray sixteenBlocks(qsizetype{16} * 2048, 'x');

} // namespace

TEST_F(KRLayoutWriterTest, writeLayoutToFSRef_writesTheBlocks_whenThePanelIsSynchronous)
{
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    EXPECT_EQ(panel->asked, QStringList{QStringLiteral("sync")});
    EXPECT_EQ(heard, QStringList()) << "nothing happens within the call";
    EXPECT_EQ(tree.contents(fileName), "what was there before");
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("finish")}));
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
    EXPECT_FALSE(tree.exists("disc.cue"));
}

TEST_F(KRLayoutWriterTest, writing_beginsAMillisecondAfterTheLayoutIsThere)
{
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    qint64 begin = 0;
    onProgress = [&] { begin = timer.nsecsElapsed(); };
    bool wasFirst = false;
    performAfterDelay(&wasFirst, std::chrono::milliseconds(0), [&] { wasFirst = heard.isEmpty(); });
    waitForEnd();
    EXPECT_TRUE(wasFirst) << "what is asked for at once comes before it";
    EXPECT_GE(begin, 1'000'000);
}

TEST_F(KRLayoutWriterTest, writeLayoutToFSRef_writesTheBlocks_whenThePanelReportsItsLayoutLater)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    drainEventLoop();
    EXPECT_EQ(heard, QStringList());
    const std::shared_ptr<TessaronLayoutCreationManager> manager = panel->manager.lock();
    ASSERT_EQ(manager, writer);
    manager->TessaronPanelLayoutCreationProgress(*panel, 0.5f);
    manager->TessaronPanelLayoutIsCreated(*panel, panel->layout);
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("finish")}));
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
    EXPECT_EQ(panel->asked, QStringList{QStringLiteral("async")});
}

TEST_F(KRLayoutWriterTest, writeLayoutToFSRef_works_whenThePanelReportsWithinTheCall)
{
    panel->isAsync = true;
    panel->onStart = [this] { panel->manager.lock()->TessaronPanelLayoutIsCreated(*panel, panel->layout); };
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("finish"));
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
}

TEST_F(KRLayoutWriterTest, progress_takesAQuarterForTheLayoutAndTheRestForTheWriting)
{
    writer->TessaronPanelLayoutCreationProgress(*panel, 0);
    writer->TessaronPanelLayoutCreationProgress(*panel, -1);
    writer->TessaronPanelLayoutCreationProgress(*panel, 0.5f);
    writer->TessaronPanelLayoutCreationProgress(*panel, 1);
    const auto trackWriter = KRTrackWriter::trackWriterWithTrack(panel->layout, tree.pathText("other"));
    writer->KRTrackWriterWritingProgress(*trackWriter, 0);
    writer->KRTrackWriterWritingProgress(*trackWriter, 0.5f);
    writer->KRTrackWriterWritingProgress(*trackWriter, 1);
    EXPECT_EQ(progress, (std::vector<float>{0.125f, 0.25f, 0.625f, 1.0f}));
}

TEST_F(KRLayoutWriterTest, progress_startsAtAQuarterAndNeverFalls_whileWriting)
{
    panel->layout = layoutOfBlocks(20000);
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(progress.front(), 0.25f);
    EXPECT_TRUE(
        std::all_of(progress.begin(), progress.end(), [](float value) { return value >= 0.25f && value <= 1; }));
    EXPECT_TRUE(std::ranges::is_sorted(progress));
    EXPECT_EQ(tree.contents(fileName).size(), 20000 * 2048);
}

TEST_F(KRLayoutWriterTest, writeLayout_reportsAQuarterAndDoesNothingElse_whenAWritingIsUnderWay)
{
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    writer->_writeLayout(panel->layout);
    const std::size_t count = progress.size();
    writer->_writeLayout(layoutOfBlocks(1));
    ASSERT_EQ(progress.size(), count + 1);
    EXPECT_EQ(progress.back(), 0.25f);
    waitForEnd();
    EXPECT_EQ(heard.count(QStringLiteral("finish")), 1);
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
}

TEST_F(KRLayoutWriterTest, finish_isReportedBeforeTheCueSheetIsThere)
{
    bool hadSheet = true;
    onEnd = [this, &hadSheet] { hadSheet = tree.exists("disc.cue"); };
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_FALSE(hadSheet);
    EXPECT_EQ(tree.contents("disc.cue"),
              "FILE \"disc.bin\" BINARY\r\n  TRACK 01 MODE1/2048\r\n    INDEX 01 00:00:00\r\n");
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
}

TEST_F(KRLayoutWriterTest, finish_isReportedBeforeTheHeaderIsAppended)
{
    qsizetype sizeAtEnd = 0;
    onEnd = [this, &sizeAtEnd] { sizeAtEnd = tree.contents(fileName).size(); };
    fileName = "disc.vant";
    EXPECT_FALSE(start(TessaronDiscImageFormatVANT));
    waitForEnd();
    EXPECT_EQ(sizeAtEnd, 16 * 2048);
    const QByteArray image = tree.contents(fileName);
    const VANTReadResult read = VANTReader::imageFromFile(tree.pathText(fileName));
    ASSERT_TRUE(read.image) << qPrintable(read.error.localizedDescription());
    EXPECT_EQ(image.first(qsizetype{16} * 2048), sixteenBlocks);
    EXPECT_EQ(quint64(image.size()), std::size_t{16} * 2048 + read.image->trailerLength)
        << "the header follows directly";
    VANTTrack expected;
    expected.number = 1;
    expected.length = 16;
    expected.blockSize = 2048;
    expected.trackMode = 4;
    expected.dataForm = 16;
    expected.blockType = 8;
    expected.sessionFormat = 0;
    EXPECT_EQ(read.image->sessions, (std::vector<VANTSession>{{{expected}}}));
}

TEST_F(KRLayoutWriterTest, finish_describesTheTracksOfTheLayout_whenTheyAreNotOnePlainTrack)
{
    const auto track = DRTrack::trackForRootFolder(DRFolder::virtualFolderWithName(QStringLiteral("disc")));
    QVariantMap properties = track->properties();
    properties.insert({{DRBlockSizeKey, 2352u}, {DRDataFormKey, 17}, {DRPostGapLengthKey, 150u}});
    properties.insert(DRSerialCopyManagementStateKey, DRSCMSCopyrightProtectedOriginal);
    track->setProperties(properties);
    panel->layout = DRTrackArray{track, track};
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    const qint64 blocks = tree.contents(fileName).size() / 2352 / 2;
    EXPECT_EQ(tree.contents("disc.cue"),
              "FILE \"disc.bin\" BINARY\r\n  TRACK 01 MODE1/2352\r\n    INDEX 01 00:00:00\r\n"
              "  TRACK 02 MODE1/2352\r\n    INDEX 01 "
                  + MSF::ofFrames(blocks).text().toLatin1() + "\r\n");
    EXPECT_EQ(writer->lostInFormat(), QStringList{QStringLiteral("that a track is a protected original")});

    isOver = false;
    fileName = "disc.vant";
    EXPECT_FALSE(start(TessaronDiscImageFormatVANT));
    waitForEnd();
    const VANTReadResult read = VANTReader::imageFromFile(tree.pathText(fileName));
    ASSERT_TRUE(read.image) << qPrintable(read.error.localizedDescription());
    const std::vector<VANTTrack> &tracks = read.image->sessions.at(0).tracks;
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[1].blockSize, 2352u);
    EXPECT_EQ(tracks[1].postgap, 150u);
    EXPECT_EQ(tracks[1].startOffset, quint64(blocks) * 2352);
    EXPECT_EQ(writer->lostInFormat(), QStringList());
}

TEST_F(KRLayoutWriterTest, finish_followsTheFile_whenTheDelegateRenamesIt)
{
    onEnd = [this] { ASSERT_EQ(std::rename(tree.path(fileName).constData(), tree.path("final.bin").constData()), 0); };
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_TRUE(tree.contents("final.cue").startsWith("FILE \"final.bin\""));
    EXPECT_FALSE(tree.exists("disc.cue"));
}

TEST_F(KRLayoutWriterTest, finish_leavesNothingElseBehind_whenTheDelegateRemovesTheFile)
{
    onEnd = [this] { tree.remove(fileName); };
    EXPECT_FALSE(start(TessaronDiscImageFormatVANT));
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("finish"));
    EXPECT_FALSE(tree.exists(fileName));
}

TEST_F(KRLayoutWriterTest, finish_addsWhatTheFormatNeeds_whenTheDelegateLetsGoOfTheWriter)
{
    onEnd = [this] { writer.reset(); };
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_TRUE(tree.exists("disc.cue"));
}

TEST_F(KRLayoutWriterTest, finish_addsNothing_forOtherFormats)
{
    for (const TessaronDiscImageFormat format : {1, 2, 4, 8, 16, 64, 128, 0, 96}) {
        isOver = false;
        EXPECT_FALSE(start(format));
        waitForEnd();
        EXPECT_EQ(tree.contents(fileName), sixteenBlocks) << format;
        EXPECT_FALSE(tree.exists("disc.cue")) << format;
    }
}

TEST_F(KRLayoutWriterTest, writer_writesAnotherImage_whenTheFirstHasEnded)
{
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    isOver = false;
    panel->layout = layoutOfBlocks(3);
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    EXPECT_EQ(tree.contents(fileName).size(), 3 * 2048);
}

TEST_F(KRLayoutWriterTest, layoutIsCreated_isIgnored_whenTheImageIsFinished)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    writer->TessaronPanelLayoutIsCreated(*panel, panel->layout);
    waitForEnd();
    const QStringList before = heard;
    writer->TessaronPanelLayoutIsCreated(*panel, layoutOfBlocks(1));
    writer->TessaronPanelLayoutCreationCancel(*panel);
    writer->TessaronPanelLayoutCreationDidFailWithError(*panel, NSError(NSOSStatusErrorDomain, -36));
    drainEventLoop();
    EXPECT_EQ(heard, before);
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
}

TEST_F(KRLayoutWriterTest, produceDataForTrack_deliversNothing)
{
    char buffer[2048] = {};
    std::uint32_t flags = 0;
    EXPECT_EQ(writer->produceDataForTrack(nullptr, buffer, sizeof(buffer), 0, 2048, &flags), 0u);
}

TEST_F(KRLayoutWriterTest, writer_worksWithoutADelegate)
{
    writer = KRLayoutWriter::layoutWriter();
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    EXPECT_TRUE(runEventLoopUntil([this] { return tree.exists("disc.cue"); }));
    EXPECT_EQ(tree.contents(fileName), sixteenBlocks);
}

TEST_F(KRLayoutWriterTest, writer_keepsSilent_whenTheContextIsGone)
{
    auto context = std::make_shared<int>(0);
    KRLayoutWriterDelegate delegate;
    delegate.context = CallbackContext(context);
    delegate.KRLayoutWriterProgress = [this](KRLayoutWriter &, float) { heard.append(QStringLiteral("progress")); };
    delegate.KRLayoutWriterDidFinishWritingLayout = [this](KRLayoutWriter &) { heard.append(QStringLiteral("end")); };
    writer->setDelegate(delegate);
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    context.reset();
    EXPECT_TRUE(runEventLoopUntil([this] { return tree.exists("disc.cue"); }));
    EXPECT_EQ(heard, QStringList());
}

TEST_F(KRLayoutWriterTest, delegate_mayBeReplacedWithinACallback)
{
    onProgress = [this] {
        KRLayoutWriterDelegate other;
        other.KRLayoutWriterDidFinishWritingLayout = [this](KRLayoutWriter &) {
            heard.append(QStringLiteral("other finish"));
            isOver = true;
        };
        writer->setDelegate(other);
    };
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("other finish")}));
}
