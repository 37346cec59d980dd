#include "app/VideoPanel.h"

#include "app/MainWindow.h"
#include "app/NoticeBar.h"
#include "app/VideoView.h"

#include "tests/support/EventLoop.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/BurnDiscJob.h>

#include <QLocale>
#include <QTreeWidget>

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class VideoPanelTest : public testing::Test
{
protected:
    VideoPanelTest()
    {
        QObject::connect(&window, &MainWindow::jobEnded, &window, [this](const JobOutcome &ended) { outcome = ended; });
        std::filesystem::copy(TESSARON_VIDEO_DISC "/VIDEO_TS", tree.path("Holiday/VIDEO_TS").toStdString(),
                              std::filesystem::copy_options::recursive);
    }
    [[nodiscard]] VideoPanel &panel() { return window.videoPanel(); }
    void open(const QByteArray &path)
    {
        panel().openDisc(path);
        EXPECT_TRUE(runEventLoopUntil([this] { return !panel().isLooking(); }));
    }
    void waitForOutcome()
    {
        EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    }

    const TemporaryTree tree;
    const QByteArray folder = tree.makeFolder("Holiday");
    MainWindow window;
    std::optional<JobOutcome> outcome;
};

} // namespace

TEST_F(VideoPanelTest, languages_haveTheirOwnNames_whereTheUserHasAnother)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    open(tree.path("Holiday"));
    QLocale::setDefault(before);
    const QTreeWidget &rows = panel().videoView().tree();
    ASSERT_GT(rows.topLevelItemCount(), 0);
    ASSERT_GT(rows.topLevelItem(0)->childCount(), 4);
    const QString sound = rows.topLevelItem(0)->child(4)->text(2);
    EXPECT_TRUE(sound.startsWith(QStringLiteral("English, "))) << sound.toStdString();
}

TEST_F(VideoPanelTest, folder_showsTitlesChaptersStreamsAndMenus)
{
    window.openFiles({tree.path("Holiday/VIDEO_TS")});
    EXPECT_EQ(&window.currentPanel(), &panel());
    ASSERT_TRUE(runEventLoopUntil([this] { return !panel().isLooking(); }));
    EXPECT_TRUE(panel().summary().startsWith(QStringLiteral("Holiday: 2 title"))) << panel().summary().toStdString();
    const QTreeWidget &rows = panel().videoView().tree();
    ASSERT_EQ(rows.topLevelItemCount(), 7) << "two titles and five menus";
    const QTreeWidgetItem &first = *rows.topLevelItem(0);
    EXPECT_EQ(first.text(0), QStringLiteral("Title 1"));
    EXPECT_EQ(first.text(1), QStringLiteral("0:08"));
    EXPECT_EQ(first.child(0)->text(0), QStringLiteral("Chapter 1"));
    EXPECT_EQ(first.child(4)->text(0), QStringLiteral("Sound 1"));
    EXPECT_TRUE(first.child(4)->text(2).startsWith(QStringLiteral("English, ")))
        << first.child(4)->text(2).toStdString();
    EXPECT_TRUE(panel().videoView().problems().isEmpty()) << panel().videoView().problems().join(u'\n').toStdString();
}

TEST_F(VideoPanelTest, rows_sayWhereToBeginPlaying)
{
    open(folder);
    QTreeWidget &rows = panel().videoView().tree();
    EXPECT_EQ(panel().videoView().chosenPlace(), std::pair(0, 0));
    rows.setCurrentItem(rows.topLevelItem(1));
    EXPECT_EQ(panel().videoView().chosenPlace(), std::pair(2, 0));
    rows.setCurrentItem(rows.topLevelItem(0)->child(2));
    EXPECT_EQ(panel().videoView().chosenPlace(), std::pair(1, 3));
    rows.setCurrentItem(rows.topLevelItem(2));
    EXPECT_EQ(panel().videoView().chosenPlace(), std::pair(0, 0)) << "a menu";
}

TEST_F(VideoPanelTest, problems_areShown)
{
    tree.remove("Holiday/VIDEO_TS/VTS_01_0.BUP");
    open(folder);
    EXPECT_EQ(panel().videoView().problems(), QStringList{QStringLiteral("VTS_01_0.BUP is missing")});
    tree.remove("Holiday/VIDEO_TS/VIDEO_TS.IFO");
    tree.remove("Holiday/VIDEO_TS/VIDEO_TS.BUP");
    open(folder);
    EXPECT_TRUE(panel().discPath().isEmpty()) << "it cannot be described";
    EXPECT_TRUE(window.notices().details().contains(QStringLiteral("VIDEO_TS.IFO is missing")))
        << window.notices().details().join(u'\n').toStdString();
}

