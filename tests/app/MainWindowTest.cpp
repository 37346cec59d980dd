#include "app/MainWindow.h"

#include "app/AudioPanel.h"
#include "app/DataPanel.h"
#include "app/DataView.h"
#include "app/JobRunner.h"
#include "app/NoticeBar.h"
#include "app/ProjectActions.h"
#include "app/ProjectKeeper.h"

#include "tests/app/Nodes.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRLayoutWriter.h>
#include <TessaronClasses/OpenedDiscImage.h>

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QStandardPaths>

#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class MainWindowTest : public testing::Test
{
protected:
    MainWindowTest()
    {
        tree.makeFile("photos/beach.jpg", QByteArray(300'000, 'b'));
        tree.makeFile("photos/house.jpg", QByteArray(100, 'h'));
        tree.makeFile("letter.txt", "Dear reader,\n");
        tree.makeFolder("out");
        QObject::connect(&window, &MainWindow::jobEnded, &window, [this](const JobOutcome &ended) { outcome = ended; });
    }

    [[nodiscard]] DiscDocument &document() { return window.dataPanel().document(); }
    void add(const QList<QByteArray> &paths)
    {
        window.openFiles(paths);
        EXPECT_TRUE(runEventLoopUntil([this] { return !window.dataPanel().dataView().intake().isRunning(); }));
    }
    [[nodiscard]] DiscNode *at(const char *path) { return nodeAt(document(), QString::fromUtf8(path)); }
    void save(const QByteArray &name, DiscFormat format)
    {
        outcome.reset();
        window.saveImageAs(tree.path(name), format);
        EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    }
    /// What 7z, an independent program, finds in an image: paths and, of files, contents.
    [[nodiscard]] QByteArray contentsIn(const QByteArray &image, const QByteArray &path) const
    {
        return runProgram("7z", {"x", "-so", tree.path(image), path}).output;
    }

    const TemporaryTree tree;
    MainWindow window;
    std::optional<JobOutcome> outcome;
};

} // namespace

TEST_F(MainWindowTest, saveImage_makesAnImageOfTheTree_asItIsShown)
{
    add({tree.path("photos"), tree.path("letter.txt")});
    DiscNode &folder = document().addFolder(document().model().root());
    EXPECT_EQ(document().rename(folder, QStringLiteral("For you")), QString());
    EXPECT_EQ(document().move({at("/photos/beach.jpg")}, folder), QStringList());
    EXPECT_EQ(document().rename(*at("/letter.txt"), QStringLiteral("read me.md")), QString());
    document().setVolumeName(QStringLiteral("Summer 2024"));
    save("out/disc.iso", DiscFormat::ISO);
    ASSERT_TRUE(outcome);
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("disc.iso"))) << window.notices().text().toStdString();

    EXPECT_EQ(contentsIn("out/disc.iso", "For you/beach.jpg"), QByteArray(300'000, 'b'));
    EXPECT_EQ(contentsIn("out/disc.iso", "photos/house.jpg"), QByteArray(100, 'h'));
    EXPECT_EQ(contentsIn("out/disc.iso", "read me.md"), QByteArray("Dear reader,\n"));
    EXPECT_EQ(contentsIn("out/disc.iso", "photos/beach.jpg"), QByteArray());

    const Result<OpenedDiscImage> image = openDiscImage(tree.path("out/disc.iso"));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->volumes.size(), 5u);
}

TEST_F(MainWindowTest, saveImage_putsFilesIntoTheFilesystemsThatTheyAreMeantFor)
{
    add({tree.path("letter.txt"), tree.path("photos")});
    _TessaronAttributes options = TessaronFileAttributesNone_fct();
    options.useBasicFSInclusion = 0;
    options.hasAdvancedFSInclusion = 1;
    options.advancedFSInclusion = 4; // UDF
    document().setOptions({at("/letter.txt")}, options);
    save("out/disc.iso", DiscFormat::ISO);
    ASSERT_TRUE(outcome && !outcome->error) << outcome->summary.toStdString();
    const QByteArray inJoliet = runProgram("isoinfo", {"-J", "-f", "-i", tree.path("out/disc.iso")}).output;
    EXPECT_TRUE(inJoliet.contains("/photos/house.jpg")) << inJoliet.constData();
    EXPECT_FALSE(inJoliet.contains("letter")) << inJoliet.constData();
    const Result<OpenedDiscImage> image = openDiscImage(tree.path("out/disc.iso"));
    ASSERT_TRUE(image);
    bool isInUdf = false;
    for (const FoundVolume &volume : image->volumes) {
        if (volume.kind != VolumeKind::UDF || !volume.reader)
            continue;
        (void)volume.reader->listFolder(volume.reader->root(), [&isInUdf](const VolumeObject &object) {
            isInUdf = isInUdf || object.name == "letter.txt";
            return true;
        });
    }
    EXPECT_TRUE(isInUdf);
}

TEST_F(MainWindowTest, saveImage_tellsWhatWasNotStored)
{
    tree.makeFile("link target");
    tree.makeFolder("mixed");
    tree.makeFifo("mixed/pipe");
    tree.makeFile("mixed/file");
    add({tree.path("mixed")});
    save("out/disc.iso", DiscFormat::ISO);
    ASSERT_TRUE(outcome && !outcome->error);
    bool isPipeTold = false;
    for (const QString &line : outcome->details)
        isPipeTold = isPipeTold || line.contains(QStringLiteral("/mixed/pipe"));
    EXPECT_TRUE(isPipeTold) << outcome->details.join(u'\n').toStdString();
}

