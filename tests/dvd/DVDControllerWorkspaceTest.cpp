#include "platform/dvdplayback/DVDPlayback.h"
#include "platform/workspace/NSWorkspace.h"
#include "tests/dvd/ControllerFixture.h"
#include "tests/workspace/FakeSystemServices.h"

#include <TessaronClassesUI/DVDEvent.h>

namespace Tessaron::Testing
{

namespace
{

/// Before the controller, which looks for the bus.
struct Services {
    FakeSystemServices services;
};

/// A controller on a system whose services the test plays.
class InTheWorkspace : protected Services, public ControllerTest
{
};

const QString sr0 = QStringLiteral("sr0");

} // namespace

TEST_F(InTheWorkspace, sleepAndWake_pauseAndGoOn)
{
    services.startLogin();
    ASSERT_TRUE(waitUntil([&] { return services.heldDelays() == 1; }));
    ASSERT_TRUE(openAndPlay(1, 1));
    services.tellSleep(true);
    EXPECT_TRUE(waitForState(kDVDStatePaused));
    EXPECT_TRUE(waitUntil([&] { return services.heldDelays() == 0; })) << "the machine may sleep";
    services.tellSleep(false);
    EXPECT_TRUE(waitForState(kDVDStatePlaying));
}

TEST_F(InTheWorkspace, sleepWithoutASession_isReported_andNoMore)
{
    services.startLogin();
    ASSERT_TRUE(waitUntil([&] { return services.heldDelays() == 1; }));
    services.tellSleep(true);
    ASSERT_TRUE(waitUntil([&] { return services.heldDelays() == 0; })) << "the machine does not wait";
    ASSERT_EQ(lines().size(), 1);
    EXPECT_TRUE(lines().first().contains(QStringLiteral("DVDSleep returned -70003")));
    keepReports();
    services.tellSleep(false);
    ASSERT_TRUE(waitUntil([&] { return services.heldDelays() == 1; }));
    EXPECT_EQ(reports->descriptions, QStringList(QStringLiteral("DVDWakeUp returned -70003")));
    EXPECT_EQ(reports->lastMethod, QStringLiteral("machineDidWake"));
}

TEST_F(InTheWorkspace, mountedDisc_isOpened_unlessOnePlays)
{
    services.startDisks();
    const std::shared_ptr<DVDController> old = DVDController::init_old();
    AlertCloser busy; // the first media begins a session once more, behind that of the launch
    services.tellMountPoints(sr0, {disc()});
    ASSERT_TRUE(waitUntil([&] { return !old->volumePath().isNull(); }));
    EXPECT_EQ(old->volumePath(), path());
    EXPECT_TRUE(lines().contains(QStringLiteral("Device did mount: ") + QString::fromUtf8(disc())));
    EXPECT_TRUE(controller->volumePath().isNull()) << "only the old initialiser hears of mounts";

    old->onPlay();
    ASSERT_TRUE(waitUntil([&] { return old->dvdState() != kDVDStateUnknown; }));
    old->handleDVDEvent(DVDEvent::initWithData(kDVDEventPlayback, kDVDStatePlaying, 0));
    const auto before = lines().size();
    old->deviceDidMount({NSWorkspaceDidMountNotification, {}, {{NSDevicePathKey, QString::fromUtf8(disc("pal"))}}});
    EXPECT_EQ(lines().size(), before) << "ignored";
    old->handleDVDEvent(DVDEvent::initWithData(kDVDEventPlayback, kDVDStatePaused, 0));
    old->deviceDidMount({NSWorkspaceDidMountNotification, {}, {{NSDevicePathKey, QString::fromUtf8(disc("pal"))}}});
    EXPECT_EQ(old->volumePath(), path("pal"));
    old->endSession();
}

TEST_F(InTheWorkspace, mountedVolumeWithoutADVD_isNotValid)
{
    services.startDisks();
    const std::shared_ptr<DVDController> old = DVDController::init_old();
    AlertCloser busy; // the first media begins a session once more, behind that of the launch
    services.tellMountPoints(sr0, {m_tree.makeFolder("data")});
    EXPECT_TRUE(waitUntil([&] { return steps().contains(QStringLiteral("NOT VALID")); }));
    old->endSession();
}

TEST_F(InTheWorkspace, eject_asksTheDiskService)
{
    services.startDisks();
    services.mountWhereIs(disc());
    ASSERT_TRUE(controller->openMedia(path(), true));
    controller->onEject();
    EXPECT_FALSE(controller->hasMedia()) << "closed at once";
    EXPECT_TRUE(waitUntil([&] { return services.calls.size() == 3; }));
    EXPECT_TRUE(services.calls.value(1).startsWith(QStringLiteral("Unmount")));
    EXPECT_EQ(services.calls.last(), QStringLiteral("Eject /org/freedesktop/UDisks2/drives/Writer"));
}

} // namespace Tessaron::Testing
