#include "platform/discimage/ImageCheck.h"
#include "platform/discimage/VolumeFinder.h"
#include "tests/discimage/SampleImages.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <QFile>

#include <gtest/gtest.h>

namespace Tessaron::Testing
{

namespace
{

constexpr qsizetype blockSize = 2048;
constexpr qsizetype systemAreaRecord = 15 * blockSize;
constexpr qsizetype primaryRecord = 16 * blockSize + 947;
constexpr qsizetype udfRecord = 35 * blockSize + 304;
constexpr qsizetype hfsPlusRecord = 8 * blockSize + 1024 + 96;

constexpr DRFilesystemMask isoAndUdf = DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskUDF;
constexpr DRFilesystemMask everything = isoAndUdf | DRFilesystemInclusionMaskJoliet | DRFilesystemInclusionMaskHFSPlus;

/// Zeros in place of blocks; a place below 0 counts from the end.
QByteArray without(QByteArray image, std::initializer_list<qsizetype> blocks)
{
    for (const qsizetype block : blocks) {
        const qsizetype at = block < 0 ? image.size() + block * blockSize : block * blockSize;
        image.replace(at, blockSize, QByteArray(blockSize, 0));
    }
    return image;
}

QByteArray flipped(QByteArray image, qsizetype offset)
{
    image[offset] = char(image[offset] ^ 4);
    return image;
}

QString text(const char *latin)
{
    return QString::fromLatin1(latin);
}

/// Blocks of the recognition sequence, behind the descriptors of ISO 9660 and their end.
qsizetype recognitionBlock(const QByteArray &image)
{
    return (image.indexOf("BEA01") - 1) / blockSize;
}

} // namespace

TEST(ContentsCheck, udfWithoutRecognitionAndAnchors_isTold)
{
    const QByteArray image = sampleImage(isoAndUdf);
    const qsizetype first = recognitionBlock(image);
    const QStringList problems = problemsOf(without(image, {first, first + 1, first + 2, 256, -1}));
    EXPECT_EQ(problems.filter(text("UDF, record of contents")).size(), 1) << problems.join(u'\n').toStdString();
    EXPECT_TRUE(problems.join(u'\n').contains(text("made with this filesystem"))) << problems.join(u'\n').toStdString();
}

TEST(ContentsCheck, onlyFilesystemGone_isTold_byTheSystemArea)
{
    const QByteArray image = sampleImage(DRFilesystemInclusionMaskUDF);
    const qsizetype first = recognitionBlock(image);
    const QStringList problems = problemsOf(without(image, {first, first + 1, first + 2, 256, -1}));
    EXPECT_EQ(problems.filter(text("UDF, record of contents")).size(), 1) << problems.join(u'\n').toStdString();
}

TEST(ContentsCheck, everyTreeThatIsGone_isTold)
{
    const QByteArray image = sampleImage(everything);
    const QStringList withoutIso = problemsOf(without(image, {16, 17, 18}));
    for (const char *const kind : {"ISO 9660, record", "Rock Ridge, record", "Joliet, record"})
        EXPECT_EQ(withoutIso.filter(text(kind)).size(), 1) << kind << withoutIso.join(u'\n').toStdString();
    const QStringList withoutHfsPlus = problemsOf(without(image, {0, 8}));
    EXPECT_EQ(withoutHfsPlus.filter(text("HFS+, record")).size(), 1) << withoutHfsPlus.join(u'\n').toStdString();
}

TEST(ContentsCheck, damagedRecord_isTold_ofEachPlace)
{
    const QByteArray image = sampleImage(everything);
    const qsizetype jolietRecord = primaryRecord + blockSize;
    for (const qsizetype place : {systemAreaRecord, primaryRecord, jolietRecord, udfRecord}) {
        for (const qsizetype byte : {0, 16, 21, 30, 39})
            EXPECT_FALSE(problemsOf(flipped(image, place + byte)).isEmpty()) << place << "+" << byte;
    }
    for (qsizetype byte = 0; byte < 4; ++byte)
        EXPECT_FALSE(problemsOf(flipped(image, hfsPlusRecord + byte)).isEmpty()) << "HFS+ " << byte;
}

/// Names and dates of a volume stand nowhere else in ISO 9660 and Joliet.
TEST(ContentsCheck, anyByteOfAVolumeDescriptor_isTold)
{
    const QByteArray image = sampleImage(everything);
    for (const qsizetype descriptor : {16 * blockSize, 17 * blockSize}) {
        for (const qsizetype byte : {40, 41, 190, 574, 702, 813, 816, 830, 882, 883, 946, 987, 990}) {
            const QStringList problems = problemsOf(flipped(image, descriptor + byte));
            EXPECT_FALSE(problems.isEmpty()) << descriptor << "+" << byte;
        }
    }
    QByteArray old = image;
    for (const qsizetype descriptor : {16 * blockSize, 17 * blockSize})
        old.replace(descriptor + 987, 4, QByteArray(4, 0));
    EXPECT_EQ(problemsOf(old), QStringList()) << "images of before have no checksum";
}

TEST(ContentsCheck, recordsThatDisagree_areTold)
{
    QByteArray image = sampleImage(isoAndUdf);
    const QByteArray other = sampleImage(DRFilesystemInclusionMaskISO9660);
    image.replace(primaryRecord, 40, other.mid(primaryRecord, 40));
    const QStringList problems = problemsOf(image);
    EXPECT_EQ(problems.filter(text("says otherwise")).size(), 1) << problems.join(u'\n').toStdString();
}

TEST(ContentsCheck, cutImageOfUdfAlone_isTold)
{
    QByteArray image = sampleImage(DRFilesystemInclusionMaskUDF);
    image.chop(32768);
    EXPECT_FALSE(problemsOf(image).filter(text("was made with")).isEmpty());
}

/// Another program keeps the system area of the image that it changes, and writes everything else anew.
TEST(ContentsCheck, imageThatAnotherProgramChanged_isSound)
{
    if (!hasProgram(text("xorriso")))
        GTEST_SKIP() << "xorriso";
    const TemporaryTree tree;
    const QString ours = QString::fromUtf8(tree.makeFile("ours.iso", sampleImage(DRFilesystemInclusionMaskISO9660)));
    const QString added = QString::fromUtf8(tree.makeFile("added", "added"));
    const QString changed = tree.pathText() + text("/changed.iso");
    const ProgramRun result =
        runProgram(text("xorriso"),
                   {text("-indev"), ours, text("-outdev"), changed, text("-boot_image"), text("any"), text("keep"),
                    text("-map"), added, text("/added"), text("-commit")});
    ASSERT_EQ(result.status, 0) << result.errors.toStdString();
    QFile file(changed);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray image = file.readAll();
    EXPECT_EQ(problemsOf(image).join(u'\n').toStdString(), "");
    RecordProperty("systemAreaKept", image.mid(systemAreaRecord, 8) == "TESSARON" ? 1 : 0);
}

namespace
{

/// An image of ours on a device of 16 MiB that another program has formatted since.
class FormattedDevice : public testing::Test
{
protected:
    QStringList problemsAfter(DRFilesystemMask filesystems, const QString &program, const QStringList &arguments)
    {
        constexpr std::int64_t longAgo = 1'000'000'000;
        QByteArray device = sampleImage(filesystems, longAgo);
        device.append(QByteArray((16 << 20) - device.size(), 0));
        m_path = QString::fromUtf8(m_tree.makeFile("device", device));
        const ProgramRun result = runProgram(program, arguments + QStringList{m_path});
        EXPECT_EQ(result.status, 0) << result.errors.toStdString();
        return problemsOf(contents());
    }

