#include "platform/discrecording/objects/DRFolder.h"
#include "tests/discrecording/planning/IsoImageReader.h"
#include "tests/discrecording/planning/WrittenImage.h"
#include "tests/support/TemporaryTree.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// A tree with what ordinary and odd source folders hold, as far as all of the programs can show it.
void makeTree(const TemporaryTree &tree)
{
    tree.makeFile("read me.txt", "hello\n");
    tree.makeFile("data/numbers.bin", QByteArray(3'000'000, '\x17'));
    tree.makeFile("data/empty");
    tree.makeFolder("data/empty folder");
    tree.makeFile("\xC3\x9Cn\xC3\xAF"
                  "code \xE2\x82\xAC/\xE6\x97\xA5\xE6\x9C\xAC",
                  "umlauts and more");
    tree.makeFile("what?*:", "forbidden in Joliet");
    tree.makeFile(QByteArray(200, 'L') + ".txt", "a long name");
    tree.makeFile("a/b/c/d/e/f/g/h/i/j/k/l", "deep");
    tree.makeHardLink("data/hard link", "read me.txt");
    tree.makeSymbolicLink("links/up", "../read me.txt");
    tree.makeSymbolicLink("links/absolute", "/etc/passwd");
    tree.makeSymbolicLink("links/long", QByteArray("folder/").repeated(100) + "end");
    for (int number = 0; number < 300; ++number)
        tree.makeFile("many/same stem of all these names " + QByteArray::number(number), QByteArray::number(number));
    tree.setMode("read me.txt", 0640);
    tree.setModificationTime("read me.txt", 1'234'567'890);
}

/// Relative paths of everything below a folder, sorted: what `find` prints.
QByteArrayList listingOf(const QString &folder)
{
    QByteArrayList lines = runProgram(QStringLiteral("find"),
                                      {QStringLiteral("."), QStringLiteral("-mindepth"), QStringLiteral("1")}, folder)
                               .output.split('\n');
    std::sort(lines.begin(), lines.end());
    return lines;
}

/// True when `diff` finds both folders the same, links not followed.
void expectSameTrees(const QString &one, const QString &other)
{
    const ProgramRun result =
        runProgram(QStringLiteral("diff"), {QStringLiteral("-r"), QStringLiteral("--no-dereference"), one, other});
    EXPECT_EQ(result.status, 0) << result.output.constData() << result.errors.constData();
}

class IndependentReaders : public testing::Test
{
protected:
    IndependentReaders()
    {
        makeTree(source);
        image = std::make_unique<WrittenImage>(DRFolder::folderWithPath(source.pathText()));
        EXPECT_FALSE(image->error()) << qPrintable(image->error().localizedDescription());
        EXPECT_EQ(IsoImageReader(image->path()).problems(), QStringList());
    }

    ~IndependentReaders() override
    {
        // Extracted folders may be read-only.
        (void)runProgram(QStringLiteral("chmod"), {QStringLiteral("-R"), QStringLiteral("u+rwX"), target.pathText()});
    }

    const TemporaryTree source;
    const TemporaryTree target;
    std::unique_ptr<WrittenImage> image;
};

void expectAttributes(const QString &file)
{
    struct stat status;
    ASSERT_EQ(::stat(QFile::encodeName(file).constData(), &status), 0) << qPrintable(file);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'234'567'890);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

} // namespace

TEST_F(IndependentReaders, xorriso_extractsTheSource)
{
    if (!hasProgram(QStringLiteral("xorriso")))
        GTEST_SKIP() << "xorriso is not installed";
    const ProgramRun result = extractWithXorriso(image->path(), target.pathText("x"));
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_FALSE(result.errors.contains("SORRY")) << result.errors.constData();
    EXPECT_FALSE(result.errors.contains("WARNING")) << result.errors.constData();
    expectSameTrees(source.pathText(), target.pathText("x"));
    expectAttributes(target.pathText("x/read me.txt"));
}

TEST_F(IndependentReaders, bsdtar_extractsTheSource)
{
    if (!hasProgram(QStringLiteral("bsdtar")))
        GTEST_SKIP() << "bsdtar is not installed";
    target.makeFolder("x");
    const ProgramRun result = runProgram(
        QStringLiteral("bsdtar"), {QStringLiteral("-xpf"), image->path(), QStringLiteral("-C"), target.pathText("x")});
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    expectSameTrees(source.pathText(), target.pathText("x"));
    expectAttributes(target.pathText("x/read me.txt"));
    struct stat one;
    struct stat other;
    ASSERT_EQ(::stat(target.path("x/read me.txt").constData(), &one), 0);
    ASSERT_EQ(::stat(target.path("x/data/hard link").constData(), &other), 0);
    EXPECT_EQ(one.st_ino, other.st_ino) << "hard links stay hard links";
}

TEST_F(IndependentReaders, sevenZip_extractsTheJolietTree)
{
    if (!hasProgram(QStringLiteral("7z")))
        GTEST_SKIP() << "7z is not installed";
    const ProgramRun result = runProgram(
        QStringLiteral("7z"),
        {QStringLiteral("x"), QStringLiteral("-y"), QStringLiteral("-o") + target.pathText("x"), image->path()});
    EXPECT_EQ(result.status, 0) << result.output.constData();
    EXPECT_FALSE(result.output.contains("Warnings")) << result.output.constData();
    EXPECT_EQ(target.contents("x/read me.txt"), "hello\n");
    EXPECT_EQ(target.contents("x/data/numbers.bin"), QByteArray(3'000'000, '\x17'));
    EXPECT_EQ(target.contents("x/what___"), "forbidden in Joliet");
    EXPECT_EQ(target.contents("x/\xC3\x9Cn\xC3\xAF"
                              "code \xE2\x82\xAC/\xE6\x97\xA5\xE6\x9C\xAC"),
              "umlauts and more");
    EXPECT_EQ(target.contents("x/a/b/c/d/e/f/g/h/i/j/k/l"), "deep");
    EXPECT_EQ(listingOf(target.pathText("x/many")), listingOf(source.pathText("many")));
}

TEST_F(IndependentReaders, isoinfo_listsAllTrees)
{
    if (!hasProgram(QStringLiteral("isoinfo")))
        GTEST_SKIP() << "isoinfo is not installed";
    const auto list = [&](const QStringList &options) {
        const ProgramRun result =
            runProgram(QStringLiteral("isoinfo"),
                       options + QStringList{QStringLiteral("-f"), QStringLiteral("-i"), image->path()});
        EXPECT_EQ(result.status, 0) << result.errors.constData();
        return result.output.split('\n');
    };
    const auto rockRidge = list({QStringLiteral("-R")});
    EXPECT_TRUE(rockRidge.contains("/read me.txt"));
    EXPECT_TRUE(rockRidge.contains("/a/b/c/d/e/f/g/h/i/j/k/l"));
    EXPECT_TRUE(rockRidge.contains("/" + QByteArray(200, 'L') + ".txt"));
    EXPECT_TRUE(rockRidge.contains("/what?*:"));
    const auto joliet = list({QStringLiteral("-J")});
    EXPECT_TRUE(joliet.contains("/read me.txt"));
    EXPECT_TRUE(joliet.contains("/what___"));
    EXPECT_TRUE(joliet.contains("/many/same stem of all these names 299"));
    const auto plain = list({});
    EXPECT_TRUE(plain.contains("/READ_ME.TXT;1"));
    EXPECT_TRUE(plain.contains("/MANY/SAME_STEM_OF_ALL_THESE_NAMES_.;1") || plain.size() > 300);
    const ProgramRun contents = runProgram(QStringLiteral("isoinfo"),
                                           {QStringLiteral("-R"), QStringLiteral("-i"), image->path(),
                                            QStringLiteral("-x"), QStringLiteral("/read me.txt")});
    EXPECT_EQ(contents.output, "hello\n");
}

TEST_F(IndependentReaders, isovfy_findsNoErrors)
{
    if (!hasProgram(QStringLiteral("isovfy")))
        GTEST_SKIP() << "isovfy is not installed";
    const ProgramRun result = runProgram(QStringLiteral("isovfy"), {image->path()});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.contains("No errors found")) << result.output.constData();
}

