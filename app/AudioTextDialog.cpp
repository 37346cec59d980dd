#include "app/AudioTextDialog.h"

#include "app/TextLanguages.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace Tessaron::Desktop
{

namespace
{

constexpr std::array editedKinds = {CDTextKind::Title,    CDTextKind::Performer, CDTextKind::Songwriter,
                                    CDTextKind::Composer, CDTextKind::Arranger,  CDTextKind::Message};
constexpr int isrcColumn = int(editedKinds.size());
constexpr qsizetype digitsOfNumber = 13;
constexpr int firstWidth = 900;
constexpr int firstHeight = 420;

bool isCatalogNumber(const QString &number)
{
    return number.size() == digitsOfNumber
        && std::all_of(number.begin(), number.end(), [](QChar each) { return each >= u'0' && each <= u'9'; });
}

} // namespace

AudioTextDialog::AudioTextDialog(const AudioDisc &disc, QWidget *parent)
    : QDialog(parent)
    , m_disc(disc)
    , m_language(textLanguagesOf(disc).front())
    , m_languages(new QComboBox(this))
    , m_addable(new QMenu(this))
    , m_addLanguage(new QPushButton(tr("&Add Language"), this))
    , m_removeLanguage(new QPushButton(tr("&Remove Language"), this))
    , m_table(new QTableWidget(this))
    , m_number(new QLineEdit(this))
    , m_problem(new QLabel(this))
{
    setWindowTitle(tr("CD-TEXT"));
    auto *const column = new QVBoxLayout(this);
    column->addLayout(languageRow());
    auto *const label = new QLabel(tr("&Texts for players that show them:"), this);
    label->setBuddy(m_table);
    column->addWidget(label);
    column->addWidget(m_table, 1);
    auto *const last = new QHBoxLayout;
    auto *const numberLabel = new QLabel(tr("Catalogue &number (EAN, 13 digits):"), this);
    numberLabel->setBuddy(m_number);
    last->addWidget(numberLabel);
    last->addWidget(m_number, 1);
    column->addLayout(last);
    m_problem->setWordWrap(true);
    m_problem->setTextFormat(Qt::PlainText);
    column->addWidget(m_problem);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_accept = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    layOutTable();
    fillTexts();
    for (const std::uint8_t language : textLanguagesOf(m_disc))
        m_languages->addItem(textLanguageName(language), language);
    fillLanguages();
    connect(m_languages, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index >= 0)
            showLanguage(std::uint8_t(m_languages->itemData(index).toUInt()));
    });
    connect(m_removeLanguage, &QPushButton::clicked, this, &AudioTextDialog::removeLanguage);
    connect(m_table, &QTableWidget::cellChanged, this, &AudioTextDialog::showProblem);
    connect(m_number, &QLineEdit::textChanged, this, &AudioTextDialog::showProblem);
    showProblem();
    resize(firstWidth, firstHeight);
}

QHBoxLayout *AudioTextDialog::languageRow()
{
    auto *const row = new QHBoxLayout;
    auto *const label = new QLabel(tr("&Language:"), this);
    label->setBuddy(m_languages);
    m_languages->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_addLanguage->setMenu(m_addable);
    // The Return key is for what is typed.
    for (QPushButton *const button : {m_addLanguage, m_removeLanguage})
        button->setAutoDefault(false);
    row->addWidget(label);
    row->addWidget(m_languages);
    row->addWidget(m_addLanguage);
    row->addWidget(m_removeLanguage);
    row->addStretch(1);
    return row;
}

void AudioTextDialog::layOutTable()
{
    m_table->setAccessibleName(tr("CD-TEXT"));
    m_table->setColumnCount(isrcColumn + 1);
    m_table->setRowCount(int(m_disc.tracks.size()) + 1);
    m_table->setHorizontalHeaderLabels(
        {tr("Title"), tr("Performer"), tr("Songwriter"), tr("Composer"), tr("Arranger"), tr("Message"), tr("ISRC")});
    m_table->setTabKeyNavigation(false); // the tab key leads out of the table; arrows go through it
    QStringList rows = {tr("Disc")};
    for (int row = 0; row < m_table->rowCount(); ++row) {
        for (int column = 0; column <= isrcColumn; ++column)
            m_table->setItem(row, column, std::make_unique<QTableWidgetItem>().release());
        if (row > 0)
            rows << tr("Track %1").arg(row);
    }
    m_table->item(0, isrcColumn)->setFlags(Qt::NoItemFlags); // only tracks have one
    for (int track = 0; track < int(m_disc.tracks.size()); ++track)
        m_table->item(track + 1, isrcColumn)->setText(QString::fromUtf8(m_disc.tracks[track].order.isrc));
    m_table->setVerticalHeaderLabels(rows);
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_table->horizontalHeader()->resizeSection(isrcColumn,
                                               fontMetrics().horizontalAdvance(QStringLiteral("MM-M00-00-00000 ")));
    m_number->setText(QString::fromLatin1(m_disc.mediaCatalogNumber));
    m_number->setMaxLength(int(digitsOfNumber));
}

