#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/volume/VolumeWalk.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/discrecording/udf/UdfTag.h"
#include "platform/foundation/ByteOrder.h"
#include "tests/discimage/SampleImages.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <gtest/gtest.h>
#include <string_view>

namespace Tessaron::Testing
{

namespace
{

constexpr std::size_t blockSize = 2048;
constexpr std::size_t partitionStart = 257;

/// Turns a plain partition of our own into one with a metadata partition over it (UDF 2.2.10), which no program of the
/// system makes. The metadata file has all blocks of the partition but the last two, where its own file entry and that
/// of its copy lie; so every block has the same number in both partitions.
class MetadataImage
{
public:
    explicit MetadataImage(QByteArray image)
        : m_image(std::move(image))
    {
        const std::uint8_t *const partition = block(34);
        m_length = loadLittleEndian<std::uint32_t>(partition + 192);
        changeFileSet();
        changeLogicalVolume(32);
        changeLogicalVolume(std::size_t(m_image.size()) / blockSize - 17);
        changeIntegrity();
        constexpr std::uint8_t metadataFile = 250;
        constexpr std::uint8_t metadataMirror = 251;
        putFileEntry(mainEntry(), metadataFile);
        putFileEntry(mainEntry() + 1, metadataMirror);
    }

    [[nodiscard]] const QByteArray &bytes() const { return m_image; }
    /// Block of the partition with the file entry of the metadata file; the copy's follows.
    [[nodiscard]] std::uint32_t mainEntry() const { return m_length - 2; }

private:
    [[nodiscard]] std::uint8_t *block(std::size_t number)
    {
        return reinterpret_cast<std::uint8_t *>(m_image.data()) + number * blockSize;
    }
    [[nodiscard]] std::uint8_t *inPartition(std::size_t number) { return block(partitionStart + number); }

    void changeFileSet()
    {
        const std::uint32_t at = loadLittleEndian<std::uint32_t>(block(35) + 252);
        std::uint8_t *const fileSet = inPartition(at);
        storeLittleEndian<std::uint16_t>(fileSet + 408, 1);
        const auto root = loadLittleEndian<std::uint32_t>(fileSet + 404);
        storeUdfTag({fileSet, 512}, UdfTag::FileSet, at);
        changeFolder(root);
    }

    /// Lets all entries of the folder, and of those in it, lead into the other partition.
    void changeFolder(std::uint32_t entryBlock)
    {
        const std::uint8_t *const entry = inPartition(entryBlock);
        if (entryBlock != 0 && m_rootEntry == 0)
            m_rootEntry = entryBlock;
        const std::uint8_t *const extent = entry + 176 + loadLittleEndian<std::uint32_t>(entry + 168);
        std::uint8_t *at = inPartition(loadLittleEndian<std::uint32_t>(extent + 4));
        const std::uint8_t *const end = at + loadLittleEndian<std::uint64_t>(entry + 56);
        while (at < end) {
            const std::size_t used = 38u + at[19] + loadLittleEndian<std::uint16_t>(at + 36);
            const std::size_t size = (used + 3) / 4 * 4;
            storeLittleEndian<std::uint16_t>(at + 28, 1);
            storeUdfTag({at, size}, UdfTag::FileIdentifier, loadLittleEndian<std::uint32_t>(at + 12));
            constexpr unsigned int isFolder = 2;
            constexpr unsigned int isParent = 8;
            if ((at[18] & (isFolder | isParent)) == isFolder)
                changeFolder(loadLittleEndian<std::uint32_t>(at + 24));
            at += size;
        }
    }

    void changeLogicalVolume(std::size_t sequence)
    {
        std::uint8_t *const volume = block(sequence + 3);
        constexpr std::size_t plainMap = 6;
        constexpr std::size_t metadataMap = 64;
        storeLittleEndian<std::uint16_t>(volume + 256, 1); // where the file set is
        storeLittleEndian<std::uint32_t>(volume + 264, plainMap + metadataMap);
        storeLittleEndian<std::uint32_t>(volume + 268, 2);
        std::uint8_t *const map = volume + 440 + plainMap;
        map[0] = 2;
        map[1] = metadataMap;
        constexpr std::string_view identifier = "*UDF Metadata Partition";
        std::copy(identifier.begin(), identifier.end(), map + 5);
        storeLittleEndian<std::uint16_t>(map + 36, 1);
        storeLittleEndian<std::uint32_t>(map + 40, mainEntry());
        storeLittleEndian<std::uint32_t>(map + 44, mainEntry() + 1);
        storeLittleEndian<std::uint32_t>(map + 48, 0xFFFFFFFF); // no bitmap
        storeLittleEndian<std::uint32_t>(map + 52, 32);
        storeLittleEndian<std::uint16_t>(map + 56, 1);
        storeUdfTag({volume, 440 + plainMap + metadataMap}, UdfTag::LogicalVolume, std::uint32_t(sequence + 3));
    }