/// A file of a disc with two images: of an empty folder, and well behind it of the source.
class IndependentReadersOfLaterTracks : public testing::Test
{
protected:
    static constexpr std::uint32_t firstBlock = 11'702;

    IndependentReadersOfLaterTracks()
    {
        makeTree(source);
        PlanOptions options;
        options.filesystems =
            DRFilesystemInclusionMaskISO9660 | DRFilesystemInclusionMaskJoliet | DRFilesystemInclusionMaskUDF;
        options.firstBlock = BlockAddress(firstBlock);
        const WrittenImage image(DRFolder::folderWithPath(source.pathText()), options);
        EXPECT_FALSE(image.error()) << qPrintable(image.error().localizedDescription());
        const TemporaryTree inFront;
        const WrittenImage other(DRFolder::folderWithPath(inFront.pathText()));
        QFile disc(discPath());
        EXPECT_TRUE(disc.open(QIODevice::WriteOnly));
        EXPECT_EQ(disc.write(other.bytes(0, other.size())), qint64(other.size()));
        EXPECT_TRUE(disc.seek(qint64(firstBlock) * 2048));
        EXPECT_EQ(disc.write(image.bytes(0, image.size())), qint64(image.size()));
    }

    ~IndependentReadersOfLaterTracks() override
    {
        // Extracted folders may be read-only.
        (void)runProgram(QStringLiteral("chmod"), {QStringLiteral("-R"), QStringLiteral("u+rwX"), target.pathText()});
    }

