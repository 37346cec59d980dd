#include "platform/foundation/UniqueDescriptor.h"
#include "tests/tools/ImageFixture.h"
#include "tests/tools/TreeListing.h"

#include <QRegularExpression>

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

/// Images read by programs that know nothing of us.
class ImageReaders : public ImageTest
{
protected:
    void makeImage(const QList<QByteArray> &options = {}, int expectedStatus = 0)
    {
        const ChildResult result = runTessaron(imageArguments(options));
        ASSERT_EQ(result.exitStatus, expectedStatus) << result.errors.constData();
        m_errors = result.errors;
    }

    /// What `program` unpacks from the image.
    QByteArray unpacked(const QByteArray &program, const QList<QByteArray> &arguments)
    {
        QByteArray folder = m_tree.makeFolder("unpacked");
        outputOf(program, arguments, folder);
        return folder;
    }

    QByteArray m_errors;
};

std::set<std::string> linesOf(const QByteArray &text)
{
    std::set<std::string> result;
    for (const QByteArray &line : text.split('\n')) {
        if (!line.isEmpty())
            result.insert(line.toStdString());
    }
    return result;
}

std::set<std::string> pathsOf(const std::map<std::string, std::string> &listing)
{
    std::set<std::string> result;
    for (const auto &[path, line] : listing)
        result.insert("/" + path);
    return result;
}

TEST_F(ImageReaders, xorriso_extractsTheOrdinaryTreeAsItWas)
{
    makeOrdinaryTree();
    makeImage();
    EXPECT_EQ(listTree(extracted()), listTree(m_tree.path("source")));
}

TEST_F(ImageReaders, xorriso_extractsTheOddTreeAsItWas)
{
    makeSampleTree();
    makeImage();
    EXPECT_EQ(listTree(extracted()), listTree(m_tree.path("source")));
}

TEST_F(ImageReaders, isoinfo_listsTheOddTree)
{
    makeSampleTree();
    // isoinfo prints a name with a line break over two lines.
    std::filesystem::remove((m_tree.path("source/odd names/") + "line\nbreak.txt").toStdString());
    makeImage();
    EXPECT_EQ(linesOf(outputOf("isoinfo", {"-R", "-f", "-i", image()})), pathsOf(listTree(m_tree.path("source"))));
}

TEST_F(ImageReaders, isoinfo_listsJolietNames)
{
    makeOrdinaryTree();
    makeImage();
    EXPECT_EQ(linesOf(outputOf("isoinfo", {"-J", "-f", "-i", image()})), pathsOf(listTree(m_tree.path("source"))));
}

TEST_F(ImageReaders, isovfy_hasNoComplaint)
{
    makeSampleTree();
    makeImage();
    const QByteArray report = outputOf("isovfy", {image()});
    EXPECT_TRUE(report.contains("No errors found")) << report.constData();
}

TEST_F(ImageReaders, sevenZip_extractsTheContents)
{
    makeOrdinaryTree();
    makeImage();
    outputOf("7z", {"t", "-tiso", image()});
    const QByteArray folder = unpacked("7z", {"x", "-tiso", image()});
    const TreeListingOptions contentsOnly = {.modes = false, .times = false, .hardLinks = false};
    EXPECT_EQ(listTree(folder, contentsOnly), listTree(m_tree.path("source"), contentsOnly));
}

TEST_F(ImageReaders, sevenZip_testsTheOddTree)
{
    makeSampleTree();
    makeImage();
    const QByteArray report = outputOf("7z", {"t", image()});
    EXPECT_TRUE(report.contains("Everything is Ok")) << report.constData();
}

TEST_F(ImageReaders, bsdtar_extractsTheOddTreeByRockRidge)
{
    makeSampleTree();
    makeImage();
    const QByteArray folder = unpacked("bsdtar", {"--options", "!joliet", "-xpf", image()});
    TreeListingOptions options;
    options.hardLinks = false; // it makes copies of files that share their blocks
    EXPECT_EQ(listTree(folder, options), listTree(m_tree.path("source"), options));
}

TEST_F(ImageReaders, bsdtar_extractsTheOrdinaryTreeByJoliet)
{
    makeOrdinaryTree();
    m_tree.makeFile("source/Grüße 日本.txt", "text");
    makeImage();
    const QByteArray folder = unpacked("bsdtar", {"--options", "!rockridge", "-xf", image()});
    TreeListingOptions options;
    options.modes = false; // Joliet has none
    EXPECT_EQ(listTree(folder, options), listTree(m_tree.path("source"), options));
}

