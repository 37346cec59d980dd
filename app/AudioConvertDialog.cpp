#include "app/AudioConvertDialog.h"

#include <TessaronClasses/KRAudioConverter.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

constexpr int widthOfConvertDialog = 480;

} // namespace

AudioConvertDialog::AudioConvertDialog(const Choice &choice, qsizetype files, QWidget *parent)
    : QDialog(parent)
    , m_format(new QComboBox(this))
    , m_tags(new QCheckBox(tr("&Titles and covers, too"), this))
    , m_folder(new QLineEdit(stringWithFileSystemRepresentation(choice.folder), this))
    , m_hint(new QLabel(this))
{
    setWindowTitle(tr("Convert Sound Files"));
    m_format->addItem(tr("WAVE (not compressed)"), KRAudioConverter::waveFormat);
    m_format->addItem(tr("AIFF (not compressed)"), KRAudioConverter::aiffFormat);
    if (KRAudioConverter::hasEncoder()) {
        m_format->addItem(tr("MP3, about 128 kbit/s"), KRAudioConverter::mp3FormatVariable128);
        m_format->addItem(tr("MP3, about 160 kbit/s"), KRAudioConverter::mp3FormatVariable160);
        m_format->addItem(tr("MP3, 128 kbit/s throughout"), KRAudioConverter::mp3FormatConstant128);
        m_format->addItem(tr("MP3, 160 kbit/s throughout"), KRAudioConverter::mp3FormatConstant160);
    } else {
        m_hint->setText(tr("MP3 files can be made when the program lame is installed."));
    }
    m_format->setCurrentIndex(std::max(0, m_format->findData(choice.format)));
    m_tags->setChecked(choice.carriesTags);
    layOut(files);
    connect(m_format, &QComboBox::currentIndexChanged, this, &AudioConvertDialog::update);
    connect(m_folder, &QLineEdit::textChanged, this, &AudioConvertDialog::update);
    update();
}

void AudioConvertDialog::layOut(qsizetype files)
{
    auto *const column = new QVBoxLayout(this);
    column->addWidget(new QLabel(tr("%n file(s) are converted; the originals stay as they are.", nullptr, int(files))));
    auto *const form = new QFormLayout;
    form->addRow(tr("&Format:"), m_format);
    form->addRow(QString(), m_tags);
    auto *const place = new QHBoxLayout;
    auto *const choose = new QPushButton(tr("C&hoose…"), this);
    place->addWidget(m_folder, 1);
    place->addWidget(choose);
    auto *const label = new QLabel(tr("&Into the folder:"), this);
    label->setBuddy(m_folder);
    m_folder->setAccessibleName(tr("Into the folder"));
    form->addRow(label, place);
    column->addLayout(form);
    m_hint->setWordWrap(true);
    m_hint->setVisible(!m_hint->text().isEmpty());
    column->addWidget(m_hint);
    column->addStretch(1);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_convert = buttons->addButton(tr("&Convert"), QDialogButtonBox::AcceptRole);
    m_convert->setDefault(true);
    choose->setAutoDefault(false);
    connect(choose, &QPushButton::clicked, this, &AudioConvertDialog::askForFolder);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    resize(widthOfConvertDialog, sizeHint().height());
}

void AudioConvertDialog::askForFolder()
{
    auto *const dialog = new QFileDialog(this, tr("Choose a Folder"), m_folder->text());
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, m_folder, &QLineEdit::setText);
    dialog->open();
}

/// A relative path would be one of the folder in which the program was started, which its user does not see.
void AudioConvertDialog::update()
{
    m_tags->setEnabled(hasTags(m_format->currentData().toInt()));
    m_convert->setEnabled(m_folder->text().startsWith(u'/'));
}

bool AudioConvertDialog::hasTags(std::int32_t format)
{
    return format != KRAudioConverter::waveFormat && format != KRAudioConverter::aiffFormat;
}

AudioConvertDialog::Choice AudioConvertDialog::choice() const
{
    return {m_format->currentData().toInt(), m_tags->isChecked(), fileSystemRepresentation(m_folder->text())};
}

} // namespace Tessaron::Desktop
