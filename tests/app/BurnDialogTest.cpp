#include "app/BurnDialog.h"

#include "app/AudioPanel.h"
#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/ImagePanel.h"
#include "app/JobRunner.h"
#include "app/MainWindow.h"
#include "app/NoticeBar.h"

#include "tests/app/Waves.h"
#include "tests/fakedrive/FakeDisc.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QUndoStack>

#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

constexpr int cdBlocks = 359'849;
constexpr int dvdBlocks = 2'295'104;
const QByteArray drivePath = QByteArrayLiteral("/dev/sr0");

/// The program's window, and a drive with a disc of the test's choice in it; see FakeDrive.cpp for what that drive
/// shows and what it does not.
class BurnDialogTest : public testing::Test
{
protected:
    BurnDialogTest()
    {
        tree.makeFile("photos/beach.jpg", QByteArray(300'000, 'b'));
        tree.makeFile("letter.txt", "Dear reader,\n");
        tree.makeFolder("drive");
        qputenv("TESSARON_FAKE_DRIVE", tree.path("drive"));
        QObject::connect(&window, &MainWindow::jobEnded, &window, [this](const JobOutcome &ended) { outcome = ended; });
    }

    void insert(const FakeDisc &disc) const { disc.save(tree.path("drive").toStdString()); }
    void insert(FakeProfile profile, int capacity, FakeDisc::Status status = FakeDisc::Status::Blank) const
    {
        FakeDisc disc;
        disc.profile = profile;
        disc.capacity = capacity;
        disc.status = status;
        disc.isFormatted = disc.isOverwritable();
        if (status == FakeDisc::Status::Complete)
            disc.tracks = {{1, 1, 0, 1000, false}};
        insert(disc);
    }
    [[nodiscard]] FakeDisc disc() const { return FakeDisc::load(tree.path("drive").toStdString()); }

    void add(const QList<QByteArray> &paths)
    {
        window.openFiles(paths);
        EXPECT_TRUE(runEventLoopUntil([this] { return !window.dataPanel().dataView().intake().isRunning(); }));
    }
    void takeEverythingOut() const
    {
        QUndoStack &steps = window.dataPanel().document().undoStack();
        while (steps.canUndo())
            steps.undo();
    }
    [[nodiscard]] BurnSubject subject() const
    {
        const std::optional<BurnSubject> found = window.dataPanel().burnSubject();
        EXPECT_TRUE(found);
        return found.value_or(BurnSubject());
    }
    /// A dialog that has looked into the drive.
    [[nodiscard]] std::unique_ptr<BurnDialog> dialog() const
    {
        auto shown = std::make_unique<BurnDialog>(subject());
        shown->show();
        DriveFacts facts;
        facts.drive.path = drivePath;
        facts.drive.vendor = QStringLiteral("MAKER");
        shown->showDrives({facts});
        waitFor(*shown);
        return shown;
    }
    /// The dialog that the window asks by; null when it asks nothing.
    [[nodiscard]] BurnDialog *shownDialog() const
    {
        for (BurnDialog *const each : window.findChildren<BurnDialog *>()) {
            if (each->isVisible())
                return each;
        }
        return nullptr;
    }
    static void lookIntoDrive(BurnDialog &dialog)
    {
        DriveFacts facts;
        facts.drive.path = drivePath;
        dialog.showDrives({facts});
        waitFor(dialog);
    }
    static void waitFor(const BurnDialog &dialog)
    {
        EXPECT_TRUE(runEventLoopUntil([&dialog] { return !dialog.isBusy(); }));
    }
    void burn(BurnDiscOrder settings = {}, DiscFamily family = DiscFamily::DVDPlusR)
    {
        outcome.reset();
        settings.drive = drivePath;
        window.burnDisc(subject(), settings, family);
    }
    void waitForOutcome()
    {
        EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }, std::chrono::minutes(2)));
    }
    /// Answers the question that the window asks; false when it asks none.
    static bool answer(QWidget &parent, QMessageBox::ButtonRole role)
    {
        auto *const question = parent.findChild<QMessageBox *>();
        if (!question)
            return false;
        for (QAbstractButton *const button : question->buttons()) {
            if (question->buttonRole(button) == role) {
                button->click();
                return true;
            }
        }
        return false;
    }

    const TemporaryTree tree;
    MainWindow window;
    std::optional<JobOutcome> outcome;
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

