#include "app/ImagePanel.h"

#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/FileDrops.h"
#include "app/ImageTreeView.h"
#include "app/ImageView.h"
#include "app/JobRunner.h"
#include "app/MainWindow.h"
#include "app/NoticeBar.h"

#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMimeData>
#include <QStandardPaths>
#include <QTest>
#include <QTreeView>
#include <QtEndian>

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

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
    /// An image of a letter, and of a film of half a gigabyte behind it, which takes no room on the disk.
    void makeLargeImage() const
    {
        tree.makeFile("large/a letter", "Dear reader,\n");
        tree.makeFile("large/film", QByteArray(12'345, 'f'));
        const ProgramRun run =
            runProgram("genisoimage", {"-quiet", "-J", "-o", tree.path("disc.iso"), tree.path("large")});
        ASSERT_EQ(run.status, 0) << run.errors.constData();
        const auto bothOrders = [](quint32 number) {
            QByteArray bytes(8, '\0');
            qToLittleEndian(number, bytes.data());
            qToBigEndian(number, bytes.data() + 4);
            return bytes;
        };
        QByteArray bytes = tree.contents("disc.iso");
        constexpr qint64 filmSize = qint64(512) << 20;
        const qint64 size = bytes.size() + filmSize;
        for (const qsizetype descriptor : {16, 17})
            bytes.replace(descriptor * 2048 + 80, 8, bothOrders(quint32(size / 2048)));
        ASSERT_EQ(bytes.count(bothOrders(12'345)), 2) << "in ISO 9660 and in Joliet";
        bytes.replace(bothOrders(12'345), bothOrders(quint32(filmSize)));
        tree.makeFile("disc.iso", bytes);
        ASSERT_EQ(::truncate(tree.path("disc.iso").constData(), size), 0);
    }
    [[nodiscard]] static std::filesystem::path loans()
    {
        return QStandardPaths::writableLocation(QStandardPaths::CacheLocation).toStdString() + "/lent";
    }
    [[nodiscard]] ImagePanel &panel() { return window.imagePanel(); }
    void open(const QByteArray &name)
    {
        window.openFiles({tree.path(name)});
        EXPECT_TRUE(runEventLoopUntil([this] { return !panel().isLooking(); }));
    }
    /// Shows what Joliet has, and chooses the row of the name.
    [[nodiscard]] QModelIndex chosenRow(const char *name)
    {
        const QModelIndex joliet = panel().contents().index(2, 0);
        ImageTreeView &rows = view().tree();
        rows.expand(joliet);
        EXPECT_TRUE(runEventLoopUntil(
            [&] { return !panel().contents().isListing() && panel().contents().rowCount(joliet) > 0; }));
        for (int row = 0; row < panel().contents().rowCount(joliet); ++row) {
            const QModelIndex index = panel().contents().index(row, 0, joliet);
            if (index.data().toString() == QString::fromUtf8(name)) {
                rows.selectionModel()->setCurrentIndex(index,
                                                       QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
                return index;
            }
        }
        ADD_FAILURE() << name;
        return {};
    }
    [[nodiscard]] ImageView &view() { return *window.findChild<ImageView *>(); }
    void showWindow()
    {
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
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

QByteArray bytesAt(const QByteArray &path)
{
    QFile file(QString::fromUtf8(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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

TEST_F(ImagePanelTest, copiedFiles_areOnTheClipboard_inAPrivateFolder_untilTheNextCopy)
{
    makeImage();
    open("disc.iso");
    showWindow();
    (void)chosenRow("photos");
    view().tree().setFocus();
    QTest::keySequence(&view().tree(), QKeySequence::Copy);
    EXPECT_TRUE(panel().lending().isWorking());
    waitForOutcome();
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete);
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("Paste it"))) << outcome->summary.toStdString();
    const QMimeData *const copied = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(copied);
    const QList<QByteArray> photos = pathsOfFiles(*copied);
    ASSERT_EQ(photos.size(), 1);
    EXPECT_TRUE(photos.front().endsWith("/photos")) << photos.front().constData();
    EXPECT_EQ(bytesAt(photos.front() + "/beach.jpg"), QByteArray(300'000, 'b'));
    EXPECT_EQ(copied->data(QStringLiteral("x-special/gnome-copied-files")), "copy\n" + uriOfPath(photos.front()));
    const QByteArray folder = photos.front().first(photos.front().lastIndexOf('/'));
    struct stat info = {};
    ASSERT_EQ(::stat(folder.constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0700U);

    outcome.reset();
    (void)chosenRow("letter.txt");
    QTest::keySequence(&view().tree(), QKeySequence::Copy);
    waitForOutcome();
    const QList<QByteArray> letter = pathsOfFiles(*QGuiApplication::clipboard()->mimeData());
    ASSERT_EQ(letter.size(), 1);
    EXPECT_EQ(bytesAt(letter.front()), "Dear reader,\n");
    EXPECT_TRUE(runEventLoopUntil([&] { return ::stat(folder.constData(), &info) != 0; })) << "the first folder stays";
}

TEST_F(ImagePanelTest, copiedFiles_goWithTheProgram_andSoDoesWhatTheClipboardSays)
{
    makeImage();
    QList<QByteArray> paths;
    {
        MainWindow other;
        bool hasEnded = false;
        QObject::connect(&other, &MainWindow::jobEnded, &other, [&hasEnded] { hasEnded = true; });
        other.openFiles({tree.path("disc.iso")});
        ASSERT_TRUE(runEventLoopUntil([&other] { return !other.imagePanel().isLooking(); }));
        other.imagePanel().copyFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, "letter.txt"}});
        ASSERT_TRUE(runEventLoopUntil([&hasEnded] { return hasEnded; }));
        paths = other.imagePanel().lending().paths();
        ASSERT_EQ(paths.size(), 1);
        EXPECT_FALSE(bytesAt(paths.front()).isEmpty());
        EXPECT_TRUE(holdsLentFiles(*QGuiApplication::clipboard()->mimeData()));
    }
    EXPECT_TRUE(bytesAt(paths.front()).isEmpty());
    struct stat info = {};
    EXPECT_NE(::stat(paths.front().first(paths.front().lastIndexOf('/')).constData(), &info), 0);
    const QMimeData *const left = QGuiApplication::clipboard()->mimeData();
    EXPECT_TRUE(!left || pathsOfFiles(*left).isEmpty());
}

TEST_F(ImagePanelTest, copiedFilesOfAnImage_areNoSourceForADisc)
{
    makeImage();
    open("disc.iso");
    panel().copyFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, "letter.txt"}});
    waitForOutcome();
    DataView &disc = window.dataPanel().dataView();
    disc.paste();
    EXPECT_FALSE(disc.intake().isRunning());
    EXPECT_TRUE(disc.notices().text().contains(QStringLiteral("for a while only")))
        << disc.notices().text().toStdString();
}

TEST_F(ImagePanelTest, copy_tellsWhatCannotBeRead_andOffersTheRest)
{
    makeImage();
    open("disc.iso");
    const QByteArray bytes = tree.contents("disc.iso");
    const qsizetype photo = bytes.indexOf(QByteArray(2048, 'b'));
    const qsizetype letter = bytes.indexOf("Dear reader");
    ASSERT_LT(letter, photo) << "the photo is to be cut, and the letter not";
    tree.makeFile("disc.iso", bytes.first(photo + 2048));
    panel().copyFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, "photos/beach.jpg"},
                       ImagePlace{VolumeKind::Joliet, std::nullopt, "letter.txt"}});
    waitForOutcome();
    EXPECT_FALSE(outcome->isComplete);
    EXPECT_TRUE(outcome->details.join(u'\n').contains(QStringLiteral("photos/beach.jpg")))
        << outcome->details.join(u'\n').toStdString();
    ASSERT_EQ(panel().lending().paths().size(), 1);
    EXPECT_TRUE(panel().lending().paths().front().endsWith("/letter.txt"));
    // Where nothing is left to offer, what was copied before stays.
    outcome.reset();
    panel().copyFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, "photos/beach.jpg"}});
    waitForOutcome();
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("nothing to paste"))) << outcome->summary.toStdString();
    EXPECT_FALSE(bytesAt(panel().lending().paths().front()).isEmpty());
}

