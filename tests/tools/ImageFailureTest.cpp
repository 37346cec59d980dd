#include "tests/tools/ImageFixture.h"
#include "tests/tools/WriteGate.h"

#include <QJsonArray>

#include <fcntl.h>
#include <filesystem>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

using Names = std::set<std::string>;

/// Runs that cannot end well, and what they leave: the place as it was.
class ImageFailure : public ImageTest
{
protected:
    ImageFailure() { m_tree.makeFile("out/disc.iso", "older image"); }

    void expectPlaceAsItWas() const
    {
        EXPECT_EQ(outNames(), Names({"disc.iso"}));
        EXPECT_EQ(m_tree.contents("out/disc.iso"), "older image");
    }

    /// Runs with these arguments; the error must contain each of the texts.
    void expectFailure(const QList<QByteArray> &arguments, int status, const QList<QByteArray> &texts)
    {
        ChildSettings settings = tessaron(arguments);
        settings.folder = m_tree.path();
        expectFailure(runChild(settings), status, texts);
    }

    void expectFailure(const ChildResult &result, int status, const QList<QByteArray> &texts) const
    {
        EXPECT_EQ(result.exitStatus, status) << result.errors.constData();
        EXPECT_EQ(result.output, "");
        for (const QByteArray &text : texts)
            EXPECT_TRUE(result.errors.contains(text))
                << text.constData() << " is not in: " << result.errors.constData();
        expectPlaceAsItWas();
    }

    /// Starts a run that stops before it reads "source/c victim", calls `change`, and lets it go on. Between the gate
    /// and the victim lies more than the command reads ahead.
    void expectFailureAfter(const std::function<void()> &change, const QList<QByteArray> &texts)
    {
        makeBigFile("source/a gate", 1 << 20);
        for (int number = 10; number < 60; ++number)
            makeBigFile("source/b between " + QByteArray::number(number), 1 << 20);
        makeBigFile("source/c victim", 1 << 20);
        WriteGate gate(m_tree.path("source/a gate"));
        if (!gate.isClosed())
            GTEST_SKIP() << "the filesystem of the temporary folder knows no leases";
        ChildProcess process(tessaron(imageArguments()));
        ASSERT_TRUE(process.waitUntil([&gate] { return gate.somebodyWaits(); })) << process.errorsSoFar().constData();
        change();
        gate.open();
        expectFailure(process.finish(), 1, texts);
    }
};

TEST_F(ImageFailure, commandLine_isWrong)
{
    expectFailure({}, 2, {"no command was given", "Try 'tessaron --help'."});
    expectFailure({"image", "-o", "out/disc.iso"}, 2, {"no PATH was given", "Try 'tessaron image --help'."});
    expectFailure({"image", "source"}, 2, {"no output was given"});
    expectFailure({"image", "--frobnicate", "-o", "out/disc.iso", "source"}, 2, {"--frobnicate"});
    expectFailure({"image", "--filesystems", "ntfs", "-o", "out/disc.iso", "source"}, 2, {"no filesystem “ntfs”"});
    expectFailure({"image", "-o", "out/a\"b.bin", "source"}, 2, {"cannot stand in a cue sheet"});
}

TEST_F(ImageFailure, sources_haveOneName)
{
    m_tree.makeFile("a/same");
    m_tree.makeFile("b/same");
    expectFailure({"image", "-o", "out/disc.iso", "a/same", "b/same"}, 2,
                  {"two sources have the name “same”", "a/same", "b/same", "Rename one of them"});
    expectFailure({"image", "-o", "out/disc.iso", "a", "./a/"}, 2, {"are the same folder"});
}

TEST_F(ImageFailure, source_isMissing)
{
    expectFailure({"image", "-o", "out/disc.iso", "source", "mis\nsing"}, 1,
                  {"there is no file or folder “mis\\nsing”"});
}

TEST_F(ImageFailure, destination_isNoPlaceForAnImage)
{
    expectFailure({"image", "-o", "out", "source"}, 1, {"“out” is a folder", "“out/disc.iso”"});
    expectFailure({"image", "-o", "nowhere/disc.iso", "source"}, 1, {"the output's folder “nowhere” does not exist"});
    expectFailure({"image", "-o", "/dev/full", "source"}, 1, {"/dev/full", "is full"});
    expectFailure({"image", "-o", "source/disc.iso", "source"}, 1,
                  {"“source/disc.iso” lies inside the source folder “source”", "Choose a place outside"});
    expectFailure({"image", "-o", "out/disc.iso", "out/disc.iso"}, 1, {"would replace the source"});
}

