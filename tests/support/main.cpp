#include <QCoreApplication>

#include <cstdlib>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    // The programs that tests run cannot read or write UTF-8 where the machine has no locale set.
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
