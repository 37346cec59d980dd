#include <QApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

namespace
{

/// Starts the program anew with the object loaded that takes the place of some functions of the system. Returns when
/// there is no such object, or it is there.
void loadReplacements(char **argv)
{
#ifdef TESSARON_PRELOADED_OBJECT
    const QByteArray others = qgetenv("LD_PRELOAD");
    if (others.contains(TESSARON_PRELOADED_OBJECT))
        return;
    // A sanitizer's library has to stay the first one.
    qputenv("LD_PRELOAD", (others.isEmpty() ? QByteArray() : others + ':') + TESSARON_PRELOADED_OBJECT);
    const QByteArray options = qgetenv("ASAN_OPTIONS");
    qputenv("ASAN_OPTIONS", (options.isEmpty() ? QByteArray() : options + ':') + "verify_asan_link_order=0");
    ::execv("/proc/self/exe", argv);
    std::perror("tests");
    std::exit(EXIT_FAILURE);
#else
    (void)argv;
#endif
}

} // namespace

int main(int argc, char **argv)
{
    loadReplacements(argv);
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
    return status;
}