TEST_F(ImagePanelTest, copyThatFails_leavesNothing_andTheClipboardAsItWas)
{
    makeImage();
    open("disc.iso");
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    tree.remove("disc.iso");
    panel().copyFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, {}}});
    waitForOutcome();
    EXPECT_TRUE(outcome->error);
    EXPECT_FALSE(panel().lending().isWorking());
    EXPECT_TRUE(panel().lending().paths().isEmpty());
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
    EXPECT_TRUE(runEventLoopUntil([] { return std::filesystem::is_empty(loans()); }));
}

TEST_F(ImagePanelTest, copyThatIsCancelled_leavesNothing_andThePanelGoesOn)
{
    makeLargeImage();
    open("disc.iso");
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    panel().copyFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, {}}});
    // The letter is there, and the film is on its way.
    const auto isBegun = [] {
        std::error_code ignored;
        for (auto entry = std::filesystem::recursive_directory_iterator(loans(), ignored);
             !ignored && entry != std::filesystem::end(entry); entry.increment(ignored)) {
            if (entry->path().filename() == "a letter")
                return true;
        }
        return false;
    };
    ASSERT_TRUE(runEventLoopUntil(isBegun));
    window.runner().cancel();
    waitForOutcome();
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Cancelled)) << outcome->summary.toStdString();
    EXPECT_FALSE(outcome->summary.contains(QStringLiteral("stays"))) << outcome->summary.toStdString();
    EXPECT_TRUE(runEventLoopUntil([] { return std::filesystem::is_empty(loans()); }));
    EXPECT_FALSE(panel().lending().isWorking());
    EXPECT_TRUE(panel().lending().paths().isEmpty());
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
    EXPECT_FALSE(window.isWorking());

    outcome.reset();
    panel().copyFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, "a letter"}});
    waitForOutcome();
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    ASSERT_EQ(panel().lending().paths().size(), 1);
    EXPECT_EQ(bytesAt(panel().lending().paths().front()), "Dear reader,\n");
}

