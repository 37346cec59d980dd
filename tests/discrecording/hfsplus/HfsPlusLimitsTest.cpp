#include "platform/discrecording/objects/DRFile.h"
#include "tests/discrecording/hfsplus/ReadHfsImage.h"

#include <QtEndian>

#include <fcntl.h>
#include <unistd.h>

namespace Tessaron::Testing
{

TEST(HfsPlusLimits, fileAbove4GiB_isOneExtent)
{
    const TemporaryTree tree;
    const std::int64_t size = (std::int64_t{9} << 30) + 12345;
    const QByteArray path = tree.makeSparseFile("big", size);
    const int descriptor = ::open(path.constData(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::pwrite(descriptor, "end", 3, size - 3), 3);
    ::close(descriptor);
    tree.makeFile("small", "behind it");
    const ReadHfsImage image(realFolder(tree), optionsFor(15));
    const HfsObject &big = image.at("/big");
    EXPECT_EQ(big.data.length, static_cast<std::uint64_t>(size));
    ASSERT_EQ(big.data.extents.size(), 1u);
    EXPECT_EQ(image.written.bytes(image.reader.positionOf(big.data) + static_cast<std::uint64_t>(size) - 3, 3), "end");
    EXPECT_EQ(image.contents("/small"), "behind it");
}

TEST(HfsPlusLimits, volumeOfManyBlocks_isWholeUnitsOfItsWrapper)
{
    const TemporaryTree tree;
    tree.makeSparseFile("huge", (std::int64_t{40} << 30) + 1);
    const ReadHfsImage image(realFolder(tree));
    EXPECT_EQ(image.at("/huge").data.length, (std::uint64_t{40} << 30) + 1);
    EXPECT_LT(image.reader.freeBlocks(), 512u + 16) << "a unit of the wrapper at most";
    EXPECT_TRUE(image.reader.hasWrapper());
}

TEST(HfsPlusLimits, partitionMap_countsInBlocksOfTheDisc_whereSmallUnitsCannot)
{
    const auto unitOfMap = [](std::int64_t size) {
        const TemporaryTree tree;
        tree.makeSparseFile("huge", size);
        NSError error;
        const DiscImagePlan plan =
            planDiscImage(realFolder(tree), optionsFor(DRFilesystemInclusionMaskUDF | DRFilesystemInclusionMaskHFSPlus),
                          {}, {}, &error);
        EXPECT_TRUE(plan.image) << qPrintable(error.localizedDescription());
        QByteArray area(qsizetype{16} * 2048, '\0');
        if (plan.image && plan.image->pieceAt(BlockAddress(0), 16).blockCount == 16) {
            const std::span bytes(reinterpret_cast<std::uint8_t *>(area.data()), static_cast<std::size_t>(area.size()));
            EXPECT_FALSE(plan.image->fillPiece(BlockAddress(0), bytes, {}));
        }
        const auto unit = qFromBigEndian<quint16>(area.constData() + 2);
        const char *const entry = area.constData() + 2 * qsizetype{unit};
        EXPECT_EQ(QByteArray(entry, 2), "PM");
        EXPECT_EQ(QByteArray(entry + 48), "Apple_HFS");
        EXPECT_EQ(qFromBigEndian<quint32>(entry + 8) * quint64{unit}, 8u * 2048);
        EXPECT_GT(qFromBigEndian<quint32>(entry + 12) * quint64{unit}, static_cast<quint64>(size));
        return unit;
    };
    EXPECT_EQ(unitOfMap((std::int64_t{2} << 40) - (std::int64_t{1} << 30)), 512);
    EXPECT_EQ(unitOfMap(std::int64_t{2} << 40), 2048);
}

TEST(HfsPlusLimits, folderOf20000Entries_isInOrder)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("many"));
    const auto folder = DRFolder::virtualFolderWithName(QStringLiteral("folder"));
    root->addChild(folder);
    for (int number = 0; number < 20'000; ++number) {
        const QString name = (number % 2 ? QStringLiteral("File %1") : QStringLiteral("ÄFILE-%1")).arg(number);
        folder->addChild(DRFile::virtualFileWithName(name, QByteArray::number(number)));
    }
    const ReadHfsImage image(root);
    EXPECT_EQ(image.at("/folder").valence, 20'000u);
    EXPECT_EQ(image.contents("/folder/File 12345"), "12345");
    EXPECT_EQ(image.contents("/folder/ÄFILE-19998"), "19998");
    EXPECT_GE(image.reader.catalog()->depth(), 3u);
}

TEST(HfsPlusLimits, moreThan300000Files_areAllInTheCatalog)
{
    constexpr int folders = 31;
    constexpr int filesEach = 10'000;
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("very many"));
    for (int number = 0; number < folders; ++number) {
        const auto folder = DRFolder::virtualFolderWithName(QString::number(number));
        for (int file = 0; file < filesEach; ++file)
            folder->addChild(DRFile::virtualFileWithName(QStringLiteral("file %1").arg(file), {}));
        root->addChild(folder);
    }
    const ReadHfsImage image(root);
    EXPECT_EQ(image.reader.fileCount(), 310'000u);
    EXPECT_EQ(image.reader.folderCount(), 31u);
    EXPECT_EQ(image.reader.catalog()->records().size(), 2u * (310'000 + 31 + 1));
    EXPECT_GE(image.reader.catalog()->depth(), 3u);
}

TEST(HfsPlusLimits, deepFolders_areKept)
{
    const auto root = DRFolder::virtualFolderWithName(QStringLiteral("deep"));
    auto folder = root;
    for (int depth = 0; depth < 500; ++depth) {
        const auto next = DRFolder::virtualFolderWithName(QStringLiteral("d"));
        folder->addChild(next);
        folder = next;
    }
    folder->addChild(DRFile::virtualFileWithName(QStringLiteral("bottom"), "b"));
    const ReadHfsImage image(root);
    EXPECT_EQ(image.reader.folderCount(), 500u);
    const QString path = QStringLiteral("/d").repeated(500) + QStringLiteral("/bottom");
    EXPECT_EQ(image.reader.contents(image.at(path).data), "b");
}

TEST(HfsPlusLimits, paddingAndTails_lieBehindTheVolume)
{
    const TemporaryTree tree;
    tree.makeFile("file", "f");
    PlanOptions options = optionsFor(15);
    options.trailingPaddingBlocks = 150;
    const ReadHfsImage image(realFolder(tree), options);
    EXPECT_EQ(image.contents("/file"), "f");
    EXPECT_EQ(image.written.size() % 32768, 0u);
}

TEST(HfsPlusLimits, cancelledPlan_isNoPlan)
{
    const TemporaryTree tree;
    tree.makeFile("file", "f");
    std::stop_source stopper;
    stopper.request_stop();
    NSError error;
    EXPECT_FALSE(planDiscImage(realFolder(tree), optionsFor(hfsPlusOnly), stopper.get_token(), {}, &error).image);
    EXPECT_FALSE(error);
}

} // namespace Tessaron::Testing
