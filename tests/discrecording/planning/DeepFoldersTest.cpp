#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/IsoImageReader.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// What ECMA-119 allows (6.8.2.1), the root counted.
constexpr int deepestLevel = 8;

/// A folder on disk whose deep folders are to be relocated.
std::shared_ptr<DRFolder> relocating(const TemporaryTree &tree, const QByteArray &relative = {})
{
    auto root = DRFolder::folderWithPath(tree.pathText(relative));
    root->setProperty(true, DRRelocatesDeepFolders, DRAllFilesystems);
    return root;
}

PlanOptions onlyIso()
{
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskISO9660;
    return options;
}

/// "a/a/a/…", `levels` of them.
QByteArray chainOf(const QByteArray &name, int levels)
{
    QByteArray path = (name + '/').repeated(levels);
    path.chop(1);
    return path;
}

int levelsBelow(const IsoObject &folder)
{
    int deepest = 0;
    for (const auto &child : folder.children)
        deepest = std::max(deepest, child->isFolder ? levelsBelow(*child) : 0);
    return deepest + 1;
}

/// Every folder of the tree by its block.
void collectFolders(const IsoObject &folder, std::map<std::uint32_t, const IsoObject *> *folders)
{
    folders->emplace(folder.extents.at(0).block, &folder);
    for (const auto &child : folder.children) {
        if (child->isFolder)
            collectFolders(*child, folders);
    }
}

/// The paths that Rock Ridge shows, by CL and without what has RE; a folder's with a slash at its end.
class RockRidgePaths
{
public:
    explicit RockRidgePaths(const IsoObject &root)
    {
        collectFolders(root, &m_folders);
        walk(root, {});
    }

    std::set<QByteArray> paths;
    int relocated = 0;

private:
    void walk(const IsoObject &folder, const QByteArray &path)
    {
        std::uint32_t subfolders = 0;
        for (const auto &child : folder.children) {
            const RockRidgeEntry &facts = *child->rockRidge;
            if (facts.isRelocated)
                continue;
            const IsoObject *shown = child.get();
            if (facts.childBlock) {
                ++relocated;
                EXPECT_FALSE(child->isFolder);
                EXPECT_TRUE(S_ISDIR(facts.mode));
                EXPECT_EQ(child->size, 0u);
                shown = m_folders.at(*facts.childBlock);
                EXPECT_TRUE(shown->rockRidge->isRelocated);
                EXPECT_EQ(shown->rockRidge->name, facts.name);
                EXPECT_EQ(shown->belongsTo, folder.extents[0].block);
            }
            paths.insert(path + facts.name + (shown->isFolder ? "/" : ""));
            subfolders += shown->isFolder ? 1 : 0;
            if (shown->isFolder)
                walk(*shown, path + facts.name + '/');
        }
        if (folder.rockRidge) { // the root's own record is not kept
            EXPECT_EQ(folder.rockRidge->linkCount, 2 + subfolders) << path.constData();
        }
    }

    std::map<std::uint32_t, const IsoObject *> m_folders;
};

/// What is on disk, in the same form.
std::set<QByteArray> pathsOnDisk(const TemporaryTree &tree)
{
    const ProgramRun found =
        runProgram(QStringLiteral("find"),
                   {QStringLiteral("."), QStringLiteral("-mindepth"), QStringLiteral("1"), QStringLiteral("("),
                    QStringLiteral("-type"), QStringLiteral("d"), QStringLiteral("-printf"), QStringLiteral("%P/\\n"),
                    QStringLiteral(")"), QStringLiteral("-o"), QStringLiteral("-printf"), QStringLiteral("%P\\n")},
                   tree.pathText());
    const QByteArrayList lines = found.output.split('\n');
    std::set<QByteArray> paths(lines.begin(), lines.end());
    paths.erase(QByteArray());
    return paths;
}

