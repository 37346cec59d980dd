#include "platform/foundation/NSBundle.h"
#include "tests/imaging/layoutwriter/LayoutWriterFixture.h"
#include "tests/support/EventLoop.h"
#include <TessaronClasses/KRTrackWriter.h>

#include <QFile>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

using KRLayoutWriterTest = LayoutWriterFixture;

NSError makePanelError()
{
    return NSError(NSOSStatusErrorDomain, -36, {{NSLocalizedDescriptionKey, QStringLiteral("no")}});
}

/// Delivers nothing, which fails a burn.
class EmptyProducer final : public DRTrackProducer
{
public:
    std::uint32_t produceDataForTrack(DRTrack *, char *, std::uint32_t, std::uint64_t, std::uint32_t,
                                      std::uint32_t *) override
    {
        return 0;
    }
};

DRLayout failingLayout()
{
    std::shared_ptr<DRTrack> track = DRTrack::trackWithProducer(std::make_shared<EmptyProducer>());
    track->setProperties({{DRBlockSizeKey, 2048u}, {DRTrackLengthKey, quint64(4)}});
    return track;
}

} // namespace

TEST_F(KRLayoutWriterTest, writeLayoutToFSRef_returnsAnError_whenThePanelDoesNotStart)
{
    panel->isAsync = true;
    panel->starts = false;
    const NSError refused = start(TessaronDiscImageFormatISO);
    EXPECT_EQ(refused,
              NSError(NSOSStatusErrorDomain, -4960,
                      {{NSFilePathErrorKey, tree.pathText(fileName)},
                       {NSLocalizedDescriptionKey, QStringLiteral("disc image creation failed")}}));
    drainEventLoop();
    EXPECT_EQ(heard, QStringList());
    EXPECT_EQ(tree.contents(fileName), "what was there before");
}

TEST_F(KRLayoutWriterTest, writeLayoutToFSRef_takesTheTextOfTheError_fromTheMainBundle)
{
    tree.makeFile("app/Resources/Localizable.strings", "\"disc image creation failed\" = \"Kein Abbild\";\n");
    NSBundle::setMainBundlePath(tree.pathText("app"));
    panel->isAsync = true;
    panel->starts = false;
    EXPECT_EQ(start(TessaronDiscImageFormatISO).localizedDescription(), QStringLiteral("Kein Abbild"));
}

TEST_F(KRLayoutWriterTest, writeLayoutToFSRef_mayBeCalledAgain_whenThePanelDidNotStart)
{
    panel->isAsync = true;
    panel->starts = false;
    EXPECT_TRUE(start(TessaronDiscImageFormatISO));
    panel->isAsync = false;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("finish"));
}

TEST_F(KRLayoutWriterTest, writeLayoutToFSRef_returnsThePanelsError_whenItMakesNoLayout)
{
    panel->error = makePanelError();
    EXPECT_EQ(start(TessaronDiscImageFormatISO), makePanelError());
    drainEventLoop();
    EXPECT_EQ(heard, QStringList());
    EXPECT_EQ(tree.contents(fileName), "what was there before");
}

TEST_F(KRLayoutWriterTest, writeLayoutToFSRef_returnsAnError_whenThereIsNoPanel)
{
    tree.makeFile(fileName);
    EXPECT_EQ(writer->writeLayoutToFSRef(refOf(fileName), nullptr, TessaronDiscImageFormatISO).code(), -4960);
}

TEST_F(KRLayoutWriterTest, writeLayoutToFSRef_isRefused_whileAnImageIsMade)
{
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    tree.makeFile("other.iso");
    EXPECT_EQ(writer->writeLayoutToFSRef(refOf("other.iso"), panel, TessaronDiscImageFormatBIN).code(), -4960);
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("finish"));
    EXPECT_EQ(tree.contents("other.iso"), "");
    EXPECT_FALSE(tree.exists("disc.cue"));
}

TEST_F(KRLayoutWriterTest, failure_isReported_whenThePanelGivesNeitherLayoutNorError)
{
    panel->layout = DRLayout();
    EXPECT_FALSE(start(TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("fail")}));
    EXPECT_EQ(error.code(), -4960);
    EXPECT_EQ(tree.contents(fileName), "what was there before");
    EXPECT_FALSE(tree.exists("disc.cue"));
}

TEST_F(KRLayoutWriterTest, failure_isReported_whenThePanelFails)
{
    panel->isAsync = true;
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    writer->TessaronPanelLayoutCreationDidFailWithError(*panel, makePanelError());
    EXPECT_EQ(heard, QStringList{QStringLiteral("fail")});
    EXPECT_EQ(error, makePanelError());
    EXPECT_TRUE(writer->cancelLayoutWritingAsync()) << "the panel is at work no more";
    EXPECT_EQ(panel->asked, QStringList{QStringLiteral("async")});
    EXPECT_EQ(tree.contents(fileName), "what was there before");
}

TEST_F(KRLayoutWriterTest, failure_namesTheImpossiblePath_whenTheReferenceHasNone)
{
    tree.makeFile(fileName);
    const FSRef ref = refOf(fileName);
    tree.remove(fileName);
    EXPECT_FALSE(writer->writeLayoutToFSRef(ref, panel, TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("fail")}));
    EXPECT_EQ(
        error,
        NSError(NSOSStatusErrorDomain, -20, {{NSFilePathErrorKey, QStringLiteral("/i/dont/exist/seriously/foo")}}));
    EXPECT_FALSE(tree.exists("disc.cue"));
}

TEST_F(KRLayoutWriterTest, failure_isReported_whenTheDestinationIsAFolder)
{
    tree.makeFolder("folder");
    EXPECT_FALSE(writer->writeLayoutToFSRef(refOf("folder"), panel, TessaronDiscImageFormatBIN));
    waitForEnd();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("progress"), QStringLiteral("fail")}));
    EXPECT_EQ(error.code(), -20);
    EXPECT_EQ(error.filePath(), tree.pathText("folder"));
    EXPECT_FALSE(tree.exists("folder.cue"));
}

TEST_F(KRLayoutWriterTest, failure_leavesNeitherImageNorAddition_whenTheWritingFails)
{
    for (const TessaronDiscImageFormat format : {TessaronDiscImageFormatBIN, TessaronDiscImageFormatVANT}) {
        heard.clear();
        isOver = false;
        panel->layout = failingLayout();
        EXPECT_FALSE(start(format));
        waitForEnd();
        EXPECT_EQ(heard.last(), QLatin1String("fail"));
        EXPECT_EQ(heard.count(QStringLiteral("fail")), 1);
        EXPECT_FALSE(tree.exists(fileName));
        EXPECT_FALSE(tree.exists("disc.cue"));
    }
}

TEST_F(KRLayoutWriterTest, failure_permitsANewAttempt_withinTheCallback)
{
    panel->layout = failingLayout();
    onEnd = [this] {
        isOver = false;
        panel->layout = layoutOfBlocks(2);
        EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    };
    EXPECT_FALSE(start(TessaronDiscImageFormatISO));
    waitForEnd();
    EXPECT_EQ(heard.last(), QLatin1String("finish"));
    EXPECT_EQ(tree.contents(fileName).size(), 2 * 2048);
}
