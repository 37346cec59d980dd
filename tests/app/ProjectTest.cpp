#include "app/AtomicFile.h"
#include "app/DataProject.h"
#include "app/ProjectFile.h"
#include "app/ProjectKeeper.h"

#include "tests/app/Nodes.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRFileReference.h>

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <gtest/gtest.h>
#include <optional>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class ProjectTest : public testing::Test
{
protected:
    ProjectTest()
    {
        tree.makeFile("data/photos/beach.jpg", QByteArray(3000, 'b'));
        tree.makeFile("data/letter.txt", "Dear reader,\n");
        tree.makeFile("data/bad\xFF name", "bytes");
        addTo(document, {tree.path("data/photos"), tree.path("data/letter.txt"), tree.path("data/bad\xFF name")});
        EXPECT_EQ(document.rename(*nodeAt(document, QStringLiteral("/letter.txt")), QStringLiteral("note.md")),
                  QString());
        DiscNode &folder = document.addFolder(document.model().root());
        EXPECT_EQ(document.rename(folder, QStringLiteral("mine")), QString());
        EXPECT_EQ(document.move({nodeAt(document, QStringLiteral("/note.md"))}, folder), QStringList());
        _TessaronAttributes options = TessaronFileAttributesNone_fct();
        options.invisible = 1;
        options.useBasicFSInclusion = 0;
        options.hasAdvancedFSInclusion = 1;
        options.advancedFSInclusion = 5;
        document.setOptions({nodeAt(document, QStringLiteral("/photos"))}, options);
        document.setVolumeName(QStringLiteral("Summer"));
    }

    [[nodiscard]] NSError save(const QByteArray &name)
    {
        std::optional<NSError> ended;
        keeper.save(tree.path(name), [&ended](const NSError &error) { ended = error; });
        EXPECT_TRUE(runEventLoopUntil([&ended] { return ended.has_value(); }));
        return ended.value_or(NSError());
    }

    /// Opens a project as another run of the program does.
    [[nodiscard]] NSError open(const QByteArray &name)
    {
        std::optional<NSError> ended;
        const QByteArray path = tree.path(name);
        const Result<QJsonObject> read = projectAt(path);
        if (!read)
            return read.error();
        other.open(path, *read, [&ended](const NSError &error) { ended = error; });
        EXPECT_TRUE(runEventLoopUntil([&ended] { return ended.has_value(); }));
        return ended.value_or(NSError());
    }

    void expectSame() const
    {
        EXPECT_EQ(pathsOf(opened.model().root()), pathsOf(document.model().root()));
        EXPECT_EQ(opened.volumeName(), QStringLiteral("Summer"));
        EXPECT_EQ(opened.model().root().totalBytes, document.model().root().totalBytes);
        EXPECT_EQ(faultOf(opened.model().root()), QString());
    }

    const TemporaryTree tree;
    DiscDocument document;
    DataProject project{document};
    ProjectKeeper keeper{project, tree.path("recovery")};
    DiscDocument opened;
    DataProject openedProject{opened};
    ProjectKeeper other{openedProject, tree.path("recovery")};
};

} // namespace

TEST_F(ProjectTest, open_bringsBackNamesOrderOptionsAndBytesThatAreNoText)
{
    project.setMediumKey(QStringLiteral("cd-700"));
    ASSERT_FALSE(save("disc.tessaron"));
    EXPECT_TRUE(document.undoStack().isClean());
    ASSERT_FALSE(open("disc.tessaron"));
    expectSame();
    EXPECT_EQ(openedProject.mediumKey(), QStringLiteral("cd-700"));
    EXPECT_EQ(other.missingPaths(), QStringList());
    const _TessaronAttributes &options =
        *nodeAt(opened, QStringLiteral("/photos"))->item->fileReference()->tessaronAttributes();
    EXPECT_EQ(options.invisible, 1);
    EXPECT_EQ(options.useBasicFSInclusion, 0);
    EXPECT_EQ(options.advancedFSInclusion, 5u);
    EXPECT_EQ(nodeAt(opened, QStringLiteral("/mine/note.md"))->sourcePath(), tree.path("data/letter.txt"));
    EXPECT_EQ(opened.model().root().children.back()->sourcePath(), tree.path("data/bad\xFF name"));
}

TEST_F(ProjectTest, open_findsFilesThatWereMoved_byTheirAliases)
{
    ASSERT_FALSE(save("disc.tessaron"));
    tree.makeFolder("elsewhere");
    ASSERT_EQ(::rename(tree.path("data/letter.txt").constData(), tree.path("elsewhere/renamed.txt").constData()), 0);
    ASSERT_FALSE(open("disc.tessaron"));
    expectSame();
    EXPECT_EQ(other.missingPaths(), QStringList());
    EXPECT_EQ(nodeAt(opened, QStringLiteral("/mine/note.md"))->sourcePath(), tree.path("elsewhere/renamed.txt"));
}

