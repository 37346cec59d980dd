#include "app/AudioView.h"
#include "app/NoticeBar.h"
#include "app/ProjectActions.h"
#include "app/ProjectKeeper.h"
#include "app/SoundBar.h"

#include "tests/app/AudioPanelFixture.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QTreeView>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

namespace
{

using AudioPanelTest = AudioPanelFixture;

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
    panel().audioView().setPauseSeconds(2);
    EXPECT_TRUE(panel().audioView().lengthText().startsWith(QStringLiteral("0:13")));
    add({tree.path("c.wav")}, 1);
    EXPECT_EQ(files(), named("a.wav c.wav b.wav"));
    EXPECT_EQ(model().tracks()[1].order.gap, 150u);
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
    panel().audioView().setPauseSeconds(2);
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

TEST_F(AudioPanelTest, closing_asksFirst_whileTheProjectIsNotSaved)
{
    window.show();
    add({tree.path("a.wav")});
    EXPECT_FALSE(window.close());
    auto *const question = window.findChild<QMessageBox *>();
    ASSERT_NE(question, nullptr);
    question->button(QMessageBox::Cancel)->click();
    drainEventLoop();
    EXPECT_TRUE(window.isVisible());
    bool isSaved = false;
    window.projects().keeper()->save(tree.path("out/album.tessaron"), [&isSaved](const NSError &error) {
        EXPECT_FALSE(error);
        isSaved = true;
    });
    EXPECT_TRUE(runEventLoopUntil([&isSaved] { return isSaved; }));
    EXPECT_TRUE(window.close());
}

TEST_F(AudioPanelTest, moreThan99Tracks_areLeftOut_andTold)
{
    add(QList<QByteArray>(60, tree.path("a.wav")));
    add(QList<QByteArray>(60, tree.path("b.wav")));
    EXPECT_EQ(model().rowCount(), 99);
    EXPECT_EQ(window.notices().details().size(), 21);
}

TEST_F(AudioPanelTest, cueSheet_givesItsTracks_withPausesTextsAndCodes)
{
    tree.makeFile(
        "album.cue",
        "CATALOG 4006408061205\nTITLE \"Summer\"\nPERFORMER \"The Gulls\"\n"
        "FILE \"c.wav\" WAVE\n"
        "  TRACK 01 AUDIO\n    TITLE \"One\"\n    INDEX 01 00:00:00\n"
        "  TRACK 02 AUDIO\n    TITLE \"Two\"\n    ISRC DEA628900001\n    PREGAP 00:01:00\n    INDEX 01 00:04:00\n");
    add({tree.path("album.cue")});
    add({tree.path("a.wav")});
    EXPECT_EQ(files(), named("c.wav c.wav a.wav"));
    EXPECT_EQ(model().index(0, AudioTrackModel::Title).data().toString(), QStringLiteral("One"));
    EXPECT_EQ(model().index(0, AudioTrackModel::Length).data().toString(), QStringLiteral("0:04"));
    EXPECT_EQ(model().index(1, AudioTrackModel::Length).data().toString(), QStringLiteral("0:03"));
    EXPECT_EQ(model().index(1, AudioTrackModel::Pause).data().toString(), QStringLiteral("1.0 s"));
    EXPECT_EQ(model().tracks()[1].order.isrc, "DEA628900001");
    EXPECT_EQ(model().disc().mediaCatalogNumber, "4006408061205");
    EXPECT_EQ(panel().suggestedName(), QStringLiteral("Summer"));

    // The parts of a file in another order.
    model().move({1}, 0);
    window.saveImageAs(tree.path("out/album.bin"), DiscFormat::BIN);
    EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    constexpr qsizetype bytesPerSecond = 176'400;
    const QByteArray image = tree.contents("out/album.bin");
    EXPECT_EQ(image.size(), 12 * bytesPerSecond);
    EXPECT_EQ(image.left(7 * bytesPerSecond), QByteArray(7 * bytesPerSecond, 3));
    const QByteArray sheet = tree.contents("out/album.cue");
    EXPECT_LT(sheet.indexOf("\"Two\""), sheet.indexOf("\"One\"")) << sheet.constData();
    EXPECT_TRUE(sheet.contains("CATALOG 4006408061205")) << sheet.constData();
}

TEST_F(AudioPanelTest, list_givesItsFiles_andABadOneIsTold)
{
    tree.makeFile("list.m3u", "b.wav\na.wav\n");
    tree.makeFile("bad.cue", "FILE \"gone.wav\" WAVE\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n");
    add({tree.path("list.m3u"), tree.path("bad.cue"), tree.path("c.wav")});
    EXPECT_EQ(files(), named("b.wav a.wav c.wav"));
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("bad.cue"))) << window.notices().text().toStdString();
}

