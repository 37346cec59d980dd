#include "app/AudioTextDialog.h"
#include "app/AudioView.h"
#include "app/NoticeBar.h"
#include "app/TextLanguages.h"

#include "platform/disctracks/CDTextPacks.h"
#include "tests/app/AudioPanelFixture.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableWidget>

using namespace Tessaron;
using namespace Tessaron::Desktop;
using namespace Tessaron::Testing;

using AudioTextsTest = AudioPanelFixture;

TEST_F(AudioTextsTest, textsOfDiscAndTracks_areEditedInOneTable)
{
    add({tree.path("a.wav"), tree.path("b.wav")});
    AudioTextDialog dialog(model().disc());
    EXPECT_EQ(dialog.problem(), QString());
    QTableWidget &table = dialog.table();
    ASSERT_EQ(table.rowCount(), 3);
    table.item(0, 0)->setText(QStringLiteral("Summer"));
    table.item(2, 3)->setText(QStringLiteral("A. Composer"));
    table.item(2, 6)->setText(QStringLiteral("DE-A62-89-00001"));
    EXPECT_EQ(dialog.problem(), QString());
    table.item(1, 6)->setText(QStringLiteral("nonsense"));
    EXPECT_TRUE(dialog.problem().contains(QStringLiteral("nonsense")));
    table.item(1, 6)->setText({});
    dialog.catalogNumber().setText(QStringLiteral("123"));
    EXPECT_NE(dialog.problem(), QString());
    dialog.catalogNumber().setText(QStringLiteral("4006408061205"));
    EXPECT_EQ(dialog.problem(), QString());
    AudioDisc disc = model().disc();
    dialog.putInto(disc);
    EXPECT_EQ(textOfKind(disc.texts, CDTextKind::Title), QStringLiteral("Summer"));
    EXPECT_EQ(textOfKind(disc.tracks[1].order.texts, CDTextKind::Composer), QStringLiteral("A. Composer"));
    EXPECT_EQ(disc.tracks[1].order.isrc, "DEA628900001");
    EXPECT_EQ(disc.mediaCatalogNumber, "4006408061205");
}

TEST_F(AudioTextsTest, textsOfSeveralLanguages_areEdited_added_andTakenAway)
{
    add({tree.path("a.wav"), tree.path("b.wav")});
    static constexpr std::uint8_t german = 0x08;
    constexpr std::uint8_t japanese = 0x69;
    model().edit(QStringLiteral("x"), [](AudioDisc &disc) {
        disc.texts[CDTextBlock::english][CDTextKind::Title] = QStringLiteral("Summer");
        disc.texts[german][CDTextKind::Title] = QStringLiteral("Sommer");
        disc.tracks[1].order.texts[german][CDTextKind::Genre] = QStringLiteral("kept");
    });
    AudioTextDialog dialog(model().disc());
    QTableWidget &table = dialog.table();
    ASSERT_EQ(dialog.languages().count(), 2);
    EXPECT_EQ(dialog.languages().currentText(), QStringLiteral("English"));
    EXPECT_EQ(table.item(0, 0)->text(), QStringLiteral("Summer"));
    table.item(1, 0)->setText(QStringLiteral("Harbour"));
    dialog.languages().setCurrentText(QStringLiteral("Deutsch"));
    EXPECT_EQ(table.item(0, 0)->text(), QStringLiteral("Sommer"));
    EXPECT_EQ(table.item(1, 0)->text(), QString()) << "that is the English one's";
    table.item(1, 0)->setText(QStringLiteral("Hafen"));
    for (QAction *const language : dialog.addableLanguages().actions()) {
        EXPECT_NE(language->text(), QStringLiteral("Deutsch"));
        if (language->text() == QString::fromUtf8("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E")) {
            language->trigger();
            break;
        }
    }
    ASSERT_EQ(dialog.languages().count(), 3);
    table.item(0, 0)->setText(QString::fromUtf8("\xE5\xA4\x8F"));
    AudioDisc disc = model().disc();
    dialog.putInto(disc);
    EXPECT_EQ(textOfKind(disc.tracks[0].order.texts, CDTextKind::Title), QStringLiteral("Harbour"));
    EXPECT_EQ(textOfKind(disc.tracks[0].order.texts, CDTextKind::Title, german), QStringLiteral("Hafen"));
    EXPECT_EQ(textOfKind(disc.texts, CDTextKind::Title, japanese), QString::fromUtf8("\xE5\xA4\x8F"));
    EXPECT_EQ(textOfKind(disc.tracks[1].order.texts, CDTextKind::Genre, german), QStringLiteral("kept"));

    dialog.showLanguage(german);
    dialog.removeLanguageButton().click();
    EXPECT_EQ(dialog.languages().count(), 2);
    EXPECT_EQ(dialog.languages().currentText(), QStringLiteral("English"));
    EXPECT_EQ(table.item(1, 0)->text(), QStringLiteral("Harbour"));
    dialog.putInto(disc);
    EXPECT_FALSE(disc.texts.contains(german));
    EXPECT_FALSE(disc.tracks[1].order.texts.contains(german));
    EXPECT_TRUE(disc.texts.contains(japanese));
    // The last language is emptied and stays.
    dialog.showLanguage(japanese);
    dialog.removeLanguage();
    dialog.removeLanguage();
    EXPECT_EQ(dialog.languages().count(), 1);
    EXPECT_EQ(table.item(0, 0)->text(), QString());
    dialog.putInto(disc);
    EXPECT_TRUE(disc.texts.empty());
}

