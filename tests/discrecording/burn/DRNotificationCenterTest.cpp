#include "platform/discrecording/burn/DRNotificationCenter.h"

#include "platform/discrecording/burn/DRBurn.h"
#include "tests/discrecording/burn/TestConsumers.h"
#include "tests/support/EventLoop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QStringList>
#include <QThread>

#include <gtest/gtest.h>
#include <thread>

namespace Tessaron::Testing
{

namespace
{

const QString someName = QStringLiteral("SomeNotification");
const QString otherName = QStringLiteral("OtherNotification");

class DRNotificationCenterTest : public testing::Test
{
protected:
    std::shared_ptr<DRBurn> makeBurn()
    {
        return DRBurn::burnForDevice(DRCallbackDevice::initWithConsumer(&m_consumer));
    }
    DRNotificationCenter::Handler noting(const QString &text)
    {
        return [this, text](DRBurn &) { heard << text; };
    }

    const std::shared_ptr<DRNotificationCenter> center = DRNotificationCenter::currentRunLoopCenter();
    QStringList heard;

private:
    MemoryConsumer m_consumer;
};

} // namespace

TEST_F(DRNotificationCenterTest, center_isOnePerThread)
{
    EXPECT_EQ(center, DRNotificationCenter::currentRunLoopCenter());
    std::shared_ptr<DRNotificationCenter> ofOther;
    std::thread([&] { ofOther = DRNotificationCenter::currentRunLoopCenter(); }).join();
    EXPECT_NE(center, ofOther);
    const std::shared_ptr<DRBurn> burn = makeBurn();
    ofOther->addObserver(this, someName, nullptr, noting(QStringLiteral("never")));
    ofOther->post(someName, burn); // its thread has ended: dropped
    drainEventLoop();
    EXPECT_EQ(heard, QStringList());
}

TEST_F(DRNotificationCenterTest, post_reachesObserversOfNameAndSender_onTheCentersThread)
{
    const std::shared_ptr<DRBurn> burn = makeBurn();
    const std::shared_ptr<DRBurn> other = makeBurn();
    center->addObserver(this, someName, burn.get(), noting(QStringLiteral("burn")));
    center->addObserver(this, someName, other.get(), noting(QStringLiteral("other")));
    center->addObserver(this, someName, nullptr, noting(QStringLiteral("any")));
    center->addObserver(this, otherName, burn.get(), noting(QStringLiteral("other name")));
    bool isOnMainThread = false;
    center->addObserver(this, someName, burn.get(), [&](DRBurn &) {
        isOnMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
    });
    std::thread([&] { center->post(someName, burn); }).join();
    EXPECT_EQ(heard, QStringList()) << "nothing before the event loop runs";
    drainEventLoop();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("burn"), QStringLiteral("any")}));
    EXPECT_TRUE(isOnMainThread);
    center->removeObserver(this, QString(), nullptr);
}

TEST_F(DRNotificationCenterTest, posts_arriveInOrder)
{
    const std::shared_ptr<DRBurn> burn = makeBurn();
    center->addObserver(this, someName, burn.get(), noting(QStringLiteral("some")));
    center->addObserver(this, otherName, burn.get(), noting(QStringLiteral("other")));
    std::thread([&] {
        center->post(someName, burn);
        center->post(otherName, burn);
        center->post(someName, burn);
    }).join();
    drainEventLoop();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("some"), QStringLiteral("other"), QStringLiteral("some")}));
    center->removeObserver(this, QString(), nullptr);
}

TEST_F(DRNotificationCenterTest, removeObserver_stopsWhatWasPostedBefore)
{
    const std::shared_ptr<DRBurn> burn = makeBurn();
    center->addObserver(this, someName, burn.get(), noting(QStringLiteral("some")));
    center->addObserver(this, otherName, burn.get(), noting(QStringLiteral("other")));
    center->post(someName, burn);
    center->post(otherName, burn);
    center->removeObserver(this, someName, burn.get());
    drainEventLoop();
    EXPECT_EQ(heard, QStringList{QStringLiteral("other")});
    center->removeObserver(this, QString(), nullptr);
}

TEST_F(DRNotificationCenterTest, aHandler_mayRemoveItselfAndOthers)
{
    const std::shared_ptr<DRBurn> burn = makeBurn();
    int otherObserver = 0;
    center->addObserver(this, someName, burn.get(), [&](DRBurn &) {
        heard << QStringLiteral("first");
        center->removeObserver(this, someName, nullptr);
        center->removeObserver(&otherObserver, QString(), nullptr);
        heard << QStringLiteral("still here");
    });
    center->addObserver(&otherObserver, someName, burn.get(), noting(QStringLiteral("never")));
    center->post(someName, burn);
    center->post(someName, burn);
    drainEventLoop();
    EXPECT_EQ(heard, (QStringList{QStringLiteral("first"), QStringLiteral("still here")}));
}

TEST_F(DRNotificationCenterTest, post_isDropped_whenTheSenderIsGone)
{
    std::shared_ptr<DRBurn> burn = makeBurn();
    center->addObserver(this, someName, nullptr, noting(QStringLiteral("never")));
    center->post(someName, burn);
    burn.reset();
    drainEventLoop();
    EXPECT_EQ(heard, QStringList());
    center->removeObserver(this, QString(), nullptr);
}

TEST_F(DRNotificationCenterTest, aThreadOfItsOwn_hearsInItsOwnEventLoop)
{
    const std::shared_ptr<DRBurn> burn = makeBurn();
    std::thread([&] {
        QEventLoop loop;
        const auto own = DRNotificationCenter::currentRunLoopCenter();
        const std::thread::id thread = std::this_thread::get_id();
        own->addObserver(this, someName, burn.get(), [&](DRBurn &) {
            heard << (std::this_thread::get_id() == thread ? QStringLiteral("own thread")
                                                           : QStringLiteral("wrong thread"));
            loop.quit();
        });
        std::thread([&] { own->post(someName, burn); }).join();
        loop.exec();
    }).join();
    EXPECT_EQ(heard, QStringList{QStringLiteral("own thread")});
}

} // namespace Tessaron::Testing
