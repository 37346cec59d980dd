#include "tests/tools/ImageFixture.h"
#include "tests/tools/TreeListing.h"

#include <QJsonArray>

#include <filesystem>

namespace Tessaron::Testing
{

namespace
{

/// Which filesystems an image has, as programs see it that know nothing of us.
class ImageFilesystems : public ImageTest
{
protected:
    void makeImage(const QList<QByteArray> &options, int expectedStatus = 0)
    {
        const ChildResult result = runTessaron(imageArguments(options));
        ASSERT_EQ(result.exitStatus, expectedStatus) << result.errors.constData();
    }

    [[nodiscard]] bool opens(const QByteArray &program, const QList<QByteArray> &arguments) const
    {
        ChildSettings settings;
        settings.program = program;
        settings.arguments = arguments + QList<QByteArray>({image()});
        return runChild(settings).exitStatus == 0;
    }

    /// What 7z unpacks from the image when it takes it for this type; a warning is not a failure.
    [[nodiscard]] QByteArray unpacked(const QByteArray &type) const
    {
        QByteArray folder = m_tree.makeFolder("unpacked " + type);
        ChildSettings settings;
        settings.program = "7z";
        settings.arguments = {"x", "-y", "-t" + type, image()};
        settings.folder = folder;
        const ChildResult result = runChild(settings);
        EXPECT_LE(result.exitStatus, 1) << result.output.constData() << result.errors.constData();
        return folder;
    }
};

TEST_F(ImageFilesystems, areExactlyThoseAskedFor_inEachCombination)
{
    makeOrdinaryTree();
    for (int mask = 1; mask < 16; ++mask) {
        const QList<QByteArray> chosen = filesystemsOfMask(mask);
        SCOPED_TRACE(chosen.join(',').constData());
        makeImage({"--filesystems", chosen.join(',')});
        EXPECT_EQ(opens("7z", {"l", "-tiso"}), (mask & 3) != 0);
        EXPECT_EQ(opens("udfinfo", {}), (mask & 4) != 0);
        EXPECT_EQ(opens("7z", {"l", "-tapm"}), (mask & 8) != 0);
        if ((mask & 1) != 0) {
            const bool hasJoliet = outputOf("isoinfo", {"-d", "-i", image()}).contains("Joliet with UCS level 3 found");
            EXPECT_EQ(hasJoliet, (mask & 2) != 0);
            EXPECT_TRUE(outputOf("isoinfo", {"-R", "-f", "-i", image()}).contains("/folder/two.txt"));
        }
    }
}

TEST_F(ImageFilesystems, areAllFour_byDefault)
{
    makeOrdinaryTree();
    makeImage({});
    EXPECT_TRUE(outputOf("isoinfo", {"-d", "-i", image()}).contains("Joliet with UCS level 3 found"));
    EXPECT_TRUE(outputOf("isoinfo", {"-d", "-i", image()}).contains("Rock Ridge signatures version 1 found"));
    EXPECT_TRUE(opens("udfinfo", {}));
    EXPECT_TRUE(opens("7z", {"l", "-tapm"}));
    EXPECT_TRUE(opens("7z", {"t"})) << "without being told a type";
    EXPECT_EQ(m_tree.contents("out/disc.iso").size() % 32768, 0);
}

TEST_F(ImageFilesystems, holdTheSameTree_eachAlone)
{
    makeOrdinaryTree();
    const TreeListingOptions contentsOnly = {.modes = false, .times = false, .hardLinks = false};
    const auto expected = listTree(m_tree.path("source"), contentsOnly);
    makeImage({"--filesystems", "iso9660"});
    EXPECT_EQ(listTree(unpacked("iso"), contentsOnly), expected);
    makeImage({"--filesystems", "udf"});
    EXPECT_EQ(listTree(unpacked("udf"), contentsOnly), expected);
    makeImage({"--filesystems", "hfs+", "--name", "volume"});
    EXPECT_EQ(listTree(unpacked("hfs") + "/volume", contentsOnly), expected);
}

TEST_F(ImageFilesystems, reportNamesEachTree)
{
    m_tree.makeFile("source/bad\xff.txt");
    m_tree.makeFile("source/README", "one");
    m_tree.makeFile("source/readme", "two");
    m_tree.makeFile("source/" + QByteArray(200, 'n'));
    const ChildResult result = runTessaron(imageArguments({"--json"}));
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QJsonObject object = jsonOf(result.output);
    std::set<std::string> changed;
    for (const QJsonValue item : object[QStringLiteral("renamed")].toArray())
        changed.insert(item[QStringLiteral("filesystem")].toString().toStdString() + ' '
                       + item[QStringLiteral("path")].toString().left(4).toStdString());
    EXPECT_EQ(
        changed,
        std::set<std::string>({"joliet /bad", "joliet /nnn", "joliet /rea", "udf /bad", "hfs+ /bad", "hfs+ /rea"}));
    const QJsonObject counts = object[QStringLiteral("renamedCounts")].toObject();
    EXPECT_EQ(counts[QStringLiteral("udf")].toInteger(), 1);
    EXPECT_EQ(counts[QStringLiteral("hfs+")].toInteger(), 2);
}

TEST_F(ImageFilesystems, lostNames_makeTheRunIncomplete_withoutATreeThatHasThem)
{
    m_tree.makeFile("source/README", "one");
    m_tree.makeFile("source/readme", "two");
    makeImage({"--filesystems", "hfs+"}, 3);
    makeImage({"--filesystems", "udf"}, 0);
    makeImage({"--filesystems", "hfs+,udf"}, 0);
}

TEST_F(ImageFilesystems, vantImage_isTheImageWithATrailer)
{
    makeOrdinaryTree();
    const QByteArray source = m_tree.path("source");
    ChildSettings settings = tessaron({"image", "-o", m_tree.path("out/disc.vant"), source});
    settings.environment = {"SOURCE_DATE_EPOCH=1700000000"};
    EXPECT_EQ(runChild(settings).exitStatus, 0);
    settings.arguments = {"image", "--json", "--format", "vant", "-o", m_tree.path("out/other"), source};
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 0);
    settings.arguments = {"image", "-o", image(), source};
    EXPECT_EQ(runChild(settings).exitStatus, 0);

