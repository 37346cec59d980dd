#include "platform/discimage/ImageCheck.h"

#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/iso9660/ElTorito.h"
#include "tests/discimage/SampleImages.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <QFile>

#include <algorithm>
#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

const DRFilesystemMask everything = DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskJoliet
    | DRFilesystemInclusionMaskUDF | DRFilesystemInclusionMaskHFSPlus;

QByteArray flipped(QByteArray image, qsizetype offset)
{
    image[offset] = char(image[offset] ^ 1);
    return image;
}

/// A tree without hard links: some of the makers share contents in ways that HFS+ forbids.
void fillForeignTree(const TemporaryTree &tree)
{
    tree.makeFile("a.txt", "hello\n");
    tree.makeFile("folder/in/a/folder/that/is/deeper/than/eight/levels/b.txt", QByteArray(70'000, 'b'));
    tree.makeFile("boot.img", QByteArray(4096, 'B'));
    tree.makeFile("empty");
    tree.makeFile(QByteArray(60, 'n') + " with blanks", "long");
    tree.makeSymbolicLink("link", "folder/in");
    for (int number = 0; number < 60; ++number)
        tree.makeFile("many/file" + QByteArray::number(number), QByteArray::number(number));
}

struct ForeignImage {
    QString program;
    QStringList arguments; ///< the image's path and the tree's follow
};

QByteArray foreignImage(const ForeignImage &maker)
{
    const TemporaryTree tree;
    fillForeignTree(tree);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("image"));
    const ProgramRun result =
        runProgram(maker.program, maker.arguments + QStringList{QStringLiteral("-o"), path, tree.pathText()});
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << result.errors.toStdString();
    return file.readAll();
}

QString text(const char *latin)
{
    return QString::fromLatin1(latin);
}

QStringList words(const char *latin)
{
    return text(latin).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

TEST(ImageCheck, ourImages_haveNoProblems)
{
    for (const DRFilesystemMask filesystems : sampleFilesystems())
        EXPECT_EQ(problemsOf(sampleImage(filesystems)).join(QLatin1Char('\n')).toStdString(), "") << filesystems;
}

TEST(ImageCheck, foreignImages_haveNoProblems)
{
    const ForeignImage makers[] = {
        {text("genisoimage"), words("-quiet -allow-limited-size")},
        {text("genisoimage"), words("-quiet -R -J -udf")},
        {text("genisoimage"), words("-quiet -r -J -joliet-long -l -allow-lowercase -T")},
        {text("genisoimage"), words("-quiet -R -b boot.img -no-emul-boot -c boot.cat")},
        {text("xorriso"), words("-as mkisofs -quiet -R -J")},
        {text("xorriso"), words("-as mkisofs -quiet -R -J -hfsplus")},
        {text("xorriso"), words("-as mkisofs -quiet -R -partition_offset 16")},
        {text("xorriso"),
         words("-as mkisofs -quiet -R -J -b boot.img -no-emul-boot -boot-load-size 4 -c boot.cat -eltorito-alt-boot "
               "-e boot.img -no-emul-boot -isohybrid-gpt-basdat -isohybrid-apm-hfsplus")},
    };
    for (const ForeignImage &maker : makers) {
        if (!hasProgram(maker.program))
            GTEST_SKIP() << qPrintable(maker.program);
        EXPECT_EQ(problemsOf(foreignImage(maker)).join(QLatin1Char('\n')).toStdString(), "")
            << qPrintable(maker.arguments.join(QLatin1Char(' ')));
    }
}

TEST(ImageCheck, udfOfManyMedia_isReadOrNotSupported_neverDamaged)
{
    const QString mkudffs = text("/usr/sbin/mkudffs");
    if (!QFile::exists(mkudffs))
        GTEST_SKIP() << "mkudffs";
    int readable = 0;
    const auto check = [&](const QStringList &arguments) {
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("image")));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.resize(qint64{40'000'000} / 32768 * 32768));
        const ProgramRun result = runProgram(mkudffs, arguments + QStringList{file.fileName()});
        ASSERT_EQ(result.status, 0) << qPrintable(arguments.join(QLatin1Char(' '))) << result.errors.toStdString();
        const auto source = DiscImageSource::sourceWithFile(file.fileName()).source;
        int unsupported = 0;
        (void)checkDiscImage(source, [&](const VolumeProblem &problem) {
            EXPECT_EQ(problem.kind, VolumeProblem::Kind::Unsupported)
                << qPrintable(arguments.join(QLatin1Char(' '))) << qPrintable(volumeProblemText(problem));
            ++unsupported;
            return true;
        });
        const std::vector<FoundVolume> volumes = volumesInImage(source);
        ASSERT_EQ(volumes.size(), 1u) << qPrintable(arguments.join(QLatin1Char(' ')));
        EXPECT_EQ(volumes[0].reader != nullptr, unsupported == 0);
        readable += volumes[0].reader ? 1 : 0;
    };
    for (const char *const medium : {"hd", "dvd", "dvdram", "dvdrw", "dvdr", "cdrw", "cdr", "cd", "bdr"})
        check({text("-m"), text(medium), text("-b"), text("2048")});
    EXPECT_EQ(readable, 6) << "all but the three that need a virtual partition";
    for (const char *const blockSize : {"512", "1024", "4096", "32768"}) {
        for (const char *const revision : {"0x0102", "0x0201"})
            check({text("-m"), text("hd"), text("-b"), text(blockSize), text("-r"), text(revision)});
    }
    EXPECT_EQ(readable, 14);
}

