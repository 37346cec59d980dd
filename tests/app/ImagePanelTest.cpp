#include "app/ImagePanel.h"

#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/ImageView.h"
#include "app/MainWindow.h"
#include "app/NoticeBar.h"

#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QTreeView>

#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class ImagePanelTest : public testing::Test
{
protected:
    ImagePanelTest()
    {
        tree.makeFile("source/photos/beach.jpg", QByteArray(300'000, 'b'));
        tree.makeFile("source/letter.txt", "Dear reader,\n");
        QObject::connect(&window, &MainWindow::jobEnded, &window, [this](const JobOutcome &ended) { outcome = ended; });
    }

    /// An image of "source" that another program made.
    void makeImage() const
    {
        const ProgramRun run = runProgram(
            "genisoimage", {"-quiet", "-J", "-r", "-V", "HOLIDAY", "-o", tree.path("disc.iso"), tree.path("source")});
        ASSERT_EQ(run.status, 0) << run.errors.constData();
    }
    [[nodiscard]] ImagePanel &panel() { return window.imagePanel(); }
    void open(const QByteArray &name)
    {
        window.openFiles({tree.path(name)});
        EXPECT_TRUE(runEventLoopUntil([this] { return !panel().isLooking(); }));
    }
    void waitForOutcome()
    {
        EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    }
    [[nodiscard]] QStringList names(const QModelIndex &parent = {})
    {
        QStringList result;
        for (int row = 0; row < panel().contents().rowCount(parent); ++row)
            result << panel().contents().index(row, 0, parent).data().toString();
        return result;
    }
    void list(const QModelIndex &folder)
    {
        // The tester of models may have asked for it already.
        if (panel().contents().canFetchMore(folder))
            panel().contents().fetchMore(folder);
        EXPECT_TRUE(runEventLoopUntil([this] { return !panel().contents().isListing(); }));
        EXPECT_TRUE(window.notices().text().isEmpty()) << window.notices().text().toStdString();
    }

    const TemporaryTree tree;
    MainWindow window;
    std::optional<JobOutcome> outcome;
};

} // namespace

TEST_F(ImagePanelTest, image_showsItsFilesystems_andTheirFolders)
{
    const QAbstractItemModelTester tester(&panel().contents(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    makeImage();
    open("disc.iso");
    EXPECT_EQ(&window.currentPanel(), &panel());
    EXPECT_TRUE(panel().summary().contains(QStringLiteral("disc.iso: ISO 9660, Rock Ridge, Joliet")))
        << panel().summary().toStdString();
    EXPECT_EQ(names(),
              QStringList({QStringLiteral("ISO 9660 “HOLIDAY”"), QStringLiteral("Rock Ridge “HOLIDAY”"),
                           QStringLiteral("Joliet “HOLIDAY”")}));
    const QModelIndex rockRidge = panel().contents().index(1, 0);
    EXPECT_TRUE(rockRidge.siblingAtColumn(1).data().toString().startsWith(QStringLiteral("2 file")));
    list(rockRidge);
    EXPECT_EQ(names(rockRidge), QStringList({QStringLiteral("photos"), QStringLiteral("letter.txt")}));
    const QModelIndex photos = panel().contents().index(0, 0, rockRidge);
    list(photos);
    EXPECT_EQ(names(photos), QStringList({QStringLiteral("beach.jpg")}));
    EXPECT_FALSE(panel().contents().hasChildren(panel().contents().index(0, 0, photos)));
    const QModelIndex plain = panel().contents().index(0, 0);
    list(plain);
    EXPECT_EQ(names(plain), QStringList({QStringLiteral("PHOTOS"), QStringLiteral("LETTER.TXT")}));
}

TEST_F(ImagePanelTest, anotherImage_takesThePlaceOfTheFirst_alsoWhileItIsLookedAt)
{
    makeImage();
    tree.makeFile("empty.iso", QByteArray(1 << 20, '\0'));
    window.openFiles({tree.path("disc.iso")});
    open("empty.iso");
    EXPECT_EQ(panel().imagePath(), tree.path("empty.iso"));
    EXPECT_EQ(names(), QStringList());
    EXPECT_TRUE(panel().summary().contains(QStringLiteral("no filesystem"))) << panel().summary().toStdString();
}

TEST_F(ImagePanelTest, imageThatIsNotThere_isTold)
{
    open("gone.iso");
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("gone.iso"))) << window.notices().text().toStdString();
    EXPECT_TRUE(panel().imagePath().isEmpty());
    EXPECT_FALSE(panel().burnSubject());
}

TEST_F(ImagePanelTest, damage_isTold)
{
    makeImage();
    QByteArray bytes = tree.contents("disc.iso");
    bytes.replace(qsizetype(17) * 2048, 2048, QByteArray(2048, '\xFF')); // the descriptor of Joliet
    tree.makeFile("disc.iso", bytes);
    open("disc.iso");
    EXPECT_FALSE(window.notices().details().isEmpty()) << window.notices().text().toStdString();
}

TEST_F(ImagePanelTest, comparison_findsWhatHasChanged)
{
    makeImage();
    open("disc.iso");
    panel().compareWithFolder(tree.path("source"));
    EXPECT_TRUE(window.isWorking());
    waitForOutcome();
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    tree.makeFile("source/letter.txt", "Dear writer,\n");
    outcome.reset();
    panel().compareWithFolder(tree.path("source"));
    waitForOutcome();
    EXPECT_FALSE(outcome->isComplete);
    EXPECT_TRUE(outcome->details.join(u'\n').contains(QStringLiteral("letter.txt")))
        << outcome->details.join(u'\n').toStdString();
}

TEST_F(ImagePanelTest, files_areTakenOut_thoseThatAreChosen)
{
    makeImage();
    open("disc.iso");
    const QModelIndex joliet = panel().contents().index(2, 0);
    list(joliet);
    const QModelIndex photos = panel().contents().index(0, 0, joliet);
    list(photos);
    const std::optional<ImagePlace> beach = panel().contents().placeAt(panel().contents().index(0, 0, photos));
    ASSERT_TRUE(beach);
    EXPECT_EQ(*beach, (ImagePlace{VolumeKind::Joliet, std::nullopt, "photos/beach.jpg"}));
    EXPECT_EQ(*panel().contents().placeAt(joliet), (ImagePlace{VolumeKind::Joliet, std::nullopt, {}}));
    panel().takeOutFiles({*beach}, tree.path("out"));
    waitForOutcome();
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete);
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("Joliet"))) << outcome->summary.toStdString();
    EXPECT_EQ(tree.contents("out/beach.jpg"), QByteArray(300'000, 'b'));
    EXPECT_FALSE(tree.exists("out/letter.txt"));
    // Again, and everything: nothing is replaced, and that is told.
    tree.makeFile("out/letter.txt", "mine");
    outcome.reset();
    panel().takeOutFiles({}, tree.path("out"));
    waitForOutcome();
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("Rock Ridge"))) << outcome->summary.toStdString();
    EXPECT_EQ(outcome->details, QStringList{QStringLiteral("letter.txt is letter 2.txt now")});
    EXPECT_EQ(tree.contents("out/letter.txt"), "mine");
    EXPECT_EQ(tree.contents("out/letter 2.txt"), "Dear reader,\n");
    EXPECT_TRUE(tree.exists("out/photos/beach.jpg"));
}

