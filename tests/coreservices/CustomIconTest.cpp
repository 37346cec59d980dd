#include "platform/coreservices/CustomIcon.h"

#include "platform/coreservices/AppleDouble.h"
#include "platform/coreservices/FSRef.h"
#include "platform/coreservices/IconFamily.h"
#include "platform/coreservices/PathAccess.h"
#include "platform/coreservices/ResourceFork.h"
#include "tests/support/TemporaryTree.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace Tessaron;
using namespace Tessaron::Testing;

namespace
{

QImage picture(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(QColor(200, 30, 40));
    return image;
}

/// A picture whose family does not fit into the 4096 bytes that some file systems have for all attributes of a file.
QImage noisyPicture()
{
    QImage image(256, 256, QImage::Format_ARGB32);
    std::uint32_t state = 1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            state = state * 1664525 + 1013904223;
            image.setPixel(x, y, 0xFF000000 | state >> 8);
        }
    }
    return image;
}

FSRef refOf(const QByteArray &path)
{
    FSRef ref;
    EXPECT_EQ(FSPathMakeRef(path, &ref, nullptr), noErr);
    return ref;
}

} // namespace

TEST(CustomIcon, customIconFamily_isNull_forAFileWithoutOne)
{
    const TemporaryTree tree;
    tree.makeFile("file");
    EXPECT_TRUE(customIconFamily(refOf(tree.path("file"))).isNull());
    EXPECT_TRUE(customIconFamily(refOf(tree.path())).isNull());
    EXPECT_TRUE(customIconFamily(FSRef()).isNull());
}

TEST(CustomIcon, setCustomIcon_givesAFamilyOfAllSizes)
{
    const TemporaryTree tree;
    const FSRef ref = refOf(tree.makeFile("file", "contents"));
    ASSERT_TRUE(setCustomIcon(ref, picture(64, 64)));
    const QByteArray family = customIconFamily(ref);
    EXPECT_TRUE(family.startsWith("icns"));
    for (const int side : {16, 32, 48, 128, 256}) {
        const QImage image = imageFromIconFamily(family, side);
        EXPECT_EQ(image.size(), QSize(side, side));
        EXPECT_EQ(image.pixelColor(side / 2, side / 2), QColor(200, 30, 40)) << side;
    }
    EXPECT_EQ(tree.contents("file"), "contents");
}

TEST(CustomIcon, setCustomIcon_centresAPictureThatIsNotSquare)
{
    const TemporaryTree tree;
    const FSRef ref = refOf(tree.makeFile("file"));
    ASSERT_TRUE(setCustomIcon(ref, picture(64, 16)));
    const QImage image = imageFromIconFamily(customIconFamily(ref), 128);
    EXPECT_EQ(image.pixelColor(64, 64), QColor(200, 30, 40));
    EXPECT_EQ(image.pixelColor(64, 10).alpha(), 0);
    EXPECT_EQ(image.pixelColor(64, 117).alpha(), 0);
}

TEST(CustomIcon, setCustomIcon_works_whenTheFamilyIsLargerThanAttributesMayBe)
{
    const TemporaryTree tree;
    const FSRef ref = refOf(tree.makeFile("n\xFFme"));
    ASSERT_TRUE(setCustomIcon(ref, noisyPicture()));
    const QByteArray family = customIconFamily(ref);
    EXPECT_GT(family.size(), 65536);
    EXPECT_EQ(imageFromIconFamily(family, 256), noisyPicture());
}

TEST(CustomIcon, setCustomIcon_works_whereThereAreNoAttributesAtAll)
{
    const TemporaryTree tree(QStringLiteral("/dev/shm"));
    const FSRef ref = refOf(tree.makeFile("file"));
    ASSERT_TRUE(setCustomIcon(ref, noisyPicture()));
    EXPECT_FALSE(customIconFamily(ref).isEmpty());
}

TEST(CustomIcon, setCustomIcon_replacesTheIcon_andTakesItAway)
{
    const TemporaryTree tree;
    const FSRef ref = refOf(tree.makeFile("file"));
    ASSERT_TRUE(setCustomIcon(ref, noisyPicture()));
    ASSERT_TRUE(setCustomIcon(ref, picture(16, 16)));
    EXPECT_EQ(imageFromIconFamily(customIconFamily(ref), 16), picture(16, 16));
    ASSERT_TRUE(setCustomIcon(ref, QImage()));
    EXPECT_TRUE(customIconFamily(ref).isNull());
    EXPECT_TRUE(setCustomIcon(ref, QImage())) << "there is none to take away";
}

TEST(CustomIcon, setCustomIcon_keepsOtherResourcesAndFlags)
{
    const TemporaryTree tree;
    const QByteArray path = tree.makeFile("file");
    AppleDouble before;
    before.finderInfo[0] = 'T';
    before.finderInfo[9] = 0x10; // the extension is hidden
    Resource text;
    text.type = 0x54455854;
    text.data = "text";
    before.resourceFork = forkWithResources({text});
    tree.makeFile("._file", bytesOfAppleDouble(before));
    const FSRef ref = refOf(path);
    ASSERT_TRUE(setCustomIcon(ref, picture(32, 32)));
    const auto after = appleDoubleFromBytes(tree.contents("._file"));
    ASSERT_TRUE(after);
    EXPECT_EQ(after->finderInfo[0], 'T');
    EXPECT_EQ(after->finderInfo[8], 0x04);
    EXPECT_EQ(after->finderInfo[9], 0x10);
    const auto resources = resourcesOfFork(after->resourceFork);
    ASSERT_TRUE(resources);
    ASSERT_EQ(resources->size(), 2u);
    EXPECT_EQ(resources->front(), text);
}

TEST(CustomIcon, setCustomIcon_fails_whenTheForkCannotBeRead)
{
    const TemporaryTree tree;
    tree.makeFile("file");
    AppleDouble broken;
    broken.resourceFork = "no fork";
    const QByteArray bytes = bytesOfAppleDouble(broken);
    tree.makeFile("._file", bytes);
    EXPECT_FALSE(setCustomIcon(refOf(tree.path("file")), picture(32, 32)));
    EXPECT_EQ(tree.contents("._file"), bytes) << "it is left as it is";
}

TEST(CustomIcon, setCustomIcon_fails_forWhatIsNoFile)
{
    const TemporaryTree tree;
    tree.makeFolder("folder");
    EXPECT_FALSE(setCustomIcon(refOf(tree.path("folder")), picture(32, 32)));
    EXPECT_FALSE(setCustomIcon(FSRef(), picture(32, 32)));
    const FSRef ref = refOf(tree.makeFile("gone"));
    ASSERT_TRUE(QFile::remove(tree.pathText("gone")));
    EXPECT_FALSE(setCustomIcon(ref, picture(32, 32)));
}

TEST(CustomIcon, customIconFamily_isThatOfTheIconFile_forAFolderThatSaysSo)
{
    const TemporaryTree tree;
    tree.makeFolder("folder");
    ASSERT_TRUE(setCustomIcon(refOf(tree.makeFile("folder/Icon\r")), picture(32, 32)));
    const FSRef folder = refOf(tree.path("folder"));
    EXPECT_TRUE(customIconFamily(folder).isNull()) << "without the flag, the file is only a file";
    FinderInfoBytes info = {};
    info[8] = 0x04;
    if (writeFinderInfo(PathAccess(tree.path("folder")), info) != noErr)
        GTEST_SKIP() << "the file system of the temporary folder keeps no attributes";
    EXPECT_FALSE(customIconFamily(folder).isNull());
}