TEST(ImageCheck, bootCatalog_isRead)
{
    if (!hasProgram(text("xorriso")))
        GTEST_SKIP() << "xorriso";
    const QByteArray image = foreignImage(
        {text("xorriso"),
         words("-as mkisofs -quiet -R -b boot.img -no-emul-boot -boot-load-size 4 -c boot.cat -eltorito-alt-boot -e "
               "boot.img -no-emul-boot")});
    const auto source = DiscImageSource::sourceWithBytes(image);
    const std::optional<BootCatalog> catalog = readBootCatalog(*source);
    ASSERT_TRUE(catalog);
    ASSERT_EQ(catalog->entries.size(), 2u);
    EXPECT_EQ(bootPlatformName(catalog->entries[0].platform), text("x86"));
    EXPECT_EQ(bootPlatformName(catalog->entries[1].platform), text("EFI"));
    EXPECT_EQ(catalog->entries[0].sectorCount, 4u);
    EXPECT_EQ(image.mid(qsizetype(catalog->entries[0].offset), 4), "BBBB");
    EXPECT_TRUE(catalog->entries[0].isBootable);
    EXPECT_FALSE(problemsOf(flipped(image, qsizetype(catalog->offset))).isEmpty());
    EXPECT_FALSE(problemsOf(flipped(image, qsizetype(catalog->offset) + 5)).isEmpty());
}

TEST(ImageCheck, hybridImage_hasAllItsPartitionMaps)
{
    if (!hasProgram(text("xorriso")))
        GTEST_SKIP() << "xorriso";
    const QByteArray image =
        foreignImage({text("xorriso"),
                      words("-as mkisofs -quiet -R -partition_offset 16 -appended_part_as_gpt -append_partition "
                            "2 0xef /bin/true")});
    const auto source = DiscImageSource::sourceWithBytes(image);
    int gpt = 0;
    for (const DiscImagePartition &partition : source->partitions())
        gpt += partition.scheme == PartitionScheme::GPT ? 1 : 0;
    ASSERT_GE(gpt, 1);
    EXPECT_EQ(problemsOf(image).join(QLatin1Char('\n')).toStdString(), "");
    const QStringList damagedHeader = problemsOf(flipped(image, 512 + 72)); // where its entries are
    EXPECT_FALSE(damagedHeader.filter(text("GPT")).isEmpty());
    EXPECT_FALSE(problemsOf(flipped(image, 512)).filter(text("GPT")).isEmpty()) << "its signature";
    EXPECT_EQ(DiscImageSource::sourceWithBytes(flipped(image, 512))->partitions(), source->partitions())
        << "the backup serves";
    EXPECT_FALSE(problemsOf(flipped(image, image.size() - 512 + 20)).filter(text("GPT")).isEmpty()) << "the backup";
}

