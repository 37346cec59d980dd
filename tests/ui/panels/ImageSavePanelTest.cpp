#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QLineEdit>
#include <QTemporaryDir>

#include <TessaronClassesUI/ImageSavePanel.h>
#include <gtest/gtest.h>

using namespace Tessaron;

namespace
{

const QStringList names = {QStringLiteral("ISO image"), QStringLiteral("BIN image with cue sheet"),
                           QStringLiteral("VANT image")};
const QStringList extensions = {QStringLiteral("iso"), QStringLiteral("bin"), QStringLiteral("vant")};

class ImageSavePanelTest : public testing::Test
{
protected:
    void make(const std::optional<QStringList> &itsExtensions, const std::optional<QStringList> &itsNames)
    {
        panel = ImageSavePanel::savePanelWithExtensions(itsExtensions, itsNames, &index);
        ASSERT_NE(panel, nullptr);
        panel->setDirectory(folder.path());
        popUp = panel->findChild<QComboBox *>({}, Qt::FindChildrenRecursively);
        for (QComboBox *const candidate : panel->findChildren<QComboBox *>()) {
            if (candidate->count() > 0 && itsNames && !itsNames->isEmpty()
                && candidate->itemText(0) == itsNames->first())
                popUp = candidate;
        }
        ASSERT_NE(popUp, nullptr);
        field = panel->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(field, nullptr);
    }

    /// Types a name, presses "Save" and returns what would be written.
    QString saveAs(const QString &name)
    {
        panel->show();
        field->setText(name);
        panel->accept();
        EXPECT_EQ(panel->result(), QDialog::Accepted);
        return QFileInfo(panel->selectedFiles().value(0)).fileName();
    }

    QTemporaryDir folder;
    int index = 7;
    std::unique_ptr<ImageSavePanel> panel;
    QComboBox *popUp = nullptr;
    QLineEdit *field = nullptr;
};

} // namespace

TEST_F(ImageSavePanelTest, savePanel_isNull_whenNamesOrAddressAreMissing)
{
    EXPECT_EQ(ImageSavePanel::savePanelWithExtensions(extensions, std::nullopt, &index), nullptr);
    EXPECT_EQ(ImageSavePanel::savePanelWithExtensions(extensions, names, nullptr), nullptr);
    EXPECT_EQ(index, 7);
}

TEST_F(ImageSavePanelTest, savePanel_choosesTheFirstFormat_whateverTheIntegerHolds)
{
    index = 2;
    make(extensions, names);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(popUp->currentIndex(), 0);
    EXPECT_EQ(panel->requiredFileType(), QStringLiteral("iso"));
}

TEST_F(ImageSavePanelTest, savePanel_hasAnItemForEachNameInOrder)
{
    make(extensions, names);
    ASSERT_EQ(popUp->count(), 3);
    for (int item = 0; item < 3; ++item)
        EXPECT_EQ(popUp->itemText(item), names.at(item));
    EXPECT_FALSE(popUp->isEditable());
}

TEST_F(ImageSavePanelTest, savePanel_savesAndMayMakeFolders)
{
    make(extensions, names);
    EXPECT_EQ(panel->acceptMode(), QFileDialog::AcceptSave);
    EXPECT_EQ(panel->fileMode(), QFileDialog::AnyFile);
    EXPECT_FALSE(panel->testOption(QFileDialog::ReadOnly));
    EXPECT_TRUE(panel->testOption(QFileDialog::DontUseNativeDialog));
}

TEST_F(ImageSavePanelTest, popUp_isAsWideAsItsWidestTitleAnd30)
{
    make(extensions, names);
    QFont font(QStringLiteral("Lucida Grande"));
    font.setPixelSize(13);
    const QFontMetrics metrics(font);
    int widest = 0;
    for (const QString &name : names)
        widest = std::max(widest, metrics.horizontalAdvance(name));
    panel->show();
    EXPECT_EQ(popUp->size(), QSize(widest + 30, 26));
    EXPECT_TRUE(popUp->isVisible());
}

TEST_F(ImageSavePanelTest, choosingTheThirdFormat_setsIntegerAndRequiredType)
{
    make(extensions, names);
    Q_EMIT popUp->activated(2); // as a click on the item does
    EXPECT_EQ(index, 2);
    EXPECT_EQ(popUp->currentIndex(), 2);
    EXPECT_EQ(panel->requiredFileType(), QStringLiteral("vant"));
}

