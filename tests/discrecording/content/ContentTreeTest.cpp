#include "platform/discrecording/content/ContentTreeBuilder.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

std::unique_ptr<ContentTree> treeOf(const DRFolder &root, unsigned int threads = 2)
{
    const std::function<void(double)> silent;
    const PlanProgress progress({}, silent);
    StorageIssues issues;
    return ContentTreeBuilder(progress, {1'000, 0}, std::nullopt, threads).build(root, issues);
}

} // namespace

TEST(ContentTree, children_areNeighboursInTheOrderOfTheirBytes)
{
    const TemporaryTree tree;
    for (const char *const name : {"b", "a", "\xC3\xA4", "B", "sub/z", "sub/y"})
        tree.makeFile(name, name);
    const auto content = treeOf(*DRFolder::folderWithPath(tree.pathText()));
    std::vector<std::string> paths;
    for (NodeIndex node = 1; node < content->nodes.size(); ++node)
        paths.push_back(content->discPath(node).toStdString());
    EXPECT_EQ(paths, (std::vector<std::string>{"/B", "/a", "/b", "/sub", "/\xC3\xA4", "/sub/y", "/sub/z"}));
    EXPECT_EQ(content->nodes[0].firstChild(), 1u);
    EXPECT_EQ(content->nodes[0].childCount(), 5u);
    EXPECT_EQ(content->nodes[4].contentsOwner(), 6u);
    EXPECT_EQ(content->folderCount, 2u);
}

TEST(ContentTree, threads_makeNoDifference)
{
    const TemporaryTree tree;
    const auto root = DRFolder::virtualFolderWithName({});
    for (int number = 0; number < 6'000; ++number) {
        const QByteArray name = "f" + QByteArray::number(number % 40) + "/n" + QByteArray::number(number);
        if (number % 10 == 0)
            tree.makeSymbolicLink(name, "target " + QByteArray::number(number));
        else
            tree.makeFile(name);
        root->addChild(DRFile::fileWithPath(tree.pathText(name)));
    }
    const auto one = treeOf(*root, 1);
    const auto several = treeOf(*root, 4);
    ASSERT_EQ(one->nodes.size(), several->nodes.size());
    for (NodeIndex node = 0; node < one->nodes.size(); ++node) {
        ASSERT_EQ(one->nodes[node].nameView(), several->nodes[node].nameView());
        ASSERT_EQ(one->nodes[node].kind, several->nodes[node].kind);
        ASSERT_EQ(one->nodes[node].inode, several->nodes[node].inode);
        if (one->nodes[node].kind == ContentKind::SymbolicLink) {
            ASSERT_EQ(one->linkTarget(node), several->linkTarget(node));
        }
    }
}

TEST(ContentTree, times_ofAVirtualObjectAreTheVolumes)
{
    const auto root = DRFolder::virtualFolderWithName({});
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("v"), "v"));
    const auto content = treeOf(*root);
    EXPECT_EQ(content->times(1).modification.seconds, 1'000);
    EXPECT_EQ(content->times(1).access.seconds, 1'000);
    EXPECT_EQ(content->times(1).attributeModification.seconds, 1'000);
    EXPECT_EQ(content->sourceRef(1), FSRef());
}

} // namespace Tessaron::Testing
