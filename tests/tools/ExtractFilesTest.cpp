#include "tests/tools/ImageFixture.h"

#include <QDir>
#include <QJsonArray>

#include <csignal>
#include <filesystem>
#include <sys/stat.h>

namespace Tessaron::Testing
{

namespace
{

class ExtractFiles : public ImageTest
{
protected:
    void makeImage() const
    {
        const ChildResult made = runTessaron(imageArguments({"-q"}));
        ASSERT_EQ(made.exitStatus, 0) << made.errors.constData();
    }
    /// An image of "source" that another program made, with Rock Ridge alone.
    void makeForeignImage() const { outputOf("genisoimage", {"-quiet", "-r", "-o", image(), m_tree.path("source")}); }
    /// Extracts into "taken" and returns what the command says as JSON.
    QJsonObject extract(const QList<QByteArray> &words = {}, int expectedStatus = 0) const
    {
        const ChildResult result = runTessaron(
            QList<QByteArray>{"extract", "-q", "--json", "--files", "-o", m_tree.path("taken"), image()} + words);
        EXPECT_EQ(result.exitStatus, expectedStatus) << result.errors.constData();
        return jsonOf(result.output);
    }
    /// Every file, folder and link in "taken", by its path.
    [[nodiscard]] std::set<std::string> takenPaths() const
    {
        std::set<std::string> paths;
        const std::filesystem::path taken = m_tree.path("taken").toStdString();
        for (const auto &entry : std::filesystem::recursive_directory_iterator(taken))
            paths.insert(entry.path().lexically_relative(taken).string());
        return paths;
    }
    void expectSameAsSource() const
    {
        EXPECT_EQ(outputOf("diff", {"-r", "--no-dereference", m_tree.path("source"), m_tree.path("taken")}),
                  QByteArray());
    }
    /// The first record of Rock Ridge with this name gets another one of the same length.
    void renameInImage(const QByteArray &name, const QByteArray &other) const
    {
        ASSERT_EQ(name.size(), other.size());
        QByteArray bytes = m_tree.contents("out/disc.iso");
        const QByteArray record = "NM" + QByteArray(1, char(5 + name.size())) + QByteArray("\1\0", 2);
        const qsizetype place = bytes.indexOf(record + name);
        ASSERT_GE(place, 0);
        m_tree.makeFile("out/disc.iso", bytes.replace(place + record.size(), name.size(), other));
    }
};

QStringList pathsOf(const QJsonValue &array)
{
    QStringList paths;
    for (const auto &each : array.toArray())
        paths << each[QStringLiteral("path")].toString();
    return paths;
}

TEST_F(ExtractFiles, everything_isAsItWas_fromEachFilesystem)
{
    makeOrdinaryTree();
    makeImage();
    for (const QByteArray kind : {"rockridge", "joliet", "udf", "hfs+"}) {
        const QJsonObject told = extract({"--filesystem", kind});
        EXPECT_EQ(told[QStringLiteral("filesystem")].toString().toUtf8(), kind);
        EXPECT_EQ(told[QStringLiteral("files")].toInteger(), 4);
        EXPECT_EQ(told[QStringLiteral("folders")].toInteger(), 2);
        EXPECT_EQ(told[QStringLiteral("bytes")].toInteger(), 100108);
        EXPECT_EQ(told[QStringLiteral("renamingCount")].toInteger(), 0);
        expectSameAsSource();
        struct stat status = {};
        ASSERT_EQ(::stat(m_tree.path("taken/readme.txt").constData(), &status), 0);
        EXPECT_EQ(status.st_mtime, 1234567890) << kind.constData();
        std::filesystem::remove_all(m_tree.path("taken").toStdString());
    }
    EXPECT_EQ(extract()[QStringLiteral("filesystem")].toString(), QStringLiteral("rockridge"));
    expectSameAsSource();
    std::filesystem::remove_all(m_tree.path("taken").toStdString());
    extract({"--filesystem", "udf"}); // which has parts of seconds
    EXPECT_EQ(runTessaron({"verify", "-q", image(), m_tree.path("taken")}).exitStatus, 0) << "dates of folders, too";
}

TEST_F(ExtractFiles, plainIso9660_hasTheNamesOfThatTree)
{
    makeOrdinaryTree();
    makeForeignImage();
    extract({"--filesystem", "iso9660", "FOLDER"});
    EXPECT_EQ(takenPaths(), (std::set<std::string>{"FOLDER", "FOLDER/EMPTY", "FOLDER/ONE.TXT", "FOLDER/TWO.TXT"}));
}

TEST_F(ExtractFiles, permissionsAndLinks_areThoseOfTheImage)
{
    m_tree.makeFile("source/bin/run", "#!/bin/sh\n");
    m_tree.setMode("source/bin/run", 0755);
    m_tree.makeFile("source/bin/locked", "x");
    m_tree.setMode("source/bin/locked", 04444);
    m_tree.makeSymbolicLink("source/link", "../elsewhere");
    outputOf("genisoimage", {"-quiet", "-R", "-o", image(), m_tree.path("source")});
    EXPECT_EQ(extract()[QStringLiteral("symbolicLinks")].toInteger(), 1);
    struct stat status = {};
    ASSERT_EQ(::stat(m_tree.path("taken/bin/run").constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0111, 0111u);
    ASSERT_EQ(::stat(m_tree.path("taken/bin/locked").constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644u) << "the user may write, and nothing runs with other rights";
    EXPECT_EQ(std::filesystem::read_symlink(m_tree.path("taken/link").toStdString()), "../elsewhere");
}

TEST_F(ExtractFiles, chosenPaths_comeUnderTheirLastNames)
{
    m_tree.makeFile("source/a/b/deep.txt", "deep");
    m_tree.makeFile("source/a/b/more/x", "x");
    m_tree.makeFile("source/a/other.txt", "other");
    m_tree.makeFile("source/top.txt", "top");
    makeImage();
    const QJsonObject told = extract({"/a//b/", "top.txt"});
    EXPECT_EQ(told[QStringLiteral("files")].toInteger(), 3);
    EXPECT_EQ(takenPaths(), (std::set<std::string>{"b", "b/deep.txt", "b/more", "b/more/x", "top.txt"}));
    EXPECT_EQ(m_tree.contents("taken/b/deep.txt"), "deep");
}

TEST_F(ExtractFiles, pathsThatAreNotThere_areTold)
{
    makeOrdinaryTree();
    makeImage();
    const QJsonObject told = extract({"readme.txt", "README.TXT"}, 3);
    EXPECT_EQ(pathsOf(told[QStringLiteral("failures")]), QStringList{QStringLiteral("README.TXT")});
    EXPECT_EQ(takenPaths(), (std::set<std::string>{"readme.txt"}));
    const QJsonObject none = extract({"nothing"}, 1);
    EXPECT_TRUE(none[QStringLiteral("error")][QStringLiteral("message")].toString().contains(
        QStringLiteral("there is no “nothing” in Rock Ridge")));
}

TEST_F(ExtractFiles, takenNames_areLeftAlone_andOthersGiven)
{
    makeOrdinaryTree();
    makeImage();
    m_tree.makeFile("taken/readme.txt", "mine");
    m_tree.makeFile("elsewhere", "untouched");
    m_tree.makeSymbolicLink("taken/folder", m_tree.path("out"));
    const QJsonObject told = extract();
    EXPECT_EQ(m_tree.contents("taken/readme.txt"), "mine");
    EXPECT_EQ(m_tree.contents("taken/readme 2.txt"), "read me\n");
    EXPECT_EQ(m_tree.contents("taken/folder 2/one.txt"), QByteArray(100, '1'));
    EXPECT_EQ(outNames(), (std::set<std::string>{"disc.iso"})) << "nothing goes through a link";
    EXPECT_EQ(told[QStringLiteral("renamingCount")].toInteger(), 2);
    extract();
    EXPECT_TRUE(m_tree.exists("taken/readme 3.txt"));
}

TEST_F(ExtractFiles, numberedNames_stayWithinWhatAFileMayHave)
{
    // 253 bytes, of which the last character in front of the extension has two.
    const QByteArray name = QByteArray(247, 'n') + "\xC3\xA9.txt";
    m_tree.makeFile("source/" + name, "one");
    m_tree.makeFile("source/.hidden", "two");
    makeForeignImage();
    extract();
    extract();
    EXPECT_EQ(m_tree.contents("taken/" + QByteArray(247, 'n') + "\xC3\xA9 2.txt"), "one");
    EXPECT_EQ(m_tree.contents("taken/.hidden 2"), "two");
    for (int time = 3; time <= 10; ++time)
        extract();
    EXPECT_EQ(m_tree.contents("taken/" + QByteArray(247, 'n') + " 10.txt"), "one") << "no character is cut";
}

TEST_F(ExtractFiles, hostileNames_leadNowhereElse)
{
    m_tree.makeFile("source/aaaaaaa", "up");
    m_tree.makeFile("source/bb/file", "folder");
    m_tree.makeFile("source/ccc", "slash");
    makeForeignImage();
    renameInImage("aaaaaaa", "../evil");
    renameInImage("bb", "..");
    renameInImage("ccc", QByteArray("c\0c", 3));
    EXPECT_GT(extract()[QStringLiteral("renamingCount")].toInteger(), 0);
    EXPECT_FALSE(m_tree.exists("evil"));
    EXPECT_FALSE(m_tree.exists("file"));
    const std::set<std::string> paths = takenPaths();
    for (const std::string &path : paths)
        EXPECT_EQ(path.find(".."), path == ".._evil" ? 0 : std::string::npos) << path;
    EXPECT_TRUE(paths.contains(".._evil"));
}

TEST_F(ExtractFiles, whatCannotBeRead_isTold_andTheRestTaken)
{
    m_tree.makeFile("source/a.txt", "first");
    m_tree.makeFile("source/z.bin", QByteArray(1 << 20, 'z'));
    makeForeignImage();
    // Without the rest of the last file.
    std::filesystem::resize_file(image().toStdString(), std::filesystem::file_size(image().toStdString()) - 900'000);
    const QJsonObject told = extract({}, 3);
    EXPECT_EQ(pathsOf(told[QStringLiteral("failures")]), QStringList{QStringLiteral("z.bin")});
    EXPECT_EQ(takenPaths(), (std::set<std::string>{"a.txt"}));
    EXPECT_EQ(told[QStringLiteral("files")].toInteger(), 1);
}

TEST_F(ExtractFiles, specialFiles_areTold)
{
    m_tree.makeFile("source/a.txt", "first");
    m_tree.makeFifo("source/pipe");
    makeForeignImage();
    const QJsonObject told = extract({}, 3);
    EXPECT_EQ(pathsOf(told[QStringLiteral("failures")]), QStringList{QStringLiteral("pipe")});
    EXPECT_EQ(takenPaths(), (std::set<std::string>{"a.txt"}));
}

TEST_F(ExtractFiles, failures_sayWhy_andLeaveNoFolder)
{
    makeOrdinaryTree();
    makeImage();
    const auto messageOf = [](const QJsonObject &told) {
        return told[QStringLiteral("error")][QStringLiteral("message")].toString();
    };
    m_tree.makeFile("out/empty.iso", QByteArray(1 << 20, '\0'));
    const auto messageFor = [&](const QList<QByteArray> &words) {
        const ChildResult result =
            runTessaron(QList<QByteArray>{"extract", "-q", "--json", "--files", "-o", m_tree.path("taken")} + words);
        EXPECT_EQ(result.exitStatus, 1);
        EXPECT_FALSE(m_tree.exists("taken"));
        return messageOf(jsonOf(result.output));
    };
    EXPECT_TRUE(messageFor({m_tree.path("out/empty.iso")}).contains(QStringLiteral("no filesystem")));
    EXPECT_TRUE(messageFor({m_tree.path("out/gone.iso")}).contains(QStringLiteral("gone.iso")));
    EXPECT_TRUE(messageFor({image(), "--track", "2"}).contains(QStringLiteral("track 2 of")));
    m_tree.makeFile("taken", "a file");
    EXPECT_TRUE(messageOf(extract({}, 1)).contains(QStringLiteral("is not a folder")));
    EXPECT_EQ(m_tree.contents("taken"), "a file");
    m_tree.remove("taken");
    m_tree.makeFolder("taken");
    m_tree.setMode("taken", 0555);
    ChildSettings asOther = tessaron({"extract", "-q", "--json", "--files", "-o", m_tree.path("taken"), image()});
    asOther.withoutRootRights = true;
    const ChildResult refused = runChild(asOther);
    EXPECT_EQ(refused.exitStatus, 1) << refused.errors.constData();
    EXPECT_TRUE(messageOf(jsonOf(refused.output)).contains(QStringLiteral("cannot be written")));
}

TEST_F(ExtractFiles, filesystemOfALaterTrack_isReadByItsNumber)
{
    makeOrdinaryTree();
    makeForeignImage();
    const QByteArray first = m_tree.contents("out/disc.iso");
    m_tree.makeFile("out/disc.bin", QByteArray(2048, '\0') + QByteArray(first.size(), '\0') + first);
    m_tree.makeFile("out/disc.cue",
                    "FILE \"disc.bin\" BINARY\n TRACK 01 MODE1/2048\n  INDEX 01 00:00:00\nFILE \"disc.iso\" BINARY\n"
                    " TRACK 02 MODE1/2048\n  INDEX 01 00:00:00\n");
    const ChildResult result = runTessaron({"extract", "-q", "--json", "--files", "--track", "2", "-o",
                                            m_tree.path("taken"), m_tree.path("out/disc.cue")});
    EXPECT_EQ(result.exitStatus, 0) << result.errors.constData();
    expectSameAsSource();
}

TEST_F(ExtractFiles, interruption_leavesWholeFilesOnly)
{
    m_tree.makeFile("source/a.txt", "whole");
    m_tree.makeSparseFile("source/big.bin", qint64(3) << 30);
    makeImage();
    ChildProcess child(
        tessaron({"extract", "--json", "--progress", "json", "--files", "-o", m_tree.path("taken"), image()}));
    ASSERT_TRUE(child.waitUntil([&] { return child.errorsSoFar().contains("\"writing\""); }));
    child.sendSignal(SIGINT);
    const ChildResult result = child.finish();
    EXPECT_EQ(result.exitStatus, 130) << result.errors.constData();
    EXPECT_EQ(jsonOf(result.output)[QStringLiteral("result")].toString(), QStringLiteral("cancelled"));
    if (m_tree.exists("taken")) {
        EXPECT_TRUE(takenPaths().empty() || takenPaths() == std::set<std::string>{"a.txt"});
    }
}

} // namespace

} // namespace Tessaron::Testing
