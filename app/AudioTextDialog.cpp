#include "app/AudioTextDialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
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
    , m_table(new QTableWidget(this))
    , m_number(new QLineEdit(this))
    , m_problem(new QLabel(this))
{
    setWindowTitle(tr("CD-TEXT"));
    auto *const column = new QVBoxLayout(this);
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
    column->addWidget(m_problem);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_accept = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    column->addWidget(buttons);
    fill(disc);
    connect(m_table, &QTableWidget::cellChanged, this, &AudioTextDialog::showProblem);
    connect(m_number, &QLineEdit::textChanged, this, &AudioTextDialog::showProblem);
    showProblem();
    resize(firstWidth, firstHeight);
}

void AudioTextDialog::fill(const AudioDisc &disc)
{
    m_table->setAccessibleName(tr("CD-TEXT"));
    m_table->setColumnCount(isrcColumn + 1);
    m_table->setRowCount(int(disc.tracks.size()) + 1);
    m_table->setHorizontalHeaderLabels(
        {tr("Title"), tr("Performer"), tr("Songwriter"), tr("Composer"), tr("Arranger"), tr("Message"), tr("ISRC")});
    m_table->setTabKeyNavigation(false); // the tab key leads out of the table; arrows go through it
    QStringList rows = {tr("Disc")};
    const auto put = [this](int row, int column, const QString &text) {
        m_table->setItem(row, column, std::make_unique<QTableWidgetItem>(text).release());
    };
    const auto putTexts = [&put](int row, const SpokenTexts &texts) {
        for (std::size_t kind = 0; kind < editedKinds.size(); ++kind)
            put(row, int(kind), textOfKind(texts, editedKinds[kind]));
    };
    putTexts(0, disc.texts);
    put(0, isrcColumn, {});
    m_table->item(0, isrcColumn)->setFlags(Qt::NoItemFlags); // only tracks have one
    for (int track = 0; track < int(disc.tracks.size()); ++track) {
        rows << tr("Track %1").arg(track + 1);
        putTexts(track + 1, disc.tracks[track].order.texts);
        put(track + 1, isrcColumn, QString::fromUtf8(disc.tracks[track].order.isrc));
    }
    m_table->setVerticalHeaderLabels(rows);
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_number->setText(QString::fromLatin1(disc.mediaCatalogNumber));
    m_number->setMaxLength(int(digitsOfNumber));
}

QString AudioTextDialog::textAt(int row, int column) const
{
    const QTableWidgetItem *const item = m_table->item(row, column);
    return item ? item->text().simplified() : QString();
}

void AudioTextDialog::putInto(AudioDisc &disc) const
{
    const auto take = [this](int row, SpokenTexts &texts) {
        for (std::size_t kind = 0; kind < editedKinds.size(); ++kind)
            setTextOfKind(texts, editedKinds[kind], textAt(row, int(kind)));
    };
    take(0, disc.texts);
    const int count = std::min(int(disc.tracks.size()), m_table->rowCount() - 1);
    for (int track = 0; track < count; ++track) {
        take(track + 1, disc.tracks[track].order.texts);
        disc.tracks[track].order.isrc = validIsrc(textAt(track + 1, isrcColumn));
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
            return tr("%1 is no ISRC: that has two letters, three letters or digits, and seven digits.").arg(code);
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