TEST(ImageCheck, hybridImageWhoseMbrAnnouncesNoGpt_isSound)
{
    if (!hasProgram(text("xorriso")))
        GTEST_SKIP() << "xorriso";
    const TemporaryTree boot;
    const QByteArray code = boot.makeFile("code", QByteArray(432, 'x'));
    const QByteArray image = foreignImage(
        {text("xorriso"),
         words("-as mkisofs -quiet -R -isohybrid-mbr") + QStringList{QString::fromUtf8(code)}
             + words("-b boot.img -no-emul-boot -boot-load-size 4 -c boot.cat -eltorito-alt-boot -e boot.img "
                     "-no-emul-boot -isohybrid-gpt-basdat")});
    ASSERT_FALSE(image.isEmpty());
    const auto source = DiscImageSource::sourceWithBytes(image);
    const auto isGpt = [](const DiscImagePartition &partition) { return partition.scheme == PartitionScheme::GPT; };
    ASSERT_TRUE(std::ranges::any_of(source->partitions(), isGpt));
    EXPECT_EQ(problemsOf(image).join(QLatin1Char('\n')).toStdString(), "");
}

/// Each of these hid a filesystem, or was passed over, before there was a check.
TEST(ImageCheck, bitThatHidesAFilesystem_isTold)
{
    const QByteArray image = sampleImage(everything);
    ASSERT_EQ(problemsOf(image), QStringList());
    const qsizetype places[] = {32769, 40961, 34816, 34904, 34974, 32768, 38913, 43009, 36864, 36865, 256 * 2048 + 16};
    for (const qsizetype place : places)
        EXPECT_FALSE(problemsOf(flipped(image, place)).isEmpty()) << place;
    for (qsizetype offset = image.size() - 2048; offset < image.size() - 2048 + 40; ++offset)
        EXPECT_FALSE(problemsOf(flipped(image, offset)).isEmpty()) << "anchor at the end, " << offset;
}

/// Other writers give the record the date of what the link leads to.
TEST(ImageCheck, dateOfALink_isHeldAgainstItsRecord_inOurImages)
{
    QByteArray image = sampleImage(DRFilesystemInclusionMaskISO9660);
    const qsizetype times = image.indexOf("TF", image.indexOf("LINK.;1"));
    constexpr qsizetype flags = 4;
    constexpr qsizetype stamps = 5;
    constexpr qsizetype stampSize = 7;
    constexpr qsizetype hour = 3;
    const bool hasCreation = (image[times + flags] & 1) != 0;
    const qsizetype place = times + stamps + (hasCreation ? stampSize : 0) + hour;
    ASSERT_LT(place, image.size());
    const QString problems = problemsOf(flipped(image, place)).join(u'\n');
    EXPECT_TRUE(problems.contains(QStringLiteral("its date is not that of Rock Ridge"))) << problems.toStdString();
}

/// Where the record of a file begins in the catalog of an image: behind the key with its name.
qsizetype catalogRecordOf(const QByteArray &image, const char *name)
{
    QByteArray wide;
    for (const char *character = name; *character != 0; ++character)
        wide += QByteArray(1, 0) + *character;
    const QByteArray fileRecord("\0\2", 2);
    const qsizetype place = image.indexOf(wide + fileRecord);
    return place < 0 ? place : place + wide.size();
}

/// Only our own volumes: others give files blocks to grow into.
TEST(ImageCheck, lengthThatNeedsFewerBlocks_isTold_inOurHfsPlus)
{
    const QByteArray image = sampleImage(DRFilesystemInclusionMaskHFSPlus);
    constexpr qsizetype lengthOfData = 88;
    const qsizetype deep = catalogRecordOf(image, "deep.data");
    const qsizetype small = catalogRecordOf(image, "file 38");
    ASSERT_GT(std::min(deep, small), 0);
    QByteArray shorter = image;
    shorter[deep + lengthOfData + 5] = char(shorter[deep + lengthOfData + 5] ^ 1); // 65,536 of 70,000 bytes
    EXPECT_EQ(problemsOf(shorter).filter(QStringLiteral("its length needs 3")).size(), 1);
    QByteArray empty = image;
    empty[small + lengthOfData + 7] = 0;
    EXPECT_EQ(problemsOf(empty).filter(QStringLiteral("its length needs 0")).size(), 1);
}

