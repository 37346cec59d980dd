#include "platform/discimage/ImageCheck.h"
#include "platform/discimage/volume/VolumeWalk.h"
#include "platform/discrecording/objects/DRFolder.h"
#include "platform/disctracks/vant/VANTTrailer.h"
#include "platform/foundation/ByteOrder.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/InspectJob.h>
#include <TessaronClasses/OpenedDiscImage.h>
#include <TessaronClasses/VerifyJob.h>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

constexpr DRFilesystemMask allFilesystems = DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskJoliet
    | DRFilesystemInclusionMaskUDF | DRFilesystemInclusionMaskHFSPlus;

/// Images with several tracks or partitions.
class FurtherParts : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_tree.makeFile("source/a.txt", "hello\n");
        // A path above eight levels and a long name need continuation areas and relocated folders.
        m_tree.makeFile("source/1/2/3/4/5/6/7/8/9/deep.data", QByteArray(70'000, 'd'));
        m_tree.makeFile("source/" + QByteArray(200, 'n'), "long");
        m_tree.makeSymbolicLink("source/link", QByteArray(200, 't'));
    }

    /// The tree as an image that begins at a block of its disc.
    [[nodiscard]] QByteArray imageAt(std::int64_t firstBlock, DRFilesystemMask filesystems = allFilesystems) const
    {
        PlanOptions options;
        options.filesystems = filesystems;
        options.firstBlock = BlockAddress(firstBlock);
        const auto root = DRFolder::folderWithPath(QString::fromUtf8(m_tree.path("source")));
        root->setProperty(true, DRRelocatesDeepFolders, DRISO9660);
        const WrittenImage written(root, options);
        EXPECT_FALSE(written.error()) << qPrintable(written.error().localizedFailureReason());
        return written.bytes(0, written.size());
    }

    /// A disc with a track of audio, and two of data whose filesystems count from the disc's begin.
    [[nodiscard]] QByteArray mixedDisc(DRFilesystemMask filesystems = allFilesystems) const
    {
        constexpr std::uint64_t audioBlocks = 300;
        DiscTrack audio;
        audio.kind = TrackKind::Audio;
        audio.blockSize = 2352;
        audio.length = audioBlocks;
        DiscTrack data;
        data.length = std::uint64_t(imageAt(0, filesystems).size()) / 2048;
        TableOfContents contents;
        contents.sessions.push_back({{}, {audio, data}});
        contents.sessions.push_back({{}, {data}});
        contents.numberTracks();
        contents.joinSessions();
        Result<QByteArray> trailer = vantTrailer(contents);
        EXPECT_TRUE(trailer);
        return QByteArray(qsizetype(audioBlocks) * 2352, 'a')
            + imageAt(contents.firstBlockOfTrack(2).number(), filesystems)
            + imageAt(contents.firstBlockOfTrack(3).number(), filesystems) + std::move(trailer).valueOr(QByteArray());
    }

    /// An MBR with two partitions: one with the image, one with zeros.
    [[nodiscard]] static QByteArray partitioned(const QByteArray &image)
    {
        constexpr std::uint32_t firstSector = 2048;
        const auto sectors = std::uint32_t(image.size() / 512);
        QByteArray disk(qsizetype(firstSector) * 512, '\0');
        auto *const mbr = reinterpret_cast<std::uint8_t *>(disk.data());
        mbr[446 + 4] = 0x07;
        storeLittleEndian<std::uint32_t>(mbr + 446 + 8, firstSector);
        storeLittleEndian<std::uint32_t>(mbr + 446 + 12, sectors);
        mbr[462 + 4] = 0x83;
        storeLittleEndian<std::uint32_t>(mbr + 462 + 8, firstSector + sectors);
        storeLittleEndian<std::uint32_t>(mbr + 462 + 12, 2048);
        mbr[510] = 0x55;
        mbr[511] = 0xAA;
        return disk + image + QByteArray(qsizetype{2048} * 512, '\0');
    }

    static ImageInspection inspectionOf(const QByteArray &path)
    {
        InspectJob job(path);
        bool hasEnded = false;
        QObject::connect(&job, &InspectJob::finished, [&hasEnded] { hasEnded = true; });
        job.start();
        EXPECT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
        return job.result();
    }

    static VerificationResult verificationOf(const QByteArray &path, const QByteArray &source)
    {
        VerifyOrder order;
        order.image = path;
        order.sources = {source};
        VerifyJob job(order);
        bool hasEnded = false;
        QObject::connect(&job, &VerifyJob::finished, [&hasEnded] { hasEnded = true; });
        job.start();
        EXPECT_TRUE(runEventLoopUntil([&] { return hasEnded; }));
        return job.result();
    }

    static std::string linesOf(const std::vector<VolumeProblem> &problems)
    {
        QStringList lines;
        for (const VolumeProblem &problem : problems)
            lines << volumeProblemText(problem);
        return lines.join(u'\n').toStdString();
    }

    static std::string linesOf(const ImageDifferenceList &differences)
    {
        std::string lines;
        for (const ImageDifference &difference : differences.items())
            lines += difference.path.toStdString() + ": " + difference.message.toStdString() + '\n';
        return lines;
    }

    TemporaryTree m_tree;
};

} // namespace