TEST_F(ImageFailure, destination_mayNotBeWritten)
{
    makeOrdinaryTree();
    m_tree.setMode("out", 0555);
    ChildSettings settings = tessaron({"image", "-o", m_tree.path("out/new.iso"), m_tree.path("source")});
    settings.withoutRootRights = true;
    expectFailure(runChild(settings), 1, {"no file can be made in the output's folder", "Permission denied"});
}

TEST_F(ImageFailure, file_shrinksWhileItIsWritten)
{
    expectFailureAfter([this] { EXPECT_EQ(::truncate(m_tree.path("source/c victim").constData(), 70000), 0); },
                       {"c victim"});
}

TEST_F(ImageFailure, file_growsWhileItIsWritten)
{
    expectFailureAfter([this] { EXPECT_EQ(::truncate(m_tree.path("source/c victim").constData(), 2 << 20), 0); },
                       {"c victim"});
}

TEST_F(ImageFailure, file_changesWithinItsSizeWhileItIsWritten)
{
    expectFailureAfter(
        [this] {
            const UniqueDescriptor file(::open(m_tree.path("source/c victim").constData(), O_WRONLY | O_CLOEXEC));
            EXPECT_EQ(::pwrite(file.get(), "changed", 7, 5000), 7);
        },
        {"c victim"});
}

TEST_F(ImageFailure, file_vanishesWhileItIsWritten)
{
    expectFailureAfter([this] { m_tree.remove("source/c victim"); }, {"c victim"});
}

TEST_F(ImageFailure, file_isReplacedWhileItIsWritten)
{
    expectFailureAfter(
        [this] {
            makeBigFile("source/other", 1 << 20);
            EXPECT_EQ(::rename(m_tree.path("source/other").constData(), m_tree.path("source/c victim").constData()), 0);
        },
        {"c victim"});
}

TEST_F(ImageFailure, disk_isFull)
{
    // The limit on a file's size stands for the disk: it strikes in the middle of the writing.
    makeBigFile("source/big", 8 << 20);
    ChildSettings settings = tessaron(imageArguments());
    settings.fileSizeLimit = 3 << 20;
    expectFailure(runChild(settings), 1, {"out/disc.iso"});
}

TEST_F(ImageFailure, disk_isFull_whenOnlySmallFilesAreWritten)
{
    for (int number = 0; number < 40; ++number)
        m_tree.makeFile("source/" + QByteArray::number(number), QByteArray(50000, 'x'));
    ChildSettings settings = tessaron(imageArguments());
    settings.fileSizeLimit = 1 << 20;
    expectFailure(runChild(settings), 1, {"out/disc.iso"});
}

