#include "dvd/MediaIdentifier.h"

#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/dvdplayback/DVDSession.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSBundle.h"
#include "tests/dvd/ControllerFixture.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QSlider>

#include <TessaronClassesUI/ControlWindow.h>
#include <TessaronClassesUI/DVDBookmark.h>
#include <TessaronClassesUI/DVDEvent.h>
#include <TessaronClassesUI/PlaybackTime.h>
#include <TessaronClassesUI/VideoWindow.h>
#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace Tessaron::Testing
{

namespace
{

using Session = ControllerTest;

/// What the call throws as a failed assertion.
std::string thrownBy(const std::function<void()> &call)
{
    try {
        call();
    } catch (const NSInternalInconsistencyException &exception) {
        return exception.what();
    }
    return "nothing";
}

constexpr qint64 placeOfRegions = 0x23;

} // namespace

TEST(DVDEvent, holdsTheCodeAndTwoValues)
{
    const std::shared_ptr<const DVDEvent> event = DVDEvent::initWithData(20, 61'500, 0xffff'ffff);
    EXPECT_EQ(event->eventCode(), 20U);
    EXPECT_EQ(event->eventData1(), 61'500U);
    EXPECT_EQ(event->eventData2(), 0xffff'ffffU);
}

TEST(MediaIdentifier, isPrintedAsCPrintsIt)
{
    const auto words = [](std::uint32_t first, std::uint32_t second) {
        std::array<std::uint8_t, 8> bytes{};
        std::memcpy(bytes.data(), &first, 4);
        std::memcpy(bytes.data() + 4, &second, 4);
        return mediaIdentifierText(bytes);
    };
    EXPECT_EQ(words(0x12345678, 0x9abcdef0), "0x123456789abcdef0");
    EXPECT_EQ(words(1, 5), "0x0000000100000005");
    EXPECT_EQ(words(0, 5), "0000000000000005");
}

// Life cycle.

TEST_F(Session, sharedInstance_isOne_whateverMakesIt)
{
    EXPECT_EQ(DVDController::sharedInstance(), controller);
    EXPECT_EQ(DVDController::init(), controller);
    EXPECT_EQ(DVDController::initWithOutlets({}), controller);
    EXPECT_NE(DVDController::init_old(), controller);
    controller->applicationWillTerminate();
    EXPECT_NE(DVDController::sharedInstance(), controller) << "it was given up";
    DVDController::sharedInstance()->applicationWillTerminate();
}

TEST_F(Session, init_connectsTheWindowFile)
{
    const DVDControllerOutlets &outlets = controller->outlets();
    ASSERT_TRUE(outlets.mPlayButton && outlets.mAudioControl && outlets.mSceneText && outlets.mTitleText
                && outlets.mControlWindow && outlets.mTimeText && outlets.mVideoWindow);
    EXPECT_TRUE(outlets.mControlWindow->isWindow() && outlets.mVideoWindow->isWindow());
    EXPECT_FALSE(outlets.mVideoWindow->isVisible());
    EXPECT_TRUE(outlets.mControlWindow->isVisible());
    EXPECT_TRUE(controller->bookmarks().empty());
    EXPECT_TRUE(controller->volumePath().isNull());
    EXPECT_EQ(controller->dvdState(), 0);
    EXPECT_EQ(controller->eventCallBackID(), 0U);
    EXPECT_EQ(controller->fatalError(), noErr);
    EXPECT_EQ(lines(), QStringList());
}

/// The names that the window file gives to its controls, and those of the controller, are the same.
TEST_F(Session, windowFile_reachesEveryAction)
{
    const std::set<QString> actions = {
        text("onMediaFolder"),    text("onPlay"),        text("onPause"),        text("onStop"),
        text("onEject"),          text("onScanForward"), text("onScanBackward"), text("onPreviousScene"),
        text("onNextScene"),      text("onToggleMenu"),  text("onNextAngle"),    text("onNewBookmark"),
        text("onNextBookmark"),   text("onVolumeDown"),  text("onVolumeUp"),     text("onMute"),
        text("onShowController"), text("onVideoMax"),    text("onVideoNormal"),  text("onVideoSmall"),
    };
    std::set<QString> ofMenus, ofControls;
    for (const QObject *const object : controller->outlets().mControlWindow->findChildren<QObject *>()) {
        const QString action = object->property("action").toString();
        if (!action.isEmpty())
            (qobject_cast<const QAction *>(object) ? ofMenus : ofControls).insert(action);
    }
    EXPECT_EQ(ofMenus, actions);
    const auto itemsOfVideoWindow = controller->outlets().mVideoWindow->actions();
    EXPECT_EQ(std::size_t(itemsOfVideoWindow.size()), actions.size());
    EXPECT_TRUE(ofControls.contains(text("onAudioVolume")));
    EXPECT_EQ(controller->outlets().mPlayButton->property("action").toString(), text("onPlay"));
    keepReports();
    for (const std::set<QString> &names : {ofMenus, ofControls}) {
        for (const QString &name : names) {
            // That of media waits for the user.
            EXPECT_TRUE(name == text("onMediaFolder")
                        || controller->performAction(name, controller->outlets().mAudioControl))
                << name.toStdString();
        }
    }
    EXPECT_FALSE(controller->performAction(text("onPlay:"), nullptr));
    EXPECT_FALSE(controller->performAction(text("dealloc"), nullptr));
}

TEST_F(Session, destruction_takesWindowsAndCallBacksAlong)
{
    const QPointer<VideoWindow> window = controller->outlets().mVideoWindow;
    controller->beginSession();
    controller->applicationWillTerminate();
    controller = nullptr;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(window.isNull());
    controller = DVDController::sharedInstance();
}

TEST_F(Session, controllerThatEndsWithinASession_hearsNothingMore)
{
    std::shared_ptr<DVDController> other = DVDController::init_old();
    other->beginSession();
    const std::weak_ptr<DVDController> end = other;
    other = nullptr;
    EXPECT_TRUE(end.expired());
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(disc(), &ref, nullptr), noErr);
    ASSERT_EQ(DVDOpenMediaFile(&ref), noErr) << "the session goes on";
    ASSERT_EQ(DVDPlay(), noErr);
    ASSERT_EQ(::kill(DVDSession::instance().helperProcess(), SIGKILL), 0);
    bool hasMedia = true;
    EXPECT_TRUE(waitUntil([&] { return DVDHasMedia(&hasMedia) == noErr && !hasMedia; }));
    EXPECT_FALSE(steps().contains(text("fatal error -70191")));
}

TEST_F(Session, application_beginsAndEndsTheSession)
{
    controller->applicationDidFinishLaunching();
    EXPECT_EQ(steps(),
              QStringList({text("Step 1: Begin Session"), text("Step 2: Set Video Window"),
                           text("Step 3: Set Video Display")}));
    EXPECT_NE(controller->eventCallBackID(), 0U);
    EXPECT_EQ(title(), text("-"));
    EXPECT_EQ(controller->outlets().mTimeText->text(), text("00:00:00"));
    EXPECT_EQ(controller->applicationShouldTerminate(), 1);
    EXPECT_FALSE(controller->searchMountedDVDDisc());
    controller->applicationWillTerminate();
    EXPECT_EQ(steps().last(), text("Step 8: End Session"));
    bool hasMedia = false;
    EXPECT_EQ(DVDHasMedia(&hasMedia), kDVDErrorUninitializedLib);
}

TEST_F(Session, oldInitialiser_makesTheApplicationsDelegate)
{
    const std::shared_ptr<DVDController> old = DVDController::init_old();
    EXPECT_FALSE(old->outlets().mVideoWindow);
    performOnMainThread([&] {
        EXPECT_TRUE(steps().contains(text("Step 1: Begin Session"))) << "the launch was told";
        NSApplication::sharedApplication().terminate(old.get());
    });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_EQ(steps(), QStringList({text("Step 1: Begin Session"), text("Step 8: End Session")}));
}

// The session.

TEST_F(Session, beginSession_tellsThatAnotherProcessPlays)
{
    const OtherSession other(m_tree.path("runtime/tessaron-dvd.lock"));
    AlertCloser closer;
    EXPECT_EQ(thrownBy([&] { controller->beginSession(); }), "DVDRegisterEventCallBack returned -70003");
    EXPECT_EQ(steps().mid(0, 2), QStringList({text("Step 1: Begin Session"), text("DVDInitialize returned -70002")}));
    EXPECT_EQ(closer.criticalAlerts, 1);
    EXPECT_EQ(closer.texts,
              QStringList({text("The DVD player is busy."),
                           text("Another player has a DVD open. Close it there, then open the DVD again.")}));
    EXPECT_EQ(controller->eventCallBackID(), 0U);
    keepReports();
    controller->beginSession();
    EXPECT_EQ(
        reports->descriptions,
        QStringList({text("DVDRegisterEventCallBack returned -70003"), text("DVDSetFatalErrorCallBack returned -70003"),
                     text("DVDSetTimeEventRate returned -70003")}));
    EXPECT_EQ(reports->lastMethod, text("beginSession"));
    EXPECT_EQ(reports->lastFile, text("DVDController"));
    EXPECT_EQ(reports->lastObject, controller.get());
    EXPECT_GT(reports->lastLine, 0);
}

TEST_F(Session, beginSession_onlyLogs_whereNoSessionCanBeBegun)
{
    m_tree.makeFolder("runtime/tessaron-dvd.lock"); // where the file of the session's lock belongs
    AlertCloser closer;
    keepReports();
    controller->beginSession();
    EXPECT_EQ(closer.texts, QStringList());
    EXPECT_EQ(steps(), QStringList({text("Step 1: Begin Session"), text("DVDInitialize returned -70001")}));
    EXPECT_EQ(reports->descriptions.value(0), text("DVDRegisterEventCallBack returned -70003")) << "it goes on";
}

TEST_F(Session, beginSession_goesOn_whenTheSessionIsHeldHere)
{
    ASSERT_EQ(DVDInitialize(), noErr);
    AlertCloser closer;
    controller->beginSession();
    EXPECT_EQ(closer.criticalAlerts, 1);
    EXPECT_NE(controller->eventCallBackID(), 0U);
}

TEST_F(Session, displayAlert_saysThatATextIsMissing)
{
    AlertCloser closer;
    EXPECT_EQ(controller->displayAlertWithMessage(text("no such key"), text("noRegionCode")), NSAlertFirstButtonReturn);
    EXPECT_EQ(closer.texts, QStringList({text("No translation"), text("The drive has no region code for this DVD.")}));
}

TEST_F(Session, openMedia_begins_andTellsTheDisc)
{
    testing::internal::CaptureStdout();
    ASSERT_TRUE(controller->openMedia(path(), false));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Media status 0\n");
    std::array<std::uint8_t, 8> identity{};
    ASSERT_EQ(DVDGetMediaUniqueID(identity.data()), noErr);
    std::array<std::uint32_t, 2> words{};
    std::memcpy(words.data(), identity.data(), sizeof words);
    EXPECT_EQ(
        lines(),
        QStringList({text("Step 1: Begin Session"), text("Step 2: Set Video Window"), text("Step 3: Set Video Display"),
                     text("Step 5: Open Media"), text("Media Folder: ") + path(),
                     QString::asprintf("Media ID: 0x%08x%08x", words[0], words[1]), text("Disc Regions: 0x0"),
                     text("Drive Region: 0xff"), text("Changes Left: -1")}));
    EXPECT_TRUE(controller->outlets().mVideoWindow->isVisible());
    EXPECT_TRUE(controller->hasMedia());
    EXPECT_TRUE(controller->volumePath().isNull());
    controller->closeMedia();
    EXPECT_EQ(lines().last(), text("Step 7: Close Media"));
    EXPECT_FALSE(controller->hasMedia());
    controller->closeMedia();
    EXPECT_EQ(lines().count(text("Step 7: Close Media")), 1);
}

TEST_F(Session, openMedia_closesWhatWasOpen)
{
    ASSERT_TRUE(openAndPlay(1, 2));
    controller->onNewBookmark();
    EXPECT_EQ(controller->bookmarks().size(), 1U);
    ASSERT_TRUE(waitUntil([&] { return title() == text("1") && scene() == text("2"); }));
    ASSERT_TRUE(controller->openMedia(path("pal"), true));
    EXPECT_EQ(controller->volumePath(), path("pal"));
    EXPECT_TRUE(controller->bookmarks().empty());
    EXPECT_EQ(title(), text("-"));
    EXPECT_EQ(scene(), text("-"));
    EXPECT_EQ(
        steps(),
        QStringList({text("Step 1: Begin Session"), text("Step 2: Set Video Window"), text("Step 3: Set Video Display"),
                     text("Step 5: Open Media"), text("Step 7: Close Media"), text("Step 5: Open Media")}));
    ASSERT_TRUE(controller->openMedia(path("pal"), true)) << "the same disc again";
    controller->closeMedia();
    EXPECT_TRUE(controller->volumePath().isNull());
}

TEST_F(Session, openMedia_refusesWhatIsNoDisc)
{
    const QString folder = QString::fromUtf8(m_tree.makeFolder("empty"));
    const QString file = QString::fromUtf8(m_tree.makeFile("file", "DVDVIDEO"));
    const QString umlaut = QString::fromUtf8(m_tree.makeSymbolicLink("f\xc3\xbcr", disc()));
    testing::internal::CaptureStdout();
    EXPECT_FALSE(controller->openMedia(m_tree.pathText("missing"), false));
    EXPECT_FALSE(controller->openMedia(file, false));
    EXPECT_FALSE(controller->openMedia(umlaut, false)) << "not a path in ASCII";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(controller->openMedia(folder, true));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Media status 0\n");
    EXPECT_EQ(steps().count(text("NOT VALID")), 4);
    EXPECT_EQ(steps().count(text("Step 1: Begin Session")), 1);
    FSRef ref;
    EXPECT_TRUE(controller->isValidMedia(path(), &ref));
    FSRef expected;
    ASSERT_EQ(FSPathMakeRef(path().toUtf8(), &expected, nullptr), noErr);
    EXPECT_EQ(ref, expected);
}

TEST_F(Session, openMedia_leavesOpenWhatIsOpen_whenTheNextIsNoDisc)
{
    ASSERT_TRUE(controller->openMedia(path(), false));
    EXPECT_FALSE(controller->openMedia(QString::fromUtf8(m_tree.makeFolder("empty")), false));
    EXPECT_TRUE(controller->hasMedia());
}

TEST_F(Session, openMedia_beginsOnceMore_behindTheApplicationsSession)
{
    controller->applicationDidFinishLaunching();
    AlertCloser closer;
    EXPECT_TRUE(controller->openMedia(path(), false));
    EXPECT_EQ(closer.criticalAlerts, 1) << "the session is held, by this process";
    EXPECT_EQ(steps().count(text("Step 1: Begin Session")), 2);
    controller->endSession();
    bool hasMedia = false;
    EXPECT_EQ(DVDHasMedia(&hasMedia), kDVDErrorUninitializedLib);
}

TEST_F(Session, endSession_isForGood)
{
    controller->endSession();
    EXPECT_EQ(steps(), QStringList()) << "without a session";
    ASSERT_TRUE(controller->openMedia(path(), false));
    controller->endSession();
    EXPECT_EQ(steps().mid(4), QStringList({text("Step 7: Close Media"), text("Step 8: End Session")}));
    EXPECT_EQ(controller->eventCallBackID(), 0U);
    controller->endSession();
    EXPECT_EQ(steps().count(text("Step 8: End Session")), 1);
    testing::internal::CaptureStdout();
    EXPECT_FALSE(controller->openMedia(path(), false)) << "no session is begun for media a second time";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Media status -70003\n");
    EXPECT_EQ(steps().last(), text("NOT VALID"));
    controller->beginSession();
    EXPECT_TRUE(controller->openMedia(path(), false));
}

TEST_F(Session, calls_areReported_withoutASession)
{
    EXPECT_EQ(thrownBy([&] { static_cast<void>(controller->hasMedia()); }), "DVDHasMedia returned -70003");
    EXPECT_EQ(thrownBy([&] { controller->closeMedia(); }), "DVDHasMedia returned -70003");
    EXPECT_EQ(thrownBy([&] { controller->onPlay(); }), "DVDHasMedia returned -70003");
    EXPECT_EQ(thrownBy([&] { controller->onMediaFolder(); }), "DVDHasMedia returned -70003");
    EXPECT_EQ(thrownBy([&] { controller->onMute(); }), "DVDMute returned -70003");
    EXPECT_EQ(thrownBy([&] { controller->onVolumeUp(); }), "DVDSetAudioVolume returned -70003");
    EXPECT_EQ(thrownBy([&] { controller->machineWillSleep(); }), "DVDSleep returned -70003");
    EXPECT_EQ(thrownBy([&] { controller->machineDidWake(); }), "DVDWakeUp returned -70003");
    keepReports();
    EXPECT_FALSE(controller->hasMedia());
    EXPECT_EQ(reports->descriptions, QStringList(text("DVDHasMedia returned -70003")));
}

TEST_F(Session, calls_areReported_whenTheSessionHasGoneMeanwhile)
{
    controller->beginSession();
    ASSERT_EQ(DVDDispose(), noErr);
    EXPECT_EQ(thrownBy([&] { controller->endSession(); }), "DVDHasMedia returned -70003");
    EXPECT_NE(controller->eventCallBackID(), 0U) << "nothing more was done";
    keepReports();
    controller->endSession();
    EXPECT_EQ(reports->descriptions,
              QStringList({text("DVDHasMedia returned -70003"), text("DVDDispose returned -70003")}));
    EXPECT_EQ(controller->eventCallBackID(), 0U);
}

TEST_F(Session, regions_areLogged_andAMismatchIsAWarning)
{
    const QByteArray copy = copyOfDisc();
    patchTable("VIDEO_TS", placeOfRegions, '\xfc'); // for regions 1 and 2
    DVDSession::instance().setDriveRegion(DVDDriveRegion{0xfe, 4}); // set to region 1
    ASSERT_TRUE(controller->openMedia(QString::fromUtf8(copy), false));
    EXPECT_EQ(lines().mid(6, 3),
              QStringList({text("Disc Regions: 0xfc"), text("Drive Region: 0xfe"), text("Changes Left: 4")}));
    EXPECT_FALSE(lines().contains(text("Warning: region code mismatch")));
    controller->closeMedia();
    patchTable("VIDEO_TS", placeOfRegions, '\x01'); // for all but region 1
    DVDSession::instance().setDriveRegion(DVDDriveRegion{0x02, 0}); // an odd drive: all but region 2
    ASSERT_TRUE(controller->openMedia(QString::fromUtf8(copy), false));
    EXPECT_EQ(lines().last(), text("Warning: region code mismatch"));
}

TEST_F(Session, wrongRegion_isReported_andThenEndsTheApplication)
{
    const QByteArray copy = copyOfDisc();
    patchTable("VIDEO_TS", placeOfRegions, '\xfe');
    DVDSession::instance().setDriveRegion(DVDDriveRegion{0xfd, 4});
    AlertCloser closer;
    EXPECT_EQ(thrownBy([&] { static_cast<void>(controller->openMedia(QString::fromUtf8(copy), true)); }),
              "DVDOpenMediaVolume returned -70024");
    EXPECT_EQ(closer.criticalAlerts, 0) << "the rest is not done";
    keepReports();
    performOnMainThread([&] {
        EXPECT_FALSE(controller->openMedia(QString::fromUtf8(copy), false));
        EXPECT_EQ(reports->descriptions, QStringList(text("DVDOpenMediaFile returned -70024")));
        EXPECT_EQ(reports->lastMethod, text("openMedia"));
        EXPECT_EQ(closer.texts.value(0), text("The drive has no region code for this DVD."));
        EXPECT_EQ(closer.criticalAlerts, 1);
    });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_TRUE(controller->volumePath().isNull());
}

TEST_F(Session, alerts_areInTheUsersLanguage)
{
    NSBundle::frameworkBundle()->setPreferredLanguages({text("de_AT"), text("de")});
    AlertCloser closer;
    static_cast<void>(controller->displayAlertWithMessage(text("frameworkBusy"), text("noRegionCode")));
    NSBundle::frameworkBundle()->setPreferredLanguages({text("en")});
    EXPECT_EQ(closer.texts,
              QStringList({text("Der DVD-Spieler ist belegt."),
                           text("Das Laufwerk hat keinen L\xe4"
                                "ndercode f\xfcr diese DVD.")}));
}

// Events.

TEST_F(Session, events_changeWhatIsShown)
{
    const auto tell = [&](std::uint32_t code, std::uint32_t value1, std::uint32_t value2 = 0) {
        controller->handleDVDEvent(DVDEvent::initWithData(code, value1, value2));
    };
    controller->beginSession();
    VideoWindow *const window = controller->outlets().mVideoWindow;
    const auto refitted = [&](std::uint32_t code) {
        window->resize(700, 480);
        tell(code, 3);
        return window->size() == QSize(640, 480);
    };
    EXPECT_TRUE(refitted(1));
    EXPECT_EQ(title(), text("3"));
    EXPECT_TRUE(refitted(7));
    EXPECT_TRUE(refitted(12));
    tell(2, 0xffff'ffff);
    EXPECT_EQ(scene(), text("-1")) << "an integer";
    EXPECT_FALSE(refitted(2));
    tell(11, 4);
    EXPECT_EQ(controller->dvdState(), 4);
    PlaybackTime *const time = controller->outlets().mTimeText;
    tell(20, 61'500, 3'600'000);
    EXPECT_EQ(time->text(), text("00:01:02"));
    EXPECT_EQ(time->timeRemaining(), 3'538'500U);
    tell(3, 9, 9);
    EXPECT_EQ(title(), text("3"));
    EXPECT_EQ(controller->dvdState(), 4);
    EXPECT_EQ(controller->fatalError(), noErr);
    controller->resetUI();
    EXPECT_EQ(title() + scene() + time->text(), text("--00:00:00"));
}

/// Hears events behind the controller, and on the main thread in the same order.
class SizesBehindEvents
{
public:
    explicit SizesBehindEvents(VideoWindow *window)
        : m_window(window)
    {
        const std::array<std::uint32_t, 2> codes = {kDVDEventDisplayMode, kDVDEventVideoStandard};
        EXPECT_EQ(DVDRegisterEventCallBack(hear, codes.data(), codes.size(), this, &m_registration), noErr);
    }
    ~SizesBehindEvents() { EXPECT_EQ(DVDUnregisterEventCallBack(m_registration), noErr); }
    SizesBehindEvents(const SizesBehindEvents &) = delete;
    SizesBehindEvents &operator=(const SizesBehindEvents &) = delete;

    static constexpr QSize unfitted = {700, 480};
    std::vector<std::pair<std::uint32_t, QSize>> sizes;

private:
    static void hear(std::uint32_t code, std::uint32_t /*value1*/, std::uint32_t /*value2*/, void *reference)
    {
        performOnMainThread([self = static_cast<SizesBehindEvents *>(reference), code] {
            self->sizes.emplace_back(code, self->m_window->size());
            self->m_window->resize(unfitted);
        });
    }

    VideoWindow *m_window;
    std::uint32_t m_registration = 0;
};

TEST_F(Session, displayModeAndVideoStandard_areHeard)
{
    ASSERT_TRUE(controller->openMedia(path(), false));
    ASSERT_TRUE(waitForState(kDVDStateStopped)) << "the last event of opening";
    controller->closeMedia();
    VideoWindow *const window = controller->outlets().mVideoWindow;
    window->hide(); // so that it does not take the title's shape by itself
    window->resize(SizesBehindEvents::unfitted);
    QCoreApplication::processEvents();
    ASSERT_EQ(window->size(), SizesBehindEvents::unfitted);
    SizesBehindEvents behind(window);
    ASSERT_TRUE(controller->openMedia(path("pal"), false));
    ASSERT_TRUE(waitUntil([&] { return behind.sizes.size() == 2; }));
    const std::vector<std::pair<std::uint32_t, QSize>> expected = {{12, QSize(640, 480)}, {7, QSize(640, 480)}};
    EXPECT_EQ(behind.sizes, expected);
}

TEST_F(Session, events_waitForTheMainThread)
{
    std::thread([&] { MyDVDEventHandler(11, 3, 0, controller.get()); }).join();
    MyDVDEventHandler(2, 7, 0, controller.get());
    EXPECT_EQ(controller->dvdState(), 0) << "on the main thread it does not run at once, either";
    ASSERT_TRUE(waitUntil([&] { return scene() == text("7"); }));
    EXPECT_EQ(controller->dvdState(), 3);
}

TEST_F(Session, events_vanishWithTheController)
{
    std::shared_ptr<DVDController> other = DVDController::init_old();
    MyDVDEventHandler(24, 1, 0, other.get());
    other = nullptr;
    bool isLater = false;
    performOnMainThread([&] { isLater = true; });
    ASSERT_TRUE(waitUntil([&] { return isLater; }));
    EXPECT_FALSE(steps().contains(text("fatal error 1")));
}

TEST_F(Session, eventsOfADisc_areShown)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    EXPECT_TRUE(waitUntil([&] { return title() == text("1") && scene() == text("1"); }));
    EXPECT_TRUE(waitUntil([&] { return scene() == text("2"); })) << "as it plays";
    EXPECT_TRUE(waitUntil([&] { return controller->outlets().mTimeText->timeElapsed() >= 1000; }));
    const std::uint32_t length =
        controller->outlets().mTimeText->timeElapsed() + controller->outlets().mTimeText->timeRemaining();
    EXPECT_NEAR(double(length), 4 * 65 * 1001.0 / 30, 200);
    ASSERT_EQ(DVDSetChapter(2, 1), noErr);
    EXPECT_TRUE(waitUntil([&] { return title() == text("2"); }));
    const QSize size = controller->outlets().mVideoWindow->size();
    EXPECT_TRUE(waitUntil([&] {
        const QSize now = controller->outlets().mVideoWindow->size();
        return now.width() == qRound(now.height() * 16.0 / 9);
    })) << size.width()
        << " by " << size.height();
    controller->onStop();
    EXPECT_TRUE(waitForState(kDVDStateStopped));
}

TEST_F(Session, time_isToldOnceASecond)
{
    ASSERT_TRUE(openAndPlay(1, 1));
    PlaybackTime *const time = controller->outlets().mTimeText;
    std::vector<std::uint32_t> times;
    ASSERT_TRUE(waitUntil([&] {
        if (times.empty() || times.back() != time->timeElapsed())
            times.push_back(time->timeElapsed());
        return times.size() >= 8;
    }));
    // Times of the film, not of the clock: the first ones may be those of a chapter's begin. One that comes late is
    // later in the film, but the next one is in time again.
    const auto earliest = [&](std::size_t first) {
        double phase = times[first];
        for (std::size_t index = first; index < first + 3; ++index)
            phase = std::min(phase, times[index] - 1000.0 * double(index - first));
        return phase;
    };
    EXPECT_NEAR(earliest(5) - earliest(2), 3000, 150);
}

TEST_F(Session, fatalError_endsTheApplication)
{
    ASSERT_TRUE(openAndShowMenu());
    performOnMainThread([] { ASSERT_EQ(::kill(DVDSession::instance().helperProcess(), SIGSEGV), 0); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_EQ(controller->fatalError(), kDVDErrorDamagedMedia);
    EXPECT_TRUE(waitUntil([&] { return steps().count(text("fatal error -70191")) == 2; }))
        << "the event, and the call back for fatal errors";
}

TEST_F(Session, fatalErrorCallBack_runsWhereItIsCalled)
{
    std::thread([&] {
        MyDVDErrorHandler(-70001, controller.get());
        EXPECT_EQ(steps(), QStringList(text("fatal error -70001")));
    }).join();
    EXPECT_EQ(controller->fatalError(), -70001);
    EXPECT_EQ(QApplication::exec(), 0);
}

TEST_F(Session, errorEvent_endsTheApplication)
{
    performOnMainThread([&] { controller->handleDVDEvent(DVDEvent::initWithData(24, std::uint32_t(-70190), 0)); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_EQ(steps(), QStringList(text("fatal error -70190")));
}

} // namespace Tessaron::Testing
