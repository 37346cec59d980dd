#include "app/AudioPanel.h"

#include "app/AudioView.h"
#include "app/MainWindow.h"
#include "app/NoticeBar.h"

#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QMessageBox>
#include <QMimeData>
#include <QTreeView>
#include <QtEndian>

#include <gtest/gtest.h>
#include <optional>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

/// A file of 16-bit stereo sound at 44,100 Hz, all samples of the same value.
QByteArray waveOf(int seconds, char sample)
{
    constexpr quint32 samplesPerSecond = 44'100;
    constexpr quint32 bytesPerSample = 4;
    const QByteArray sound(qsizetype(samplesPerSecond * bytesPerSample) * seconds, sample);
    const auto number = [](auto value) {
        QByteArray bytes(qsizetype(sizeof value), '\0');
        qToLittleEndian(value, bytes.data());
        return bytes;
    };
    const QByteArray format = number(quint16(1)) + number(quint16(2)) + number(samplesPerSecond)
        + number(samplesPerSecond * bytesPerSample) + number(quint16(bytesPerSample)) + number(quint16(16));
    const QByteArray body = QByteArray("WAVEfmt ") + number(quint32(format.size())) + format + "data"
        + number(quint32(sound.size())) + sound;
    return "RIFF" + number(quint32(body.size())) + body;
}

class AudioPanelTest : public testing::Test
{
protected:
    AudioPanelTest()
    {
        tree.makeFile("a.wav", waveOf(5, 1));
        tree.makeFile("b.wav", waveOf(6, 2));
        tree.makeFile("c.wav", waveOf(7, 3));
        tree.makeFolder("out");
        QObject::connect(&window, &MainWindow::jobEnded, &window, [this](const JobOutcome &ended) { outcome = ended; });
        window.showPanel(1);
    }

    [[nodiscard]] AudioPanel &panel() { return window.audioPanel(); }
    [[nodiscard]] AudioTrackModel &model() { return panel().tracks(); }
    void add(const QList<QByteArray> &paths, int row = -1)
    {
        panel().addFiles(paths, row);
        EXPECT_TRUE(runEventLoopUntil([this] { return !panel().isLooking(); }));
    }
    [[nodiscard]] QStringList files()
    {
        QStringList names;
        for (int row = 0; row < model().rowCount(); ++row)
            names << model().index(row, AudioTrackModel::File).data().toString();
        return names;
    }

    const TemporaryTree tree;
    MainWindow window;
    std::optional<JobOutcome> outcome;
};

QStringList named(const char *names)
{
    return QString::fromUtf8(names).split(u' ', Qt::SkipEmptyParts);
}

} // namespace

TEST_F(AudioPanelTest, files_becomeTracks_withTheirLengths)
{
    const QAbstractItemModelTester tester(&model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_EQ(&window.currentPanel(), &panel());
    add({tree.path("a.wav"), tree.path("b.wav")});
    EXPECT_EQ(files(), named("a.wav b.wav"));
    EXPECT_EQ(model().index(1, AudioTrackModel::Length).data().toString(), QStringLiteral("0:06"));
    EXPECT_TRUE(panel().audioView().lengthText().startsWith(QStringLiteral("0:11")))
        << panel().audioView().lengthText().toStdString();
    panel().audioView().setGapSeconds(2);
    EXPECT_TRUE(panel().audioView().lengthText().startsWith(QStringLiteral("0:13")));
    add({tree.path("c.wav")}, 1);
    EXPECT_EQ(files(), named("a.wav c.wav b.wav"));
}

TEST_F(AudioPanelTest, whatIsNoSound_isTold_andTheRestIsTaken)
{
    tree.makeFile("letter.txt", "Dear reader,\n");
    add({tree.path("letter.txt"), tree.path("a.wav")});
    EXPECT_EQ(files(), named("a.wav"));
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("letter.txt")))
        << window.notices().text().toStdString();
}

TEST_F(AudioPanelTest, folder_givesItsSounds)
{
    tree.makeFile("album/1.wav", waveOf(4, 1));
    tree.makeFile("album/2.wav", waveOf(4, 2));
    tree.makeFile("album/notes.txt", "notes");
    add({tree.path("album")});
    EXPECT_EQ(files(), named("1.wav 2.wav"));
}

