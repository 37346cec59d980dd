#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

DiscImagePlan planOf(const std::shared_ptr<DRFolder> &root, const PlanOptions &options = {})
{
    NSError error;
    DiscImagePlan plan = planDiscImage(root, options, {}, {}, &error);
    EXPECT_FALSE(error) << qPrintable(error.localizedDescription());
    return plan;
}

/// The error of producing the whole image.
NSError errorOfProducing(const BlockImage &image)
{
    std::vector<std::uint8_t> buffer;
    for (std::uint32_t at = 0; at < image.blockCount();) {
        const ImagePiece piece = image.pieceAt(BlockAddress(at), 64);
        buffer.resize(std::size_t{piece.blockCount} * logicalBlockSize);
        if (NSError error = image.fillPiece(BlockAddress(at), buffer, {}))
            return error;
        at += piece.blockCount;
    }
    return {};
}

/// A tree with files of all sizes around block and piece borders, huge directories and long names.
std::shared_ptr<DRFolder> variedRoot(const TemporaryTree &tree)
{
    for (const int size : {0, 1, 2047, 2048, 2049, 70'000, 262'143, 262'144, 300'000})
        tree.makeFile("sizes/file " + QByteArray::number(size), QByteArray(size, static_cast<char>('a' + size % 26)));
    auto root = DRFolder::virtualFolderWithName(QStringLiteral("varied"));
    root->addChild(DRFolder::folderWithPath(tree.pathText("sizes")));
    const auto many = DRFolder::virtualFolderWithName(QStringLiteral("many"));
    const QString stem = QStringLiteral("a name of some length, so that a part of it needs a continuation area ")
        + QStringLiteral("x").repeated(100);
    for (int number = 0; number < 9'000; ++number)
        many->addChild(DRFile::virtualFileWithName(
            (number % 3 == 0 ? stem : QStringLiteral("short ")) + QString::number(number), QByteArray::number(number)));
    root->addChild(many);
    return root;
}

} // namespace

TEST(DiscImagePieces, bytes_areTheSame_howeverTheyAreCut)
{
    const TemporaryTree tree;
    PlanOptions options;
    options.sourceDateEpoch = 1'700'000'000;
    const DiscImagePlan plan = planOf(variedRoot(tree), options);
    const QByteArray whole = imageBytes(*plan.image, 1u << 30);
    ASSERT_EQ(whole.size(), qsizetype{plan.image->blockCount()} * 2048);
    for (const std::uint32_t wanted : {1u, 7u, 255u, 257u, 512u})
        EXPECT_TRUE(imageBytes(*plan.image, wanted) == whole) << wanted;
}

TEST(DiscImagePieces, pieceAt_coversTheImage_withoutCuttingSmallFiles)
{
    const TemporaryTree tree;
    const DiscImagePlan plan = planOf(variedRoot(tree));
    std::uint32_t at = 0;
    while (at < plan.image->blockCount()) {
        const ImagePiece piece = plan.image->pieceAt(BlockAddress(at), 8);
        ASSERT_GE(piece.blockCount, 1u);
        // More than wanted only for a small file, which is one piece: less than 256 KiB.
        ASSERT_LE(piece.blockCount, 128u);
        at += piece.blockCount;
    }
    EXPECT_EQ(at, plan.image->blockCount());
    EXPECT_EQ(plan.image->blockCount() % 16, 0u);
}

TEST(DiscImagePieces, fillPiece_worksFromSeveralThreads)
{
    const TemporaryTree tree;
    const DiscImagePlan plan = planOf(variedRoot(tree));
    const QByteArray whole = imageBytes(*plan.image, 100);
    std::vector<std::jthread> threads;
    std::atomic<int> matches = 0;
    for (std::uint32_t wanted : {40u, 60u, 80u}) {
        threads.emplace_back([&, wanted] { matches += imageBytes(*plan.image, wanted) == whole ? 1 : 0; });
    }
    threads.clear();
    EXPECT_EQ(matches, 3);
}

TEST(DiscImagePieces, plan_doesNotNeedTheLayoutAnyMore)
{
    const TemporaryTree tree;
    tree.makeFile("file", "contents");
    auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    root->addChild(DRFile::fileWithPath(tree.pathText("file")));
    root->addChild(DRFile::virtualFileWithName(QStringLiteral("virtual"), QByteArray("bytes")));
    const DiscImagePlan plan = planOf(root);
    root->removeChild(root->children()[0]);
    root.reset();
    const QByteArray bytes = imageBytes(*plan.image, 16);
    EXPECT_TRUE(bytes.contains("contents"));
    EXPECT_TRUE(bytes.contains("bytes"));
}

TEST(DiscImagePieces, fillPiece_namesTheFile_thatIsNoLongerAsPlanned)
{
    struct Row {
        const char *what;
        std::function<void(const TemporaryTree &)> change;
        int code;
    };
    const std::vector<Row> rows{
        {"shrunk", [](const TemporaryTree &tree) { ::truncate(tree.path("f/victim").constData(), 10); }, eofErr},
        {"grown", [](const TemporaryTree &tree) { ::truncate(tree.path("f/victim").constData(), 9'000); }, fBsyErr},
        {"changed", [](const TemporaryTree &tree) { tree.setModificationTime("f/victim", 77); }, fBsyErr},
        {"vanished", [](const TemporaryTree &tree) { tree.remove("f/victim"); }, fnfErr},
    };
    for (const Row &row : rows) {
        const TemporaryTree tree;
        tree.makeFile("f/before", "b");
        tree.makeFile("f/victim", QByteArray(5000, 'v'));
        const DiscImagePlan plan = planOf(DRFolder::folderWithPath(tree.pathText()));
        row.change(tree);
        const NSError error = errorOfProducing(*plan.image);
        EXPECT_EQ(error.code(), row.code) << row.what;
        EXPECT_EQ(error.filePath(), tree.pathText("f/victim")) << row.what;
        EXPECT_TRUE(error.localizedDescription().contains(QStringLiteral("victim"))) << row.what;
    }
}

TEST(DiscImagePieces, trailingPadding_isAddedWhenAsked)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("root"));
    const std::uint32_t plain = planOf(root).image->blockCount();
    PlanOptions options;
    options.trailingPaddingBlocks = 150;
    const std::uint32_t padded = planOf(root, options).image->blockCount();
    EXPECT_GE(padded, plain + 144);
    EXPECT_EQ(padded % 16, 0u);
}

} // namespace Tessaron::Testing
