#include "tests/tools/VerifyFixture.h"

#include <QJsonArray>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

using Verify = VerifyFixture;

TEST_F(Verify, image_isAsItsSources_onTheOddTree_inEachCombination)
{
    makeSampleTree();
    for (int mask = 1; mask < 16; ++mask) {
        const QList<QByteArray> chosen = filesystemsOfMask(mask);
        SCOPED_TRACE(chosen.join(',').constData());
        makeImage({"--filesystems", chosen.join(',')});
        const QJsonObject object = verified(0);
        EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("done"));
        EXPECT_EQ(object[QStringLiteral("filesystems")].toArray().size(), chosen.size() + (mask & 1));
        EXPECT_EQ(object[QStringLiteral("differenceCount")].toInteger(), 0);
        EXPECT_GT(object[QStringLiteral("bytesCompared")].toInteger(), 3 << 20);
    }
}

TEST_F(Verify, report_saysWhatWasCompared)
{
    makeOrdinaryTree();
    makeImage();
    const ChildResult result = runTessaron({"verify", image(), m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(result.output.contains("HFS+: 4 files, 2 folders: same (names, sizes, contents, times, link targets)"))
        << result.output.constData();
    EXPECT_TRUE(result.output.contains("ISO 9660: 4 files, 2 folders: same (short names by its rules, "));
    EXPECT_TRUE(result.output.contains("the image is as its sources"));
    EXPECT_EQ(runTessaron({"verify", "-q", image(), m_tree.path("source")}).output, "");
}

TEST_F(Verify, severalSources_areComparedSideBySide)
{
    m_tree.makeFile("source/in a.txt", "a");
    m_tree.makeFile("c.txt", "c");
    m_tree.makeSymbolicLink("link", "c.txt");
    const QList<QByteArray> sources = {m_tree.path("source"), m_tree.path("c.txt"), m_tree.path("link")};
    EXPECT_EQ(runTessaron(QList<QByteArray>({"image", "-q", "-o", image()}) + sources).exitStatus, 0);
    EXPECT_EQ(runTessaron(QList<QByteArray>({"verify", image()}) + sources).exitStatus, 0);
    EXPECT_EQ(runTessaron({"verify", image(), sources[0], sources[1]}).exitStatus, 1);
}

TEST_F(Verify, missingAndExtraObjects_areNamedInEveryFilesystem)
{
    makeOrdinaryTree();
    makeImage();
    const QByteArray folder = m_tree.path("source/folder");
    keepTimes(folder, [this] {
        m_tree.makeFile("source/folder/new.txt", "new");
        std::filesystem::remove(m_tree.path("source/folder/one.txt").toStdString());
    });
    const QJsonObject object = verified(1);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("different"));
    EXPECT_EQ(differencesIn(object),
              Words({"missing /folder/new.txt", "extra /folder/one.txt", "extra /folder/ONE.TXT"}));
    EXPECT_EQ(filesystemsIn(object), allViews);
    EXPECT_EQ(object[QStringLiteral("differenceCount")].toInteger(), 10);
}

TEST_F(Verify, filesystems_areThoseThatWereAskedFor)
{
    makeOrdinaryTree();
    makeImage({"--filesystems", "iso9660,udf"});
    const auto status = [this](const QByteArray &filesystems) {
        return runTessaron({"verify", "--filesystems", filesystems, image(), m_tree.path("source")});
    };
    EXPECT_EQ(status("udf,iso9660").exitStatus, 0);
    const ChildResult more = status("iso9660,udf,hfs+");
    EXPECT_EQ(more.exitStatus, 1);
    EXPECT_TRUE(more.errors.contains("HFS+: /: the image does not have this filesystem")) << more.errors.constData();
    const ChildResult fewer = status("udf");
    EXPECT_EQ(fewer.exitStatus, 1);
    EXPECT_TRUE(fewer.errors.contains("ISO 9660: /: the image has this filesystem, which was not asked for"));
}

TEST_F(Verify, changedSources_areFound)
{
    makeOrdinaryTree();
    m_tree.makeSymbolicLink("source/link", "readme.txt");
    m_tree.makeFile("source/swap", "x");
    makeImage();
    const QByteArray root = m_tree.path("source");
    keepTimes(m_tree.path("source/readme.txt"), [this] { m_tree.makeFile("source/readme.txt", "rEad me\n"); });
    keepTimes(m_tree.path("source/folder/one.txt"), [this] { m_tree.makeFile("source/folder/one.txt", "short"); });
    m_tree.setModificationTime("source/folder/empty", 1234567890);
    std::filesystem::remove(m_tree.path("source/link").toStdString());
    m_tree.makeSymbolicLink("source/link", "folder");
    std::filesystem::remove(m_tree.path("source/swap").toStdString());
    m_tree.makeFolder("source/swap");
    Words differences = differencesIn(verified(1));
    differences.erase("time /link");
    EXPECT_EQ(differences,
              Words({"contents /readme.txt", "size /folder/one.txt", "time /folder/empty", "link-target /link",
                     "type /swap"}));
}

TEST_F(Verify, namesThatCollideOnDisc_areMatchedByTheirContents)
{
    for (const char *const name : {"a?.txt", "a*.txt", "a_.txt", "A_.TXT", "a:.txt", "b?", "b_", "b*"})
        m_tree.makeFile(QByteArray("source/") + name, QByteArray("contents of ") + name);
    for (const char *const name : {"d?/x", "d*/y", "d_/z", "D_/same", "empty?", "empty*", "empty_"})
        m_tree.makeFile(QByteArray("source/") + name, QByteArray(name).startsWith("empty") ? "" : name);
    for (const QByteArray filesystems : {"iso9660,joliet,udf,hfs+", "iso9660", "udf,joliet", "joliet", "hfs+"}) {
        SCOPED_TRACE(filesystems.constData());
        makeImage({"--filesystems", filesystems});
        EXPECT_EQ(differencesIn(verified(0)), Words());
    }
}

TEST_F(Verify, nameOfALinkThatWasLeftOut_mayBeANeighbours)
{
    m_tree.makeFile("source/a*", "first of this name");
    m_tree.makeFile("source/a?/in the folder", "which is numbered, and so gets the name of the link");
    m_tree.makeSymbolicLink("source/a__1", "a*");
    for (const QByteArray filesystems : {"joliet", "iso9660,joliet,udf,hfs+"}) {
        makeImage({"--filesystems", filesystems});
        EXPECT_EQ(differencesIn(verified(0)), Words());
    }
}

TEST_F(Verify, hardLinksAndBytesThatAreNoText_areCompared)
{
    m_tree.makeFile("source/one \xe4\xff.bin", QByteArray(5000, 'x'));
    m_tree.makeHardLink("source/two", "source/one \xe4\xff.bin");
    m_tree.makeFile("source/Grüße/日本語", "text");
    m_tree.makeSymbolicLink("source/to nowhere", "//a///b/");
    makeImage();
    const QJsonObject object = verified(0);
    EXPECT_EQ(object[QStringLiteral("bytesCompared")].toInteger(), 5000 + 4);
}

TEST_F(Verify, namesThatHaveToChange_areKnownAgain)
{
    m_tree.makeFile("source/\xEF\xBF\xBF", "not a character");
    m_tree.makeFile("source/\xEF\xBB\xBFmarked", "begins with a byte order mark");
    m_tree.makeFile("source/" + QByteArray("\xC7\x95").repeated(127), "longer when decomposed");
    m_tree.makeFile("source/links/hard", "one file");
    m_tree.makeHardLink("source/links/hard2", "source/links/hard");
    m_tree.makeHardLink("source/links/hard 3", "source/links/hard");
    makeImage();
    (void)verified(0);
}

TEST_F(Verify, foldersWithADot_areKnownByTheirPlainNames)
{
    m_tree.makeFile("source/conf.d/a", "a");
    m_tree.makeFile("source/conf_d/b", "b");
    m_tree.makeFile("source/name./c", "c");
    makeImage();
    (void)verified(0);
}

TEST_F(Verify, deepFolders_areNoLoop)
{
    // Made step by step: the whole path is longer than the system takes at once.
    const int levels = 1200;
    const QByteArray name = "folder";
    int folder = ::open(m_tree.path("source").constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < levels; ++level) {
        ASSERT_EQ(::mkdirat(folder, name.constData(), 0755), 0);
        const int next = ::openat(folder, name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(folder);
        folder = next;
    }
    ::close(folder);
    makeImage();
    EXPECT_EQ(verified(0)[QStringLiteral("folders")].toInteger(), levels);
    EXPECT_EQ(runTessaron({"inspect", image()}).exitStatus, 0);
}

/// Processor time of the children so far, in seconds.
double secondsOfChildren()
{
    struct rusage usage = {};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void makeChain(const QByteArray &top, int levels)
{
    int folder = ::open(top.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < levels; ++level) {
        ASSERT_EQ(::mkdirat(folder, "f", 0755), 0);
        const int next = ::openat(folder, "f", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(folder);
        folder = next;
    }
    ::close(folder);
}

/// No path leads there in one step; names relative to the working folder do.
TEST_F(Verify, workingFolderBeyondTheLongestPath_isNoObstacle)
{
    const QByteArray folder(200, 'n');
    const QByteArray enter = "for i in $(seq 30); do cd " + folder + " || exit 9; done; ";
    const QByteArray make = "for i in $(seq 30); do mkdir " + folder + " && cd " + folder
        + " || exit 9; done; mkdir below && echo 1 > below/file; ";
    const QByteArray source = m_tree.path("source");
    outputOf("bash", {"-c", make}, source);
    const QByteArray program = tessaron({}).program;
    outputOf("bash", {"-c", enter + "exec \"$@\"", "bash", program, "image", "-q", "-o", image(), "."}, source);
    outputOf("bash", {"-c", enter + "exec \"$@\"", "bash", program, "verify", "-q", image(), "."}, source);
    EXPECT_TRUE(outputOf("isoinfo", {"-R", "-f", "-i", image()}).contains("/below/file"));
    // A whole path is refused in words that tell the way.
    const QByteArray path = source + ('/' + folder).repeated(30);
    for (const QByteArray command : {"image", "verify", "scan"}) {
        QList<QByteArray> words = {command};
        if (command != "scan")
            words += command == "image" ? QList<QByteArray>({"-o", image()}) : QList<QByteArray>({image()});
        const ChildResult result = runTessaron(words + QList<QByteArray>({path}));
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_TRUE(result.errors.contains("and the system takes 4095 at most")) << result.errors.constData();
        EXPECT_TRUE(result.errors.contains("Go into a folder on its way")) << result.errors.constData();
    }
    outputOf("rm", {"-rf", source});
}

TEST_F(Verify, deepTrees_takeTimeInProportionToTheirDepth)
{
    constexpr int levels = 800;
    double image[2] = {};
    double verify[2] = {};
    for (const int round : {0, 1}) {
        makeChain(m_tree.path("source"), levels * (1 + 3 * round));
        double start = secondsOfChildren();
        makeImage();
        image[round] = secondsOfChildren() - start;
        start = secondsOfChildren();
        (void)verified(0);
        verify[round] = secondsOfChildren() - start;
        outputOf("rm", {"-rf", m_tree.path("source/f")});
    }
    // Four times as deep: by its square the time would grow by sixteen.
    EXPECT_LT(image[1], 10 * std::max(image[0], 0.02));
    EXPECT_LT(verify[1], 10 * std::max(verify[0], 0.02));
}

TEST_F(Verify, relocatedFolders_areWhereTheyBelong)
{
    // The names that others are moved to are taken as well: by a file, by a folder, in another case.
    for (const QByteArray taken : {"", "rr_moved", "RR_MOVED", "rr_moved/own", ".rr_moved/own/file", "_rr_moved"}) {
        SCOPED_TRACE(taken.constData());
        std::filesystem::remove_all(m_tree.path("source").toStdString());
        m_tree.makeFile("source/" + QByteArray("folder/").repeated(20) + "file", "deep");
        m_tree.makeFile("source/" + QByteArray("own/").repeated(20) + "file", "another");
        if (!taken.isEmpty())
            m_tree.makeFile("source/" + taken, "taken");
        for (const QByteArray filesystems : {"iso9660", "iso9660,joliet,udf,hfs+"}) {
            makeImage({"--relocate", "--filesystems", filesystems});
            EXPECT_EQ(differencesIn(verified(0)), Words());
            EXPECT_EQ(runTessaron({"inspect", image()}).exitStatus, 0);
        }
    }
}

TEST_F(Verify, oddLinkTargets_areComparedAsEachFilesystemRecordsThem)
{
    m_tree.makeSymbolicLink("source/long", QByteArray(255, 'l') + "/" + QByteArray(255, 'm') + ".txt");
    m_tree.makeSymbolicLink("source/mark",
                            "a/\xEF\xBB\xBF"
                            "b");
    m_tree.makeSymbolicLink("source/bytes", "e\xCC\x81\xFF");
    m_tree.makeSymbolicLink("source/many", QByteArray("a/").repeated(400));
    m_tree.makeFile("source/e\xCC\x81\xFF", "decomposed, with a byte that is not text");
    makeImage();
    (void)verified(0);
}

TEST_F(Verify, linkTargetOfOtherLength_isADifference_whateverItsBytes)
{
    m_tree.makeSymbolicLink("source/link", "a\xFF");
    makeImage({"--filesystems", "udf"});
    keepTimes(m_tree.path("source"), [this] {
        m_tree.remove("source/link");
        m_tree.makeSymbolicLink("source/link", "b\xFF");
    });
    EXPECT_TRUE(differencesIn(verified(1)).contains("link-target /link"));
}

TEST_F(Verify, unrelatedNames_areToldQuickly)
{
    const int count = 4000;
    for (int number = 0; number < count; ++number)
        m_tree.makeFile("source/image?" + QByteArray::number(number), "i");
    makeImage();
    for (int number = 0; number < count; ++number) {
        const QByteArray name = QByteArray::number(number);
        ASSERT_EQ(::rename(m_tree.path("source/image?" + name).constData(),
                           m_tree.path("source/name?of?another" + name).constData()),
                  0);
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_GE(verified(1)[QStringLiteral("differenceCount")].toInteger(), count * 5 * 2);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)); // it takes a fraction of one
}

TEST_F(Verify, latestTime_isThatOfSourceDateEpoch_whenItIsANumber)
{
    makeOrdinaryTree();
    makeImage();
    const auto statusWith = [this](const char *variable) {
        ChildSettings settings = tessaron({"verify", "-q", image(), m_tree.path("source")});
        settings.environment = {variable};
        return runChild(settings).exitStatus;
    };
    EXPECT_EQ(statusWith("SOURCE_DATE_EPOCH=5"), 1) << "the sources are of 1970 then, and the image is not";
    EXPECT_EQ(statusWith("SOURCE_DATE_EPOCH= 5"), 0) << "which no image is made with";
}

TEST_F(Verify, unreadableSource_isAFailure)
{
    makeOrdinaryTree();
    makeImage();
    m_tree.setMode("source/readme.txt", 0);
    ChildSettings settings = tessaron({"verify", image(), m_tree.path("source")});
    settings.withoutRootRights = true;
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("sources: /readme.txt: the source cannot be read: Permission denied"))
        << result.errors.constData();
    const ChildResult missing = runTessaron({"verify", image(), m_tree.path("missing")});
    EXPECT_EQ(missing.exitStatus, 1);
    EXPECT_TRUE(missing.errors.contains("there is no file or folder")) << missing.errors.constData();
    EXPECT_EQ(runTessaron({"verify", image()}).exitStatus, 2);
}

TEST_F(Verify, signal_endsTheRun_withItsStatus)
{
    m_tree.makeSparseFile("source/big", qint64(6) << 30);
    makeImage({"--filesystems", "udf"});
    ChildProcess process(tessaron({"verify", "--json", "--progress", "json", image(), m_tree.path("source")}));
    ASSERT_TRUE(process.waitUntil([&process] { return process.errorsSoFar().contains("\"secondsLeft\""); }));
    process.sendSignal(SIGTERM);
    const ChildResult result = process.finish();
    EXPECT_EQ(result.exitStatus, 130);
    EXPECT_EQ(jsonOf(result.output)[QStringLiteral("result")].toString(), QStringLiteral("cancelled"));
    EXPECT_FALSE(result.errors.contains("\"done\"")) << result.errors.constData();
}

TEST_F(Verify, vantAndBinImages_areReadLikeTheOthers)
{
    makeOrdinaryTree();
    for (const QByteArray name : {"out/disc.vant", "out/disc.bin"}) {
        EXPECT_EQ(runTessaron({"image", "-q", "-o", m_tree.path(name), m_tree.path("source")}).exitStatus, 0);
        EXPECT_EQ(runTessaron({"verify", "-q", m_tree.path(name), m_tree.path("source")}).exitStatus, 0);
    }
    EXPECT_EQ(runTessaron({"verify", "-q", m_tree.path("out/disc.cue"), m_tree.path("source")}).exitStatus, 0);
}

TEST_F(Verify, imagesOfOtherPrograms_areAsTheirSources)
{
    makeOrdinaryTree();
    m_tree.makeFile("source/a/b/c/d/e/f/g/h/i/j/deep.txt", "deep");
    m_tree.makeFile("source/" + QByteArray(100, 'n') + ".txt", "long");
    m_tree.makeSymbolicLink("source/link", "../up/./and/" + QByteArray(300, 'l'));
    const QByteArray source = m_tree.path("source");
    outputOf("genisoimage", {"-quiet", "-R", "-J", "-joliet-long", "-o", image(), source});
    EXPECT_EQ(differencesIn(verified(0)), Words());
}

TEST_F(Verify, hybridImageOfAnotherProgram_isAsItsSources)
{
    makeOrdinaryTree();
    m_tree.makeFile("source/Grüße", "hello");
    m_tree.makeSymbolicLink("source/link", "../up");
    outputOf("xorriso", {"-as", "mkisofs", "-quiet", "-R", "-J", "-hfsplus", "-o", image(), m_tree.path("source")});
    EXPECT_EQ(differencesIn(verified(0)), Words());
}

} // namespace

} // namespace Tessaron::Testing
