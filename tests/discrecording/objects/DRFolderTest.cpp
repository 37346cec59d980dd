#include "platform/discrecording/objects/DRFolder.h"

#include "platform/discrecording/objects/DRFile.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

using namespace Tessaron;
using Testing::TemporaryTree;

namespace
{

std::vector<QString> namesOfChildren(const DRFolder &folder)
{
    std::vector<QString> names;
    for (const auto &child : folder.children())
        names.push_back(child->baseName());
    return names;
}

std::shared_ptr<DRFile> fileNamed(const char16_t *name)
{
    return DRFile::virtualFileWithName(QString::fromUtf16(name), {});
}

std::shared_ptr<DRFolder> folderNamed(const char16_t *name)
{
    return DRFolder::virtualFolderWithName(QString::fromUtf16(name));
}

} // namespace

TEST(DRFolder, folderWithPath_isRealAndTakesNoChildren)
{
    const TemporaryTree tree;
    tree.makeFolder("folder");
    tree.makeFile("file");
    const auto folder = DRFolder::folderWithPath(tree.pathText("folder"));
    ASSERT_TRUE(folder);
    EXPECT_FALSE(folder->isVirtual());
    EXPECT_EQ(folder->baseName(), QStringLiteral("folder"));
    folder->addChild(fileNamed(u"x"));
    EXPECT_TRUE(folder->children().empty());
    EXPECT_FALSE(DRFolder::folderWithPath(tree.pathText("file")));
    EXPECT_FALSE(DRFolder::folderWithPath(tree.pathText("missing")));
    const FSRef nothing;
    EXPECT_FALSE(DRFolderCreateReal(&nothing));
}

TEST(DRFolder, addChild_keepsTheOrderAndSetsTheParent)
{
    const auto root = folderNamed(u"root");
    const auto one = fileNamed(u"one");
    root->addChild(one);
    root->addChild(folderNamed(u"two"));
    root->addChild(nullptr);
    EXPECT_EQ(namesOfChildren(*root), (std::vector<QString>{QStringLiteral("one"), QStringLiteral("two")}));
    EXPECT_EQ(one->parent(), root);
    EXPECT_FALSE(root->parent());
    root->addChild(one); // again: moves to the end
    EXPECT_EQ(namesOfChildren(*root), (std::vector<QString>{QStringLiteral("two"), QStringLiteral("one")}));
}

TEST(DRFolder, addChild_takesTheChildOutOfItsFormerParent)
{
    const auto first = folderNamed(u"first");
    const auto second = folderNamed(u"second");
    first->addChild(fileNamed(u"file"));
    second->addChild(first->children().front()); // the pointer given lies in the array that it leaves
    EXPECT_TRUE(first->children().empty());
    ASSERT_EQ(second->children().size(), 1u);
    EXPECT_EQ(second->children().front()->parent(), second);
}

TEST(DRFolder, addChild_refusesACircle)
{
    const auto outer = folderNamed(u"outer");
    const auto inner = folderNamed(u"inner");
    outer->addChild(inner);
    inner->addChild(outer);
    inner->addChild(inner);
    EXPECT_TRUE(inner->children().empty());
    EXPECT_FALSE(outer->parent());
    EXPECT_EQ(inner->parent(), outer);
}

TEST(DRFolder, removeChild_clearsTheParent)
{
    const auto root = folderNamed(u"root");
    const auto one = fileNamed(u"one");
    const auto stranger = fileNamed(u"one");
    root->addChild(one);
    root->removeChild(stranger);
    root->removeChild(nullptr);
    EXPECT_EQ(root->children().size(), 1u);
    root->removeChild(one);
    EXPECT_TRUE(root->children().empty());
    EXPECT_FALSE(one->parent());
}

TEST(DRFolder, parent_isNull_onceTheParentIsGone)
{
    const auto file = fileNamed(u"file");
    const auto inner = folderNamed(u"inner");
    auto root = folderNamed(u"root");
    root->addChild(file);
    root->addChild(inner);
    inner->addChild(fileNamed(u"deep"));
    root.reset();
    EXPECT_FALSE(file->parent());
    EXPECT_FALSE(inner->parent());
    EXPECT_EQ(inner->children().size(), 1u) << "a folder that somebody else holds keeps its children";
    EXPECT_EQ(inner->children().front()->parent(), inner);
    EXPECT_EQ(file->effectiveFilesystemMask(), DRFilesystemInclusionMaskAll);
}

TEST(DRFolder, destructor_needsNoStack_forAVeryDeepTree)
{
    auto root = folderNamed(u"root");
    auto deepest = root;
    for (int depth = 0; depth < 1'000'000; ++depth) {
        const auto inner = folderNamed(u"d");
        deepest->addChild(inner);
        deepest = inner;
    }
    std::weak_ptr<DRFolder> watched = deepest;
    deepest.reset();
    EXPECT_FALSE(watched.expired());
    root.reset();
    EXPECT_TRUE(watched.expired());
}