void AudioTextDialog::fillTexts()
{
    const auto put = [this](int row, const SpokenTexts &texts) {
        for (std::size_t kind = 0; kind < editedKinds.size(); ++kind)
            m_table->item(row, int(kind))->setText(textOfKind(texts, editedKinds[kind], m_language));
    };
    put(0, m_disc.texts);
    for (int track = 0; track < int(m_disc.tracks.size()); ++track)
        put(track + 1, m_disc.tracks[track].order.texts);
}

void AudioTextDialog::keepTexts()
{
    const auto take = [this](int row, SpokenTexts &texts) {
        for (std::size_t kind = 0; kind < editedKinds.size(); ++kind)
            setTextOfKind(texts, editedKinds[kind], textAt(row, int(kind)), m_language);
    };
    take(0, m_disc.texts);
    for (int track = 0; track < int(m_disc.tracks.size()); ++track)
        take(track + 1, m_disc.tracks[track].order.texts);
}

/// What can be added, as long as a disc has room for it.
void AudioTextDialog::fillLanguages()
{
    m_addable->clear();
    for (const std::uint8_t language : writableTextLanguages()) {
        if (m_languages->findData(language) < 0)
            m_addable->addAction(textLanguageName(language), this, [this, language] { addLanguage(language); });
    }
    m_addLanguage->setEnabled(m_languages->count() < mostTextLanguages);
}

void AudioTextDialog::showLanguage(std::uint8_t language)
{
    if (language == m_language)
        return;
    keepTexts();
    m_language = language;
    fillTexts();
    m_languages->setCurrentIndex(m_languages->findData(language));
}

void AudioTextDialog::addLanguage(std::uint8_t language)
{
    if (m_languages->count() >= mostTextLanguages && m_languages->findData(language) < 0)
        return;
    if (m_languages->findData(language) < 0)
        m_languages->addItem(textLanguageName(language), language);
    fillLanguages();
    showLanguage(language);
}

void AudioTextDialog::removeLanguage()
{
    const std::uint8_t removed = m_language;
    if (m_languages->count() > 1) {
        const int index = m_languages->findData(removed);
        showLanguage(std::uint8_t(m_languages->itemData(index == 0 ? 1 : index - 1).toUInt()));
        m_languages->removeItem(m_languages->findData(removed));
    }
    removeTextLanguage(m_disc, removed);
    if (m_language == removed)
        fillTexts();
    fillLanguages();
}

QString AudioTextDialog::textAt(int row, int column) const
{
    const QTableWidgetItem *const item = m_table->item(row, column);
    return item ? item->text().simplified() : QString();
}

void AudioTextDialog::putInto(AudioDisc &disc)
{
    keepTexts();
    disc.texts = m_disc.texts;
    for (int track = 0; track < int(m_disc.tracks.size()); ++track) {
        const std::uint64_t id = m_disc.tracks[track].id;
        const auto own = std::find_if(disc.tracks.begin(), disc.tracks.end(),
                                      [id](const AudioTrackRow &each) { return each.id == id; });
        if (own == disc.tracks.end())
            continue;
        own->order.texts = m_disc.tracks[track].order.texts;
        own->order.isrc = validIsrc(textAt(track + 1, isrcColumn));
    }
    disc.mediaCatalogNumber = m_number->text().toLatin1();
}

void AudioTextDialog::goTo(int track)
{
    m_table->setCurrentCell(std::clamp(track + 1, 0, m_table->rowCount() - 1), 0);
    m_table->setFocus();
}

QString AudioTextDialog::problem() const
{
    for (int row = 1; row < m_table->rowCount(); ++row) {
        const QString code = textAt(row, isrcColumn);
        if (!code.isEmpty() && validIsrc(code).isEmpty())
            return tr("%1 is not an ISRC: that has two letters, three letters or digits, and seven digits.").arg(code);
    }
    const QString number = m_number->text();
    if (!number.isEmpty() && !isCatalogNumber(number))
        return tr("A catalogue number has 13 digits.");
    return {};
}

void AudioTextDialog::showProblem()
{
    const QString text = problem();
    m_problem->setText(text);
    m_problem->setVisible(!text.isEmpty());
    m_accept->setEnabled(text.isEmpty());
}

} // namespace Tessaron::Desktop