void expectRelocated(const TemporaryTree &tree)
{
    const WrittenImage image(relocating(tree), onlyIso());
    ASSERT_FALSE(image.error());
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    ASSERT_TRUE(reader.primary());
    EXPECT_LE(levelsBelow(reader.primary()->root), deepestLevel);
    const RockRidgePaths shown(reader.primary()->root);
    EXPECT_EQ(shown.paths, pathsOnDisk(tree));
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
}

TEST(DeepFolders, stayWhereTheyAre_whenNotAskedOtherwise)
{
    const TemporaryTree tree;
    tree.makeFile(chainOf("d", 12) + "/file", "deep");
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()), onlyIso());
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(levelsBelow(reader.primary()->root), 13);
    EXPECT_EQ(reader.primary()->root.children.size(), 1u);
}

TEST(DeepFolders, areRelocated_andShownInTheirPlaces)
{
    const TemporaryTree tree;
    for (const int levels : {3, 8, 9, 15, 16, 40})
        tree.makeFile(chainOf("Folder " + QByteArray::number(levels), levels) + "/file " + QByteArray::number(levels),
                      QByteArray::number(levels));
    tree.makeFile(chainOf("Folder 40", 30) + "/sister/file", "beside");
    tree.makeFile(chainOf("Folder 40", 7) + "/" + QByteArray(240, 'n') + "/deep/" + QByteArray(255, 'm') + "/x",
                  "long");
    tree.makeSymbolicLink(chainOf("Folder 40", 20) + "/link", "../" + QByteArray(300, 'l'));
    expectRelocated(tree);
}

TEST(DeepFolders, relocatedOnes_areReported_andTheFolderThatTakesThemIsNotCounted)
{
    const TemporaryTree tree;
    tree.makeFile(chainOf("D", 14) + "/FILE", "deep");
    const WrittenImage image(relocating(tree), onlyIso());
    const auto altered = image.items(DRDiscTree::ISO9660, DRStorageReportItem::Kind::Altered);
    ASSERT_EQ(altered.size(), 2u);
    EXPECT_EQ(altered[0].path, QString::fromUtf8("/" + chainOf("D", 8)));
    EXPECT_EQ(altered[1].path, QString::fromUtf8("/" + chainOf("D", 14)));
    EXPECT_TRUE(altered[0].reason.contains(QStringLiteral("rr_moved"))) << qPrintable(altered[0].reason);
    EXPECT_EQ(image.plan().report->lostCount(), 0u);
    EXPECT_EQ(image.plan().folderCount, 14u);
    EXPECT_EQ(image.plan().fileCount, 1u);
}

TEST(DeepFolders, nothingIsAdded_whenNoFolderIsTooDeep)
{
    const TemporaryTree tree;
    tree.makeFile(chainOf("d", 7) + "/file", "not too deep");
    const WrittenImage image(relocating(tree));
    const WrittenImage usual(DRFolder::folderWithPath(tree.pathText()));
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(reader.primary()->root.children.size(), 1u);
    EXPECT_EQ(image.size(), usual.size());
}

TEST(DeepFolders, otherTrees_keepThemWhereTheyAre)
{
    const TemporaryTree tree;
    tree.makeFile(chainOf("d", 12) + "/file", "deep");
    const WrittenImage image(relocating(tree));
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_EQ(levelsBelow(reader.joliet()->root), 13);
    EXPECT_EQ(reader.joliet()->root.children.size(), 1u);
}

TEST(DeepFolders, folderOfThatName_takesThemToo)
{
    for (const char *const name : {"rr_moved", ".rr_moved"}) {
        const TemporaryTree tree;
        tree.makeFile(QByteArray(name) + "/own", "of the user");
        tree.makeFile(QByteArray(name) + "/d/own", "of the user");
        tree.makeFile(chainOf("d", 20) + "/file", "deep");
        expectRelocated(tree);
    }
}

TEST(DeepFolders, fileOfThatName_staysWhereItIs)
{
    const TemporaryTree tree;
    tree.makeFile("rr_moved", "a file");
    tree.makeFile(chainOf("d", 20) + "/file", "deep");
    expectRelocated(tree);
}