#ifdef TESSARON_TESTS_HAVE_MEDIA

class BurnSoundDialogTest : public BurnDialogTest
{
protected:
    BurnSoundDialogTest()
    {
        tree.makeFile("a.wav", waveOf(5, 1));
        tree.makeFile("b.wav", waveOf(6, 2));
        window.audioPanel().addFiles({tree.path("a.wav"), tree.path("b.wav")});
        EXPECT_TRUE(runEventLoopUntil([this] { return !window.audioPanel().isLooking(); }));
    }
    [[nodiscard]] BurnSubject sound() const
    {
        const std::optional<BurnSubject> found = window.audioPanel().burnSubject();
        EXPECT_TRUE(found);
        return found.value_or(BurnSubject());
    }
};

TEST_F(BurnSoundDialogTest, tracks_areWrittenWithoutAnImage_andCompared)
{
    insert(FakeProfile::CDR, cdBlocks);
    BurnDiscOrder settings;
    settings.drive = drivePath;
    settings.verifies = true;
    window.burnDisc(sound(), settings, DiscFamily::CDR);
    waitForOutcome();
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("compared"))) << outcome->summary.toStdString();
    const FakeDisc written = disc();
    EXPECT_EQ(written.status, FakeDisc::Status::Complete);
    ASSERT_EQ(written.tracks.size(), 2u);
    EXPECT_TRUE(written.tracks[0].isAudio);
    EXPECT_EQ(written.tracks[0].start, 0);
    // From the first sample of one file to the last of the other, as they are.
    constexpr qsizetype frames = 75;
    constexpr qsizetype frameSize = 2352;
    EXPECT_TRUE(tree.contents("drive/sectors").startsWith(QByteArray(5 * frames * frameSize, 1)));
    const FakeTrack &last = written.tracks[1];
    EXPECT_EQ(tree.contents("drive/sectors").mid((last.start + last.length - frames) * frameSize),
              QByteArray(frames * frameSize, 2));
}

TEST_F(BurnSoundDialogTest, soundThatChanges_neverEndsAsWrittenWell)
{
    insert(FakeProfile::CDR, cdBlocks);
    const BurnSubject subject = sound();
    tree.makeFile("b.wav", "not a sound any more");
    BurnDiscOrder settings;
    settings.drive = drivePath;
    window.burnDisc(subject, settings, DiscFamily::CDR);
    waitForOutcome();
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Source)) << outcome->summary.toStdString();
    EXPECT_NE(disc().status, FakeDisc::Status::Complete);
}

TEST_F(BurnSoundDialogTest, otherDiscs_areRefused_andSmallOnesTold)
{
    insert(FakeProfile::DVDPlusRW, dvdBlocks);
    const auto shownFor = [this] {
        auto shown = std::make_unique<BurnDialog>(sound());
        DriveFacts facts;
        facts.drive.path = drivePath;
        shown->showDrives({facts});
        waitFor(*shown);
        return shown;
    };
    const std::unique_ptr<BurnDialog> wrong = shownFor();
    EXPECT_FALSE(wrong->burnButton().isEnabled());
    EXPECT_TRUE(wrong->text().contains(QStringLiteral("CD-R"))) << wrong->text().toStdString();
    EXPECT_FALSE(wrong->openBox().isVisibleTo(wrong.get()));
    insert(FakeProfile::CDR, 600);
    EXPECT_TRUE(shownFor()->text().contains(QStringLiteral("too small")));
    insert(FakeProfile::CDR, 2'000);
    const std::unique_ptr<BurnDialog> right = shownFor();
    EXPECT_TRUE(right->burnButton().isEnabled());
    EXPECT_FALSE(right->text().contains(QStringLiteral("too small"))) << right->text().toStdString();
}

#endif

TEST_F(BurnDialogTest, emptyDisc_isNotBurnt)
{
    window.burn();
    EXPECT_FALSE(window.findChild<BurnDialog *>());
    EXPECT_FALSE(window.notices().text().isEmpty());
}

TEST_F(BurnDialogTest, severalDiscs_areWrittenOneAfterTheOther_eachAskedFor)
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

TEST_F(BurnDialogTest, seriesOfDiscs_asksAgainForOneThatFailed_andSaysWhichAreNotWritten)
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
