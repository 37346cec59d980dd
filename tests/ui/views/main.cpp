#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char *argv[])
{
    // The list of tests is asked for by the build, which names no platform.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
