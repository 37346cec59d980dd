#include "imaging/StagedFile.h"

#include "imaging/EmergencyRemoval.h"
#include "platform/foundation/DescriptorIO.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/UnfinishedFiles.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

using Names = std::set<std::string>;

class StagedFiles : public testing::TestWithParam<StagedFile::Naming>
{
protected:
    StagedFiles()
        : m_folder(::open(m_tree.path().constData(), O_PATH | O_DIRECTORY | O_CLOEXEC))
    {
    }

    std::unique_ptr<StagedFile> stage(const QByteArray &name, const QByteArray &content)
    {
        int reason = 0;
        std::unique_ptr<StagedFile> file = StagedFile::create(m_folder.get(), m_tree.path(), name, &reason, GetParam());
        EXPECT_NE(file, nullptr) << reason;
        const UniqueDescriptor writer(::open(file->pathForWriting().constData(), O_WRONLY | O_CLOEXEC));
        EXPECT_EQ(writeFully(writer.get(), content.constData(), std::size_t(content.size())), 0);
        return file;
    }

    Names names() const
    {
        Names result;
        for (const auto &entry : std::filesystem::directory_iterator(m_tree.path().toStdString()))
            result.insert(entry.path().filename().string());
        return result;
    }

    const Testing::TemporaryTree m_tree;
    const UniqueDescriptor m_folder;
};