TEST_F(VideoPanelTest, whatIsCheckedIsSaid_ofAFolder_andOfAnImage)
{
    open(folder);
    EXPECT_TRUE(panel().videoView().judgement().contains(QStringLiteral("where they will lie")))
        << panel().videoView().judgement().toStdString();
    const std::uint64_t bytes = panel().bestSizeApproximation();
    window.showPanel(3);
    window.saveImageAs(tree.path("holiday.iso"), DiscFormat::ISO);
    waitForOutcome();
    EXPECT_EQ(std::filesystem::file_size(tree.path("holiday.iso").toStdString()), bytes) << "it is known before";
    open(tree.path("holiday.iso"));
    EXPECT_TRUE(panel().videoView().judgement().contains(QStringLiteral("Where its files lie")))
        << panel().videoView().judgement().toStdString();
}

TEST_F(VideoPanelTest, filesThatCannotLieWhereTheTablesSay_areToldBeforeADiscIsMade)
{
    // The title's video is to begin within the information in front of it (VTSI_MAT, "start sector of title VOB").
    constexpr qsizetype startOfVideo = 0xC4;
    for (const char *const name : {"Holiday/VIDEO_TS/VTS_01_0.IFO", "Holiday/VIDEO_TS/VTS_01_0.BUP"}) {
        QByteArray bytes = tree.contents(name);
        ASSERT_GT(bytes.size(), startOfVideo + 4);
        bytes.replace(startOfVideo, 4, QByteArray("\0\0\0\1", 4));
        tree.makeFile(name, bytes);
    }
    open(folder);
    const QStringList &problems = panel().videoView().problems();
    EXPECT_TRUE(std::any_of(problems.begin(), problems.end(), [](const QString &each) {
        return each.startsWith(QStringLiteral("/VIDEO_TS/VTS_01_1.VOB: "));
    })) << problems.join(u'\n').toStdString();
}

TEST_F(VideoPanelTest, image_isADiscForPlayers)
{
    open(tree.path("Holiday/VIDEO_TS"));
    window.showPanel(3);
    ASSERT_EQ(&window.currentPanel(), &panel());
    window.saveImageAs(tree.path("holiday.iso"), DiscFormat::ISO);
    waitForOutcome();
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete) << outcome->summary.toStdString() << outcome->details.join(u'\n').toStdString();
    const QByteArray list = runProgram("isoinfo", {"-f", "-i", tree.path("holiday.iso")}).output;
    EXPECT_TRUE(list.contains("/VIDEO_TS/VIDEO_TS.IFO;1")) << list.constData();
    EXPECT_TRUE(list.contains("/AUDIO_TS")) << list.constData();
    const QByteArray kind = runProgram("blkid", {"-p", "-o", "value", "-s", "TYPE", tree.path("holiday.iso")}).output;
    EXPECT_EQ(kind.trimmed(), "udf") << "and ISO 9660 beside it";
    // The image plays like the folder.
    open(tree.path("holiday.iso"));
    EXPECT_TRUE(panel().summary().startsWith(QStringLiteral("holiday: 2 title"))) << panel().summary().toStdString();
    const std::optional<BurnSubject> subject = panel().burnSubject();
    ASSERT_TRUE(subject);
    EXPECT_EQ(subject->order.sources, QList<QByteArray>{tree.path("holiday.iso")});
    EXPECT_EQ(panel().handledDiscImageFormats(), 0u);
}

TEST_F(VideoPanelTest, subjectForADrive_hasTheFilesystemsOfVideo)
{
    open(folder);
    const std::optional<BurnSubject> subject = panel().burnSubject();
    ASSERT_TRUE(subject);
    EXPECT_TRUE(subject->order.tree);
    EXPECT_EQ(subject->order.filesystems, DiscFilesystems(DiscFilesystem::ISO9660) | DiscFilesystem::UDF);
    EXPECT_EQ(subject->order.volumeName, QStringLiteral("HOLIDAY"));
}

TEST_F(VideoPanelTest, whatIsNoVideo_isTold)
{
    tree.makeFile("letter.txt", "Dear reader,\n");
    open(tree.path("letter.txt"));
    EXPECT_TRUE(panel().discPath().isEmpty());
    EXPECT_FALSE(window.notices().text().isEmpty());
}
