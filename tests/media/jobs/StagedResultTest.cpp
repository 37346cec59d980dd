#include "media/jobs/StagedResult.h"

#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/UnfinishedFiles.h>

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

class StagedResultTest : public testing::Test
{
protected:
    std::unique_ptr<StagedResult> stageAt(const QByteArray &relative)
    {
        Result<std::unique_ptr<StagedResult>> stage = StagedResult::create(tree.path(relative), folders);
        EXPECT_TRUE(stage) << stage.error().localizedDescription().toStdString();
        return stage ? *std::move(stage) : nullptr;
    }
    static void fill(const StagedResult &stage, const QByteArray &bytes)
    {
        QFile file(QString::fromUtf8(stage.path()));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    [[nodiscard]] QStringList namesIn(const QByteArray &relative) const
    {
        return QDir(tree.pathText(relative)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    const TemporaryTree tree;
    MadeFolders folders;
};

} // namespace

TEST_F(StagedResultTest, file_appearsWhenItIsPublished)
{
    const std::unique_ptr<StagedResult> stage = stageAt("a/b/song.mp3");
    ASSERT_TRUE(stage);
    EXPECT_TRUE(stage->path().endsWith("/song.mp3"));
    fill(*stage, "sound");
    EXPECT_EQ(namesIn("a/b").size(), 1);
    EXPECT_TRUE(namesIn("a/b").first().startsWith(QStringLiteral(".tessaron-convert-")));
    const Result<QByteArray> path = stage->publish();
    ASSERT_TRUE(path);
    EXPECT_EQ(*path, tree.path("a/b/song.mp3"));
    EXPECT_EQ(tree.contents("a/b/song.mp3"), "sound");
}

TEST_F(StagedResultTest, publishing_replacesNothing)
{
    for (const char *const expected : {"song-1.mp3", "song-2.mp3"}) {
        const std::unique_ptr<StagedResult> stage = stageAt("song.mp3");
        ASSERT_TRUE(stage);
        tree.makeFile("song.mp3", "precious"); // has come meanwhile
        fill(*stage, expected);
        const Result<QByteArray> path = stage->publish();
        ASSERT_TRUE(path);
        EXPECT_EQ(*path, tree.path(expected));
        EXPECT_EQ(tree.contents(expected), expected);
    }
    EXPECT_EQ(tree.contents("song.mp3"), "precious");
    EXPECT_EQ(namesIn({}).size(), 3);
}

TEST_F(StagedResultTest, nothingIsLeft_whenItIsNotPublished)
{
    stageAt("empty.mp3");
    std::unique_ptr<StagedResult> stage = stageAt("song.mp3");
    ASSERT_TRUE(stage);
    fill(*stage, "part");
    stage.reset();
    EXPECT_EQ(namesIn({}), QStringList());
}

TEST_F(StagedResultTest, nothingIsLeft_afterAnEmergency)
{
    std::vector<std::unique_ptr<StagedResult>> stages;
    for (int number = 0; number < 60; ++number) {
        stages.push_back(stageAt("song.mp3"));
        fill(*stages.back(), "part");
    }
    EXPECT_EQ(namesIn({}).size(), 60);
    removeUnfinishedFiles();
    EXPECT_EQ(namesIn({}), QStringList());
}

TEST_F(StagedResultTest, publishing_fails_withoutAFile)
{
    const std::unique_ptr<StagedResult> stage = stageAt("song.mp3");
    ASSERT_TRUE(stage);
    const Result<QByteArray> path = stage->publish();
    ASSERT_FALSE(path);
    EXPECT_EQ(path.error().filePath(), tree.pathText("song.mp3"));
}

TEST_F(StagedResultTest, prepending_putsBytesInFrontOfTheFile)
{
    const std::unique_ptr<StagedResult> stage = stageAt("song.mp3");
    ASSERT_TRUE(stage);
    const QByteArray sound(1'000'003, 's');
    fill(*stage, sound);
    EXPECT_FALSE(stage->prepend("tag"));
    ASSERT_TRUE(stage->publish());
    EXPECT_EQ(tree.contents("song.mp3"), "tag" + sound);
    EXPECT_TRUE(stage->prepend("tag")) << "there is no file any more";
}

TEST_F(StagedResultTest, removeAbandoned_removesWhatNoProcessHolds)
{
    const std::unique_ptr<StagedResult> living = stageAt("song.mp3");
    ASSERT_TRUE(living);
    fill(*living, "part");
    tree.makeFile(".tessaron-convert-a1B2c3/song.mp3", "of a killed process");
    tree.makeFile(".tessaron-convert-a1B2c3/another.mp3");
    tree.makeFile(".tessaron-convert-settings/file", "another's");
    tree.makeFile(".tessaron-convert-a1B2c3d", "another's");
    StagedResult::removeAbandoned(tree.path());
    EXPECT_FALSE(tree.exists(".tessaron-convert-a1B2c3"));
    EXPECT_TRUE(tree.exists(".tessaron-convert-settings/file"));
    EXPECT_TRUE(tree.exists(".tessaron-convert-a1B2c3d"));
    ASSERT_TRUE(living->publish());
    EXPECT_EQ(tree.contents("song.mp3"), "part");
}

TEST_F(StagedResultTest, creating_fails_whereNoFolderCanBe)
{
    tree.makeFile("file");
    const Result<std::unique_ptr<StagedResult>> stage = StagedResult::create(tree.path("file/song.mp3"), folders);
    ASSERT_FALSE(stage);
    EXPECT_EQ(stage.error().filePath(), tree.pathText("file"));
}