TEST_F(ImageSavePanelTest, formatPopUpAction_ignoresAnIndexWithoutAnItem)
{
    make(extensions, names);
    panel->formatPopUpAction(1);
    panel->formatPopUpAction(3);
    panel->formatPopUpAction(-1);
    EXPECT_EQ(index, 1);
}

TEST_F(ImageSavePanelTest, savePanel_keepsTheTypeThatIsTyped_whenThereAreNoExtensions)
{
    make(std::nullopt, names);
    for (int item = 0; item < 3; ++item) {
        panel->formatPopUpAction(item);
        EXPECT_EQ(index, item);
        EXPECT_TRUE(panel->requiredFileType().isEmpty());
        EXPECT_EQ(popUp->itemData(item).toString(), QStringLiteral("????"));
    }
    EXPECT_EQ(saveAs(QStringLiteral("disc.img")), QStringLiteral("disc.img"));
}

TEST_F(ImageSavePanelTest, savePanel_takesMissingExtensionsForNone)
{
    make(QStringList{QStringLiteral("iso")}, names);
    panel->formatPopUpAction(2);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(panel->requiredFileType(), QStringLiteral("iso")) << "the type chosen before stays";
    EXPECT_EQ(popUp->itemData(2).toString(), QStringLiteral("????"));
}

TEST_F(ImageSavePanelTest, savePanel_leavesTheIntegerAlone_whenThereIsNoFormat)
{
    const auto empty = ImageSavePanel::savePanelWithExtensions(QStringList(), QStringList(), &index);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(index, 7);
}

TEST_F(ImageSavePanelTest, hiddenExtension_mayBeSelected_onlyWhenExtensionsAreGiven)
{
    make(std::nullopt, names);
    EXPECT_FALSE(panel->canSelectHiddenExtension());
    EXPECT_FALSE(panel->isExtensionHidden());
    make(extensions, names);
    EXPECT_TRUE(panel->canSelectHiddenExtension());
    EXPECT_FALSE(panel->isExtensionHidden());
    panel->findChild<QCheckBox *>()->setChecked(true);
    EXPECT_TRUE(panel->isExtensionHidden());
}

TEST_F(ImageSavePanelTest, save_appendsTheRequiredType_whenTheNameHasAnother)
{
    const QList<std::pair<QString, QString>> rows = {
        {QStringLiteral("disc"), QStringLiteral("disc.iso")},
        {QStringLiteral("disc.iso"), QStringLiteral("disc.iso")},
        {QStringLiteral("disc.ISO"), QStringLiteral("disc.ISO")},
        {QStringLiteral("disc.bin"), QStringLiteral("disc.bin.iso")},
        {QStringLiteral("my.disc"), QStringLiteral("my.disc.iso")},
        {QStringLiteral(".iso"), QStringLiteral(".iso.iso")},
    };
    for (const auto &[typed, saved] : rows) {
        make(extensions, names);
        EXPECT_EQ(saveAs(typed), saved);
    }
}

TEST_F(ImageSavePanelTest, choosingAFormat_changesTheExtensionOfATypedName)
{
    make(extensions, names);
    field->setText(QStringLiteral("disc.iso"));
    panel->formatPopUpAction(1);
    EXPECT_EQ(field->text(), QStringLiteral("disc.bin"));
    field->setText(QStringLiteral("disc.img"));
    panel->formatPopUpAction(2);
    EXPECT_EQ(field->text(), QStringLiteral("disc.img")) << "what is typed otherwise is the user's own";
}

TEST_F(ImageSavePanelTest, savePanel_ignoresSurplusExtensions_andTakesQuestionMarksForNone)
{
    make(QStringList{QStringLiteral("iso"), QStringLiteral("????"), QStringLiteral("vant"), QStringLiteral("toc")},
         names);
    EXPECT_EQ(popUp->count(), 3);
    panel->formatPopUpAction(1);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(panel->requiredFileType(), QStringLiteral("iso"));
}

int main(int argc, char **argv)
{
    // Listing the tests starts the program, too, on a build machine without a display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
