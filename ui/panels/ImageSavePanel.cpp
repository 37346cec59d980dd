#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>

#include <TessaronClassesUI/ImageSavePanel.h>
#include <algorithm>

namespace Tessaron
{

namespace
{

/// Stands in an item for a format that has no extension of its own.
const QString noExtension = QStringLiteral("????");

constexpr QSize popUpSize(250, 26);
/// The width that the pop-up needs beside its widest title.
constexpr int roomBesideTitle = 30;
constexpr int titlePixels = 13;

QFont titleFont()
{
    // Where there is no such family, the system chooses the nearest.
    QFont font(QStringLiteral("Lucida Grande"));
    font.setPixelSize(titlePixels);
    return font;
}

QLineEdit *nameField(const QFileDialog &dialog)
{
    return dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
}

bool endsWithExtension(const QString &name, const QString &extension)
{
    return !extension.isEmpty() && name.endsWith(u'.' + extension, Qt::CaseInsensitive)
        && name.size() > extension.size() + 1;
}

} // namespace

std::unique_ptr<ImageSavePanel>
ImageSavePanel::savePanelWithExtensions(const std::optional<QStringList> &extensions,
                                        const std::optional<QStringList> &localizedNames, int *selectedFormatIndex,
                                        QWidget *parent)
{
    if (!localizedNames || !selectedFormatIndex)
        return nullptr;
    std::unique_ptr<ImageSavePanel> panel(new ImageSavePanel(extensions, *localizedNames, selectedFormatIndex, parent));
    panel->formatPopUpAction(0);
    return panel;
}

ImageSavePanel::ImageSavePanel(const std::optional<QStringList> &extensions, const QStringList &localizedNames,
                               int *selectedFormatIndex, QWidget *parent)
    : QFileDialog(parent)
    , m_selectedFormatIndex(selectedFormatIndex)
    , m_popUp(new QComboBox(this))
    , m_hideExtension(extensions ? new QCheckBox(QCoreApplication::translate("ImageSavePanel", "Hide extension"), this)
                                 : nullptr)
{
    // A dialog of the platform's own takes no accessory view.
    setOption(DontUseNativeDialog);
    setOption(ReadOnly, false); // folders may be made
    setAcceptMode(AcceptSave);
    setFileMode(AnyFile);
    addFormats(localizedNames, extensions.value_or(QStringList()));
    addAccessoryView();
}

void ImageSavePanel::addFormats(const QStringList &localizedNames, const QStringList &extensions)
{
    m_popUp->setGeometry(QRect(QPoint(0, 0), popUpSize));
    m_popUp->setFont(titleFont());
    const QFontMetrics metrics(titleFont());
    int widest = 0;
    for (qsizetype index = 0; index < localizedNames.size(); ++index) {
        m_popUp->addItem(localizedNames.at(index), extensions.value(index, noExtension));
        widest = std::max(widest, metrics.horizontalAdvance(localizedNames.at(index)));
    }
    m_popUp->setFixedSize(widest + roomBesideTitle, popUpSize.height());
    connect(m_popUp, &QComboBox::activated, this, &ImageSavePanel::formatPopUpAction);
}

void ImageSavePanel::addAccessoryView()
{
    auto *const accessory = new QWidget(this);
    auto *const row = new QHBoxLayout(accessory);
    row->addStretch();
    row->addWidget(m_popUp);
    if (m_hideExtension)
        row->addWidget(m_hideExtension);
    row->addStretch();
    auto *const grid = qobject_cast<QGridLayout *>(layout());
    Q_ASSERT(grid); // the dialog of Qt's own is laid out in one
    grid->addWidget(accessory, grid->rowCount(), 0, 1, -1);
}

void ImageSavePanel::formatPopUpAction(int item)
{
    if (item < 0 || item >= m_popUp->count())
        return;
    m_popUp->setCurrentIndex(item);
    *m_selectedFormatIndex = item;
    const QString extension = m_popUp->itemData(item).toString();
    if (extension != noExtension)
        setRequiredFileType(extension);
}

/// A name that was typed with the type required before gets the new one.
void ImageSavePanel::setRequiredFileType(const QString &extension)
{
    const QString before = requiredFileType();
    setDefaultSuffix(extension);
    QLineEdit *const field = nameField(*this);
    if (!field || !endsWithExtension(field->text(), before))
        return;
    QString name = field->text();
    name.replace(name.size() - before.size(), before.size(), extension);
    field->setText(name);
}

bool ImageSavePanel::canSelectHiddenExtension() const
{
    return m_hideExtension != nullptr;
}

bool ImageSavePanel::isExtensionHidden() const
{
    return m_hideExtension && m_hideExtension->isChecked();
}

void ImageSavePanel::accept()
{
    QLineEdit *const field = nameField(*this);
    const QString extension = requiredFileType();
    // A folder that was typed is entered, not saved to.
    if (field && !extension.isEmpty() && !field->text().isEmpty() && !endsWithExtension(field->text(), extension)
        && !QFileInfo(directory(), field->text()).isDir())
        field->setText(field->text() + u'.' + extension);
    QFileDialog::accept();
}

} // namespace Tessaron
