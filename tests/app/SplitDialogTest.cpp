#include "app/SplitDialog.h"

#include "app/DataPanel.h"
#include "app/MainWindow.h"
#include "app/NoticeBar.h"

#include "tests/app/Nodes.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"

#include <QFileDialog>
#include <QPointer>
#include <QPushButton>

#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

constexpr qint64 megabyte = 1'000'000;

class SplitDialogTest : public testing::Test
{
protected:
    SplitDialogTest()
    {
        // As large as CDs, and taking no room themselves.
        for (const char *const name : {"source/a/one", "source/a/two", "source/b/three"})
            tree.makeSparseFile(name, 300 * megabyte);
        QObject::connect(&window, &MainWindow::jobEnded, &window, [this](const JobOutcome &ended) {
            outcome = ended;
            ++endings;
        });
        (void)addTo(window.dataPanel().document(), {tree.path("source/a"), tree.path("source/b")});
    }
    [[nodiscard]] SplitDialog *proposal()
    {
        SplitDialog *const dialog = window.dataPanel().splitDisc();
        EXPECT_TRUE(dialog && runEventLoopUntil([dialog] { return !dialog->isWorking(); }));
        return dialog;
    }

    /// Two discs of small files, so that images of them are no work.
    [[nodiscard]] std::vector<DiscShare> smallDiscs()
    {
        DiscDocument &document = window.dataPanel().document();
        document.undoStack().undo();
        for (const char *const name : {"small/a/one", "small/a/two", "small/b/three"})
            tree.makeFile(name, QByteArray(megabyte, 'x'));
        const QStringList told = addTo(document, {tree.path("small/a"), tree.path("small/b")});
        EXPECT_TRUE(told.isEmpty()) << told.join(u'\n').toStdString();
        return splitNow(2'900'000);
    }
    [[nodiscard]] std::vector<DiscShare> splitNow(std::uint64_t capacity)
    {
        DiscSplitOrder order;
        order.tree = copyForJob(window.dataPanel().document().model().root());
        order.capacity = capacity;
        order.volumeName = QStringLiteral("Summer");
        DiscSplitJob job(order);
        bool isSplit = false;
        QObject::connect(&job, &DiscSplitJob::finished, &window, [&] { isSplit = true; });
        job.start();
        EXPECT_TRUE(runEventLoopUntil([&] { return isSplit; }));
        return job.result().discs;
    }

    const TemporaryTree tree;
    MainWindow window;
    std::optional<JobOutcome> outcome;
    int endings = 0;
};

} // namespace

TEST_F(SplitDialogTest, proposal_saysWhatGoesOntoWhichDisc_andChangesWithTheKind)
{
    SplitDialog *const dialog = proposal();
    dialog->propose(QStringLiteral("cd-700"));
    ASSERT_TRUE(runEventLoopUntil([dialog] { return !dialog->isWorking(); }));
    ASSERT_EQ(dialog->discs().size(), 2u) << dialog->summary().toStdString();
    EXPECT_EQ(dialog->discs()[0].paths, QList<QString>{QStringLiteral("/a")});
    EXPECT_EQ(dialog->discs()[1].paths, QList<QString>{QStringLiteral("/b")});
    EXPECT_TRUE(dialog->summary().startsWith(QStringLiteral("2 disc"))) << dialog->summary().toStdString();
    dialog->propose(QStringLiteral("dvd"));
    ASSERT_TRUE(runEventLoopUntil([dialog] { return !dialog->isWorking(); }));
    EXPECT_EQ(dialog->discs().size(), 1u);
    EXPECT_EQ(pathsOf(window.dataPanel().document().model().root()).size(), 5) << "the disc is as it was";
}

TEST_F(SplitDialogTest, filesThatNoDiscHolds_areNamed)
{
    tree.makeSparseFile("film", 900 * megabyte);
    (void)addTo(window.dataPanel().document(), {tree.path("film")});
    SplitDialog *const dialog = proposal();
    dialog->propose(QStringLiteral("cd-700"));
    ASSERT_TRUE(runEventLoopUntil([dialog] { return !dialog->isWorking(); }));
    EXPECT_TRUE(dialog->summary().contains(QStringLiteral("1 file(s) are larger"))
                || dialog->summary().contains(QStringLiteral("larger than such a disc")))
        << dialog->summary().toStdString();
}

