#include "app/ImagePanel.h"
#include "app/NoticeBar.h"

#include "tests/app/BurnDialogFixture.h"
#include <TessaronClasses/DiscJobErrors.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class BurnDialogTest : public BurnDialogFixture
{
};

} // namespace

TEST_F(BurnDialogTest, blankDisc_isTold_andWritten)
{
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    add({tree.path("photos"), tree.path("letter.txt")});
    const std::unique_ptr<BurnDialog> shown = dialog();
    EXPECT_TRUE(shown->text().contains(QStringLiteral("DVD+R"))) << shown->text().toStdString();
    EXPECT_TRUE(shown->text().contains(QStringLiteral("4.4 GB free"))) << shown->text().toStdString();
    EXPECT_TRUE(shown->burnButton().isEnabled());
    EXPECT_FALSE(shown->eraseButton().isVisible());
    EXPECT_EQ(disc().log.find("2a"), std::string::npos) << "looking wrote";

    BurnDiscOrder settings = shown->settings();
    EXPECT_EQ(settings.drive, drivePath);
    EXPECT_TRUE(settings.verifies);
    burn(settings);
    EXPECT_TRUE(window.isWorking());
    waitForOutcome();
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("DVD+R"))) << window.notices().text().toStdString();
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("compared"))) << window.notices().text().toStdString();
    EXPECT_EQ(disc().status, FakeDisc::Status::Complete);
}

TEST_F(BurnDialogTest, simulation_leavesTheDiscAsItIs)
{
    insert(FakeProfile::CDR, cdBlocks);
    add({tree.path("letter.txt")});
    BurnDiscOrder settings;
    settings.isSimulated = true;
    burn(settings, DiscFamily::CDR);
    waitForOutcome();
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("simulated"))) << outcome->summary.toStdString();
    EXPECT_EQ(disc().status, FakeDisc::Status::Blank);
}

TEST_F(BurnDialogTest, returnKey_burns_whereverTheFocusIs)
{
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    add({tree.path("letter.txt")});
    const std::unique_ptr<BurnDialog> shown = dialog();
    EXPECT_TRUE(shown->burnButton().isDefault());
    for (const QPushButton *const button : shown->findChildren<QPushButton *>())
        EXPECT_EQ(button->autoDefault(), button == &shown->burnButton()) << button->text().toStdString();
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(shown.get(), &press);
    EXPECT_EQ(shown->result(), QDialog::Accepted);
}

TEST_F(BurnDialogTest, discWithSessions_isAddedTo_andWhatBecomesOfItIsTold)
{
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    add({tree.path("photos"), tree.path("letter.txt")});
    BurnDiscOrder first;
    first.leavesOpen = true;
    burn(first);
    waitForOutcome();
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    ASSERT_EQ(disc().status, FakeDisc::Status::Appendable);
    const std::string written = disc().log;

    takeEverythingOut();
    tree.makeFile("new/letter.txt", "A newer letter,\n");
    tree.makeFile("new/more.txt", "More.\n");
    add({tree.path("new/letter.txt"), tree.path("new/more.txt")});
    const std::unique_ptr<BurnDialog> shown = dialog();
    EXPECT_TRUE(shown->burnButton().isEnabled());
    EXPECT_TRUE(shown->openBox().isChecked());
    EXPECT_TRUE(shown->settings().leavesOpen);
    EXPECT_TRUE(shown->text().contains(QStringLiteral("1 file(s) on it stay"))) << shown->text().toStdString();
    EXPECT_TRUE(shown->text().contains(QStringLiteral("/letter.txt"))) << shown->text().toStdString();
    EXPECT_EQ(disc().log, written) << "looking wrote";

    burn(shown->settings());
    waitForOutcome();
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    EXPECT_TRUE(outcome->details.join(u'\n').contains(QStringLiteral("/letter.txt")));
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("1 file(s) that it had are kept")))
        << outcome->summary.toStdString();
    EXPECT_EQ(disc().sessions(), 2);
    EXPECT_EQ(disc().status, FakeDisc::Status::Appendable);
}

TEST_F(BurnDialogTest, discThatStartsComputers_isWarnedOf_andWhatIsLostIsTold)
{
    tree.makeFile("system/boot.bin", QByteArray(2048, '\x90'));
    const ProgramRun run = runProgram("genisoimage",
                                      {"-quiet", "-R", "-b", "boot.bin", "-no-emul-boot", "-c", "boot.cat", "-o",
                                       tree.path("system.iso"), tree.path("system")});
    ASSERT_EQ(run.status, 0) << run.errors.constData();
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    window.openFiles({tree.path("system.iso")});
    ASSERT_TRUE(runEventLoopUntil([this] { return !window.imagePanel().isLooking(); }));
    const std::optional<BurnSubject> system = window.imagePanel().burnSubject();
    ASSERT_TRUE(system);
    BurnDiscOrder first;
    first.drive = drivePath;
    first.leavesOpen = true;
    window.burnDisc(*system, first, DiscFamily::DVDPlusR);
    waitForOutcome();
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    ASSERT_EQ(disc().status, FakeDisc::Status::Appendable);

    window.showPanel(0);
    add({tree.path("letter.txt")});
    const std::unique_ptr<BurnDialog> shown = dialog();
    EXPECT_TRUE(shown->burnButton().isEnabled()) << shown->text().toStdString();
    EXPECT_TRUE(shown->text().contains(QStringLiteral("Computers can be started from it now")))
        << shown->text().toStdString();
    burn(shown->settings());
    waitForOutcome();
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_FALSE(outcome->isComplete);
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("Computers cannot be started from it")))
        << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->details.join(u'\n').contains(QStringLiteral("El Torito")))
        << outcome->details.join(u'\n').toStdString();
    // What the next one would add to starts no computers any more, so there is nothing to warn of.
    EXPECT_FALSE(dialog()->text().contains(QStringLiteral("Computers"))) << dialog()->text().toStdString();
}