TEST_F(AudioPanelTest, everyChange_isUndone_andTheSelectionStays)
{
    add({tree.path("a.wav"), tree.path("b.wav"), tree.path("c.wav")});
    const AudioDisc before = model().disc();
    QTreeView &table = panel().audioView().table();
    table.setCurrentIndex(model().index(1, AudioTrackModel::Title));
    const std::uint64_t chosen = model().tracks()[1].id;
    panel().audioView().setPauseSeconds(1);
    panel().audioView().setPauseSeconds(2);
    for (QCheckBox *const box : panel().audioView().findChildren<QCheckBox *>())
        box->click();
    auto *const title = panel().audioView().findChild<QLineEdit *>();
    ASSERT_NE(title, nullptr);
    QTest::keyClicks(title, QStringLiteral("Summer "));
    EXPECT_EQ(title->text(), QStringLiteral("Summer "));
    EXPECT_EQ(textOfKind(model().disc().texts, CDTextKind::Title), QStringLiteral("Summer"));
    EXPECT_TRUE(model().setData(model().index(1, AudioTrackModel::Pause), 3.5));
    EXPECT_FALSE(model().setData(model().index(0, AudioTrackModel::Pause), 3.5));
    EXPECT_TRUE(model().setData(model().index(1, AudioTrackModel::Title), QStringLiteral("Second")));
    model().move({1}, 0);
    EXPECT_EQ(model().tracks()[std::size_t(table.currentIndex().row())].id, chosen);
    const AudioDisc after = model().disc();
    EXPECT_EQ(model().undoStack().count(), 1 + 1 + 3 + 1 + 1 + 1 + 1);
    while (model().undoStack().index() > 1)
        model().undoStack().undo();
    EXPECT_TRUE(model().disc() == before);
    EXPECT_EQ(title->text(), QString());
    EXPECT_EQ(table.currentIndex().row(), 1);
    while (model().undoStack().canRedo())
        model().undoStack().redo();
    EXPECT_TRUE(model().disc() == after);
}

TEST_F(AudioPanelTest, pauseInFrontOfTheDisc_isLeftOut_andTold)
{
    const auto sheet = [](const char *pause) {
        return QByteArray("FILE \"a.wav\" WAVE\n  TRACK 01 AUDIO\n    PREGAP ") + pause + "\n    INDEX 01 00:00:00\n";
    };
    tree.makeFile("long.cue", sheet("00:05:00"));
    tree.makeFile("standard.cue", sheet("00:02:00"));
    add({tree.path("standard.cue")});
    EXPECT_EQ(window.notices().text(), QString()) << "every disc has that";
    // Behind other tracks it is a pause like any other.
    add({tree.path("long.cue")});
    EXPECT_EQ(window.notices().text(), QString());
    EXPECT_EQ(model().tracks()[1].order.gap, 5u * soundFramesPerSecond);
    model().remove({0, 1});
    add({tree.path("long.cue")});
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("long.cue"))) << window.notices().text().toStdString();
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("5.00 s"))) << window.notices().text().toStdString();
    EXPECT_EQ(model().tracks()[0].order.gap, 0u) << "it would come back when another track is put in front";
}

