#include "platform/coreservices/IconServices.h"

#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace Tessaron
{

namespace
{

FSRef refOf(const QByteArray &path)
{
    FSRef ref;
    EXPECT_EQ(FSPathMakeRef(path, &ref, nullptr), noErr);
    return ref;
}

QImage iconOf(const FSRef &ref, QStringView name, std::uint32_t selectors)
{
    IconRef icon;
    QByteArray family;
    EXPECT_EQ(GetIconRefFromFileInfo(&ref, name, &icon), noErr);
    EXPECT_EQ(IconRefToIconFamily(icon, selectors, &family), noErr);
    return imageFromIconFamily(family, 0);
}

} // namespace

TEST(IconServices, icons_areMadeWithoutADisplay)
{
    const Testing::TemporaryTree tree;
    const FSRef file = refOf(tree.makeFile("file.txt"));
    const FSRef folder = refOf(tree.makeFolder("folder"));
    const QImage small = iconOf(file, u"file.txt", kSelectorSmall32Bit | kSelectorSmall8BitMask);
    EXPECT_EQ(small.size(), QSize(16, 16));
    const QImage large = iconOf(file, u"file.txt", kSelectorAllLargeData);
    EXPECT_EQ(large.size(), QSize(32, 32));
    EXPECT_NE(iconOf(folder, u"folder", kSelectorAllLargeData), large);
    EXPECT_EQ(imageFromIconFamily(genericFolderIconFamily(), 0).width(), 256);
}

TEST(IconServices, icons_comeFromTheNameAlone_whenTheFileIsGone)
{
    const Testing::TemporaryTree tree;
    const FSRef gone = refOf(tree.makeFile("file.txt"));
    tree.remove("file.txt");
    EXPECT_FALSE(iconOf(gone, u"file.txt", kSelectorAllLargeData).isNull());
    IconRef icon;
    EXPECT_EQ(GetIconRefFromFileInfo(&gone, QStringView(), &icon), fnfErr);
    QByteArray family;
    EXPECT_EQ(IconRefToIconFamily(nullptr, kSelectorAllLargeData, &family), paramErr);
}

TEST(IconServices, icons_mayBeAskedForOnAnyThread)
{
    const Testing::TemporaryTree tree;
    const FSRef folder = refOf(tree.makeFolder("folder"));
    const QImage here = iconOf(folder, u"folder", kSelectorAllLargeData);
    QImage there;
    std::thread([&] { there = iconOf(folder, u"folder", kSelectorAllLargeData); }).join();
    EXPECT_EQ(here, there);
}

} // namespace Tessaron