    [[nodiscard]] QByteArray contents() const { return m_tree.contents("device"); }

    static QStringList ofTheRecord(const QStringList &problems) { return problems.filter(text("record of contents")); }

    const TemporaryTree m_tree;
    QString m_path;
};

} // namespace

TEST_F(FormattedDevice, volumeOfUdf_isSound_whereTheSystemAreaWasKept)
{
    if (!hasProgram(text("mkudffs")))
        GTEST_SKIP() << "mkudffs";
    for (const DRFilesystemMask filesystems : {DRFilesystemMask(DRFilesystemInclusionMaskISO9660),
                                               DRFilesystemMask(DRFilesystemInclusionMaskUDF), isoAndUdf}) {
        const QStringList problems = problemsAfter(
            filesystems, text("mkudffs"), {text("--bootarea=preserve"), text("--media-type=hd"), text("-b2048")});
        ASSERT_EQ(contents().mid(systemAreaRecord, 8), "TESSARON") << "or nothing is tried here";
        EXPECT_EQ(problems.join(u'\n').toStdString(), "") << filesystems;
    }
}

/// What was formatted with blocks of another size leaves the old anchors where they are.
TEST_F(FormattedDevice, volumeOfUdf_isTheNewOne_whateverTheSizesOfBlocks)
{
    if (!hasProgram(text("mkudffs")))
        GTEST_SKIP() << "mkudffs";
    for (const std::uint32_t blockSize : {512, 1024, 2048, 4096}) {
        SCOPED_TRACE(blockSize);
        const QStringList problems = problemsAfter(everything, text("mkudffs"),
                                                   {text("--media-type=hd"), text("--blocksize=%1").arg(blockSize)});
        EXPECT_EQ(problems.join(u'\n').toStdString(), "");
        int volumes = 0;
        for (const FoundVolume &volume : volumesInImage(DiscImageSource::sourceWithBytes(contents()))) {
            ++volumes;
            ASSERT_TRUE(volume.reader);
            EXPECT_EQ(volume.kind, VolumeKind::UDF);
            EXPECT_EQ(volume.reader->facts().blockSize, blockSize);
            EXPECT_EQ(volume.reader->facts().name, text("LinuxUDF"));
        }
        EXPECT_EQ(volumes, 1);
    }
}

TEST_F(FormattedDevice, volumeOfUdfThatIsNotRead_isOnlyThat)
{
    if (!hasProgram(text("mkudffs")))
        GTEST_SKIP() << "mkudffs";
    const QStringList problems = problemsAfter(isoAndUdf, text("mkudffs"),
                                               {text("--bootarea=preserve"), text("--media-type=cdr"), text("-b2048")});
    ASSERT_EQ(contents().mid(systemAreaRecord, 8), "TESSARON") << "or nothing is tried here";
    EXPECT_FALSE(problems.filter(text("not supported")).isEmpty()) << problems.join(u'\n').toStdString();
    EXPECT_EQ(ofTheRecord(problems), QStringList());
}

/// These write their own marks in front of the record, and wipe no more than the first bytes of what they know.
TEST_F(FormattedDevice, markOfAnotherSystem_makesTheRecordALeftover)
{
    const QByteArray table = "label: gpt\nstart=2048, size=4096\n";
    const QString script = m_tree.pathText() + text("/table");
    m_tree.makeFile("table", table);
    const std::vector<std::pair<QString, QStringList>> formatters = {
        {text("mkswap"), {text("--quiet")}},
        {text("sh"), {text("-c"), text("sfdisk --quiet --wipe always \"$1\" <'%1'").arg(script), text("sh")}},
    };
    for (const auto &[program, arguments] : formatters) {
        for (const DRFilesystemMask filesystems : {isoAndUdf, DRFilesystemMask(DRFilesystemInclusionMaskUDF)}) {
            const QStringList problems = problemsAfter(filesystems, program, arguments);
            ASSERT_EQ(contents().mid(systemAreaRecord, 8), "TESSARON") << "or nothing is tried here";
            EXPECT_EQ(ofTheRecord(problems).join(u'\n').toStdString(), "") << program.toStdString() << filesystems;
        }
    }
}

TEST(ContentsCheck, oneByteInFrontOfTheRecord_makesItALeftover_onceNoTreeHasIt)
{
    for (const DRFilesystemMask filesystems : {DRFilesystemMask(DRFilesystemInclusionMaskUDF), everything}) {
        const QByteArray image = sampleImage(filesystems);
        const qsizetype first = recognitionBlock(image);
        QByteArray gone = without(image, {16, 17, 18, first, first + 1, first + 2, 256, -1});
        // The volume header of HFS+, and its copy; the map that leads to it stays.
        for (qsizetype at = gone.indexOf("H+"); at >= 0; at = gone.indexOf("H+", at))
            gone.replace(at, 512, QByteArray(512, 0));
        const QString text = problemsOf(gone).join(u'\n');
        EXPECT_TRUE(text.contains(QStringLiteral("made with this filesystem"))) << text.toStdString();
        for (const qsizetype place : {qsizetype(500), qsizetype(9 * blockSize), systemAreaRecord - 1}) {
            QByteArray overwritten = gone;
            overwritten[place] = 1;
            EXPECT_FALSE(problemsOf(overwritten).join(u'\n').contains(QStringLiteral("made with this filesystem")))
                << place;
        }
    }
}

TEST(ContentsCheck, oneByteInFrontOfTheRecord_changesNothing_asLongAsATreeHasIt)
{
    QByteArray image = sampleImage(everything);
    const qsizetype first = recognitionBlock(image);
    image = without(image, {first, first + 1, first + 2});
    image[500] = 1;
    EXPECT_FALSE(problemsOf(image).filter(text("UDF, record of contents")).isEmpty());
}

} // namespace Tessaron::Testing
