#include "platform/foundation/NSNotificationCenter.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace Tessaron;

TEST(NSNotificationCenter, posting_callsObserversOfNameAndObjectOnThePostersThread)
{
    NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
    std::vector<std::string> heard;
    std::thread::id heardOn;
    int one = 0, other = 0;
    const QString name = QStringLiteral("name");
    center.addObserver(&one, name, {}, [&](const NSNotification &what) {
        heard.push_back("any " + what.object.toStdString()
                        + what.userInfo.value(QStringLiteral("key")).toString().toStdString());
        heardOn = std::this_thread::get_id();
    });
    center.addObserver(&other, name, QStringLiteral("b"), [&](const NSNotification &) { heard.push_back("only b"); });
    center.postNotificationName(QStringLiteral("other name"), QStringLiteral("b"));
    center.postNotificationName(name, QStringLiteral("a"), {{QStringLiteral("key"), QStringLiteral("!")}});
    EXPECT_EQ(heardOn, std::this_thread::get_id());
    std::thread poster([&] { center.postNotificationName(name, QStringLiteral("b")); });
    const std::thread::id threadOfPoster = poster.get_id();
    poster.join();
    EXPECT_EQ(heardOn, threadOfPoster);
    EXPECT_EQ(heard, (std::vector<std::string>{"any a!", "any b", "only b"}));
    center.removeObserver(&one);
    center.removeObserver(&other);
}

TEST(NSNotificationCenter, removing_endsObservations_alsoDuringAPost)
{
    NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
    int first = 0, second = 0;
    const QString name = QStringLiteral("name");
    center.addObserver(&first, name, {}, [&](const NSNotification &) {
        ++first;
        center.removeObserver(&first);
        center.removeObserver(&second);
    });
    center.addObserver(&second, name, {}, [&](const NSNotification &) { ++second; });
    center.postNotificationName(name);
    center.postNotificationName(name);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
}
