#include "app/ImagePanel.h"
#include "app/NoticeBar.h"

#include "tests/app/BurnDialogFixture.h"
#include <TessaronClasses/DiscJobErrors.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class BurnSeriesTest : public BurnDialogFixture
{
};

} // namespace

TEST_F(BurnSeriesTest, severalDiscs_areWrittenOneAfterTheOther_eachAskedFor)
{
    tree.makeFile("a/one", QByteArray(1'000'000, 'x'));
    tree.makeFile("a/two", QByteArray(1'000'000, 'y'));
    tree.makeFile("b/three", QByteArray(1'000'000, 'z'));
    add({tree.path("a"), tree.path("b")});
    DiscSplitOrder order;
    order.tree = copyForJob(window.dataPanel().document().model().root());
    order.capacity = 2'900'000;
    order.volumeName = QStringLiteral("Summer");
    DiscSplitJob split(order);
    bool isSplit = false;
    QObject::connect(&split, &DiscSplitJob::finished, &window, [&isSplit] { isSplit = true; });
    split.start();
    ASSERT_TRUE(runEventLoopUntil([&isSplit] { return isSplit; }));
    ASSERT_EQ(split.result().discs.size(), 2u);

    const auto burnIn = [this](BurnDialog &dialog) {
        lookIntoDrive(dialog);
        ASSERT_TRUE(dialog.burnButton().isEnabled()) << dialog.text().toStdString();
        outcome.reset();
        dialog.burnButton().click();
        waitForOutcome();
        ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
        EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    };
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    window.dataPanel().burnShares(split.result().discs);
    BurnDialog *const first = shownDialog();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->windowTitle(), QStringLiteral("Disc 1 of 2: Summer 1"));
    burnIn(*first);
    // The first disc is still in the drive: the second one does not go onto it.
    BurnDialog *const second = shownDialog();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->windowTitle(), QStringLiteral("Disc 2 of 2: Summer 2"));
    lookIntoDrive(*second);
    EXPECT_FALSE(second->burnButton().isEnabled()) << second->text().toStdString();
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    burnIn(*second);
    EXPECT_TRUE(window.notices().text().startsWith(QStringLiteral("2 of 2"))) << window.notices().text().toStdString();
    EXPECT_FALSE(window.isWorking());
    EXPECT_EQ(shownDialog(), nullptr);
}

TEST_F(BurnSeriesTest, seriesOfDiscs_asksAgainForOneThatFailed_andSaysWhichAreNotWritten)
{
    add({tree.path("photos")});
    DiscShare share;
    share.tree = copyForJob(window.dataPanel().document().model().root());
    share.volumeName = QStringLiteral("Summer 1");
    DiscShare other;
    other.tree = copyForJob(window.dataPanel().document().model().root());
    other.volumeName = QStringLiteral("Summer 2");
    FakeDisc faulty;
    faulty.profile = FakeProfile::DVDPlusR;
    faulty.capacity = dvdBlocks;
    faulty.faults = {{0x2A, 2, 0, 3, 0x0C, 0x00}};
    insert(faulty);
    window.dataPanel().burnShares({share, other});
    BurnDialog *const first = shownDialog();
    ASSERT_TRUE(first);
    lookIntoDrive(*first);
    first->burnButton().click();
    waitForOutcome();
    EXPECT_TRUE(outcome->error);
    BurnDialog *const again = shownDialog();
    ASSERT_TRUE(again);
    EXPECT_EQ(again->windowTitle(), QStringLiteral("Disc 1 of 2: Summer 1"));
    again->reject();
    EXPECT_TRUE(window.notices().text().startsWith(QStringLiteral("0 of 2"))) << window.notices().text().toStdString();
    const QStringList &details = window.notices().details();
    EXPECT_TRUE(details.front().startsWith(QStringLiteral("Summer 1: "))) << details.join(u'\n').toStdString();
    EXPECT_EQ(details.back(), QStringLiteral("Summer 2 is not written."));
}