    [[nodiscard]] QString discPath() const { return target.pathText("disc"); }

    const TemporaryTree source;
    const TemporaryTree target;
};

TEST_F(IndependentReadersOfLaterTracks, xorriso_extractsTheSource)
{
    if (!hasProgram(QStringLiteral("xorriso")))
        GTEST_SKIP() << "xorriso is not installed";
    const ProgramRun result = extractWithXorriso(discPath(), target.pathText("extracted"), firstBlock);
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    expectSameTrees(source.pathText(), target.pathText("extracted"));
    EXPECT_EQ(listingOf(target.pathText("extracted")), listingOf(source.pathText()));
}

TEST_F(IndependentReadersOfLaterTracks, udfinfo_findsTheVolume)
{
    if (!hasProgram(QStringLiteral("udfinfo")))
        GTEST_SKIP() << "udfinfo is not installed";
    const ProgramRun result =
        runProgram(QStringLiteral("udfinfo"),
                   {QStringLiteral("--blocksize=2048"), QStringLiteral("--startblock=%1").arg(firstBlock), discPath()});
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_FALSE(result.errors.contains("Warning")) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("start=" + QByteArray::number(firstBlock + 257) + ", "))
        << result.output.constData();
    EXPECT_TRUE(result.output.contains("udfrev=1.02"));
}

TEST(PlanOfALaterTrack, fails_whenItCannotBeginThere)
{
    const TemporaryTree source;
    source.makeFile("file", "contents");
    for (const std::int64_t first : {std::int64_t(-1), (std::int64_t(1) << 32) - 20, std::int64_t(1) << 32}) {
        PlanOptions options;
        options.firstBlock = BlockAddress(first);
        const WrittenImage image(DRFolder::folderWithPath(source.pathText()), options);
        EXPECT_FALSE(image.plan().image);
        EXPECT_FALSE(image.error().isNull());
        EXPECT_FALSE(image.error().localizedRecoverySuggestion().isEmpty());
    }
}