TEST_F(FurtherParts, tracksThatCountFromTheDiscsBegin_areRead)
{
    m_tree.makeFile("mixed.vant", mixedDisc());
    const ImageInspection found = inspectionOf(m_tree.path("mixed.vant"));
    ASSERT_TRUE(found.image);
    EXPECT_EQ(found.problemCount, 0u) << linesOf(found.problems);
    EXPECT_EQ(found.image->volumes.size(), 5u);
    EXPECT_EQ(found.image->source->firstBlock(), 300u);
    ASSERT_EQ(found.image->parts.size(), 1u);
    const DiscImagePart &third = found.image->parts.front();
    EXPECT_EQ(third.name, QStringLiteral("track 3"));
    EXPECT_EQ(third.volumes.size(), 5u);
    EXPECT_GT(third.source->firstBlock(), 300u);
    ASSERT_EQ(found.partCensuses.size(), 1u);
    for (const std::vector<VolumeCensus> &censuses : {found.censuses, found.partCensuses.front()}) {
        for (const VolumeCensus &census : censuses) {
            EXPECT_EQ(census.failureCount, 0u);
            EXPECT_EQ(census.bytes, 70'000u + 6 + 4);
        }
    }
    EXPECT_TRUE(found.image->notes.isEmpty()) << found.image->notes.join(u'\n').toStdString();
}

TEST_F(FurtherParts, trackBehindAudio_isAsItsSources)
{
    m_tree.makeFile("mixed.vant", mixedDisc());
    const VerificationResult result = verificationOf(m_tree.path("mixed.vant"), m_tree.path("source"));
    EXPECT_FALSE(result.error) << qPrintable(result.error.localizedFailureReason());
    EXPECT_EQ(result.differences.count(), 0u) << linesOf(result.differences);
    EXPECT_EQ(result.volumes.size(), 5u);
    ASSERT_EQ(result.notes.size(), 1);
    EXPECT_TRUE(result.notes.front().contains(QStringLiteral("track 3")));
}

TEST_F(FurtherParts, damageInAFurtherTrack_isTold)
{
    QByteArray disc = mixedDisc(DRFilesystemInclusionMaskISO9660);
    const qsizetype second = disc.lastIndexOf("CD001", disc.lastIndexOf("CD001") - 1) - 1; // the terminator follows it
    disc[second + 80] = char(disc[second + 80] ^ 1); // the number of blocks
    m_tree.makeFile("mixed.vant", disc);
    const ImageInspection found = inspectionOf(m_tree.path("mixed.vant"));
    EXPECT_NE(linesOf(found.problems).find("track 3, ISO 9660"), std::string::npos) << linesOf(found.problems);
    const VerificationResult result = verificationOf(m_tree.path("mixed.vant"), m_tree.path("source"));
    EXPECT_NE(linesOf(result.differences).find("track 3"), std::string::npos) << linesOf(result.differences);
}

TEST_F(FurtherParts, trackThatWasCutOutOfItsDisc_isRead)
{
    for (const DRFilesystemMask filesystems : {DRFilesystemMask(DRFilesystemInclusionMaskISO9660),
                                               DRFilesystemMask(DRFilesystemInclusionMaskUDF), allFilesystems}) {
        m_tree.makeFile("track.iso", imageAt(11'702, filesystems));
        const ImageInspection found = inspectionOf(m_tree.path("track.iso"));
        EXPECT_EQ(found.problemCount, 0u) << filesystems << linesOf(found.problems);
        EXPECT_EQ(found.image->source->firstBlock(), 11'702u);
        const VerificationResult result = verificationOf(m_tree.path("track.iso"), m_tree.path("source"));
        EXPECT_EQ(result.differences.count(), 0u) << filesystems << linesOf(result.differences);
    }
}

TEST_F(FurtherParts, tracksOfACueSheet_areRead)
{
    m_tree.makeFile("one.bin", QByteArray(qsizetype{300} * 2352, 'a'));
    m_tree.makeFile("two.bin", imageAt(450));
    m_tree.makeFile("disc.cue",
                    "FILE \"one.bin\" BINARY\n TRACK 01 AUDIO\n  INDEX 01 00:00:00\n"
                    "FILE \"two.bin\" BINARY\n TRACK 02 MODE1/2048\n  PREGAP 00:02:00\n  INDEX 01 00:00:00\n");
    const ImageInspection found = inspectionOf(m_tree.path("disc.cue"));
    EXPECT_EQ(found.problemCount, 0u) << linesOf(found.problems);
    EXPECT_EQ(found.image->volumes.size(), 5u);
    EXPECT_EQ(found.image->source->firstBlock(), 450u);
}

TEST_F(FurtherParts, partition_isReadCheckedAndCompared)
{
    for (const DRFilesystemMask filesystems : {DRFilesystemMask(DRFilesystemInclusionMaskUDF), allFilesystems}) {
        m_tree.makeFile("disk.img", partitioned(imageAt(0, filesystems)));
        const ImageInspection found = inspectionOf(m_tree.path("disk.img"));
        EXPECT_EQ(found.problemCount, 0u) << linesOf(found.problems);
        ASSERT_EQ(found.image->parts.size(), 1u);
        EXPECT_EQ(found.image->parts.front().name, QStringLiteral("partition 1 of the MBR"));
        EXPECT_EQ(found.image->parts.front().volumes.size(), filesystems == allFilesystems ? 5u : 1u);
        const VerificationResult result = verificationOf(m_tree.path("disk.img"), m_tree.path("source"));
        EXPECT_FALSE(result.error) << qPrintable(result.error.localizedFailureReason());
        EXPECT_EQ(result.differences.count(), 0u) << linesOf(result.differences);
        EXPECT_GT(result.bytesCompared, 70'000u);
    }
}

TEST_F(FurtherParts, damageInAPartition_isTold)
{
    QByteArray disk = partitioned(imageAt(0, DRFilesystemInclusionMaskUDF));
    disk[qsizetype{2048} * 512 + qsizetype{256} * 2048 + 20] ^= 1; // an anchor
    m_tree.makeFile("disk.img", disk);
    EXPECT_NE(linesOf(inspectionOf(m_tree.path("disk.img")).problems).find("partition 1 of the MBR, UDF"),
              std::string::npos);
    const VerificationResult result = verificationOf(m_tree.path("disk.img"), m_tree.path("source"));
    EXPECT_NE(linesOf(result.differences).find("partition 1 of the MBR"), std::string::npos)
        << linesOf(result.differences);
}

} // namespace Tessaron::Testing