TEST_F(ImageReaders, volumeName_isThatOfTheFolderOrTheOneGiven)
{
    makeOrdinaryTree();
    makeImage();
    EXPECT_TRUE(outputOf("isoinfo", {"-d", "-i", image()}).contains("Volume id: SOURCE"));
    makeImage({"--name", "HOLIDAY"});
    EXPECT_TRUE(outputOf("isoinfo", {"-d", "-i", image()}).contains("Volume id: HOLIDAY"));
}

TEST_F(ImageReaders, volumeNameThatNoFilesystemHolds_isTold_andMissed_whenItWasGiven)
{
    makeOrdinaryTree();
    const QByteArray text = "The volume's name is stored as “MY_DISC” (ISO 9660).";
    const ChildResult given = runTessaron(imageArguments({"--filesystems", "iso9660", "-n", "My Disc"}));
    EXPECT_EQ(given.exitStatus, 3);
    EXPECT_TRUE(given.errors.contains(text)) << given.errors.constData();
    const ChildResult quiet = runTessaron(imageArguments({"-q", "--filesystems", "iso9660", "-n", "My Disc"}));
    EXPECT_EQ(quiet.exitStatus, 3);
    EXPECT_TRUE(quiet.errors.contains(text)) << quiet.errors.constData();
    const QJsonObject report =
        jsonOf(runTessaron(imageArguments({"--json", "--filesystems", "iso9660", "-n", "My Disc"})).output);
    EXPECT_EQ(report[QStringLiteral("result")].toString(), QStringLiteral("incomplete"));
    const QJsonValue item = report[QStringLiteral("renamed")][0];
    EXPECT_EQ(item[QStringLiteral("path")].toString(), QStringLiteral("/"));
    EXPECT_TRUE(item[QStringLiteral("lost")].toBool());
    const ChildResult strict = runTessaron(imageArguments({"--strict", "--filesystems", "iso9660", "-n", "My Disc"}));
    EXPECT_EQ(strict.exitStatus, 1);
    EXPECT_TRUE(strict.errors.contains("the name of the volume cannot be stored as it is"))
        << strict.errors.constData();

    // One that is only the folder's is told, and nothing is missing; another filesystem may have it.
    const ChildResult ofFolder = runTessaron(imageArguments({"--filesystems", "iso9660"}));
    EXPECT_EQ(ofFolder.exitStatus, 0);
    EXPECT_TRUE(ofFolder.errors.contains("The volume's name is stored as “SOURCE” (ISO 9660)."))
        << ofFolder.errors.constData();
    const ChildResult elsewhere = runTessaron(imageArguments({"--strict", "-n", "My Disc"}));
    EXPECT_EQ(elsewhere.exitStatus, 0);
    EXPECT_FALSE(elsewhere.errors.contains("volume")) << elsewhere.errors.constData();
}

TEST_F(ImageReaders, severalSources_lieSideBySide)
{
    m_tree.makeFile("source/in a.txt", "a");
    m_tree.makeFile("b/in b.txt", "b");
    m_tree.makeFile("c.txt", "c");
    m_tree.makeFile("hidden/d.txt", "d");
    m_tree.makeSymbolicLink("link to d", "hidden/d.txt");
    ChildSettings settings = tessaron({"image", "-o", "out/disc.iso", "source", "b/", "c.txt", "link to d"});
    settings.folder = m_tree.path();
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(pathsOf(listTree(extracted())),
              std::set<std::string>({"/source", "/source/in a.txt", "/b", "/b/in b.txt", "/c.txt", "/link to d"}));
    EXPECT_TRUE(outputOf("isoinfo", {"-d", "-i", image()}).contains("Volume id: DISC"));
}

TEST_F(ImageReaders, emptyFolder_makesAnEmptyDisc)
{
    makeImage();
    EXPECT_EQ(listTree(extracted()), (std::map<std::string, std::string>()));
}

