#include "platform/foundation/NSDistributedNotificationCenter.h"

#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

using namespace Tessaron;
using namespace Tessaron::Testing;

TEST(NSDistributedNotificationCenter, posting_reachesObserversOfTheNameInOrder)
{
    const PrivateBus bus;
    NSDistributedNotificationCenter &center = NSDistributedNotificationCenter::defaultCenter();
    ASSERT_TRUE(center.isConnected());
    QObject context;
    std::vector<NSDistributedNotification> all, ofOne;
    const QString name = QStringLiteral("any-text; even “this”");
    EXPECT_FALSE(center.addObserver(&context, name, {}, [&](const auto &one) { all.push_back(one); }));
    EXPECT_FALSE(
        center.addObserver(&context, name, QStringLiteral("b"), [&](const auto &one) { ofOne.push_back(one); }));
    const QVariantMap inner{{QStringLiteral("deep"), 5}};
    EXPECT_FALSE(center.postNotificationName(QStringLiteral("other name")));
    EXPECT_FALSE(center.postNotificationName(name, QStringLiteral("a"), {{QStringLiteral("progress"), 0.25}}));
    EXPECT_FALSE(center.postNotificationName(name, QStringLiteral("b"),
                                             {{QStringLiteral("text"), QStringLiteral("x")},
                                              {QStringLiteral("list"), QVariantList{1, 2}},
                                              {QStringLiteral("map"), inner}}));
    ASSERT_TRUE(runEventLoopUntil([&] { return all.size() == 2; }));
    EXPECT_EQ(all[0].name, name);
    EXPECT_EQ(all[0].object, QStringLiteral("a"));
    EXPECT_EQ(all[0].userInfo.value(QStringLiteral("progress")).toDouble(), 0.25);
    EXPECT_EQ(all[1].userInfo.value(QStringLiteral("text")).toString(), QStringLiteral("x"));
    EXPECT_EQ(all[1].userInfo.value(QStringLiteral("list")).toList(), (QVariantList{1, 2}));
    EXPECT_EQ(all[1].userInfo.value(QStringLiteral("map")).toMap(), inner);
    ASSERT_EQ(ofOne.size(), 1u);
    EXPECT_EQ(ofOne[0].object, QStringLiteral("b"));
}

TEST(NSDistributedNotificationCenter, observing_endsWithItsContext)
{
    const PrivateBus bus;
    NSDistributedNotificationCenter &center = NSDistributedNotificationCenter::defaultCenter();
    const QString name = QStringLiteral("name");
    int ofGone = 0, ofRemoved = 0, ofOther = 0;
    QObject removed, other;
    {
        QObject gone;
        EXPECT_FALSE(center.addObserver(&gone, name, {}, [&](const auto &) { ++ofGone; }));
    }
    EXPECT_FALSE(center.addObserver(&removed, name, {}, [&](const auto &) { ++ofRemoved; }));
    EXPECT_FALSE(center.addObserver(&other, name, {}, [&](const auto &) { ++ofOther; }));
    center.removeObserver(&removed);
    std::thread([&] { EXPECT_FALSE(center.postNotificationName(name)); }).join();
    EXPECT_TRUE(runEventLoopUntil([&] { return ofOther == 1; }));
    EXPECT_EQ(ofGone, 0);
    EXPECT_EQ(ofRemoved, 0);
}

TEST(NSDistributedNotificationCenter, everything_isAnErrorWithoutABus)
{
    leaveSessionBus();
    NSDistributedNotificationCenter &center = NSDistributedNotificationCenter::defaultCenter();
    EXPECT_FALSE(center.isConnected());
    const NSError error = center.postNotificationName(QStringLiteral("name"));
    ASSERT_TRUE(error);
    EXPECT_FALSE(error.localizedFailureReason().isEmpty());
    QObject context;
    EXPECT_TRUE(center.addObserver(&context, QStringLiteral("name"), {}, [](const auto &) {}));
    EXPECT_FALSE(center.waitUntilPosted(1000));
}