TEST_F(MainWindowTest, saveImage_tellsWhichFileIsGone)
{
    add({tree.path("letter.txt"), tree.path("photos")});
    tree.remove("letter.txt");
    save("out/disc.iso", DiscFormat::ISO);
    ASSERT_TRUE(outcome);
    EXPECT_FALSE(outcome->isComplete);
    EXPECT_TRUE(outcome->details.join(u'\n').contains(QStringLiteral("letter.txt")))
        << outcome->details.join(u'\n').toStdString();
    EXPECT_FALSE(window.isWorking());
}

TEST_F(MainWindowTest, saveImage_isRefused_overAFileThatIsOnTheDisc)
{
    add({tree.path("letter.txt")});
    save("letter.txt", DiscFormat::ISO);
    ASSERT_TRUE(outcome);
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Destination)) << outcome->summary.toStdString();
    EXPECT_EQ(tree.contents("letter.txt"), QByteArray("Dear reader,\n"));
}

TEST_F(MainWindowTest, saveImage_canBeCancelled_andLeavesNothing)
{
    tree.makeSparseFile("big", qint64(4) << 30);
    add({tree.path("big")});
    window.saveImageAs(tree.path("out/disc.iso"), DiscFormat::ISO);
    EXPECT_TRUE(window.isWorking());
    window.runner().cancel();
    EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Cancelled)) << outcome->summary.toStdString();
    EXPECT_FALSE(tree.exists("out/disc.iso"));
}

TEST_F(MainWindowTest, saveImage_saysSo_whenTheDiscIsEmpty)
{
    window.saveImageAs(tree.path("out/disc.iso"), DiscFormat::ISO);
    EXPECT_FALSE(window.isWorking());
    EXPECT_FALSE(window.notices().text().isEmpty());
}

TEST_F(MainWindowTest, close_closesAtOnce_whenNothingIsLeftToSave)
{
    window.show();
    EXPECT_TRUE(window.close());
    EXPECT_FALSE(window.isVisible());
}

TEST_F(MainWindowTest, close_asksFirst_whenTheDiscIsNotSaved)
{
    add({tree.path("letter.txt")});
    window.show();
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    auto *const question = window.findChild<QMessageBox *>();
    ASSERT_NE(question, nullptr);
    question->button(QMessageBox::Discard)->click();
    drainEventLoop();
    EXPECT_FALSE(window.isVisible());
}

TEST_F(MainWindowTest, close_keepsTheCopyOfADisc_untilTheUserReallyGoes)
{
    const QDir copies(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                      + QStringLiteral("/recovery/data"));
    const auto count = [&copies] { return copies.entryList({QStringLiteral("*.tessaron")}, QDir::Files).size(); };
    add({tree.path("letter.txt")});
    window.showPanel(1);
    window.audioPanel().tracks().edit(QStringLiteral("x"), [](AudioDisc &disc) { disc.minutes = 74; });
    window.showPanel(0);
    window.show();
    window.projects().keeper()->keepCopy();
    ASSERT_TRUE(runEventLoopUntil([&count] { return count() == 1; }));
    const auto answer = [this](QMessageBox::StandardButton button) {
        const QList<QMessageBox *> questions = window.findChildren<QMessageBox *>();
        ASSERT_FALSE(questions.isEmpty());
        questions.back()->button(button)->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    window.close();
    answer(QMessageBox::Discard); // the data disc
    answer(QMessageBox::Cancel); // and no further
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(count(), 1);
    window.close();
    answer(QMessageBox::Discard);
    answer(QMessageBox::Discard);
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(runEventLoopUntil([&count] { return count() == 0; }));
}

TEST_F(MainWindowTest, filesOfAnotherProgram_changeNothingBehindADialog)
{
    add({tree.path("letter.txt")});
    window.show();
    window.saveImage();
    auto *const dialog = window.findChild<QFileDialog *>();
    ASSERT_NE(dialog, nullptr);
    window.openFiles({tree.path("photos")});
    EXPECT_FALSE(window.dataPanel().dataView().intake().isRunning());
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("dialog"))) << window.notices().text().toStdString();
    dialog->reject();
    drainEventLoop();
    add({tree.path("photos")});
    EXPECT_NE(at("/photos"), nullptr);
}

TEST_F(MainWindowTest, names_areShownAsTheyAre_alsoThoseThatLookLikeMarkup)
{
    window.notices().tell(QStringLiteral("<b>bold</b>.txt is gone."));
    for (const QLabel *const label : window.notices().findChildren<QLabel *>())
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
}

TEST_F(MainWindowTest, panel_makesALayoutForTheFrameworksOwnWriter)
{
    add({tree.path("photos")});
    tree.makeFile("out/layout.iso");
    FSRef destination;
    ASSERT_EQ(FSPathMakeRef(tree.path("out/layout.iso"), &destination, nullptr), noErr);
    const std::shared_ptr<KRLayoutWriter> writer = KRLayoutWriter::layoutWriter();
    bool isFinished = false;
    KRLayoutWriterDelegate delegate;
    delegate.KRLayoutWriterDidFinishWritingLayout = [&isFinished](KRLayoutWriter &) { isFinished = true; };
    delegate.KRLayoutWriterDidFailWithError = [](KRLayoutWriter &, const NSError &error) {
        ADD_FAILURE() << error.localizedDescription().toStdString();
    };
    writer->setDelegate(delegate);
    const std::shared_ptr<TessaronPanel> panel(&window.dataPanel(), [](TessaronPanel *) {});
    ASSERT_FALSE(writer->writeLayoutToFSRef(destination, panel, TessaronDiscImageFormatISO));
    EXPECT_TRUE(runEventLoopUntil([&isFinished] { return isFinished; }));
    EXPECT_EQ(contentsIn("out/layout.iso", "photos/house.jpg"), QByteArray(100, 'h'));
}
