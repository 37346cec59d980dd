#include "platform/foundation/NSAssertionHandler.h"

#include <gtest/gtest.h>
#include <thread>

namespace Tessaron
{

namespace
{

class Recorder : public NSAssertionHandler
{
public:
    void handleFailureInMethod(const QString &, const void *, const QString &, int, const QString &description) override
    {
        last = description;
    }

    QString last;
};

TEST(NSAssertionHandler, standardHandler_throwsTheDescription)
{
    try {
        NSAssertionHandler::currentHandler()->handleFailureInMethod(QStringLiteral("play"), nullptr,
                                                                    QStringLiteral("DVDController"), 7,
                                                                    QStringLiteral("DVDPlay returned -70015"));
        FAIL() << "nothing was thrown";
    } catch (const NSInternalInconsistencyException &exception) {
        EXPECT_STREQ(exception.what(), "DVDPlay returned -70015");
    }
}

TEST(NSAssertionHandler, anotherHandler_mayReturn_andIsTheThreadsOwn)
{
    const auto recorder = std::make_shared<Recorder>();
    NSAssertionHandler::setCurrentHandler(recorder);
    NSAssertionHandler::currentHandler()->handleFailureInMethod({}, nullptr, {}, 0, QStringLiteral("told"));
    EXPECT_EQ(recorder->last, QStringLiteral("told"));
    std::thread([&] { EXPECT_NE(NSAssertionHandler::currentHandler(), recorder); }).join();
    NSAssertionHandler::setCurrentHandler(nullptr);
    EXPECT_THROW(NSAssertionHandler::currentHandler()->handleFailureInMethod({}, nullptr, {}, 0, {}),
                 NSInternalInconsistencyException);
}

} // namespace

} // namespace Tessaron
