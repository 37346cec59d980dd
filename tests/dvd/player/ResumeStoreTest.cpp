#include "dvd/player/ResumeStore.h"

#include "tests/support/TemporaryTree.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

const QByteArray identity = QByteArray::fromHex("00ff12");

TEST(ResumeStoreTest, bookmark_isThatOfItsDisc)
{
    const TemporaryTree tree;
    const ResumeStore store(tree.pathText("state/tessaron/dvd/"));
    EXPECT_TRUE(store.bookmarkOf(identity).isEmpty());
    EXPECT_TRUE(store.keep(identity, "first"));
    EXPECT_TRUE(store.keep(identity, "second"));
    EXPECT_TRUE(store.keep("other", "third"));
    EXPECT_EQ(store.bookmarkOf(identity), "second");
    EXPECT_EQ(tree.contents("state/tessaron/dvd/00ff12"), "second");
    store.forget(identity);
    EXPECT_TRUE(store.bookmarkOf(identity).isEmpty());
    EXPECT_EQ(store.bookmarkOf("other"), "third");
    constexpr QFileDevice::Permissions ofOthers =
        QFileDevice::ReadGroup | QFileDevice::ExeGroup | QFileDevice::ReadOther | QFileDevice::ExeOther;
    EXPECT_EQ(QFileInfo(tree.pathText("state/tessaron/dvd")).permissions() & ofOthers, QFileDevice::Permissions());
}

TEST(ResumeStoreTest, folder_isThatOfTheUsersState)
{
    const TemporaryTree tree;
    qputenv("XDG_STATE_HOME", tree.path("state"));
    EXPECT_EQ(ResumeStore().pathOf(identity), tree.pathText("state/tessaron/dvd/00ff12"));
    qputenv("XDG_STATE_HOME", "relative");
    EXPECT_EQ(ResumeStore().pathOf(identity), QDir::homePath() + QStringLiteral("/.local/state/tessaron/dvd/00ff12"));
    qunsetenv("XDG_STATE_HOME");
    EXPECT_EQ(ResumeStore().pathOf(identity), QDir::homePath() + QStringLiteral("/.local/state/tessaron/dvd/00ff12"));
}

TEST(ResumeStoreTest, keep_saysWhereItFails)
{
    const TemporaryTree tree;
    tree.makeFile("state", "no folder");
    EXPECT_FALSE(ResumeStore(tree.pathText("state/tessaron/dvd/")).keep(identity, "bookmark"));
}

} // namespace

} // namespace Tessaron::Testing