TEST_F(ProjectTest, open_findsFilesBesideTheProject_whenBothWereCopiedElsewhere)
{
    ASSERT_FALSE(save("data/disc.tessaron"));
    ASSERT_EQ(runProgram("cp", {"-r", tree.path("data"), tree.path("copy")}).status, 0);
    ASSERT_EQ(runProgram("rm", {"-r", tree.path("data")}).status, 0);
    ASSERT_FALSE(open("copy/disc.tessaron"));
    EXPECT_EQ(other.missingPaths(), QStringList());
    EXPECT_EQ(nodeAt(opened, QStringLiteral("/mine/note.md"))->sourcePath(), tree.path("copy/letter.txt"));
}

TEST_F(ProjectTest, open_showsWhatIsMissing_andTheNextProjectStillKnowsIt)
{
    ASSERT_FALSE(save("disc.tessaron"));
    const QByteArray letter = tree.contents("data/letter.txt");
    tree.remove("data/letter.txt");
    ASSERT_FALSE(open("disc.tessaron"));
    EXPECT_EQ(other.missingPaths(), QStringList({QStringLiteral("/mine/note.md")}));
    const DiscNode &node = *nodeAt(opened, QStringLiteral("/mine/note.md"));
    EXPECT_TRUE(node.isMissing);
    EXPECT_EQ(node.sourcePath(), tree.path("data/letter.txt"));

    std::optional<NSError> saved;
    other.save(tree.path("again.tessaron"), [&saved](const NSError &error) { saved = error; });
    ASSERT_TRUE(runEventLoopUntil([&saved] { return saved.has_value(); }));
    ASSERT_FALSE(*saved);
    tree.makeFile("data/letter.txt", letter);
    ASSERT_FALSE(open("again.tessaron"));
    EXPECT_EQ(other.missingPaths(), QStringList());
    expectSame();
}

TEST_F(ProjectTest, open_saysWhy_andKeepsTheDisc_whenItIsNoProject)
{
    tree.makeFile("text.tessaron", "no json");
    tree.makeFile("other.tessaron", "{\"format\":\"something else\"}");
    tree.makeFile("newer.tessaron", "{\"format\":\"tessaron-project\",\"version\":99}");
    tree.makeFile("outside.tessaron",
                  "{\"format\":\"tessaron-project\",\"version\":1,"
                  "\"items\":[{\"name\":\"../up\",\"kind\":\"newFolder\"}]}");
    for (const char *const name :
         {"missing.tessaron", "text.tessaron", "other.tessaron", "newer.tessaron", "outside.tessaron"}) {
        const NSError error = open(name);
        EXPECT_TRUE(error) << name;
        EXPECT_TRUE(error.localizedDescription().contains(QString::fromUtf8(name)))
            << error.localizedDescription().toStdString();
    }
    EXPECT_EQ(opened.model().root().children.size(), 0u);
}

TEST_F(ProjectTest, save_leavesTheOlderProject_whenTheFolderTakesNoFile)
{
    tree.makeFile("locked/disc.tessaron", "older");
    tree.setMode("locked", 0555);
    tree.setMode({}, 0755);
    {
        const WithoutRootRights withoutRights;
        EXPECT_TRUE(save("locked/disc.tessaron"));
    }
    tree.setMode("locked", 0700);
    EXPECT_EQ(tree.contents("locked/disc.tessaron"), "older");
    EXPECT_FALSE(document.undoStack().isClean());
}

