#include "app/AbandonedJob.h"

#include "tests/support/Replacements.h"

#include <QApplication>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
#ifdef TESSARON_PRELOADED_OBJECT
    Tessaron::Testing::loadReplacements(TESSARON_PRELOADED_OBJECT, argv);
#endif
    ::setenv("LC_ALL", "C.UTF-8", 1);
    // Listing the tests starts the program, too, on a build machine without a display.
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    // The settings and recovery files of a user are not for tests, nor are those of another test.
    const QTemporaryDir home;
    for (const char *const name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qputenv(name, home.path().toUtf8());
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("tessaron-desktop-tests"));
    QApplication::setOrganizationName(QStringLiteral("Tessaron"));
    testing::InitGoogleTest(&argc, argv);
    const int status = RUN_ALL_TESTS();
    // Jobs that have ended go with the next turn of an event loop, which tests do not reach.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    if (!Tessaron::Desktop::waitUntilAllAreGone(std::chrono::seconds(20)))
        std::fputs("a job that was given up has not ended\n", stderr);
    return status;
}