    const QByteArray plain = m_tree.contents("out/disc.iso");
    const QByteArray vant = m_tree.contents("out/disc.vant");
    EXPECT_TRUE(vant.startsWith(plain));
    EXPECT_TRUE(vant.endsWith("VANT\r\n\x1a\n"));
    EXPECT_EQ(vant, m_tree.contents("out/other"));
    EXPECT_EQ(outNames(), std::set<std::string>({"disc.iso", "disc.vant", "other"}));
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(object[QStringLiteral("format")].toString(), QStringLiteral("vant"));
    EXPECT_EQ(object[QStringLiteral("bytes")].toInteger(), vant.size());
    EXPECT_TRUE(outputOf("isoinfo", {"-R", "-f", "-i", m_tree.path("out/disc.vant")}).contains("/folder/two.txt"));
}

TEST_F(ImageFilesystems, vantImage_leavesNothing_whenItsTrailerDoesNotFit)
{
    makeOrdinaryTree();
    makeImage({});
    const auto length = quint64(m_tree.contents("out/disc.iso").size());
    ChildSettings settings = tessaron({"image", "-o", m_tree.path("out/disc.vant"), m_tree.path("source")});
    settings.fileSizeLimit = length + 100; // the image fits, its trailer does not
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("out/disc.vant” failed: File too large")) << result.errors.constData();
    EXPECT_EQ(outNames(), std::set<std::string>({"disc.iso"}));
}

} // namespace

} // namespace Tessaron::Testing
