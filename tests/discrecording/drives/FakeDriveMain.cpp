#include "tests/support/Replacements.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    Tessaron::Testing::loadReplacements(TESSARON_PRELOADED_OBJECT, argv);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