TEST_F(ProjectTest, save_followsALink_andKeepsPermissions)
{
    tree.makeFile("real.tessaron", "older");
    tree.setMode("real.tessaron", 0640);
    tree.makeSymbolicLink("link.tessaron", "real.tessaron");
    ASSERT_FALSE(save("link.tessaron"));
    struct stat status;
    ASSERT_EQ(::lstat(tree.path("link.tessaron").constData(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    ASSERT_EQ(::stat(tree.path("real.tessaron").constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    EXPECT_NE(tree.contents("real.tessaron"), "older");
}

TEST_F(ProjectTest, save_whileTheDiscChanges_writesItAsItWas_andItStaysUnsaved)
{
    std::optional<NSError> ended;
    keeper.save(tree.path("disc.tessaron"), [&ended](const NSError &error) { ended = error; });
    document.remove({nodeAt(document, QStringLiteral("/mine"))});
    ASSERT_TRUE(runEventLoopUntil([&ended] { return ended.has_value(); }));
    ASSERT_FALSE(*ended);
    EXPECT_FALSE(document.undoStack().isClean());
    ASSERT_FALSE(open("disc.tessaron"));
    document.undoStack().undo();
    expectSame();
}

TEST_F(ProjectTest, save_whileANameIsTyped_leavesItUnsaved)
{
    const int steps = document.undoStack().count();
    std::optional<NSError> ended;
    keeper.save(tree.path("disc.tessaron"), [&ended](const NSError &error) { ended = error; });
    document.setVolumeName(QStringLiteral("Summer 2026"));
    ASSERT_EQ(document.undoStack().count(), steps) << "the letters are to become a part of the last step";
    ASSERT_TRUE(runEventLoopUntil([&ended] { return ended.has_value(); }));
    ASSERT_FALSE(*ended);
    EXPECT_FALSE(keeper.isSaved());
    ASSERT_FALSE(save("disc.tessaron"));
    EXPECT_TRUE(keeper.isSaved());
    ASSERT_FALSE(open("disc.tessaron"));
    EXPECT_EQ(opened.volumeName(), QStringLiteral("Summer 2026"));
}

TEST_F(ProjectTest, recover_keepsTheOlderCopy_whereANewOneCannotBeWritten)
{
    ASSERT_FALSE(save("recovery.tessaron"));
    tree.makeFile("recovery/left behind.tessaron", tree.contents("recovery.tessaron"));
    struct rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, SIG_IGN);
    {
        ProjectKeeper third(openedProject, tree.path("recovery"));
        bool isFound = false;
        const struct rlimit tiny = {100, before.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tiny), 0);
        third.recover([&isFound] { isFound = true; });
        EXPECT_TRUE(runEventLoopUntil([&isFound] { return isFound; }));
    } // which waits for the copy
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, SIG_DFL);
    expectSame();
    EXPECT_EQ(tree.contents("recovery/left behind.tessaron"), tree.contents("recovery.tessaron"));
}

TEST_F(ProjectTest, droppedCopy_isGone_whenTheProgramEndsAtOnce)
{
    keeper.keepCopy();
    keeper.forgetCopy();
    keeper.letGo();
    EXPECT_TRUE(QDir(tree.pathText("recovery")).entryList(QDir::Files).isEmpty());
    ProjectKeeper next(project, tree.path("recovery"));
    next.keepCopy();
    ASSERT_TRUE(
        runEventLoopUntil([this] { return QDir(tree.pathText("recovery")).entryList(QDir::Files).size() == 2; }));
    next.forgetCopy();
    next.letGo();
    EXPECT_TRUE(QDir(tree.pathText("recovery")).entryList(QDir::Files).isEmpty());
}

TEST_F(ProjectTest, recover_bringsBackWhatAnEndedProgramLeft_butNotWhatALivingOneHolds)
{
    keeper.keepCopy();
    ASSERT_TRUE(
        runEventLoopUntil([this] { return QDir(tree.pathText("recovery")).entryList(QDir::Files).size() == 2; }));
    bool isFound = false;
    other.recover([&isFound] { isFound = true; });
    ASSERT_TRUE(runEventLoopUntil([this] { return !other.isBusy(); }));
    EXPECT_FALSE(isFound);

    const QStringList copies = QDir(tree.pathText("recovery")).entryList({QStringLiteral("*.tessaron")}, QDir::Files);
    ASSERT_EQ(copies.size(), 1);
    ASSERT_EQ(::rename(tree.path("recovery/" + copies.front().toUtf8()).constData(),
                       tree.path("recovery/left behind.tessaron").constData()),
              0);
    other.recover([&isFound] { isFound = true; });
    ASSERT_TRUE(runEventLoopUntil([&isFound] { return isFound; }));
    expectSame();
    EXPECT_FALSE(opened.undoStack().isClean());
    EXPECT_TRUE(other.path().isEmpty());
    EXPECT_TRUE(runEventLoopUntil([this] { return !tree.exists("recovery/left behind.tessaron"); }));
}

/// The program is killed at its first, second … call that changes anything on the disk, until it gets to its end.
TEST(ProjectSaving, olderOrNewerProjectIsWhole_whereverTheProgramIsKilled)
{
    const TemporaryTree tree;
    const QByteArray older = "older";
    const QByteArray newer = QByteArray(100'000, 'n');
    int killed = 0;
    for (const char *const name : {"write", "fsync", "fchmod", "linkat", "renameat"}) {
        const QByteArray call = name;
        for (int number = 1;; ++number) {
            tree.makeFile("disc.tessaron", older);
            // The sanitizer cannot look for leaks in a program that is watched.
            const ProgramRun run =
                runProgram("strace",
                           {"-f", "-qq", "-E", "LSAN_OPTIONS=detect_leaks=0", "-o", "/dev/null", "-e", "trace=" + call,
                            "-e", "inject=" + call + ":signal=KILL:when=" + QByteArray::number(number),
                            TESSARON_ATOMIC_WRITER, tree.path("disc.tessaron"), QByteArray::number(newer.size())});
            const QByteArray found = tree.contents("disc.tessaron");
            EXPECT_TRUE(found == older || found == newer) << call.constData() << ' ' << number;
            if (run.status == 0) {
                EXPECT_EQ(found, newer);
                break;
            }
            ASSERT_EQ(run.status, 128 + SIGKILL) << run.errors.constData();
            ++killed;
        }
    }
    EXPECT_GE(killed, 4);
}

TEST_F(ProjectTest, forgetCopy_leavesNothingBehind)
{
    keeper.keepCopy();
    ASSERT_TRUE(
        runEventLoopUntil([this] { return QDir(tree.pathText("recovery")).entryList(QDir::Files).size() == 2; }));
    keeper.forgetCopy();
    ASSERT_TRUE(runEventLoopUntil([this] { return QDir(tree.pathText("recovery")).isEmpty(); }));
}