TEST_F(BurnDialogTest, discWhileSomethingElseIsDone_isDeclined_notForgotten)
{
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    tree.makeSparseFile("big", qint64(3) << 30);
    add({tree.path("big")});
    burn();
    ASSERT_TRUE(window.isWorking());
    std::optional<BurnEnd> end;
    window.burnDisc(subject(), {}, DiscFamily::DVDPlusR, [&end](BurnEnd how, const JobOutcome &) { end = how; });
    EXPECT_EQ(end, BurnEnd::Declined);
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("Something else")))
        << window.notices().text().toStdString();
    window.runner().stop();
    waitForOutcome();
}

TEST_F(BurnDialogTest, whatCannotBeAdded_isTold_beforeAnythingIsWritten)
{
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    add({tree.path("letter.txt")});
    BurnDiscOrder first;
    first.leavesOpen = true;
    burn(first);
    waitForOutcome();
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    const std::string written = disc().log;

    takeEverythingOut();
    tree.makeFile("other/letter.txt/in it", "a folder where the disc has a file");
    add({tree.path("other/letter.txt")});
    const std::unique_ptr<BurnDialog> conflict = dialog();
    EXPECT_FALSE(conflict->burnButton().isEnabled());
    EXPECT_TRUE(conflict->text().contains(QStringLiteral("letter.txt"))) << conflict->text().toStdString();

    takeEverythingOut();
    FakeDisc small = disc();
    small.capacity = small.nextBlock() + 160;
    insert(small);
    add({tree.path("photos")});
    const std::unique_ptr<BurnDialog> full = dialog();
    EXPECT_FALSE(full->burnButton().isEnabled());
    EXPECT_TRUE(full->text().contains(QStringLiteral("too much"))) << full->text().toStdString();
    EXPECT_EQ(disc().log, written);
}

TEST_F(BurnDialogTest, rewritableDisc_isReplaced_unlessTheUserWantsItKept)
{
    insert(FakeProfile::DVDPlusRW, 20'000);
    add({tree.path("photos")});
    burn({}, DiscFamily::Overwritable);
    waitForOutcome();
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();

    takeEverythingOut();
    add({tree.path("letter.txt")});
    const std::unique_ptr<BurnDialog> shown = dialog();
    EXPECT_TRUE(shown->text().contains(QStringLiteral("will be replaced"))) << shown->text().toStdString();
    EXPECT_FALSE(shown->settings().leavesOpen);
    shown->openBox().click();
    waitFor(*shown);
    EXPECT_TRUE(shown->settings().leavesOpen);
    EXPECT_TRUE(shown->text().contains(QStringLiteral("1 file(s) on it stay"))) << shown->text().toStdString();
    EXPECT_FALSE(shown->text().contains(QStringLiteral("will be replaced"))) << shown->text().toStdString();
    EXPECT_TRUE(shown->burnButton().isEnabled());

    BurnDiscOrder settings = shown->settings();
    settings.verifies = true;
    burn(settings, DiscFamily::Overwritable);
    waitForOutcome();
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("1 file(s) that it had are kept")))
        << outcome->summary.toStdString();
    shown->openBox().click();
    EXPECT_FALSE(shown->isBusy());
    EXPECT_TRUE(shown->text().contains(QStringLiteral("will be replaced"))) << shown->text().toStdString();
}

TEST_F(BurnDialogTest, fullDisc_isNotOffered)
{
    insert(FakeProfile::DVDPlusR, dvdBlocks, FakeDisc::Status::Complete);
    add({tree.path("letter.txt")});
    const std::unique_ptr<BurnDialog> shown = dialog();
    EXPECT_FALSE(shown->burnButton().isEnabled());
    EXPECT_FALSE(shown->eraseButton().isVisible());
    EXPECT_TRUE(shown->text().contains(QStringLiteral("another disc"))) << shown->text().toStdString();
}

TEST_F(BurnDialogTest, emptyDrive_andABusyOne_areTold)
{
    add({tree.path("letter.txt")});
    insert(FakeProfile::None, 0);
    const std::unique_ptr<BurnDialog> shown = dialog();
    EXPECT_TRUE(shown->text().contains(QStringLiteral("no disc"))) << shown->text().toStdString();
    EXPECT_FALSE(shown->burnButton().isEnabled());
    tree.makeFile("drive/busy");
    const std::unique_ptr<BurnDialog> other = dialog();
    EXPECT_TRUE(other->text().contains(QStringLiteral("in use"))) << other->text().toStdString();
    EXPECT_FALSE(other->burnButton().isEnabled());
}