TEST(IndependentReadersOfHugeFiles, xorrisoAndSevenZip_seeTheTrueSize)
{
    const TemporaryTree tree;
    tree.makeSparseFile("huge.bin", 5'000'000'000);
    const WrittenImage image(DRFolder::folderWithPath(tree.pathText()));
    if (hasProgram(QStringLiteral("xorriso"))) {
        const ProgramRun result =
            runProgram(QStringLiteral("xorriso"),
                       {QStringLiteral("-indev"), image.path(), QStringLiteral("-find"), QStringLiteral("/huge.bin"),
                        QStringLiteral("-exec"), QStringLiteral("report_lba")});
        EXPECT_TRUE(result.output.contains("5000000000") || result.output.contains("4294965248"))
            << result.output.constData();
        EXPECT_TRUE(result.output.contains("'/huge.bin'"));
    }
    if (hasProgram(QStringLiteral("7z"))) {
        const ProgramRun result =
            runProgram(QStringLiteral("7z"), {QStringLiteral("l"), QStringLiteral("-slt"), image.path()});
        EXPECT_TRUE(result.output.contains("Size = 5000000000")) << result.output.constData();
    }
    if (hasProgram(QStringLiteral("bsdtar"))) {
        const ProgramRun result = runProgram(QStringLiteral("bsdtar"), {QStringLiteral("-tvf"), image.path()});
        EXPECT_TRUE(result.output.contains("5000000000")) << result.output.constData();
    }
}

class JolietWithoutIso : public testing::TestWithParam<DRFilesystemMask>
{
protected:
    JolietWithoutIso()
    {
        source.makeFile("folder/Lower Case.txt", "joliet");
        PlanOptions options;
        options.filesystems = GetParam();
        image = std::make_unique<WrittenImage>(DRFolder::folderWithPath(source.pathText()), options);
        EXPECT_FALSE(image->error()) << qPrintable(image->error().localizedDescription());
        const IsoImageReader reader(image->path());
        EXPECT_EQ(reader.problems(), QStringList());
        EXPECT_TRUE(reader.primary() && reader.primary()->root.children.empty()) << "ISO 9660 was not asked for";
        EXPECT_TRUE(reader.joliet());
    }

    const TemporaryTree source;
    const TemporaryTree target;
    std::unique_ptr<WrittenImage> image;
};

TEST_P(JolietWithoutIso, isoinfo_listsIt)
{
    if (!hasProgram(QStringLiteral("isoinfo")))
        GTEST_SKIP() << "isoinfo is not installed";
    const ProgramRun result = runProgram(
        QStringLiteral("isoinfo"), {QStringLiteral("-J"), QStringLiteral("-f"), QStringLiteral("-i"), image->path()});
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("/folder/Lower Case.txt")) << result.output.constData();
}

TEST_P(JolietWithoutIso, xorriso_extractsIt)
{
    if (!hasProgram(QStringLiteral("xorriso")))
        GTEST_SKIP() << "xorriso is not installed";
    const ProgramRun result = extractWithXorriso(image->path(), target.pathText("x"));
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_EQ(target.contents("x/folder/Lower Case.txt"), "joliet");
}

TEST_P(JolietWithoutIso, bsdtar_extractsIt)
{
    if (!hasProgram(QStringLiteral("bsdtar")))
        GTEST_SKIP() << "bsdtar is not installed";
    const ProgramRun result = runProgram(
        QStringLiteral("bsdtar"), {QStringLiteral("-xf"), image->path(), QStringLiteral("-C"), target.pathText()});
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_EQ(target.contents("folder/Lower Case.txt"), "joliet");
}

TEST_P(JolietWithoutIso, blkid_recognisesIt)
{
    if (!hasProgram(QStringLiteral("blkid")))
        GTEST_SKIP() << "blkid is not installed";
    const ProgramRun result = runProgram(QStringLiteral("blkid"), {QStringLiteral("-p"), image->path()});
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    const bool hasUdf = (GetParam() & DRFilesystemInclusionMaskUDF) != 0;
    EXPECT_TRUE(result.output.contains(hasUdf ? " TYPE=\"udf\"" : " TYPE=\"iso9660\"")) << result.output.constData();
}

INSTANTIATE_TEST_SUITE_P(Masks, JolietWithoutIso, testing::Values(2u, 6u, 10u, 14u));

} // namespace Tessaron::Testing
