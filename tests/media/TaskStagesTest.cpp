#include "media/TaskStages.h"

#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <utility>

using namespace Tessaron;
using namespace Tessaron::Testing;

TEST(TaskStages, arguments_arePartedAtBarsThatStandAlone)
{
    const TaskStages stages = taskStages({QStringLiteral("/bin/echo"), QStringLiteral("a|b"), QByteArray("|"),
                                          QStringLiteral("/bin/cat"), QStringLiteral("||")});
    ASSERT_EQ(stages.status, TaskStages::Status::Complete);
    ASSERT_EQ(stages.stages.size(), 2u);
    EXPECT_EQ(stages.stages[0], (TaskStage{"/bin/echo", "a|b"}));
    EXPECT_EQ(stages.stages[1], (TaskStage{"/bin/cat", "||"}));
}

TEST(TaskStages, anEmptyStage_isFoundBeforeAMissingTool)
{
    EXPECT_EQ(taskStages({QStringLiteral("missing"), QStringLiteral("|"), QStringLiteral("|")}).status,
              TaskStages::Status::EmptyStage);
    const TaskStages missing = taskStages({QStringLiteral("missing"), QStringLiteral("a")});
    EXPECT_EQ(missing.status, TaskStages::Status::ToolNotFound);
    EXPECT_EQ(missing.missingTool, "missing");
    EXPECT_TRUE(missing.stages.empty());
}

TEST(TaskStages, tilde_standsForTheHomeOfItsUser)
{
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", "/a/home");
    EXPECT_EQ(taskArgument(QStringLiteral("~")), "/a/home");
    EXPECT_EQ(taskArgument(QStringLiteral("~/b")), "/a/home/b");
    EXPECT_EQ(taskArgument(QByteArray("~/\xff")), "/a/home/\xff");
    EXPECT_EQ(taskArgument(QStringLiteral("b~")), "b~");
    EXPECT_EQ(taskArgument(QStringLiteral("~no such user/b")), "~no such user/b");
    const passwd *const root = ::getpwuid(0);
    ASSERT_TRUE(root);
    EXPECT_EQ(taskArgument(QString(u'~' + QString::fromUtf8(root->pw_name) + QStringLiteral("/b"))),
              QByteArray(root->pw_dir) + "/b");
    qunsetenv("HOME");
    EXPECT_EQ(taskArgument(QStringLiteral("~")), QByteArray(::getpwuid(::getuid())->pw_dir));
    qputenv("HOME", home);
}

TEST(TaskStages, numbers_areDescribedInDecimalDigits)
{
    const std::pair<QVariant, const char *> rows[] = {
        {128, "128"},       {-7654312, "-7654312"},          {44.5, "44.5"},  {44.1f, "44.1"},
        {0.1 + 0.2, "0.3"}, {1.0 / 3, "0.3333333333333333"}, {1e20, "1e+20"}, {true, "1"},
        {false, "0"},
    };
    for (const auto &[number, text] : rows)
        EXPECT_EQ(taskArgument(number), QByteArray(text));
}