TEST(ImageCheck, hardLinkOfAnotherDate_whichReadersTakeForAFile_isTold)
{
    const QByteArray image = sampleImage(DRFilesystemInclusionMaskHFSPlus);
    const qsizetype link = catalogRecordOf(image, "a.txt");
    ASSERT_GT(link, 0);
    constexpr qsizetype created = 12;
    for (qsizetype byte = 0; byte < 4; ++byte) {
        const QString problems = problemsOf(flipped(image, link + created + byte)).join(u'\n');
        EXPECT_TRUE(problems.contains(QStringLiteral("a hard link has another date"))) << problems.toStdString();
    }
}

TEST(ImageCheck, damagedMainSequence_isTold_thoughTheReserveServes)
{
    const QByteArray image = sampleImage(DRFilesystemInclusionMaskUDF);
    constexpr qsizetype mainSequence = std::size_t{32} * 2048;
    for (qsizetype descriptor = 0; descriptor < 5; ++descriptor)
        EXPECT_FALSE(problemsOf(flipped(image, mainSequence + descriptor * 2048 + 20)).isEmpty()) << descriptor;
}

TEST(ImageCheck, wrapperOfHfsPlusAndItsCopy_areHeldAgainstEachOther)
{
    const QByteArray image = sampleImage(DRFilesystemInclusionMaskHFSPlus);
    constexpr qsizetype wrapperSize = 162;
    for (const qsizetype place : {qsizetype{1024}, image.size() - 1024}) {
        for (qsizetype byte = 0; byte < wrapperSize; ++byte)
            EXPECT_FALSE(problemsOf(flipped(image, place + byte)).isEmpty()) << place << "+" << byte;
    }
}

TEST(ImageCheck, copyOfTheHfsPlusHeaderThatDiffersInSeveralFields_isTold)
{
    const QByteArray image = sampleImage(everything);
    const qsizetype header = qsizetype{8} * 2048 + 1024;
    const qsizetype copy = image.lastIndexOf(image.mid(header, 16));
    ASSERT_GT(copy, header);
    constexpr qsizetype nextAllocation = 52;
    constexpr qsizetype encodings = 72;
    EXPECT_FALSE(problemsOf(flipped(flipped(image, copy + nextAllocation), copy + encodings)).isEmpty());
    EXPECT_FALSE(problemsOf(flipped(flipped(image, header + nextAllocation), header + encodings)).isEmpty());
}

TEST(ImageCheck, driverDescriptor_isHeldAgainstTheImage)
{
    for (const DRFilesystemMask filesystems : {DRFilesystemMask(DRFilesystemInclusionMaskHFSPlus), everything}) {
        const QByteArray image = sampleImage(filesystems);
        for (qsizetype byte = 0; byte < 8; ++byte)
            EXPECT_FALSE(problemsOf(flipped(image, byte)).isEmpty()) << filesystems << " byte " << byte;
    }
}

/// A device that is longer than the image that was written onto it.
TEST(ImageCheck, hfsPlusImageOnALongerDevice_isSound)
{
    const QByteArray image = sampleImage(DRFilesystemInclusionMaskHFSPlus) + QByteArray(qsizetype{1} << 20, 0);
    EXPECT_EQ(problemsOf(image).join(QLatin1Char('\n')).toStdString(), "");
}

TEST(ImageCheck, cutImage_isTold)
{
    for (const DRFilesystemMask filesystems : sampleFilesystems()) {
        QByteArray image = sampleImage(filesystems);
        image.chop(100'000);
        EXPECT_FALSE(problemsOf(image).isEmpty()) << filesystems;
    }
}

TEST(ImageCheck, stoppedCheck_tellsNothing)
{
    const auto source = DiscImageSource::sourceWithBytes(sampleImage(everything));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(checkDiscImage(
                  source, [](const VolumeProblem &) { return true; }, stop.get_token()),
              0u);
}

} // namespace Tessaron::Testing
