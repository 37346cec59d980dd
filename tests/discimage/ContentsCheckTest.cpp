#include "platform/discimage/ImageCheck.h"
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
    const ProgramResult result =
        runProgram(text("xorriso"),
                   {text("-indev"), ours, text("-outdev"), changed, text("-boot_image"), text("any"), text("keep"),
                    text("-map"), added, text("/added"), text("-commit")});
    ASSERT_EQ(result.exitCode, 0) << result.errors.toStdString();
    QFile file(changed);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray image = file.readAll();
    EXPECT_EQ(problemsOf(image).join(u'\n').toStdString(), "");
    RecordProperty("systemAreaKept", image.mid(systemAreaRecord, 8) == "TESSARON" ? 1 : 0);
}

} // namespace Tessaron::Testing