TEST_F(ImageReaders, paths_mayBeBytesThatAreNotUtf8)
{
    m_tree.makeFile("b\xe4r/f\xfcr.txt", "content");
    const QByteArray image = m_tree.path("out/b\xe4r.iso");
    const ChildResult result = runTessaron({"image", "-o", image, m_tree.path("b\xe4r")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("b\\xe4r.iso")) << result.errors.constData();
    EXPECT_EQ(outputOf("isoinfo", {"-R", "-f", "-i", image}), "/f\xfcr.txt\n");
}

TEST_F(ImageReaders, binImage_hasItsCueSheet)
{
    makeOrdinaryTree();
    const ChildResult result = runTessaron({"image", "-o", m_tree.path("out/di sc.bin"), m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_EQ(outNames(), std::set<std::string>({"di sc.bin", "di sc.cue"}));
    EXPECT_EQ(m_tree.contents("out/di sc.cue"),
              "FILE \"di sc.bin\" BINARY\r\n  TRACK 01 MODE1/2048\r\n    INDEX 01 00:00:00\r\n");
    EXPECT_TRUE(outputOf("isoinfo", {"-R", "-f", "-i", m_tree.path("out/di sc.bin")}).contains("/readme.txt"));
}

TEST_F(ImageReaders, sameTree_givesTheSameBytes_withAGivenDate)
{
    makeSampleTree();
    ChildSettings settings = tessaron(imageArguments());
    settings.environment = {"SOURCE_DATE_EPOCH=1700000000"};
    EXPECT_EQ(runChild(settings).exitStatus, 0);
    const QByteArray first = m_tree.contents("out/disc.iso");
    static_cast<void>(listTree(m_tree.path("source"))); // moves times of access
    EXPECT_EQ(runChild(settings).exitStatus, 0);
    EXPECT_TRUE(first == m_tree.contents("out/disc.iso"));
    EXPECT_GT(first.size(), 0);
}

TEST_F(ImageReaders, destination_mayBeOnAnotherFilesystem)
{
    if (!std::filesystem::is_directory("/dev/shm"))
        GTEST_SKIP() << "there is no /dev/shm";
    makeOrdinaryTree();
    makeBigFile("source/big", 3000000);
    const TemporaryTree elsewhere(QStringLiteral("/dev/shm"));
    const ChildResult result = runTessaron({"image", "-o", elsewhere.path("disc.iso"), m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QByteArray folder = unpacked("bsdtar", {"--options", "!joliet", "-xpf", elsewhere.path("disc.iso")});
    EXPECT_EQ(listTree(folder), listTree(m_tree.path("source")));
}

/// A file above 4 GiB: its beginning, its end and what lies around 4 GiB are data, all else is holes.
TEST_F(ImageReaders, fileAboveFourGigabytes_isWhole)
{
    constexpr qint64 size = 4294967296 + 5000;
    m_tree.makeSparseFile("source/big", size);
    m_tree.makeFile("source/small", "small");
    const UniqueDescriptor source(::open(m_tree.path("source/big").constData(), O_RDWR | O_CLOEXEC));
    for (const qint64 offset : {qint64(0), qint64(4294965248) - 4, qint64(4294967296) - 4, size - 8})
        ASSERT_EQ(::pwrite(source.get(), "landmark", 8, offset), 8);
    makeImage();

    EXPECT_TRUE(
        outputOf("7z", {"l", "-tiso", "-slt", image()}).contains("Path = big\nFolder = -\nSize = 4294972296\n"));
    const QString extents =
        QString::fromUtf8(outputOf("xorriso", {"-indev", image(), "-find", "/big", "-exec", "report_lba", "--"}));
    QRegularExpressionMatchIterator lines =
        QRegularExpression(QStringLiteral("File data lba: +(\\d+) , +(\\d+) , +(\\d+) , +(\\d+)")).globalMatch(extents);
    qint64 covered = 0;
    const UniqueDescriptor written(::open(image().constData(), O_RDONLY | O_CLOEXEC));
    while (lines.hasNext()) {
        const QRegularExpressionMatch line = lines.next();
        const qint64 start = line.captured(2).toLongLong() * 2048;
        const qint64 length = line.captured(3).toLongLong() * 2048;
        EXPECT_EQ(line.captured(4).toLongLong(), size);
        char both[2][16] = {};
        const qint64 here = std::min<qint64>(16, size - covered);
        ASSERT_EQ(::pread(source.get(), both[0], size_t(here), covered), here);
        ASSERT_EQ(::pread(written.get(), both[1], size_t(here), start), here);
        EXPECT_EQ(QByteArray(both[0], 16), QByteArray(both[1], 16));
        const qint64 tail = std::min(covered + length, size) - 16;
        ASSERT_EQ(::pread(source.get(), both[0], 16, tail), 16);
        ASSERT_EQ(::pread(written.get(), both[1], 16, start + tail - covered), 16);
        EXPECT_EQ(QByteArray(both[0], 16), QByteArray(both[1], 16));
        covered += length;
    }
    EXPECT_EQ(covered, (size + 2047) / 2048 * 2048) << extents.toStdString();
}

} // namespace

} // namespace Tessaron::Testing