TEST_F(ImageFailure, cueSheetsName_isTooLong)
{
    const QByteArray name = QByteArray(251, 'n');
    const ChildResult result =
        runTessaron({"image", "--format", "bin", "-o", m_tree.path("out/" + name + ".bin"), m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    m_tree.remove("out/" + name + ".bin");
    m_tree.remove("out/" + name + ".cue");
    expectFailure(
        runTessaron({"image", "--format", "bin", "-o", m_tree.path("out/" + name + "long"), m_tree.path("source")}), 1,
        {"cue sheet", "too long"});
}

TEST_F(ImageFailure, sourceDateEpoch_isNoNumber)
{
    ChildSettings settings = tessaron(imageArguments());
    settings.environment = {"SOURCE_DATE_EPOCH=yesterday"};
    expectFailure(runChild(settings), 2, {"SOURCE_DATE_EPOCH", "yesterday"});
}

/// A small filesystem in memory at "small", where the test may mount one.
class SmallDisk : public ImageTest
{
protected:
    SmallDisk()
    {
        m_tree.makeFolder("small");
        m_isMounted = ::mount("tmpfs", m_tree.path("small").constData(), "tmpfs", 0, "size=1m") == 0;
    }
    ~SmallDisk() override
    {
        if (m_isMounted)
            ::umount2(m_tree.path("small").constData(), MNT_DETACH);
    }

    ChildResult makeImage() const
    {
        return runTessaron({"image", "-o", m_tree.path("small/disc.iso"), m_tree.path("source")});
    }

    bool isEmpty() const { return std::filesystem::is_empty(m_tree.path("small").toStdString()); }

    bool m_isMounted = false;
};

TEST_F(SmallDisk, image_fails_whenItCannotFit)
{
    if (!m_isMounted)
        GTEST_SKIP() << "this user may not mount a tmpfs";
    makeBigFile("source/big", 8 << 20);
    const ChildResult result = makeImage();
    EXPECT_EQ(result.exitStatus, 1);
    // Whether this is seen before the disk is full depends on how fast it fills.
    EXPECT_TRUE(result.errors.contains("the disk is too full")
                || (result.errors.contains("is full") && result.errors.contains("small/disc.iso")))
        << result.errors.constData();
    EXPECT_FALSE(result.errors.contains("deleted")) << result.errors.constData();
    EXPECT_TRUE(isEmpty());
}

TEST_F(SmallDisk, image_isMade_whenItFillsMostOfTheDisk)
{
    if (!m_isMounted)
        GTEST_SKIP() << "this user may not mount a tmpfs";
    // What the image has taken already must not count as missing, whenever that is looked at.
    makeBigFile("source/big", 400 << 10);
    for (int run = 0; run < 20; ++run) {
        const ChildResult result = runTessaron(
            {"image", "--filesystems", "iso9660", "-o", m_tree.path("small/disc.iso"), m_tree.path("source")});
        ASSERT_EQ(result.exitStatus, 0) << result.errors.constData();
        m_tree.remove("small/disc.iso");
    }
}

TEST_F(SmallDisk, nothingIsLeft_whenTheDiskFillsUp)
{
    if (!m_isMounted)
        GTEST_SKIP() << "this user may not mount a tmpfs";
    makeManyFiles(1500); // empty but for their records: what they occupy themselves says nothing of the image
    for (int number = 0; number < 1500; ++number)
        ASSERT_EQ(
            ::truncate(m_tree.path("source/" + QByteArray::number(number / 100) + '/' + QByteArray::number(number))
                           .constData(),
                       0),
            0);
    m_tree.makeFile("small/ballast", QByteArray(900000, 'b'));
    const ChildResult result = makeImage();
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("full") || result.errors.contains("No space left")) << result.errors.constData();
    m_tree.remove("small/ballast");
    EXPECT_TRUE(isEmpty());
}

/// Things that cannot be read, and so not be stored.
class ImageIncomplete : public ImageTest
{
protected:
    ImageIncomplete()
    {
        makeOrdinaryTree();
        m_tree.makeFile("source/secret", "secret");
        m_tree.setMode("source/secret", 0);
        m_tree.makeFile("source/closed/inner");
        m_tree.setMode("source/closed", 0);
    }
    ~ImageIncomplete() override { m_tree.setMode("source/closed", 0755); }

    ChildResult makeImage(const QList<QByteArray> &options = {}) const
    {
        ChildSettings settings = tessaron(imageArguments(options));
        settings.withoutRootRights = true;
        return runChild(settings);
    }
};

TEST_F(ImageIncomplete, image_isMadeWithoutWhatCannotBeRead)
{
    const ChildResult result = makeImage();
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(result.errors.contains("source/secret: not stored")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("source/closed")) << result.errors.constData();
    const QByteArray listing = outputOf("isoinfo", {"-R", "-f", "-i", image()});
    EXPECT_TRUE(listing.contains("/readme.txt"));
    EXPECT_FALSE(listing.contains("/secret"));
}

TEST_F(ImageIncomplete, strict_leavesThePlaceAsItWas)
{
    m_tree.makeFile("out/disc.iso", "older image");
    m_tree.setMode("out/disc.iso", 0666);
    const ChildResult result = makeImage({"--strict"});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("source/secret")) << result.errors.constData();
    EXPECT_TRUE(result.errors.contains("Leave --strict out")) << result.errors.constData();
    EXPECT_EQ(outNames(), Names({"disc.iso"}));
    EXPECT_EQ(m_tree.contents("out/disc.iso"), "older image");
}

TEST_F(ImageIncomplete, strict_isContent_whenAllIsStored)
{
    m_tree.remove("source/secret");
    m_tree.setMode("source/closed", 0755);
    const ChildResult result = makeImage({"--strict"});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
}

TEST_F(ImageIncomplete, json_namesWhatIsNotStored)
{
    const ChildResult result = makeImage({"--json", "-q"});
    EXPECT_EQ(result.exitStatus, 3);
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("incomplete"));
    EXPECT_TRUE(object[QStringLiteral("error")].isNull());
    std::set<std::string> lost;
    for (const QJsonValue item : object[QStringLiteral("refused")].toArray()) {
        EXPECT_FALSE(item[QStringLiteral("reason")].toString().isEmpty());
        if (item[QStringLiteral("lost")].toBool())
            lost.insert(item[QStringLiteral("path")].toString().toStdString());
    }
    EXPECT_EQ(lost, Names({"/secret", "/closed"}));
}

} // namespace

} // namespace Tessaron::Testing