TEST_F(SplitDialogTest, images_areMadeOfEachDisc_inANewFolder)
{
    const std::vector<DiscShare> discs = smallDiscs();
    ASSERT_EQ(discs.size(), 2u);
    window.dataPanel().saveShares(discs, tree.path("images"));
    ASSERT_TRUE(runEventLoopUntil([&] { return endings == 2 || (outcome && outcome->error); }));
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    EXPECT_TRUE(outcome->summary.startsWith(QStringLiteral("2 image"))) << outcome->summary.toStdString();
    for (const auto &[name, file] :
         {std::pair("images/Summer 1.iso", "/a/two"), std::pair("images/Summer 2.iso", "/b/three")}) {
        const ProgramRun list = runProgram("isoinfo", {"-f", "-R", "-i", tree.path(name)});
        EXPECT_TRUE(list.output.contains(file)) << name << list.output.constData();
    }
    // A folder that is there is left alone.
    outcome.reset();
    window.dataPanel().saveShares(discs, tree.path("images"));
    EXPECT_TRUE(runEventLoopUntil([this] { return window.notices().text().contains(QStringLiteral("new folder")); }));
    EXPECT_FALSE(window.isWorking());
}

TEST_F(SplitDialogTest, dialog_closesOnceAFolderIsChosen_sinceTheWindowShowsTheRest)
{
    window.show();
    (void)smallDiscs();
    const QPointer<SplitDialog> dialog = proposal();
    for (QPushButton *const button : dialog->findChildren<QPushButton *>()) {
        if (button->text().contains(QStringLiteral("Images")))
            button->click();
    }
    auto *const chooser = window.findChild<QFileDialog *>();
    ASSERT_NE(chooser, nullptr);
    Q_EMIT chooser->fileSelected(tree.pathText("images"));
    EXPECT_FALSE(dialog && dialog->isVisible());
    ASSERT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(tree.exists("images"));
}

TEST_F(SplitDialogTest, emptyDisc_isNotSplit)
{
    window.dataPanel().document().undoStack().undo();
    EXPECT_EQ(window.dataPanel().splitDisc(), nullptr);
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("empty"))) << window.notices().text().toStdString();
}

TEST_F(SplitDialogTest, projects_areSavedOfEachDisc_andOpenLikeAnyOther)
{
    DiscDocument &document = window.dataPanel().document();
    document.undoStack().undo();
    tree.makeFile("small/a/one", QByteArray(megabyte, 'x'));
    tree.makeFile("small/a/two", QByteArray(megabyte, 'y'));
    tree.makeFile("small/b/three", QByteArray(megabyte, 'z'));
    (void)addTo(document, {tree.path("small/a"), tree.path("small/b")});
    // Names and options that are the disc's alone go along.
    DiscNode *const three = nodeAt(document, QStringLiteral("/b/three"));
    ASSERT_TRUE(three);
    ASSERT_EQ(document.rename(*three, QStringLiteral("last")), QString());
    std::vector<DiscShare> discs = splitNow(2'900'000);
    ASSERT_EQ(discs.size(), 2u);
    window.dataPanel().saveShareProjects(discs, QStringLiteral("cd-700"), tree.path("projects"));
    ASSERT_TRUE(runEventLoopUntil([this] { return window.notices().text().contains(QStringLiteral("2 project")); }))
        << window.notices().text().toStdString();
    EXPECT_EQ(window.notices().details().size(), 2);
    discs.clear();

    document.undoStack().setClean();
    window.openFiles({tree.path("projects/Summer 2.tessaron")});
    ASSERT_TRUE(runEventLoopUntil([&] { return document.volumeName() == QStringLiteral("Summer 2"); }));
    EXPECT_EQ(pathsOf(document.model().root()), QStringList({QStringLiteral("/b/"), QStringLiteral("/b/last")}));
    // It is made, compared and found like any other.
    window.saveImageAs(tree.path("second.iso"), DiscFormat::ISO);
    ASSERT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    EXPECT_TRUE(outcome->summary.contains(QStringLiteral("compared"))) << outcome->summary.toStdString();
    const ProgramRun list = runProgram("isoinfo", {"-f", "-R", "-i", tree.path("second.iso")});
    EXPECT_TRUE(list.output.contains("/b/last")) << list.output.constData();
    EXPECT_FALSE(list.output.contains("/a")) << list.output.constData();
}

TEST_F(SplitDialogTest, buttons_askForWhatTheySay_onceThereIsAProposal)
{
    SplitDialog *const dialog = proposal();
    int images = 0;
    int projects = 0;
    QObject::connect(dialog, &SplitDialog::imagesWanted, dialog, [&images] { ++images; });
    QObject::connect(dialog, &SplitDialog::projectsWanted, dialog, [&projects] { ++projects; });
    for (QPushButton *const button : dialog->findChildren<QPushButton *>()) {
        if (button->text().contains(QStringLiteral("Save")))
            button->click();
    }
    EXPECT_EQ(images, 1);
    EXPECT_EQ(projects, 1);
}