TEST_F(AudioTextsTest, languages_haveTheirOwnNames_withoutACountry)
{
    EXPECT_EQ(textLanguageName(CDTextBlock::english), QStringLiteral("English"));
    EXPECT_EQ(textLanguageName(0x0A), QString::fromUtf8("Espa\xC3\xB1ol"));
    EXPECT_EQ(textLanguageName(0x0F),
              QString::fromUtf8("Fran\xC3\xA7"
                                "ais"));
    EXPECT_EQ(textLanguageName(0x75), QString::fromUtf8("\xE4\xB8\xAD\xE6\x96\x87"));
}

TEST_F(AudioTextsTest, languages_areEightAtMost)
{
    add({tree.path("a.wav")});
    AudioTextDialog dialog(model().disc());
    for (int count = 0; count < 12 && !dialog.addableLanguages().isEmpty(); ++count)
        dialog.addableLanguages().actions().front()->trigger();
    EXPECT_EQ(dialog.languages().count(), 8);
    for (const QPushButton *const button : dialog.findChildren<QPushButton *>()) {
        if (button->menu()) {
            EXPECT_FALSE(button->isEnabled());
        }
    }
    // Those without any text are none of the disc's.
    AudioDisc disc = model().disc();
    dialog.putInto(disc);
    EXPECT_TRUE(disc.texts.empty());
}

TEST_F(AudioTextsTest, textsOfSeveralLanguages_areAStep_andComeOntoTheDisc)
{
    add({tree.path("a.wav"), tree.path("b.wav")});
    panel().audioView().editTexts();
    auto *const dialog = panel().audioView().findChild<AudioTextDialog *>();
    ASSERT_NE(dialog, nullptr);
    dialog->table().item(1, 0)->setText(QStringLiteral("Harbour"));
    dialog->addLanguage(0x08);
    dialog->table().item(1, 0)->setText(QStringLiteral("Hafen"));
    dialog->addLanguage(0x69);
    dialog->table().item(1, 0)->setText(QString::fromUtf8("\xE6\xB8\xAF"));
    const int steps = model().undoStack().count();
    dialog->accept();
    EXPECT_EQ(model().undoStack().count(), steps + 1);
    const AudioDisc edited = model().disc();
    EXPECT_EQ(textLanguagesOf(edited), QList<std::uint8_t>({0x09, 0x08, 0x69}));
    model().undoStack().undo();
    EXPECT_EQ(textLanguagesOf(model().disc()), QList<std::uint8_t>({0x09}));
    model().undoStack().redo();
    EXPECT_TRUE(model().disc() == edited);

    window.saveImageAs(tree.path("out/album.bin"), DiscFormat::BIN);
    EXPECT_TRUE(runEventLoopUntil([this] { return outcome.has_value(); }));
    ASSERT_FALSE(outcome->error) << outcome->summary.toStdString();
    EXPECT_TRUE(outcome->isComplete) << outcome->details.join(u'\n').toStdString();
    const Result<CDText> written = cdTextOfPacks(tree.contents("out/album.cdt"));
    ASSERT_TRUE(written) << written.error().localizedDescription().toStdString();
    ASSERT_EQ(written->blocks.size(), 3u);
    EXPECT_EQ(written->blocks[1].language, 0x08);
    EXPECT_EQ(written->blocks[1].texts.at(CDTextKind::Title)[1], QStringLiteral("Hafen"));
    EXPECT_EQ(written->blocks[2].encoding, CDTextEncoding::ShiftJis);
    // A sheet that names them gives them back.
    tree.makeFile("out/again.cue",
                  "CDTEXTFILE \"album.cdt\"\nFILE \"../a.wav\" WAVE\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
                  "FILE \"../b.wav\" WAVE\n  TRACK 02 AUDIO\n    INDEX 01 00:00:00\n");
    model().replace({});
    add({tree.path("out/again.cue")});
    ASSERT_EQ(model().rowCount(), 2);
    EXPECT_EQ(textLanguagesOf(model().disc()), QList<std::uint8_t>({0x09, 0x08, 0x69}))
        << window.notices().text().toStdString() << window.notices().details().join(u'\n').toStdString();
    EXPECT_EQ(textOfKind(model().tracks()[0].order.texts, CDTextKind::Title, 0x08), QStringLiteral("Hafen"));
    EXPECT_EQ(textOfKind(model().tracks()[0].order.texts, CDTextKind::Title, 0x69), QString::fromUtf8("\xE6\xB8\xAF"));
}

