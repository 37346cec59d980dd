#include "platform/coreservices/CustomIcon.h"
#include "platform/coreservices/IconFamily.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRIconFamily.h>
#include <TessaronClasses/TemporaryFiles.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QSet>

#include <gtest/gtest.h>

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

QSet<QString> scratchFiles()
{
    const QStringList names = QDir(temporaryFolder()).entryList({QStringLiteral("myicon*")}, QDir::Files);
    return {names.begin(), names.end()};
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
    const auto family = KRIconFamily::initWithImage(redPicture());
    ASSERT_NE(family, nullptr);
    for (const int side : {16, 32, 48, 128, 256})
        EXPECT_EQ(imageFromIconFamily(family->data(), side).pixelColor(side / 2, side / 2), QColor(250, 0, 0)) << side;
}

TEST(KRIconFamily, iconFamilyForImage_leavesAScratchFileBehind)
{
    const QSet<QString> before = scratchFiles();
    ASSERT_NE(KRIconFamily::iconFamilyForImage(redPicture()), nullptr);
    const QSet<QString> made = scratchFiles() - before;
    ASSERT_EQ(made.size(), 1);
    const QString name = *made.begin();
    bool isNumber = false;
    EXPECT_GE(name.mid(6).toInt(&isNumber), 0);
    EXPECT_TRUE(isNumber) << qPrintable(name);
    const QDir folder(temporaryFolder());
    EXPECT_EQ(QFileInfo(folder.filePath(name)).size(), 0);
    QFile::remove(folder.filePath(name));
    QFile::remove(folder.filePath(QStringLiteral("._") + name));
}

TEST(KRIconFamily, initWithImage_isNull_forANullPicture)
{
    const QSet<QString> before = scratchFiles();
    EXPECT_EQ(KRIconFamily::initWithImage(QImage()), nullptr);
    EXPECT_EQ(scratchFiles(), before);
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