TEST_P(StagedFiles, publish_givesTheNameAndThePermissionsOfTheUmask)
{
    const mode_t before = ::umask(027);
    {
        const std::unique_ptr<StagedFile> file = stage("disc.iso", "content");
        EXPECT_FALSE(m_tree.exists("disc.iso"));
        EXPECT_EQ(publishTogether({file.get()}), 0);
    }
    ::umask(before);
    EXPECT_EQ(names(), Names({"disc.iso"}));
    EXPECT_EQ(m_tree.contents("disc.iso"), "content");
    struct stat status;
    ASSERT_EQ(::stat(m_tree.path("disc.iso").constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_P(StagedFiles, destroying_leavesNothing_whenItWasNotPublished)
{
    m_tree.makeFile("disc.iso", "old");
    stage("disc.iso", "new").reset();
    EXPECT_EQ(names(), Names({"disc.iso"}));
    EXPECT_EQ(m_tree.contents("disc.iso"), "old");
}

TEST_P(StagedFiles, publish_replacesAnOlderFile)
{
    m_tree.makeFile("disc.iso", "old and longer");
    {
        const std::unique_ptr<StagedFile> file = stage("disc.iso", "new");
        EXPECT_EQ(publishTogether({file.get()}), 0);
    }
    EXPECT_EQ(names(), Names({"disc.iso"}));
    EXPECT_EQ(m_tree.contents("disc.iso"), "new");
}

TEST_P(StagedFiles, publish_keepsAPrivateFilePrivate)
{
    m_tree.makeFile("disc.iso", "old");
    m_tree.setMode("disc.iso", 0600);
    {
        const std::unique_ptr<StagedFile> file = stage("disc.iso", "new");
        EXPECT_EQ(publishTogether({file.get()}), 0);
    }
    struct stat status;
    ASSERT_EQ(::stat(m_tree.path("disc.iso").constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_P(StagedFiles, publish_replacesAllOfSeveral)
{
    m_tree.makeFile("disc.cue", "old");
    {
        const std::unique_ptr<StagedFile> image = stage("disc.bin", "image");
        const std::unique_ptr<StagedFile> sheet = stage("disc.cue", "sheet");
        EXPECT_EQ(publishTogether({image.get(), sheet.get()}), 0);
    }
    EXPECT_EQ(names(), Names({"disc.bin", "disc.cue"}));
    EXPECT_EQ(m_tree.contents("disc.bin"), "image");
    EXPECT_EQ(m_tree.contents("disc.cue"), "sheet");
}

TEST_P(StagedFiles, publish_takesAllBack_whenOneCannotGetItsName)
{
    m_tree.makeFile("a.bin", "old");
    m_tree.makeFile("c.cue/in the way");
    {
        const std::unique_ptr<StagedFile> first = stage("a.bin", "new");
        const std::unique_ptr<StagedFile> second = stage("b.bin", "new");
        const std::unique_ptr<StagedFile> third = stage("c.cue", "new");
        EXPECT_EQ(publishTogether({first.get(), second.get(), third.get()}), EISDIR);
    }
    EXPECT_EQ(names(), Names({"a.bin", "c.cue"}));
    EXPECT_EQ(m_tree.contents("a.bin"), "old");
}

TEST_P(StagedFiles, longName_fits_withItsTemporaryName)
{
    const QByteArray name = QByteArray(251, 'n') + ".iso";
    {
        const std::unique_ptr<StagedFile> file = stage(name, "content");
        EXPECT_EQ(publishTogether({file.get()}), 0);
    }
    EXPECT_EQ(names(), Names({name.toStdString()}));
}

INSTANTIATE_TEST_SUITE_P(Namings, StagedFiles,
                         testing::Values(StagedFile::Naming::NamelessIfPossible, StagedFile::Naming::Hidden),
                         [](const auto &information) {
                             return information.param == StagedFile::Naming::Hidden ? "Hidden" : "Nameless";
                         });

TEST(StagedFile, hiddenFile_goes_whenTheProcessEndsInAnEmergency)
{
    const Testing::TemporaryTree tree;
    const UniqueDescriptor folder(::open(tree.path().constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    int reason = 0;
    const std::unique_ptr<StagedFile> file =
        StagedFile::create(folder.get(), tree.path(), "disc.iso", &reason, StagedFile::Naming::Hidden);
    ASSERT_NE(file, nullptr);
    EXPECT_FALSE(std::filesystem::is_empty(tree.path().toStdString()));
    removeUnfinishedFiles();
    EXPECT_TRUE(std::filesystem::is_empty(tree.path().toStdString()));
}

TEST(StagedFile, removeAbandoned_removesWhatNoProcessHolds_andOnlyOfThatName)
{
    const Testing::TemporaryTree tree;
    const UniqueDescriptor folder(::open(tree.path().constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    int reason = 0;
    const std::unique_ptr<StagedFile> living =
        StagedFile::create(folder.get(), tree.path(), "disc.iso", &reason, StagedFile::Naming::Hidden);
    ASSERT_NE(living, nullptr);
    tree.makeFile(".disc.iso.a1b2c3.part", "of a killed process");
    tree.makeSymbolicLink(".disc.iso.link00.part", "other.iso");
    const QByteArrayList others = {"disc.iso",
                                   ".other.iso.a1b2c3.part",
                                   ".disc.iso.a1b2c.part",
                                   ".disc.iso.a1b_c3.part",
                                   ".disc.iso.a1b2c3.par",
                                   "disc.iso.a1b2c3.part"};
    for (const QByteArray &name : others)
        tree.makeFile(name, "another's");
    StagedFile::removeAbandoned(folder.get(), "disc.iso");
    EXPECT_FALSE(tree.exists(".disc.iso.a1b2c3.part"));
    EXPECT_EQ(::access(living->pathForWriting().constData(), F_OK), 0);
    for (const QByteArray &name : others)
        EXPECT_EQ(tree.contents(name), "another's") << name.constData();
    struct stat link;
    EXPECT_EQ(::lstat(tree.path(".disc.iso.link00.part").constData(), &link), 0);
}

TEST(StagedFile, create_tellsTheReason_whenTheFolderTakesNoFiles)
{
    const Testing::TemporaryTree tree;
    tree.setMode({}, 0555);
    const Testing::WithoutRootRights withoutRootRights;
    const UniqueDescriptor folder(::open(tree.path().constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    int reason = 0;
    EXPECT_EQ(StagedFile::create(folder.get(), tree.path(), "disc.iso", &reason), nullptr);
    EXPECT_EQ(reason, EACCES);
}

} // namespace

} // namespace Tessaron