    void changeIntegrity()
    {
        std::uint8_t *const integrity = block(64);
        constexpr std::size_t useLength = 46;
        std::copy_backward(integrity + 88, integrity + 88 + useLength, integrity + 96 + useLength);
        storeLittleEndian<std::uint32_t>(integrity + 72, 2);
        for (const std::size_t at : {80, 84})
            storeLittleEndian<std::uint32_t>(integrity + at, 0); // nothing is free
        storeLittleEndian<std::uint32_t>(integrity + 88, m_length);
        storeLittleEndian<std::uint32_t>(integrity + 92, mainEntry());
        storeUdfTag({integrity, 96 + useLength}, UdfTag::LogicalVolumeIntegrity, 64);
    }

    void putFileEntry(std::uint32_t at, std::uint8_t type)
    {
        std::uint8_t *const entry = inPartition(at);
        std::copy_n(inPartition(m_rootEntry), 176, entry);
        entry[27] = type;
        storeLittleEndian<std::uint64_t>(entry + 56, std::uint64_t(mainEntry()) * blockSize);
        storeLittleEndian<std::uint64_t>(entry + 64, mainEntry());
        storeLittleEndian<std::uint64_t>(entry + 160, 0);
        storeLittleEndian<std::uint32_t>(entry + 168, 0);
        storeLittleEndian<std::uint32_t>(entry + 172, 8);
        storeLittleEndian<std::uint32_t>(entry + 176, std::uint32_t(mainEntry() * blockSize));
        storeLittleEndian<std::uint32_t>(entry + 180, 0);
        storeUdfTag({entry, 184}, UdfTag::FileEntry, at);
    }

    QByteArray m_image;
    std::uint32_t m_length = 0; ///< of the partition, blocks
    std::uint32_t m_rootEntry = 0;
};

MetadataImage makeImage()
{
    const TemporaryTree tree;
    tree.makeFile("a.txt", "hello\n");
    tree.makeFile("folder/in/b", QByteArray(5000, 'b'));
    PlanOptions options;
    options.filesystems = DRFilesystemInclusionMaskUDF;
    options.trailingPaddingBlocks = 4;
    const WrittenImage written(DRFolder::folderWithPath(tree.pathText()), options);
    EXPECT_FALSE(written.error());
    return MetadataImage(written.bytes(0, written.size()));
}

/// A line for each object of the only volume, with its size.
QByteArray contentsOf(const QByteArray &image)
{
    QByteArray lines;
    const std::vector<FoundVolume> volumes = volumesInImage(DiscImageSource::sourceWithBytes(image));
    EXPECT_EQ(volumes.size(), 1u);
    if (volumes.empty() || !volumes.front().reader)
        return volumes.empty() ? "nothing" : volumes.front().error.localizedFailureReason().toUtf8();
    VolumeWalker walker;
    walker.object = [&lines](const QByteArray &folder, const VolumeObject &object) {
        lines += folder + '/' + object.name + ' ' + QByteArray::number(qulonglong(object.size)) + '\n';
        return true;
    };
    walker.failed = [&lines](const QByteArray &, const NSError &error) {
        lines += error.localizedFailureReason().toUtf8() + '\n';
        return true;
    };
    walkVolume(*volumes.front().reader, walker);
    return lines;
}

} // namespace

TEST(UdfMetadata, volumeWithAMetadataPartition_isReadAndSound)
{
    const MetadataImage image = makeImage();
    EXPECT_EQ(problemsOf(image.bytes()).join(u'\n').toStdString(), "");
    EXPECT_EQ(contentsOf(image.bytes()), "/a.txt 6\n/folder 0\nfolder/in 0\nfolder/in/b 5000\n");
}

TEST(UdfMetadata, copyOfTheMetadataFile_serves_andIsTold)
{
    const MetadataImage image = makeImage();
    const QByteArray whole = contentsOf(image.bytes());
    for (const std::size_t entry : {image.mainEntry(), image.mainEntry() + 1}) {
        QByteArray damaged = image.bytes();
        const std::size_t place = (partitionStart + entry) * blockSize + 56;
        const auto at = qsizetype(place);
        damaged[at] = char(damaged[at] ^ 1);
        EXPECT_EQ(contentsOf(damaged), whole);
        EXPECT_FALSE(problemsOf(damaged).filter(QStringLiteral("metadata file")).isEmpty()) << entry;
    }
}

} // namespace Tessaron::Testing