TEST_F(AudioPanelTest, project_bringsBackTracksTextsAndOptions_andFindsMovedFiles)
{
    tree.makeFile(
        "album.cue",
        "FILE \"c.wav\" WAVE\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
        "  TRACK 02 AUDIO\n    FLAGS DCP\n    INDEX 00 00:03:00\n    INDEX 01 00:04:00\n    INDEX 02 00:05:00\n");
    add({tree.path("a.wav"), tree.path("album.cue")});
    EXPECT_TRUE(model().setData(model().index(0, AudioTrackModel::Title), QStringLiteral("First")));
    panel().audioView().setPauseSeconds(1.5);
    model().edit(QStringLiteral("x"), [](AudioDisc &disc) {
        disc.isGapless = false;
        disc.minutes = 74;
        disc.mediaCatalogNumber = "4006408061205";
        disc.texts[8][CDTextKind::Title] = QStringLiteral("Sommer");
    });
    const auto save = [this](const char *name) {
        bool isSaved = false;
        window.projects().keeper()->save(tree.path(name), [&isSaved](const NSError &error) {
            EXPECT_FALSE(error) << error.localizedDescription().toStdString();
            isSaved = true;
        });
        EXPECT_TRUE(runEventLoopUntil([&isSaved] { return isSaved; }));
    };
    save("out/album.tessaron");
    EXPECT_TRUE(model().undoStack().isClean());
    const AudioDisc saved = model().disc();
    const auto withoutIds = [](AudioDisc disc) {
        for (AudioTrackRow &track : disc.tracks)
            track.id = 0;
        return disc;
    };

    tree.makeFolder("elsewhere");
    ASSERT_EQ(::rename(tree.path("a.wav").constData(), tree.path("elsewhere/x.wav").constData()), 0);
    window.projects().begin();
    EXPECT_EQ(model().rowCount(), 0);
    window.showPanel(0); // the project says which panel it is for
    window.openFiles({tree.path("out/album.tessaron")});
    EXPECT_TRUE(runEventLoopUntil([this] { return model().rowCount() == 3; }));
    EXPECT_EQ(&window.currentPanel(), &panel());
    AudioDisc expected = withoutIds(saved);
    expected.tracks[0].order.sound[0].path = tree.path("elsewhere/x.wav");
    EXPECT_TRUE(withoutIds(model().disc()) == expected);
    EXPECT_TRUE(model().undoStack().isClean());

    // What is missing is told, and the next project still knows it.
    const QByteArray sound = tree.contents("c.wav");
    tree.remove("c.wav");
    window.openFiles({tree.path("out/album.tessaron")});
    EXPECT_TRUE(runEventLoopUntil([this] { return model().rowCount() == 3 && model().tracks()[1].isMissing; }));
    EXPECT_TRUE(window.notices().details().join(u' ').contains(QStringLiteral("c.wav")));
    save("out/again.tessaron");
    tree.makeFile("c.wav", sound);
    window.openFiles({tree.path("out/again.tessaron")});
    EXPECT_TRUE(runEventLoopUntil([this] { return model().rowCount() == 3 && !model().tracks()[1].isMissing; }));
    EXPECT_TRUE(withoutIds(model().disc()) == expected);
}

TEST_F(AudioPanelTest, projectThatCannotBe_isTold_andTheDiscStays)
{
    add({tree.path("a.wav")});
    const QByteArray head = R"({"format":"tessaron-project","version":1,"kind":"audio","tracks":)";
    tree.makeFile("no file.tessaron", head + R"([{"sound":[]}]})");
    tree.makeFile("unnamed.tessaron", head + R"([{"sound":[{"first":-5,"frames":1e300}]}]})");
    tree.makeFile("many.tessaron", head + '[' + QByteArray("{},").repeated(99) + "{}]}");
    tree.makeFile("other.tessaron", R"({"format":"tessaron-project","version":1,"kind":"wax"})");
    for (const char *const name : {"no file.tessaron", "unnamed.tessaron", "many.tessaron", "other.tessaron"}) {
        window.notices().clear();
        window.projects().openAt(tree.path(name));
        // The present disc is asked about first, where the project is one of sound at all.
        EXPECT_TRUE(runEventLoopUntil([this] {
            if (auto *const question = window.findChild<QMessageBox *>()) {
                question->button(QMessageBox::Discard)->click();
                delete question;
            }
            return !window.notices().text().isEmpty();
        }));
        EXPECT_TRUE(window.notices().text().contains(QString::fromUtf8(name))) << window.notices().text().toStdString();
    }
    EXPECT_EQ(files(), named("a.wav"));
}

