#include "app/AudioView.h"

#include "app/AudioTrackModel.h"
#include "app/CapacityMeter.h"
#include "app/JobBar.h"
#include "app/Words.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QStandardPaths>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cmath>
#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

constexpr std::array minutesOfDiscs = {74, 80, 90, 99};
constexpr int usualMinutes = 80;

} // namespace

AudioView::AudioView(AudioTrackModel &tracks, QWidget *parent)
    : QWidget(parent)
    , m_tracks(tracks)
    , m_title(new QLineEdit(this))
    , m_performer(new QLineEdit(this))
    , m_table(new QTreeView(this))
    , m_gap(new QDoubleSpinBox(this))
    , m_gapless(new QCheckBox(tr("&Without a break where there is no pause"), this))
    , m_normalize(new QCheckBox(tr("Common &loudness"), this))
    , m_cdText(new QCheckBox(tr("CD-&TEXT"), this))
    , m_progress(new JobBar(this))
    , m_meter(new CapacityMeter(this))
    , m_length(new QLabel(this))
    , m_medium(new QComboBox(this))
{
    makeActions();
    layOut();
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &AudioView::updateActions);
    connect(&m_tracks, &QAbstractItemModel::modelReset, this, &AudioView::updateActions);
    connect(m_gap, &QDoubleSpinBox::valueChanged, this, &AudioView::gapChanged);
    connect(m_medium, &QComboBox::currentIndexChanged, this, [this] { showLength(m_seconds); });
    connect(m_progress, &JobBar::cancelWanted, this, &AudioView::cancelWanted);
    updateActions();
    showLength(0);
}

void AudioView::makeActions()
{
    const auto make = [this](const QString &text, const char *icon, const QKeySequence &shortcut, auto operation) {
        auto *const action = new QAction(QIcon::fromTheme(QString::fromLatin1(icon)), text, this);
        action->setShortcut(shortcut);
        connect(action, &QAction::triggered, this, operation);
        return action;
    };
    m_add = make(tr("Add &Tracks…"), "list-add", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), &AudioView::addFiles);
    m_up = make(tr("Move &Up"), "go-up", QKeySequence(Qt::ALT | Qt::Key_Up), [this] { moveSelected(true); });
    m_down = make(tr("Move &Down"), "go-down", QKeySequence(Qt::ALT | Qt::Key_Down), [this] { moveSelected(false); });
    m_remove = make(tr("&Remove Tracks"), "list-remove", QKeySequence::Delete, &AudioView::removeSelected);
    // A key that means text while someone types belongs to the field.
    m_remove->setShortcutContext(Qt::WidgetShortcut);
    m_table->addAction(m_remove);
}

QList<QAction *> AudioView::actions() const
{
    return {m_add, m_up, m_down, m_remove};
}

QLayout *AudioView::options()
{
    auto *const row = new QHBoxLayout;
    auto *const gapLabel = new QLabel(tr("&Pause between tracks:"), this);
    gapLabel->setBuddy(m_gap);
    m_gap->setRange(0, 10);
    m_gap->setSingleStep(0.5);
    m_gap->setDecimals(1);
    m_gap->setSuffix(tr(" s"));
    m_gapless->setChecked(true);
    m_cdText->setChecked(true);
    m_cdText->setToolTip(tr("Titles and performers for players that show them"));
    m_normalize->setToolTip(
        tr("Brings the whole disc to the loudness that is usual, in the same measure for all tracks"));
    row->addWidget(gapLabel);
    row->addWidget(m_gap);
    for (QWidget *const box : {m_gapless, m_normalize, m_cdText})
        row->addWidget(box);
    row->addStretch(1);
    return row;
}

