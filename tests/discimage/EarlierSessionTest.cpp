#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/volume/VolumeWalk.h"
#include "platform/discrecording/objects/DRFile.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discimage/SampleImages.h"
#include "tests/discrecording/planning/WrittenImage.h"

#include <QMap>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace Tessaron::Testing
{

namespace
{

constexpr std::uint32_t blockSize = 2048;
constexpr std::uint32_t begin = 5'000'000; // block of the disc where the session begins
constexpr std::uint64_t largeSize = (std::uint64_t{9} << 30) + 5; // takes three sections

/// The blocks of the session.
class BytesInMemory final : public ImageBytes
{
public:
    explicit BytesInMemory(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
    }
    [[nodiscard]] std::uint64_t length() const override { return std::uint64_t(m_bytes.size()); }
    [[nodiscard]] NSError read(std::uint64_t offset, void *buffer, std::size_t length) const override
    {
        std::memcpy(buffer, m_bytes.constData() + offset, length);
        return {};
    }

private:
    const QByteArray m_bytes;
};

/// Those in front of it: zeros, but for a text at block 1000.
class EarlierBlocks final : public ImageBytes
{
public:
    [[nodiscard]] std::uint64_t length() const override { return std::uint64_t(begin) * blockSize; }
    [[nodiscard]] NSError read(std::uint64_t offset, void *buffer, std::size_t length) const override
    {
        constexpr std::uint64_t place = std::uint64_t(1000) * blockSize;
        std::memset(buffer, 0, length);
        if (offset == place)
            std::memcpy(buffer, "hello", std::min<std::size_t>(length, 5));
        return {};
    }
};

DRRecordedObject recordedFile(std::uint32_t firstBlock, std::uint64_t size)
{
    DRRecordedObject recorded;
    recorded.mode = S_IFREG | 0640;
    recorded.userId = 1000;
    recorded.groupId = 100;
    recorded.modification = FileTime{1'000'000'000, 0};
    recorded.size = size;
    recorded.firstBlock = firstBlock;
    return recorded;
}

/// A session behind others, whose block 1000 holds a text.
class EarlierSession : public testing::Test
{
protected:
    EarlierSession()
    {
        add("old", recordedFile(1000, 5));
        add("other name", recordedFile(1000, 5));
        add("large", recordedFile(2000, largeSize));
        add("empty", recordedFile(0, 0));
        DRRecordedObject link = recordedFile(0, 0);
        link.mode = S_IFLNK | 0777;
        link.linkTarget = "old";
        add("link", link);
        DRRecordedObject device = recordedFile(0, 0);
        device.mode = S_IFCHR | 0600;
        device.deviceNumber = makedev(4, 65);
        add("device", device);
        m_root->addChild(DRFile::virtualFileWithName(QStringLiteral("new"), "added"));
    }

    void add(const char *name, const DRRecordedObject &recorded)
    {
        m_root->addChild(DRFile::recordedFileWithName(QString::fromUtf8(name), recorded));
    }

    [[nodiscard]] static PlanOptions options(DRFilesystemMask filesystems = DRFilesystemInclusionMaskISO9660
                                                 | DRFilesystemInclusionMaskJoliet)
    {
        PlanOptions options;
        options.filesystems = filesystems;
        options.firstBlock = BlockAddress(begin);
        return options;
    }

    /// The session on its disc; without what lies in front of it when that is not to be had.
    [[nodiscard]] std::shared_ptr<const DiscImageSource> source(bool hasEarlier = true) const
    {
        const WrittenImage written(m_root, options());
        EXPECT_FALSE(written.error()) << qPrintable(written.error().localizedFailureReason());
        DiscImageSectors sectors;
        sectors.firstBlock = begin;
        return DiscImageSource::sourceWithReader(std::make_shared<BytesInMemory>(written.bytes(0, written.size())),
                                                 sectors, hasEarlier ? std::make_shared<EarlierBlocks>() : nullptr);
    }

    const std::shared_ptr<DRFolder> m_root = DRFolder::virtualFolderWithName(QStringLiteral("disc"));
};

QMap<QByteArray, VolumeObject> objectsOf(const VolumeReader &volume)
{
    QMap<QByteArray, VolumeObject> objects;
    VolumeWalker walker;
    walker.object = [&](const QByteArray &, const VolumeObject &object) {
        objects.insert(object.name, object);
        return true;
    };
    walkVolume(volume, walker);
    return objects;
}

QByteArray contentsOf(const VolumeReader &volume, const VolumeObject &file)
{
    QByteArray bytes(qsizetype(file.size), '\0');
    std::size_t bytesRead = 0;
    EXPECT_FALSE(volume.read(file, 0, bytes.data(), std::size_t(bytes.size()), &bytesRead));
    return bytes;
}

} // namespace

TEST_F(EarlierSession, recordedFiles_areListed_whereTheyLieOnTheDisc)
{
    const auto session = source();
    const std::vector<FoundVolume> volumes = volumesInImage(session);
    ASSERT_EQ(volumes.size(), 3u);
    for (const FoundVolume &volume : volumes) {
        ASSERT_TRUE(volume.reader);
        const QMap<QByteArray, VolumeObject> objects = objectsOf(*volume.reader);
        const bool isPlain = volume.kind == VolumeKind::ISO9660;
        const VolumeObject old = objects.value(isPlain ? "OLD" : "old");
        EXPECT_EQ(contentsOf(*volume.reader, old), "hello") << qPrintable(volumeKindName(volume.kind));
        EXPECT_EQ(session->blockOnDisc(old.extents.front().offset, blockSize), 1000u);
        const VolumeObject large = objects.value(isPlain ? "LARGE" : "large");
        EXPECT_EQ(large.size, largeSize);
        ASSERT_EQ(large.extents.size(), 1u);
        EXPECT_EQ(session->blockOnDisc(large.extents.front().offset, blockSize), 2000u);
        EXPECT_EQ(contentsOf(*volume.reader, objects.value(isPlain ? "NEW" : "new")), "added");
    }
}

TEST_F(EarlierSession, recordedFiles_takeNoRoom)
{
    EXPECT_LT(source()->length(), std::uint64_t{300} * blockSize);
}

TEST_F(EarlierSession, attributes_areKept_byRockRidge)
{
    const std::vector<FoundVolume> volumes = volumesInImage(source());
    ASSERT_EQ(volumes.at(1).kind, VolumeKind::RockRidge);
    const QMap<QByteArray, VolumeObject> objects = objectsOf(*volumes[1].reader);
    const VolumeObject old = objects.value("old");
    EXPECT_EQ(old.mode, std::uint32_t(S_IFREG | 0640));
    EXPECT_EQ(old.userId, 1000u);
    EXPECT_EQ(old.groupId, 100u);
    ASSERT_TRUE(old.modified);
    EXPECT_EQ(old.modified->seconds, 1'000'000'000);
    EXPECT_NE(old.identity, 0u);
    EXPECT_EQ(objects.value("other name").identity, old.identity);
    EXPECT_NE(objects.value("large").identity, old.identity);
    EXPECT_EQ(objects.value("empty").size, 0u);
    EXPECT_EQ(objects.value("link").linkTarget, "old");
    EXPECT_EQ(objects.value("device").deviceNumber, makedev(4, 65));
}

TEST_F(EarlierSession, check_findsNothingWrong_unlessTheEarlierBlocksAreMissing)
{
    EXPECT_EQ(problemsOf(source()), QStringList());
    const QStringList alone = problemsOf(source(false));
    EXPECT_TRUE(std::any_of(alone.begin(), alone.end(), [](const QString &problem) {
        return problem.contains(QStringLiteral("not read with"));
    })) << qPrintable(alone.join(u'\n'));
}

TEST_F(EarlierSession, earlierBlocks_areReadWithinTheirBounds)
{
    const auto session = source();
    const std::uint64_t lastEarlier = session->offsetOnDisc(std::uint64_t(begin) * blockSize - 1);
    char byte = 'x';
    EXPECT_TRUE(session->contains(lastEarlier, 1));
    EXPECT_FALSE(session->read(lastEarlier, &byte, 1));
    EXPECT_EQ(byte, '\0');
    EXPECT_FALSE(session->contains(lastEarlier, 2));
    char two[2] = {};
    EXPECT_EQ(session->read(lastEarlier, two, 2).code(), qint64(DiscImageErrorCode::Truncated));
    EXPECT_EQ(session->byteOnDisc(lastEarlier), std::uint64_t(begin) * blockSize - 1);
    EXPECT_EQ(session->byteOnDisc(0), std::uint64_t(begin) * blockSize);
    EXPECT_FALSE(source(false)->contains(lastEarlier, 1));
}

TEST_F(EarlierSession, otherFilesystems_areRefused_whichCountFromTheImagesBegin)
{
    for (const DRFilesystemMask mask : {DRFilesystemInclusionMaskUDF, DRFilesystemInclusionMaskHFSPlus}) {
        NSError error;
        const DiscImagePlan plan = planDiscImage(m_root, options(mask), {}, {}, &error);
        EXPECT_EQ(error.code(), paramErr);
        EXPECT_EQ(plan.image, nullptr);
    }
}

} // namespace Tessaron::Testing