TEST_F(AudioPanelTest, waveforms_areMade_keptForUndo_andGivenUpWithTheTrack)
{
    add({tree.path("a.wav"), tree.path("b.wav")});
    WaveformStore &waveforms = panel().waveforms();
    EXPECT_TRUE(runEventLoopUntil([&] { return waveforms.waveformOf(tree.path("b.wav")); }));
    const Waveform *const known = waveforms.waveformOf(tree.path("b.wav"));
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(known->samples, 6u * 44'100);
    model().remove({1});
    model().undoStack().undo();
    EXPECT_FALSE(waveforms.isWorking());
    EXPECT_NE(waveforms.waveformOf(tree.path("b.wav")), nullptr);

    add({tree.path("c.wav")});
    EXPECT_TRUE(waveforms.isWorking());
    model().remove({2});
    EXPECT_FALSE(waveforms.isWorking());
}

TEST_F(AudioPanelTest, track_isHeard_pausedAndSoughtByKeys)
{
    qputenv("SDL_AUDIODRIVER", "disk");
    qputenv("SDL_DISKAUDIOFILE", tree.path("heard"));
    window.show();
    add({tree.path("a.wav"), tree.path("b.wav")});
    SoundBar &sound = panel().audioView().sound();
    panel().audioView().table().setCurrentIndex(model().index(1, 0));
    EXPECT_EQ(sound.timeText(), QStringLiteral("0:00 of 0:06"));
    EXPECT_TRUE(sound.listenAction()->isEnabled());
    sound.slider().setFocus();
    QTest::keyClick(&sound.slider(), Qt::Key_Right);
    EXPECT_EQ(sound.timeText(), QStringLiteral("0:05 of 0:06"));
    QTest::keyClick(&sound.slider(), Qt::Key_Home);
    sound.listenAction()->trigger();
    EXPECT_TRUE(sound.isListening());
    EXPECT_FALSE(sound.isPaused());
    EXPECT_TRUE(runEventLoopUntil([&] { return sound.slider().value() > 75; }));
    sound.listenAction()->trigger();
    EXPECT_TRUE(sound.isPaused());
    QTest::keyClick(&sound.slider(), Qt::Key_End);
    sound.listenAction()->trigger();
    EXPECT_TRUE(runEventLoopUntil([&] { return !sound.isListening(); }));
    EXPECT_EQ(window.notices().text(), QString());
    EXPECT_TRUE(tree.exists("heard"));

    sound.listenAction()->trigger();
    EXPECT_TRUE(sound.isListening());
    model().remove({1}); // what is heard of a track ends with it
    EXPECT_FALSE(sound.isListening());
}

TEST_F(AudioPanelTest, listening_saysClearly_thatThereIsNoDevice)
{
    qputenv("SDL_AUDIODRIVER", "none");
    add({tree.path("a.wav")});
    SoundBar &sound = panel().audioView().sound();
    sound.listenAction()->trigger();
    EXPECT_TRUE(runEventLoopUntil([&] { return !sound.isListening(); }));
    EXPECT_TRUE(window.notices().text().contains(QStringLiteral("no sound device")))
        << window.notices().text().toStdString();
    EXPECT_EQ(window.notices().details().size(), 1);
}

TEST_F(AudioPanelTest, adding_isGivenUp_withoutWaiting)
{
    panel().addFiles({tree.path("a.wav")});
    EXPECT_TRUE(panel().isLooking());
    Q_EMIT panel().audioView().cancelWanted();
    EXPECT_FALSE(panel().isLooking());
    drainEventLoop();
    EXPECT_EQ(model().rowCount(), 0);
    add({tree.path("b.wav")});
    EXPECT_EQ(files(), named("b.wav"));
}

TEST_F(AudioPanelTest, listsAndSheets_thatAreGivenToTheProgram_goWhereTheyBelong)
{
    tree.makeFile("list.m3u", "b.wav\n");
    tree.makeFile("album.cue", "FILE \"c.wav\" WAVE\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n");
    window.showPanel(0);
    window.openFiles({tree.path("list.m3u")});
    EXPECT_EQ(&window.currentPanel(), &panel());
    EXPECT_TRUE(runEventLoopUntil([this] { return model().rowCount() == 1; }));
    window.openFiles({tree.path("album.cue")});
    EXPECT_TRUE(runEventLoopUntil([this] { return model().rowCount() == 2; }));
    window.showPanel(0);
    window.openFiles({tree.path("album.cue")}); // elsewhere it is that of an image
    EXPECT_EQ(window.currentPanel().title(), QStringLiteral("Image"));
}