TEST_F(BurnDialogTest, smallDisc_isWarnedOf)
{
    insert(FakeProfile::CDR, 320);
    add({tree.path("photos")});
    EXPECT_TRUE(dialog()->text().contains(QStringLiteral("too small"))) << dialog()->text().toStdString();
    burn({}, DiscFamily::CDR);
    waitForOutcome();
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Space)) << outcome->summary.toStdString();
    EXPECT_EQ(disc().log.find("2a"), std::string::npos);
}

TEST_F(BurnDialogTest, rewritableDisc_isErased_onlyWhenTheUserAgrees)
{
    insert(FakeProfile::CDRW, cdBlocks, FakeDisc::Status::Complete);
    add({tree.path("letter.txt")});
    const std::unique_ptr<BurnDialog> shown = dialog();
    ASSERT_TRUE(shown->eraseButton().isVisible()) << shown->text().toStdString();
    EXPECT_FALSE(shown->burnButton().isEnabled());
    shown->eraseButton().click();
    EXPECT_TRUE(answer(*shown, QMessageBox::RejectRole));
    drainEventLoop();
    EXPECT_FALSE(shown->isBusy());
    EXPECT_EQ(disc().status, FakeDisc::Status::Complete);
    shown->eraseButton().click();
    EXPECT_TRUE(answer(*shown, QMessageBox::DestructiveRole));
    EXPECT_TRUE(shown->isBusy());
    shown->reject(); // cannot be stopped
    EXPECT_TRUE(shown->isVisible());
    waitFor(*shown);
    EXPECT_EQ(disc().status, FakeDisc::Status::Blank);
    EXPECT_TRUE(shown->burnButton().isEnabled()) << shown->text().toStdString();
}

TEST_F(BurnDialogTest, fault_isTold_withWhatTheDiscIsWorth)
{
    FakeDisc faulty;
    faulty.profile = FakeProfile::DVDPlusR;
    faulty.capacity = dvdBlocks;
    faulty.faults = {{0x2A, 2, 0, 3, 0x0C, 0x00}};
    insert(faulty);
    add({tree.path("photos")});
    burn();
    waitForOutcome();
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Write)) << outcome->summary.toStdString();
    EXPECT_FALSE(outcome->error.localizedRecoverySuggestion().isEmpty());
    EXPECT_TRUE(window.notices().text().contains(outcome->error.localizedRecoverySuggestion()))
        << window.notices().text().toStdString();
}

TEST_F(BurnDialogTest, stopping_asksNothing_beforeAnythingIsWritten)
{
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    add({tree.path("photos")});
    burn();
    window.runner().cancel();
    EXPECT_FALSE(window.findChild<QMessageBox *>());
    waitForOutcome();
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Cancelled)) << outcome->summary.toStdString();
    EXPECT_EQ(disc().status, FakeDisc::Status::Blank);
}

TEST_F(BurnDialogTest, window_closesAfterTheDriveWasLetGo)
{
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    tree.makeSparseFile("big", qint64(3) << 30);
    add({tree.path("big")});
    window.dataPanel().document().undoStack().setClean();
    window.show();
    burn();
    EXPECT_TRUE(runEventLoopUntil([this] { return window.runner().isWritingDisc(); }));
    window.runner().cancel();
    EXPECT_TRUE(answer(window, QMessageBox::RejectRole));
    drainEventLoop();
    EXPECT_TRUE(window.isWorking());
    EXPECT_FALSE(outcome);

    window.close();
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(answer(window, QMessageBox::DestructiveRole));
    waitForOutcome();
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Cancelled)) << outcome->summary.toStdString();
    EXPECT_FALSE(window.isVisible());
    EXPECT_NE(disc().status, FakeDisc::Status::Complete);
}

TEST_F(BurnDialogTest, imageOfThePanelForImages_isWrittenBlockByBlock)
{
    insert(FakeProfile::DVDPlusR, dvdBlocks);
    tree.makeFile("disc.iso", QByteArray(qsizetype(2048) * 400, 'i'));
    window.openFiles({tree.path("disc.iso")});
    EXPECT_TRUE(runEventLoopUntil([this] { return !window.imagePanel().isLooking(); }));
    const std::optional<BurnSubject> image = window.imagePanel().burnSubject();
    ASSERT_TRUE(image);
    BurnDiscOrder settings;
    settings.drive = drivePath;
    settings.verifies = true;
    window.burnDisc(*image, settings, DiscFamily::DVDPlusR);
    waitForOutcome();
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_EQ(disc().status, FakeDisc::Status::Complete);
    ASSERT_FALSE(disc().tracks.empty());
    EXPECT_GE(disc().tracks.front().length, 400);
}

TEST_F(BurnDialogTest, emptyDisc_isNotBurnt)
{
    window.burn();
    EXPECT_FALSE(window.findChild<BurnDialog *>());
    EXPECT_FALSE(window.notices().text().isEmpty());
}