TEST_F(ImagePanelTest, takingOutThatIsCancelled_leavesNoFileThatLooksWhole_andTellsWhatStays)
{
    makeLargeImage();
    open("disc.iso");
    panel().takeOutFiles({}, tree.path("out"));
    ASSERT_TRUE(runEventLoopUntil([this] { return tree.exists("out/A_LETTER") || tree.exists("out/a letter"); }));
    window.runner().cancel();
    waitForOutcome();
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Cancelled)) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("stays: 1 file"))) << outcome->summary.toStdString();
    const std::filesystem::path out = tree.path("out").toStdString();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(out), std::filesystem::directory_iterator()), 1);
}

TEST_F(ImagePanelTest, secondCopy_isToldToWait)
{
    makeLargeImage();
    open("disc.iso");
    panel().copyFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, {}}});
    panel().copyFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, "a letter"}});
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("already"))) << window.notices().text().toStdString();
    ASSERT_TRUE(runEventLoopUntil([this] { return window.isWorking(); }));
    window.runner().cancel();
    waitForOutcome();
}

TEST_F(ImagePanelTest, withoutAnImage_nothingCanBeTakenOut)
{
    const auto areEnabled = [this] {
        QList<bool> states;
        for (const QAction *const action : view().tree().actions())
            states << action->isEnabled();
        return states;
    };
    EXPECT_EQ(areEnabled(), QList<bool>({false, false, false}));
    makeImage();
    open("disc.iso");
    EXPECT_EQ(areEnabled(), QList<bool>({true, true, true}));
}

TEST_F(ImagePanelTest, folder_bringsWhatIsChosenInIt_once)
{
    makeImage();
    open("disc.iso");
    panel().takeOutFiles({ImagePlace{VolumeKind::Joliet, std::nullopt, "photos"},
                          ImagePlace{VolumeKind::Joliet, std::nullopt, "photos/beach.jpg"}},
                         tree.path("out"));
    waitForOutcome();
    EXPECT_TRUE(tree.exists("out/photos/beach.jpg"));
    EXPECT_FALSE(tree.exists("out/beach.jpg"));
}
