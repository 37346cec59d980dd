#include "app/AudioConvertDialog.h"
#include "app/AudioView.h"
#include "app/NoticeBar.h"

#include "tests/app/AudioPanelFixture.h"
#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/KRAudioConverter.h>

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

#include <algorithm>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

class AudioConversionTest : public AudioPanelFixture
{
protected:
    AudioConversionTest()
    {
        window.show();
        add({tree.path("a.wav"), tree.path("b.wav")});
    }

    [[nodiscard]] AudioConvertDialog::Choice into(const char *folder, std::int32_t format) const
    {
        return {format, true, tree.path(folder)};
    }
    [[nodiscard]] QStringList results(const char *folder) const
    {
        return QDir(QString::fromUtf8(tree.path(folder)))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    [[nodiscard]] QByteArray beginOf(const char *path, qint64 bytes) const
    {
        QFile file(QString::fromUtf8(tree.path(path)));
        return file.open(QIODevice::ReadOnly) ? file.read(bytes) : QByteArray();
    }
    [[nodiscard]] QDialog *sheet() { return window.findChild<QDialog *>(QStringLiteral("win")); }
    [[nodiscard]] testing::AssertionResult waitForTheEnd()
    {
        if (!runEventLoopUntil([this] { return outcome.has_value(); }))
            return testing::AssertionFailure() << "it has not ended";
        return testing::AssertionSuccess() << outcome->summary.toStdString();
    }
};

QAction *convertAction(AudioPanel &panel)
{
    for (QAction *const action : panel.customActionMenuItems()) {
        if (action->text().remove(u'&') == QStringLiteral("Convert…"))
            return action;
    }
    return nullptr;
}

} // namespace

TEST_F(AudioConversionTest, chosenTrack_isConverted_toWhatTheDialogSays_underASheet)
{
    panel().audioView().table().setCurrentIndex(panel().tracks().index(1, 0));
    QAction *const action = convertAction(panel());
    ASSERT_NE(action, nullptr);
    action->trigger();
    auto *const dialog = panel().audioView().findChild<AudioConvertDialog *>();
    ASSERT_NE(dialog, nullptr);
    auto *const format = dialog->findChild<QComboBox *>();
    format->setCurrentIndex(format->findData(KRAudioConverter::aiffFormat));
    auto *const folder = dialog->findChild<QLineEdit *>();
    auto *const buttons = dialog->findChild<QDialogButtonBox *>();
    const auto convert = buttons->buttons();
    const auto accept = std::find_if(convert.begin(), convert.end(), [buttons](QAbstractButton *button) {
        return buttons->buttonRole(button) == QDialogButtonBox::AcceptRole;
    });
    ASSERT_NE(accept, convert.end());
    folder->setText(QStringLiteral("results"));
    EXPECT_FALSE((*accept)->isEnabled()) << "no one knows of which folder";
    folder->setText(QString::fromUtf8(tree.path("results")));
    (*accept)->click();
    const QPointer<QDialog> shown = sheet();
    ASSERT_TRUE(shown);
    EXPECT_TRUE(shown->isVisible());
    EXPECT_EQ(shown->windowModality(), Qt::WindowModal);
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_TRUE(runEventLoopUntil([&] { return !shown; }));
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    EXPECT_EQ(outcome->summary.toStdString(), "1 file(s) were converted.");
    EXPECT_EQ(results("results"), QStringList(QStringLiteral("b.aiff")));
    EXPECT_EQ(beginOf("results/b.aiff", 4), "FORM");
}

TEST_F(AudioConversionTest, allTracks_areConverted_whenNoneIsChosen_andWhatFailsIsNamed)
{
    ASSERT_TRUE(QFile::remove(QString::fromUtf8(tree.path("b.wav"))));
    panel().audioView().table().clearSelection();
    panel().convertChosen(into("results", KRAudioConverter::waveFormat));
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_FALSE(outcome->isComplete);
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_EQ(outcome->summary.toStdString(), "1 file(s) were converted. 1 file(s) could not be.");
    ASSERT_FALSE(outcome->details.isEmpty());
    EXPECT_TRUE(outcome->details[0].startsWith(QStringLiteral("b.wav: "))) << outcome->details[0].toStdString();
    EXPECT_EQ(results("results"), QStringList(QStringLiteral("a.wav")));
    EXPECT_TRUE(window.notices().isVisible());
}

TEST_F(AudioConversionTest, mp3_isMadeWithTags)
{
    if (!KRAudioConverter::hasEncoder())
        GTEST_SKIP() << "lame is not installed";
    panel().audioView().table().setCurrentIndex(panel().tracks().index(0, 0));
    panel().convertChosen(into("results", KRAudioConverter::mp3FormatConstant128));
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_EQ(results("results"), QStringList(QStringLiteral("a.mp3")));
}

TEST_F(AudioConversionTest, sheetsButton_stopsIt_andLeavesNothing)
{
    panel().convertChosen(into("results", KRAudioConverter::waveFormat));
    ASSERT_NE(sheet(), nullptr);
    auto *const cancel = sheet()->findChild<QPushButton *>(QStringLiteral("cancelButton"));
    ASSERT_NE(cancel, nullptr);
    QTest::mouseClick(cancel, Qt::LeftButton);
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_TRUE(isDiscJobError(outcome->error, DiscJobErrorCode::Cancelled));
    EXPECT_EQ(results("results"), QStringList());
}

TEST_F(AudioConversionTest, fileOfSeveralTracks_isConvertedOnce_whichIsTold)
{
    tree.makeFile("album.wav", waveOf(12, 3));
    tree.makeFile("album.cue",
                  "FILE \"album.wav\" WAVE\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                  "  TRACK 02 AUDIO\n    INDEX 01 00:06:00\n");
    panel().tracks().replace({});
    add({tree.path("album.cue")});
    ASSERT_EQ(panel().tracks().rowCount(), 2);
    panel().convertChosen(into("results", KRAudioConverter::waveFormat));
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_EQ(results("results"), QStringList(QStringLiteral("album.wav")));
    EXPECT_TRUE(outcome->details.join(u'\n').contains(QStringLiteral("is converted as a whole")))
        << outcome->details.join(u'\n').toStdString();
}

TEST_F(AudioConversionTest, windowThatGoesMeanwhile_takesTheSheetAndTheConversionWithIt)
{
    panel().convertChosen(into("results", KRAudioConverter::waveFormat));
    const QPointer<QDialog> shown = sheet();
    ASSERT_TRUE(shown);
    window.letGo();
    EXPECT_TRUE(runEventLoopUntil([&] { return !shown || !shown->isVisible(); }));
}
