#include "tests/tools/ImageFixture.h"

#include <QJsonArray>

#include <unistd.h>

namespace Tessaron::Testing
{

namespace
{

using Names = std::set<std::string>;

/// What the command prints where.
class CommandOutput : public ImageTest
{
};

Names keysOf(const QJsonObject &object)
{
    Names result;
    for (const QString &key : object.keys())
        result.insert(key.toStdString());
    return result;
}

TEST_F(CommandOutput, help_goesToStandardOutput)
{
    for (const QList<QByteArray> &arguments :
         {QList<QByteArray>({"--help"}), QList<QByteArray>({"image", "--help"}), QList<QByteArray>({"scan", "-h"})}) {
        const ChildResult result = runTessaron(arguments);
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_TRUE(result.output.startsWith("Usage: tessaron"));
        EXPECT_TRUE(result.output.contains("Examples:"));
        EXPECT_EQ(result.errors, "");
    }
}

TEST_F(CommandOutput, scan_listsEverything_whenVerbose)
{
    m_tree.makeFile("source/b/c/deep");
    m_tree.makeFile("source/a\nline");
    m_tree.makeSymbolicLink("source/link", "nowhere");
    const QByteArray source = m_tree.path("source");
    const ChildResult result = runTessaron({"scan", "-v", source});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QList<QByteArray> lines = result.output.trimmed().split('\n');
    EXPECT_EQ(lines.first(), source);
    EXPECT_TRUE(lines.last().startsWith(source + ": 3 files, 2 folders")) << result.output.constData();
    EXPECT_EQ(lines.size(), 7) << result.output.constData();
    for (const char *const path : {"/b", "/b/c", "/b/c/deep", "/link"})
        EXPECT_TRUE(lines.contains(source + path)) << path << result.output.constData();
    EXPECT_LT(lines.indexOf(source + "/b"), lines.indexOf(source + "/b/c"));
    EXPECT_EQ(runTessaron({"scan", "-q", source}).output, "");
}

TEST_F(CommandOutput, scan_listsFilesOfAnyDepth_whenVerbose)
{
    QByteArray deep = "source";
    for (int level = 0; level < 30; ++level)
        deep += '/' + QByteArray(100, 'd');
    m_tree.makeFile(deep + "/file");
    const ChildResult result = runTessaron({"scan", "-v", m_tree.path("source")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    EXPECT_TRUE(result.output.contains('\n' + m_tree.path(deep + "/file") + '\n')) << result.output.constData();
    EXPECT_FALSE(result.output.contains("/\n")) << "every line has a name";
}

TEST_F(CommandOutput, lackOfDescriptors_isToldOnce_withWhatToDo)
{
    if (!runsWithoutDescriptors)
        GTEST_SKIP() << "the sanitizer looks at objects through a pipe, for which there are no descriptors here";
    makeOrdinaryTree();
    ASSERT_EQ(runTessaron(imageArguments({"-q", "--no-sync"})).exitStatus, 0);
    m_tree.makeFile("out/disc.bin", m_tree.contents("out/disc.iso"));
    m_tree.makeFile("out/disc.cue", "FILE \"disc.bin\" BINARY\n TRACK 01 MODE1/2048\n  INDEX 01 00:00:00\n");
    const QByteArray sheet = m_tree.path("out/disc.cue");
    for (const QList<QByteArray> &words :
         {QList<QByteArray>{"verify", "--json", image(), m_tree.path("source")},
          {"inspect", "--json", m_tree.path("out/disc.bin")},
          {"inspect", "--json", sheet},
          {"tracks", "--json", m_tree.path("out/disc.bin")},
          {"scan", "--json", m_tree.path("source")},
          {"extract", "--json", "-q", "--track", "1", "-o", m_tree.path("out/taken.iso"), sheet}}) {
        runTessaronWithEverMoreDescriptors(words, [&](const ChildResult &result, quint64 limit) {
            const std::string where = words.first().toStdString() + ' ' + std::to_string(limit);
            EXPECT_EQ(result.errors.count("oo many"), 1) << where << '\n' << result.errors.constData();
            EXPECT_EQ(result.errors.count("(ulimit -n)"), 1) << where << '\n' << result.errors.constData();
            const QJsonObject report = jsonOf(result.output);
            EXPECT_EQ(report[QStringLiteral("differenceCount")].toInteger(), 0) << where;
            EXPECT_EQ(report[QStringLiteral("problemCount")].toInteger(), 0) << where;
            EXPECT_FALSE(m_tree.exists("out/taken.iso")) << where;
        });
    }
}

TEST_F(CommandOutput, version_isOneLine)
{
    const ChildResult result = runTessaron({"--version"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "tessaron " TESSARON_VERSION "\n");
}

TEST_F(CommandOutput, commandsWithoutSound_loadNoneOfFFmpegsLibraries)
{
    makeOrdinaryTree();
    for (const QList<QByteArray> &arguments : {QList<QByteArray>({"--version"}), imageArguments()}) {
        ChildSettings settings = tessaron(arguments);
        settings.environment.append("LD_DEBUG=files"); // the loader says what it loads
        const ChildResult result = runChild(settings);
        EXPECT_EQ(result.exitStatus, 0);
        EXPECT_TRUE(result.errors.contains("libTessaronClasses.so"));
        for (const char *library : {"libavformat", "libavcodec", "libavutil", "libswresample", "TessaronMedia"})
            EXPECT_FALSE(result.errors.contains(library)) << library;
    }
}

TEST_F(CommandOutput, image_printsItsSummaryOnStandardError)
{
    makeOrdinaryTree();
    const ChildResult result = runTessaron(imageArguments());
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.errors.contains("4 files, 2 folders")) << result.errors.constData();
    EXPECT_FALSE(result.errors.contains('\x1b'));
    EXPECT_FALSE(result.errors.contains('\r'));
    EXPECT_EQ(result.errors.count('\n'), 1) << result.errors.constData();
}

TEST_F(CommandOutput, image_isSilent_whenQuiet)
{
    makeOrdinaryTree();
    const ChildResult result = runTessaron(imageArguments({"-q"}));
    EXPECT_EQ(result.output + result.errors, "");
}

TEST_F(CommandOutput, imageJson_hasEveryMember)
{
    makeOrdinaryTree();
    const ChildResult result = runTessaron(imageArguments({"--json"}));
    EXPECT_EQ(result.exitStatus, 0);
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(keysOf(object),
              Names({"version", "command", "result", "output", "format", "volumeName", "bytes", "files", "folders",
                     "seconds", "renamed", "refused", "altered", "renamedCounts", "unreadable", "error"}));
    EXPECT_EQ(object[QStringLiteral("version")].toInteger(), 1);
    EXPECT_EQ(object[QStringLiteral("command")].toString(), QStringLiteral("image"));
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("done"));
    EXPECT_EQ(object[QStringLiteral("output")].toString().toUtf8(), image());
    EXPECT_EQ(object[QStringLiteral("format")].toString(), QStringLiteral("iso"));
    EXPECT_EQ(object[QStringLiteral("bytes")].toInteger(), m_tree.contents("out/disc.iso").size());
    EXPECT_EQ(object[QStringLiteral("files")].toInteger(), 4);
    EXPECT_EQ(object[QStringLiteral("folders")].toInteger(), 2);
    EXPECT_TRUE(object[QStringLiteral("error")].isNull());
    for (const char *const list : {"renamed", "refused", "altered", "unreadable"})
        EXPECT_TRUE(object[QString::fromUtf8(list)].isArray()) << list;
}

TEST_F(CommandOutput, imageJson_listsWhatJolietChanges)
{
    m_tree.makeFile("source/question?.txt");
    m_tree.makeFile("source/bad\xff.txt");
    m_tree.makeSymbolicLink("source/link", "nowhere");
    const ChildResult result = runTessaron(imageArguments({"--json"}));
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    const QJsonObject object = jsonOf(result.output);
    Names renamed;
    Names trees;
    for (const QJsonValue item : object[QStringLiteral("renamed")].toArray()) {
        trees.insert(item[QStringLiteral("filesystem")].toString().toStdString());
        if (item[QStringLiteral("filesystem")].toString() != QStringLiteral("joliet"))
            continue;
        EXPECT_FALSE(item[QStringLiteral("lost")].toBool());
        EXPECT_FALSE(item[QStringLiteral("name")].toString().isEmpty());
        renamed.insert(item[QStringLiteral("path")].toString().toStdString());
        if (item[QStringLiteral("path")].toString().startsWith(QStringLiteral("/bad"))) {
            EXPECT_EQ(item[QStringLiteral("pathBytes")].toString(), QStringLiteral("/bad%FF.txt"));
        }
    }
    EXPECT_EQ(renamed, Names({"/question?.txt", "/bad\ufffd.txt"}));
    EXPECT_EQ(trees, Names({"joliet", "udf", "hfs+"})); // the bytes that are not UTF-8
    Names refused;
    for (const QJsonValue item : object[QStringLiteral("refused")].toArray()) {
        EXPECT_FALSE(item[QStringLiteral("lost")].toBool());
        if (item[QStringLiteral("filesystem")].toString() == QStringLiteral("joliet"))
            refused.insert(item[QStringLiteral("path")].toString().toStdString());
    }
    EXPECT_EQ(refused, Names({"/link"}));
    EXPECT_GE(object[QStringLiteral("renamedCounts")][QStringLiteral("iso9660")].toInteger(), 2);
}

TEST_F(CommandOutput, imageJson_hasAnErrorObject_afterAFailure)
{
    const ChildResult missing = runTessaron({"image", "--json", "-o", image(), m_tree.path("missing\xff")});
    EXPECT_EQ(missing.exitStatus, 1);
    const QJsonObject object = jsonOf(missing.output);
    EXPECT_EQ(object[QStringLiteral("result")].toString(), QStringLiteral("failed"));
    const QJsonValue error = object[QStringLiteral("error")];
    EXPECT_EQ(error[QStringLiteral("kind")].toString(), QStringLiteral("source"));
    EXPECT_TRUE(error[QStringLiteral("pathBytes")].toString().endsWith(QStringLiteral("missing%FF")));
    const ChildResult wrong = runTessaron({"image", "--json"});
    EXPECT_EQ(wrong.exitStatus, 2);
    EXPECT_EQ(jsonOf(wrong.output)[QStringLiteral("error")][QStringLiteral("kind")].toString(),
              QStringLiteral("usage"));
}

TEST_F(CommandOutput, progressJson_goesFromNothingToAll)
{
    makeOrdinaryTree();
    makeBigFile("source/big", 64 << 20);
    const ChildResult result = runTessaron(imageArguments({"--progress", "json", "-q"}));
    EXPECT_EQ(result.exitStatus, 0);
    const std::vector<QJsonObject> lines = jsonLinesOf(result.errors);
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(qsizetype(lines.size()), result.errors.count('\n'));
    double percent = 0;
    qint64 bytes = 0;
    QStringList phases;
    for (const QJsonObject &line : lines) {
        EXPECT_GE(line[QStringLiteral("percent")].toDouble(), percent);
        percent = line[QStringLiteral("percent")].toDouble();
        EXPECT_GE(line[QStringLiteral("bytesWritten")].toInteger(), bytes);
        bytes = line[QStringLiteral("bytesWritten")].toInteger();
        if (phases.isEmpty() || phases.last() != line[QStringLiteral("phase")].toString())
            phases += line[QStringLiteral("phase")].toString();
    }
    EXPECT_EQ(phases.first(), QStringLiteral("scanning"));
    EXPECT_EQ(phases.last(), QStringLiteral("done"));
    EXPECT_EQ(phases.removeDuplicates(), 0); // no phase comes back
    EXPECT_EQ(percent, 100);
    EXPECT_EQ(bytes, lines.back()[QStringLiteral("bytesTotal")].toInteger());
    EXPECT_EQ(lines.back()[QStringLiteral("files")].toInteger(), 5);
}

TEST_F(CommandOutput, progressJson_neverSaysAll_afterAFailure)
{
    makeBigFile("source/big", 8 << 20);
    ChildSettings settings = tessaron(imageArguments({"--progress", "json"}));
    settings.fileSizeLimit = 3 << 20;
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 1);
    for (const QJsonObject &line : jsonLinesOf(result.errors))
        EXPECT_LT(line[QStringLiteral("percent")].toDouble(), 100);
}

TEST_F(CommandOutput, progressBar_hasNoControlSequences_offATerminal)
{
    makeOrdinaryTree();
    const ChildResult result = runTessaron(imageArguments({"--progress", "bar"}));
    EXPECT_TRUE(result.errors.contains('\r'));
    EXPECT_FALSE(result.errors.contains('\x1b'));
}

TEST_F(CommandOutput, namesStayAsTheyAre_withoutALocale)
{
    makeOrdinaryTree();
    m_tree.makeFile("source/Gr\xC3\xBC\xC3\x9F"
                    "e \xE6\x97\xA5",
                    "text");
    m_tree.makeFile("source/\xE4\xFF", "bytes that are not text");
    const auto runBare = [](const QList<QByteArray> &words) {
        ChildSettings settings;
        settings.program = "env";
        settings.arguments = QList<QByteArray>({"-i", TESSARON_PROGRAM}) + words;
        return runChild(settings);
    };
    const ChildResult made = runBare(imageArguments({"-v"}));
    EXPECT_EQ(made.exitStatus, 0) << made.errors.constData();
    EXPECT_FALSE(made.errors.contains("locale")) << made.errors.constData();
    EXPECT_TRUE(runTessaron({"verify", "-q", image(), m_tree.path("source")}).exitStatus == 0);
    const ChildResult verified = runBare({"verify", image(), m_tree.path("source")});
    EXPECT_EQ(verified.exitStatus, 0) << verified.errors.constData();
    m_tree.remove("source/Gr\xC3\xBC\xC3\x9F"
                  "e \xE6\x97\xA5");
    const ChildResult different = runBare({"verify", image(), m_tree.path("source")});
    EXPECT_EQ(different.exitStatus, 1);
    EXPECT_TRUE(different.errors.contains("/Gr\xC3\xBC\xC3\x9F"
                                          "e \xE6\x97\xA5: "))
        << different.errors.constData();
}

TEST_F(CommandOutput, progressBar_isShownOnATerminal)
{
    makeOrdinaryTree();
    ChildSettings settings;
    settings.program = "script"; // runs a command with a terminal of its own
    settings.arguments = {"-qec", "true", "/dev/null"};
    if (runChild(settings).exitStatus != 0)
        GTEST_SKIP() << "this system gives no terminals, as in a bare chroot";
    settings.arguments = {"-qec", TESSARON_PROGRAM " image -o out/disc.iso source", "/dev/null"};
    settings.folder = m_tree.path();
    settings.environment = {"TERM=xterm"};
    const QByteArray seen = runChild(settings).output;
    EXPECT_TRUE(seen.contains("\rScanning: ")) << seen.constData();
    EXPECT_TRUE(seen.contains("\x1b[K")) << seen.constData();
    settings.environment = {"TERM=dumb"};
    EXPECT_FALSE(runChild(settings).output.contains('\x1b'));
}

TEST_F(CommandOutput, report_cannotBeWritten_isAFailure)
{
    makeOrdinaryTree();
    ChildSettings scan = tessaron({"scan", m_tree.path("source")});
    scan.standardOutput = "/dev/full";
    EXPECT_EQ(runChild(scan).exitStatus, 1);
    scan.standardOutput = "";
    EXPECT_EQ(runChild(scan).exitStatus, 1);
    scan.standardOutput.reset();
    scan.outputToBrokenPipe = true;
    EXPECT_EQ(runChild(scan).exitStatus, 1);

    ChildSettings image = tessaron(imageArguments({"--json"}));
    image.standardOutput = "";
    const ChildResult result = runChild(image);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_TRUE(result.errors.contains("cannot be written to standard output")) << result.errors.constData();
    // The image stands, and the report has not gone into it.
    EXPECT_EQ(m_tree.contents("out/disc.iso").size() % 2048, 0);
    EXPECT_FALSE(m_tree.contents("out/disc.iso").contains("\"version\":1"));
}

TEST_F(CommandOutput, scan_countsWhatIsThere)
{
    makeOrdinaryTree();
    m_tree.makeFile("other", "x");
    ChildSettings settings = tessaron({"scan", "source"});
    settings.folder = m_tree.path();
    ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(result.output.startsWith("source: 4 files, 2 folders, ")) << result.output.constData();
    EXPECT_EQ(result.errors, "");
    settings.arguments += "other";
    result = runChild(settings);
    EXPECT_TRUE(result.output.contains("\nother: 1 file, 0 folders, ")) << result.output.constData();
    EXPECT_TRUE(result.output.contains("\ntotal: 5 files, 2 folders, ")) << result.output.constData();
}

TEST_F(CommandOutput, scanJson_hasEveryMember)
{
    makeOrdinaryTree();
    const ChildResult result = runTessaron({"scan", "--json", m_tree.path("source")});
    const QJsonObject object = jsonOf(result.output);
    EXPECT_EQ(keysOf(object),
              Names({"version", "command", "result", "files", "folders", "sizeOnDisk", "seconds", "sources",
                     "unreadable", "error"}));
    EXPECT_EQ(object[QStringLiteral("files")].toInteger(), 4);
    EXPECT_EQ(object[QStringLiteral("folders")].toInteger(), 2);
    EXPECT_GE(object[QStringLiteral("sizeOnDisk")].toInteger(), 100000);
    EXPECT_EQ(object[QStringLiteral("sources")].toArray().size(), 1);
}

TEST_F(CommandOutput, scan_namesUnreadableFolders)
{
    makeOrdinaryTree();
    m_tree.makeFolder("source/closed");
    m_tree.setMode("source/closed", 0);
    ChildSettings settings = tessaron({"scan", m_tree.path("source")});
    settings.withoutRootRights = true;
    const ChildResult result = runChild(settings);
    EXPECT_EQ(result.exitStatus, 3);
    EXPECT_TRUE(result.errors.contains("source/closed” cannot be listed: Permission denied"))
        << result.errors.constData();
    EXPECT_TRUE(result.output.contains("4 files, 3 folders")) << result.output.constData();
    m_tree.setMode("source/closed", 0755);
}

TEST_F(CommandOutput, scan_fails_whenThePathIsMissing)
{
    const ChildResult result = runTessaron({"scan", m_tree.path("missing")});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.errors.contains("there is no file or folder"));
}

} // namespace

} // namespace Tessaron::Testing