TEST(DeepFolders, areRelocatedInAVirtualFolder)
{
    const TemporaryTree tree;
    tree.makeFile("file", "deep");
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("disc"));
    auto folder = root;
    for (int level = 0; level < 15; ++level) {
        const auto below = DRFolder::virtualFolderWithName(QStringLiteral("zz"));
        folder->addChild(below);
        folder = below;
    }
    folder->addChild(DRFile::fileWithPath(tree.pathText("file")));
    root->setProperty(true, DRRelocatesDeepFolders, DRAllFilesystems);
    const WrittenImage image(root, onlyIso());
    const IsoImageReader reader(image.path());
    EXPECT_EQ(reader.problems(), QStringList());
    EXPECT_LE(levelsBelow(reader.primary()->root), deepestLevel);
    const RockRidgePaths shown(reader.primary()->root);
    EXPECT_TRUE(shown.paths.count(chainOf("zz", 15) + "/file"));
    EXPECT_EQ(shown.paths.size(), 16u);
}

class DeepFoldersForOthers : public testing::Test
{
protected:
    DeepFoldersForOthers()
    {
        source.makeFile(chainOf("Same name in all", 30) + "/file", "deep");
        source.makeFile(chainOf("other", 11) + "/file", "less deep");
        source.makeFile(chainOf("other", 9) + "/" + QByteArray(200, 'n') + "/file", "long");
        source.makeFile("near", "not deep");
        image = std::make_unique<WrittenImage>(relocating(source), onlyIso());
        EXPECT_FALSE(image->error());
    }

    void expectSource(const QByteArray &folder) const
    {
        const ProgramRun result =
            runProgram(QStringLiteral("diff"), {QStringLiteral("-r"), source.pathText(), target.pathText(folder)});
        EXPECT_EQ(result.status, 0) << result.output.constData() << result.errors.constData();
    }

    const TemporaryTree source;
    const TemporaryTree target;
    std::unique_ptr<WrittenImage> image;
};

TEST_F(DeepFoldersForOthers, bsdtar_extractsTheSource)
{
    if (!hasProgram(QStringLiteral("bsdtar")))
        GTEST_SKIP() << "bsdtar is not installed";
    target.makeFolder("x");
    const ProgramRun result = runProgram(
        QStringLiteral("bsdtar"), {QStringLiteral("-xpf"), image->path(), QStringLiteral("-C"), target.pathText("x")});
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    (void)::rmdir(target.path("x/rr_moved").constData()); // it shows the folder, and nothing in it
    expectSource("x");
}

TEST_F(DeepFoldersForOthers, xorriso_extractsTheSource)
{
    if (!hasProgram(QStringLiteral("xorriso")))
        GTEST_SKIP() << "xorriso is not installed";
    const ProgramRun result = extractWithXorriso(image->path(), target.pathText("x"));
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_FALSE(result.errors.contains("SORRY")) << result.errors.constData();
    expectSource("x");
}

TEST_F(DeepFoldersForOthers, isoinfoAndIsovfy_findThem)
{
    if (!hasProgram(QStringLiteral("isoinfo")) || !hasProgram(QStringLiteral("isovfy")))
        GTEST_SKIP() << "isoinfo or isovfy is not installed";
    const QByteArrayList listed =
        runProgram(QStringLiteral("isoinfo"),
                   {QStringLiteral("-R"), QStringLiteral("-f"), QStringLiteral("-i"), image->path()})
            .output.split('\n');
    EXPECT_TRUE(listed.contains("/rr_moved/Same name in all/Same name in all/Same name in all/Same name in all/"
                                "Same name in all/Same name in all"))
        << listed.join('\n').constData();
    const ProgramRun checked = runProgram(QStringLiteral("isovfy"), {image->path()});
    EXPECT_EQ(checked.status, 0);
    EXPECT_TRUE(checked.output.contains("No errors found")) << checked.output.constData();
}

} // namespace

} // namespace Tessaron::Testing