TEST_F(AudioPanelTest, order_isChangedByKeysAndDrags_andUndone)
{
    add({tree.path("a.wav"), tree.path("b.wav"), tree.path("c.wav")});
    QTreeView &table = panel().audioView().table();
    table.setCurrentIndex(model().index(2, 0));
    panel().audioView().moveSelected(true);
    EXPECT_EQ(files(), named("a.wav c.wav b.wav"));
    EXPECT_EQ(table.currentIndex().row(), 1);
    panel().audioView().moveSelected(true);
    EXPECT_EQ(files(), named("c.wav a.wav b.wav"));
    panel().audioView().moveSelected(false);
    EXPECT_EQ(files(), named("a.wav c.wav b.wav"));

    const std::unique_ptr<QMimeData> rows(model().mimeData({model().index(0, 0), model().index(1, 0)}));
    EXPECT_TRUE(model().canDropMimeData(rows.get(), Qt::MoveAction, 3, 0, {}));
    EXPECT_FALSE(model().dropMimeData(rows.get(), Qt::MoveAction, 3, 0, {})); // the view has to remove nothing
    EXPECT_EQ(files(), named("b.wav a.wav c.wav"));
    QMimeData foreign;
    foreign.setData(rows->formats().front(), "7");
    EXPECT_FALSE(model().canDropMimeData(&foreign, Qt::MoveAction, 0, 0, {}));

    table.setCurrentIndex(model().index(0, 0));
    panel().audioView().removeSelected();
    EXPECT_EQ(files(), named("a.wav c.wav"));
    while (model().undoStack().canUndo())
        model().undoStack().undo();
    EXPECT_EQ(files(), QStringList());
    while (model().undoStack().canRedo())
        model().undoStack().redo();
    EXPECT_EQ(files(), named("a.wav c.wav"));
}

TEST_F(AudioPanelTest, image_hasTheTracksInOrder_withGapsAndTexts)
{
    add({tree.path("a.wav"), tree.path("b.wav")});
    EXPECT_TRUE(model().setData(model().index(0, AudioTrackModel::Title), QStringLiteral("First")));
    EXPECT_TRUE(model().setData(model().index(0, AudioTrackModel::Performer), QStringLiteral("Guest")));
    EXPECT_FALSE(model().setData(model().index(0, AudioTrackModel::File), QStringLiteral("x")));
    panel().audioView().setGapSeconds(2);
    window.saveImageAs(tree.path("out/album.bin"), DiscFormat::BIN);
    EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    constexpr qsizetype bytesPerSecond = 176'400;
    const QByteArray image = tree.contents("out/album.bin");
    EXPECT_EQ(image.size(), 13 * bytesPerSecond);
    EXPECT_EQ(image.mid(0, 5 * bytesPerSecond), QByteArray(5 * bytesPerSecond, 1));
    EXPECT_EQ(image.mid(5 * bytesPerSecond, 2 * bytesPerSecond), QByteArray(2 * bytesPerSecond, 0));
    EXPECT_EQ(image.mid(7 * bytesPerSecond), QByteArray(6 * bytesPerSecond, 2));
    const QByteArray sheet = tree.contents("out/album.cue");
    EXPECT_TRUE(sheet.contains("TITLE \"First\"") && sheet.contains("PERFORMER \"Guest\"")) << sheet.constData();
}

TEST_F(AudioPanelTest, closing_asksFirst_whileNoImageWasSaved)
{
    window.show();
    add({tree.path("a.wav")});
    EXPECT_FALSE(window.close());
    auto *const question = window.findChild<QMessageBox *>();
    ASSERT_NE(question, nullptr);
    question->button(QMessageBox::Cancel)->click();
    drainEventLoop();
    EXPECT_TRUE(window.isVisible());
    window.saveImageAs(tree.path("out/album.bin"), DiscFormat::BIN);
    EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    EXPECT_TRUE(window.close());
}

TEST_F(AudioPanelTest, moreThan99Tracks_areLeftOut_andTold)
{
    add(QList<QByteArray>(60, tree.path("a.wav")));
    add(QList<QByteArray>(60, tree.path("b.wav")));
    EXPECT_EQ(model().rowCount(), 99);
    EXPECT_EQ(window.notices().details().size(), 21);
}
