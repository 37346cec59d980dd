#include "imaging/burning/EarlierFiles.h"

#include "platform/discimage/source/DiscImageSource.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

/// What another program wrote, and what somebody made of it.
class EarlierFilesOfImage : public testing::Test
{
protected:
    EarlierFilesOfImage()
    {
        m_tree.makeFile("source/aaa.txt", "a");
        m_tree.makeFile("source/aab.txt", "b");
        const ProgramRun run =
            runProgram("genisoimage", {"-quiet", "-R", "-o", m_tree.path("image"), m_tree.path("source")});
        EXPECT_EQ(run.status, 0) << run.errors.constData();
        m_image = m_tree.contents("image");
    }

    [[nodiscard]] static Result<std::shared_ptr<EarlierFiles>> read(const QByteArray &image)
    {
        return EarlierFiles::readFrom(DiscImageSource::sourceWithBytes(image), EarlierFiles::EmptyBegin::HasNoFiles,
                                      {});
    }
    /// Why the image cannot be added to, when its second file is called so.
    [[nodiscard]] QString refusalWithName(const QByteArray &name) const
    {
        QByteArray changed = m_image;
        changed.replace("aab.txt", name);
        const Result<std::shared_ptr<EarlierFiles>> files = read(changed);
        return files ? QString() : files.error().localizedDescription();
    }

    const TemporaryTree m_tree;
    QByteArray m_image;
};

TEST_F(EarlierFilesOfImage, files_areRead)
{
    const Result<std::shared_ptr<EarlierFiles>> files = read(m_image);
    ASSERT_TRUE(files) << files.error().localizedDescription().toStdString();
    ASSERT_TRUE(*files);
    EXPECT_TRUE((*files)->firstBlockOfContents());
}

TEST_F(EarlierFilesOfImage, twoFilesOfOneName_areRefused_sinceOnlyOneWouldBeFoundAgain)
{
    const QString reason = refusalWithName("aaa.txt");
    EXPECT_TRUE(reason.contains(QStringLiteral("more than one object"))) << reason.toStdString();
    EXPECT_TRUE(reason.contains(QStringLiteral("/aaa.txt"))) << reason.toStdString();
}

TEST_F(EarlierFilesOfImage, namesThatNothingCanHave_areRefused)
{
    for (const QByteArray &name : {QByteArray("aab/txt"), QByteArray("aab\0txt", 7)}) {
        const QString reason = refusalWithName(name);
        EXPECT_TRUE(reason.contains(QStringLiteral("as nothing can be"))) << reason.toStdString();
    }
}

TEST_F(EarlierFilesOfImage, nothingButZeros_isAnEmptyDisc_butNoSession)
{
    const auto zeros = DiscImageSource::sourceWithBytes(QByteArray(1 << 20, '\0'));
    const Result<std::shared_ptr<EarlierFiles>> none =
        EarlierFiles::readFrom(zeros, EarlierFiles::EmptyBegin::HasNoFiles, {});
    EXPECT_TRUE(none && *none == nullptr);
    EXPECT_FALSE(EarlierFiles::readFrom(zeros, EarlierFiles::EmptyBegin::IsAnError, {}));
}

} // namespace

} // namespace Tessaron::Testing
