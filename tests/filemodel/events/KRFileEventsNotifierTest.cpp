#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRFileEventsNotifier.h>

#include <QByteArray>
#include <QDir>
#include <QList>

#include <array>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace Tessaron::Testing
{

namespace
{

qsizetype threads()
{
    return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

} // namespace

TEST(KRFileEventsNotifier, sharedNotifier_isOneObject)
{
    const auto notifier = KRFileEventsNotifier::sharedNotifier();
    ASSERT_TRUE(notifier);
    EXPECT_EQ(KRFileEventsNotifier::sharedNotifier(), notifier);
    EXPECT_EQ(KRFileEventsNotifier::init(), notifier);
}

TEST(KRFileEventsNotifier, init_makesTheSharedNotifier_whenThereIsNone)
{
    const auto notifier = KRFileEventsNotifier::init();
    ASSERT_TRUE(notifier);
    EXPECT_EQ(KRFileEventsNotifier::sharedNotifier(), notifier);
}

TEST(KRFileEventsNotifier, startEventStream_keepsOneStream)
{
    const auto notifier = KRFileEventsNotifier::sharedNotifier();
    std::jthread([] {}).join(); // with its first one, ThreadSanitizer starts a thread of its own
    notifier->stopEventStream();
    const qsizetype before = threads();
    EXPECT_FALSE(notifier->startEventStream());
    EXPECT_FALSE(notifier->startEventStream());
    EXPECT_EQ(threads(), before + 1);
    notifier->stopEventStream();
    EXPECT_EQ(threads(), before);
    notifier->stopEventStream();
    EXPECT_FALSE(notifier->startEventStream());
    EXPECT_EQ(threads(), before + 1);
    notifier->stopEventStream();
}

TEST(KRFileEventsNotifier, watchEventsForFileReference_doesNothing)
{
    const auto notifier = KRFileEventsNotifier::sharedNotifier();
    const qsizetype before = threads();
    notifier->watchEventsForFileReference(nullptr);
    EXPECT_EQ(threads(), before);
}

TEST(KRFileEventsNotifier, fileStreamCallback_writesALineForEachEvent)
{
    std::array<const char *, 2> paths = {"/", "/not \xff utf-8/"};
    const std::array<FSEventStreamEventFlags, 2> flags = {0, 5};
    const std::array<FSEventStreamEventId, 2> identifiers = {1, 18446744073709551615U};
    testing::internal::CaptureStdout();
    fileStreamCallback(nullptr, nullptr, paths.size(), static_cast<void *>(paths.data()), flags.data(),
                       identifiers.data());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "EVENT\n"
              "Change 1 in /, flags 0\n"
              "Change 18446744073709551615 in /not \xff utf-8/, flags 5\n");
}

TEST(KRFileEventsNotifier, changesAnywhereOnTheDisk_areWritten_afterFiveSeconds)
{
    const TemporaryTree tree(QDir::currentPath()); // not where temporary files are: all of the disk is watched
    tree.makeFolder("sub");
    const auto notifier = KRFileEventsNotifier::sharedNotifier();
    testing::internal::CaptureStdout();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_FALSE(notifier->startEventStream());
    tree.makeFile("sub/file");
    std::chrono::duration<double> untilFirst(0);
    // Either service tells of the folder; inotify, which has to reach it first, by what changed after the start.
    QByteArray written;
    const QByteArray line = " in " + tree.path("sub") + "/, flags ";
    const bool isWritten = runEventLoopUntil(
        [&] {
            const QByteArray batch = QByteArray::fromStdString(testing::internal::GetCapturedStdout());
            testing::internal::CaptureStdout();
            // What else happens on the disk may have been too much to tell of each folder.
            if (!batch.isEmpty() && !batch.contains(line))
                tree.makeFile("sub/file");
            if (written.isEmpty() && !batch.isEmpty())
                untilFirst = std::chrono::steady_clock::now() - start;
            written += batch;
            return written.contains(line);
        },
        std::chrono::minutes(2));
    notifier->stopEventStream();
    testing::internal::GetCapturedStdout();
    EXPECT_TRUE(isWritten);
    EXPECT_GE(untilFirst.count(), 5);
    EXPECT_TRUE(written.startsWith("EVENT\nChange "));
}

} // namespace Tessaron::Testing