TEST_F(ImagePanelTest, filesThatCannotBeRead_areNamed)
{
    makeImage();
    open("disc.iso");
    const QByteArray bytes = tree.contents("disc.iso");
    tree.makeFile("disc.iso", bytes.first(bytes.indexOf(QByteArray(2048, 'b')) + 2048));
    panel().takeOutFiles({}, tree.path("out"));
    waitForOutcome();
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_FALSE(outcome->isComplete);
    EXPECT_TRUE(outcome->details.join(u'\n').contains(QStringLiteral("photos/beach.jpg")))
        << outcome->details.join(u'\n').toStdString();
    EXPECT_FALSE(tree.exists("out/photos/beach.jpg"));
}

TEST_F(ImagePanelTest, rowsOfSeveralFilesystems_areRefusedTogether)
{
    makeImage();
    open("disc.iso");
    QTreeView *const view = window.findChild<ImageView *>()->findChild<QTreeView *>();
    view->selectAll();
    EXPECT_EQ(window.findChild<ImageView *>()->chosenPlaces().size(), 3);
    for (QAction *const action : panel().customActionMenuItems()) {
        if (action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_E))
            action->trigger();
    }
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("one filesystem")))
        << window.notices().text().toStdString();
}

TEST_F(ImagePanelTest, tracks_areShownAndTakenOut)
{
    tree.makeFile("album.bin", QByteArray(qsizetype(2352) * 750, '\1') + QByteArray(qsizetype(2352) * 800, '\2'));
    tree.makeFile("album.cue",
                  "FILE \"album.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                  "  TRACK 02 AUDIO\n    INDEX 01 00:10:00\n");
    tree.makeFolder("out");
    open("album.cue");
    EXPECT_EQ(names(), QStringList({QStringLiteral("Track 1, sound"), QStringLiteral("Track 2, sound")}));
    EXPECT_EQ(panel().contents().trackAt(panel().contents().index(1, 0)), 2u);
    EXPECT_EQ(panel().contents().index(0, 1).data().toString(), QStringLiteral("0:10"));
    panel().takeOutTracks(2, tree.path("out/second.wav"));
    waitForOutcome();
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    const QByteArray taken = tree.contents("out/second.wav");
    EXPECT_TRUE(taken.startsWith("RIFF"));
    EXPECT_TRUE(taken.endsWith(QByteArray(qsizetype(2352) * 800, '\2')));
    outcome.reset();
    panel().takeOutTracks(0, tree.path("out/all"));
    waitForOutcome();
    EXPECT_TRUE(tree.exists("out/all/track01.wav"));
    EXPECT_TRUE(tree.exists("out/all/track02.wav"));
}

TEST_F(ImagePanelTest, subjectForADrive_isTheFile_andItsSizeThatOfTheDisc)
{
    makeImage();
    open("disc.iso");
    const std::optional<BurnSubject> subject = panel().burnSubject();
    ASSERT_TRUE(subject);
    EXPECT_EQ(subject->order.sources, QList<QByteArray>({tree.path("disc.iso")}));
    EXPECT_EQ(subject->bytes, std::uint64_t(tree.contents("disc.iso").size()));
}