TEST_F(AudioTextsTest, languageThatPlayersShowFirst_isShownAndEditedInTheList)
{
    static constexpr std::uint8_t german = 0x08;
    add({tree.path("a.wav"), tree.path("b.wav")});
    model().edit(QStringLiteral("x"), [](AudioDisc &disc) {
        disc.texts = {{german, {{CDTextKind::Title, QStringLiteral("Sommer")}}}};
        disc.tracks[0].order.texts = {{german, {{CDTextKind::Title, QStringLiteral("Hafen")}}}};
        disc.tracks[1].order.texts = {{german, {{CDTextKind::Title, QStringLiteral("Insel")}}}};
    });
    const QModelIndex title = model().index(0, AudioTrackModel::Title);
    EXPECT_EQ(title.data().toString(), QStringLiteral("Hafen"));
    EXPECT_EQ(panel().suggestedName(), QStringLiteral("Sommer"));
    auto *const field = panel().audioView().findChild<QLineEdit *>();
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(), QStringLiteral("Sommer"));
    field->setText(QStringLiteral("Sommer am Meer"));
    Q_EMIT field->textEdited(field->text());
    EXPECT_TRUE(model().setData(title, QStringLiteral("Der Hafen")));
    EXPECT_EQ(textOfKind(model().disc().texts, CDTextKind::Title, german), QStringLiteral("Sommer am Meer"));
    EXPECT_EQ(textOfKind(model().tracks()[0].order.texts, CDTextKind::Title, german), QStringLiteral("Der Hafen"));
    EXPECT_EQ(textLanguagesOf(model().disc()), QList<std::uint8_t>({german}));
    // With English beside it, that comes first on the disc.
    model().edit(QStringLiteral("x"), [](AudioDisc &disc) {
        disc.tracks[0].order.texts[CDTextBlock::english][CDTextKind::Title] = QStringLiteral("Harbour");
    });
    EXPECT_EQ(title.data().toString(), QStringLiteral("Harbour"));
    model().undoStack().undo();
    EXPECT_EQ(title.data().toString(), QStringLiteral("Der Hafen"));
}

TEST_F(AudioTextsTest, textsOfAFile_areTakenForThoseOfTheLanguageThatTheDiscHas)
{
    static constexpr std::uint8_t german = 0x08;
    AudioDisc disc;
    disc.texts = {{german, {{CDTextKind::Title, QStringLiteral("Sommer")}}}};
    AudioTrackRow track;
    track.order.texts = {{CDTextBlock::english, {{CDTextKind::Title, QStringLiteral("Hafen")}}}};
    const AudioTrackRow tagged = track;
    adaptTextLanguage(track, AudioDisc());
    EXPECT_EQ(track, tagged) << "a disc without texts has no language yet";
    adaptTextLanguage(track, disc);
    EXPECT_EQ(textOfKind(track.order.texts, CDTextKind::Title, german), QStringLiteral("Hafen"));
    EXPECT_FALSE(track.order.texts.contains(CDTextBlock::english));
    // What says its languages itself keeps them.
    track.order.texts[CDTextBlock::english][CDTextKind::Title] = QStringLiteral("Harbour");
    const AudioTrackRow both = track;
    adaptTextLanguage(track, disc);
    EXPECT_EQ(track, both);
}

TEST_F(AudioTextsTest, texts_comeToTheirTracks_whereOthersWereAddedMeanwhile)
{
    add({tree.path("a.wav"), tree.path("b.wav")});
    panel().audioView().editTexts();
    auto *const dialog = panel().audioView().findChild<AudioTextDialog *>();
    ASSERT_NE(dialog, nullptr);
    dialog->table().item(1, 0)->setText(QStringLiteral("Harbour"));
    dialog->table().item(2, 0)->setText(QStringLiteral("Island"));
    add({tree.path("c.wav")}, 0); // was on its way when the dialog was opened
    dialog->accept();
    ASSERT_EQ(model().rowCount(), 3);
    EXPECT_EQ(model().index(0, AudioTrackModel::Title).data().toString(), QString());
    EXPECT_EQ(model().index(1, AudioTrackModel::Title).data().toString(), QStringLiteral("Harbour"));
    EXPECT_EQ(model().index(2, AudioTrackModel::Title).data().toString(), QStringLiteral("Island"));
}