void AudioView::layOut()
{
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    auto *const names = new QHBoxLayout;
    auto *const titleLabel = new QLabel(tr("T&itle of the disc:"), this);
    titleLabel->setBuddy(m_title);
    auto *const performerLabel = new QLabel(tr("P&erformer:"), this);
    performerLabel->setBuddy(m_performer);
    names->addWidget(titleLabel);
    names->addWidget(m_title, 1);
    names->addWidget(performerLabel);
    names->addWidget(m_performer, 1);
    column->addLayout(names);

    m_table->setModel(&m_tracks);
    m_table->setAccessibleName(tr("Tracks"));
    m_table->setAccessibleDescription(tr("Drop sound files here. They are played in this order."));
    m_table->setRootIsDecorated(false);
    m_table->setUniformRowHeights(true);
    m_table->setAlternatingRowColors(true);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::DoubleClicked
                             | QAbstractItemView::SelectedClicked);
    m_table->setDragEnabled(true);
    m_table->setAcceptDrops(true);
    m_table->setDropIndicatorShown(true);
    m_table->setDragDropMode(QAbstractItemView::DragDrop);
    m_table->setDefaultDropAction(Qt::MoveAction);
    QHeaderView &header = *m_table->header();
    header.setStretchLastSection(true);
    header.setSectionResizeMode(AudioTrackModel::Title, QHeaderView::Stretch);
    const QFontMetrics metrics = fontMetrics();
    header.resizeSection(AudioTrackModel::Number, metrics.horizontalAdvance(QStringLiteral("0000000")));
    header.resizeSection(AudioTrackModel::Performer, metrics.horizontalAdvance(QString(24, u'n')));
    header.resizeSection(AudioTrackModel::Length, metrics.horizontalAdvance(QStringLiteral("0:00:00000")));
    column->addWidget(m_table, 1);
    column->addLayout(options());
    column->addWidget(m_progress);

    auto *const last = new QHBoxLayout;
    m_meter->setAccessibleName(tr("How full the disc is"));
    m_length->setAccessibleName(tr("Length of the disc"));
    m_medium->setAccessibleName(tr("Kind of disc"));
    for (const int minutes : minutesOfDiscs)
        m_medium->addItem(tr("CD, %1 minutes").arg(minutes), minutes);
    m_medium->setCurrentIndex(m_medium->findData(usualMinutes));
    last->addWidget(m_meter, 1);
    last->addWidget(m_length);
    last->addWidget(m_medium);
    column->addLayout(last);
}

QString AudioView::discTitle() const
{
    return m_title->text().simplified();
}

QString AudioView::discPerformer() const
{
    return m_performer->text().simplified();
}

double AudioView::gapSeconds() const
{
    return m_gap->value();
}

void AudioView::setGapSeconds(double seconds)
{
    m_gap->setValue(seconds);
}

bool AudioView::isGapless() const
{
    return m_gapless->isChecked();
}

bool AudioView::isNormalized() const
{
    return m_normalize->isChecked();
}

bool AudioView::hasCDText() const
{
    return m_cdText->isChecked();
}

void AudioView::showLength(double seconds)
{
    m_seconds = seconds;
    const double room = m_medium->currentData().toInt() * 60.0;
    const auto text = [](double length) { return durationText(std::chrono::seconds(std::llround(length))); };
    m_length->setText(seconds > room ? tr("%1: %2 too long").arg(text(seconds), text(seconds - room))
                                     : tr("%1, %2 free").arg(text(seconds), text(room - seconds)));
    m_meter->setFill(room > 0 ? seconds / room : 0);
    m_meter->setAccessibleDescription(m_length->text());
}

QString AudioView::lengthText() const
{
    return m_length->text();
}

QList<int> AudioView::selectedRows() const
{
    QList<int> rows;
    for (const QModelIndex &index : m_table->selectionModel()->selectedRows())
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    return rows;
}

void AudioView::updateActions()
{
    const QList<int> rows = selectedRows();
    m_remove->setEnabled(!rows.isEmpty());
    m_up->setEnabled(!rows.isEmpty() && rows.front() > 0);
    m_down->setEnabled(!rows.isEmpty() && rows.back() < int(m_tracks.tracks().size()) - 1);
}

void AudioView::addFiles()
{
    auto *const dialog =
        new QFileDialog(this, tr("Add Tracks"), QStandardPaths::writableLocation(QStandardPaths::MusicLocation));
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::filesSelected, this, [this](const QStringList &paths) {
        QList<QByteArray> bytes;
        for (const QString &path : paths)
            bytes << fileSystemRepresentation(path);
        Q_EMIT filesWanted(bytes);
    });
    dialog->open();
}

void AudioView::removeSelected()
{
    m_tracks.remove(selectedRows());
}

void AudioView::moveSelected(bool isUp)
{
    const QList<int> rows = selectedRows();
    if (rows.isEmpty())
        return;
    const int to = isUp ? rows.front() - 1 : rows.back() + 2;
    const int first = isUp ? to : to - int(rows.size());
    m_tracks.move(rows, to);
    // The rows are chosen again where they are now.
    QItemSelection selection;
    selection.select(m_tracks.index(first, 0),
                     m_tracks.index(first + int(rows.size()) - 1, AudioTrackModel::columnCountOfAll - 1));
    m_table->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    m_table->setCurrentIndex(m_tracks.index(first, AudioTrackModel::Title));
    m_table->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

} // namespace Tessaron::Desktop
