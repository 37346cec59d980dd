#include "platform/coreservices/CustomIcon.h"
#include "platform/coreservices/IconFamily.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/UniqueDescriptor.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRIconFamily.h>
#include <TessaronClasses/TemporaryFiles.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QSet>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

QImage redPicture()
{
    QImage image(128, 128, QImage::Format_ARGB32);
    image.fill(QColor(250, 0, 0));
    return image;
}

/// Holds the temporary folder while it lives: all tests of a user share it, those that run beside this one in other
/// processes too, and their scratch files are not to be counted.
class ScratchFiles
{
public:
    ScratchFiles()
        : m_folder(::open(fileSystemRepresentation(temporaryFolder()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        EXPECT_TRUE(m_folder);
        EXPECT_EQ(::flock(m_folder.get(), LOCK_EX), 0);
    }

    [[nodiscard]] QSet<QString> names() const
    {
        const QStringList names = QDir(temporaryFolder()).entryList({QStringLiteral("myicon*")}, QDir::Files);
        return {names.begin(), names.end()};
    }

private:
    UniqueDescriptor m_folder;
};

/// With what the icon is kept in beside it.
void removeScratchFile(const QString &name)
{
    const QDir folder(temporaryFolder());
    QFile::remove(folder.filePath(name));
    QFile::remove(folder.filePath(QStringLiteral("._") + name));
}

} // namespace

TEST(KRIconFamily, iconFamilyForFile_holdsEverySize)
{
    const TemporaryTree tree;
    tree.makeFile("a.txt", "text");
    const auto family = KRIconFamily::iconFamilyForFile(tree.pathText("a.txt"));
    ASSERT_NE(family, nullptr);
    EXPECT_EQ(imagesFromIconFamily(family->data()).size(), 6u) << "five sizes, 128 pixels in two forms";
}

TEST(KRIconFamily, iconFamilyForFile_isNull_whenNothingIsThere)
{
    const TemporaryTree tree;
    EXPECT_EQ(KRIconFamily::iconFamilyForFile(tree.pathText("missing")), nullptr);
    EXPECT_EQ(KRIconFamily::iconFamilyForFile(QString()), nullptr);
}

TEST(KRIconFamily, initWithFSRef_isNull_whenTheFileIsGone)
{
    const TemporaryTree tree;
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(tree.makeFile("a.txt"), &ref, nullptr), noErr);
    ASSERT_NE(KRIconFamily::initWithFSRef(ref), nullptr);
    tree.remove("a.txt");
    EXPECT_EQ(KRIconFamily::initWithFSRef(ref), nullptr);
    EXPECT_EQ(KRIconFamily::iconFamilyForFSRef(FSRef()), nullptr);
}

TEST(KRIconFamily, iconFamilyForFSRef_isTheFilesOwnIcon_whenItHasOne)
{
    const TemporaryTree tree;
    FSRef ref;
    ASSERT_EQ(FSPathMakeRef(tree.makeFile("a.txt"), &ref, nullptr), noErr);
    ASSERT_TRUE(setCustomIcon(ref, redPicture()));
    const auto family = KRIconFamily::iconFamilyForFSRef(ref);
    ASSERT_NE(family, nullptr);
    EXPECT_EQ(family->data(), customIconFamily(ref));
}

TEST(KRIconFamily, initWithImage_isThePictureInEverySize)
{
    const ScratchFiles scratch;
    const QSet<QString> before = scratch.names();
    const auto family = KRIconFamily::initWithImage(redPicture());
    ASSERT_NE(family, nullptr);
    for (const int side : {16, 32, 48, 128, 256})
        EXPECT_EQ(imageFromIconFamily(family->data(), side).pixelColor(side / 2, side / 2), QColor(250, 0, 0)) << side;
    for (const QString &name : scratch.names() - before)
        removeScratchFile(name);
}

TEST(KRIconFamily, iconFamilyForImage_leavesAScratchFileBehind)
{
    const ScratchFiles scratch;
    const QSet<QString> before = scratch.names();
    ASSERT_NE(KRIconFamily::iconFamilyForImage(redPicture()), nullptr);
    const QSet<QString> made = scratch.names() - before;
    ASSERT_EQ(made.size(), 1);
    const QString name = *made.begin();
    bool isNumber = false;
    EXPECT_GE(name.mid(6).toInt(&isNumber), 0);
    EXPECT_TRUE(isNumber) << qPrintable(name);
    EXPECT_EQ(QFileInfo(QDir(temporaryFolder()).filePath(name)).size(), 0);
    removeScratchFile(name);
}

TEST(KRIconFamily, initWithImage_isNull_forANullPicture)
{
    const ScratchFiles scratch;
    const QSet<QString> before = scratch.names();
    EXPECT_EQ(KRIconFamily::initWithImage(QImage()), nullptr);
    EXPECT_EQ(scratch.names(), before);
}

TEST(KRIconFamily, writeToFile_writesTheBytes)
{
    const TemporaryTree tree;
    tree.makeFile("old.icns", QByteArray(1000000, 'o'));
    tree.makeFile("a.txt");
    const auto family = KRIconFamily::iconFamilyForFile(tree.pathText("a.txt"));
    ASSERT_NE(family, nullptr);
    EXPECT_TRUE(family->writeToFile(tree.pathText("n\xFFw.icns")));
    EXPECT_TRUE(family->writeToFile(tree.pathText("old.icns")));
    EXPECT_EQ(tree.contents("n\xFFw.icns"), family->data());
    EXPECT_EQ(tree.contents("old.icns"), family->data());
    EXPECT_FALSE(family->writeToFile(tree.pathText("missing/a.icns")));
}
