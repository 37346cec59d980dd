#include "app/AudioView.h"

#include "app/AudioTextDialog.h"
#include "app/AudioTrackModel.h"
#include "app/CapacityMeter.h"
#include "app/JobBar.h"
#include "app/SoundBar.h"
#include "app/WaveformPainting.h"
#include "app/WaveformStore.h"
#include "app/Words.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStandardPaths>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

constexpr std::array minutesOfDiscs = {74, 80, 90, 99};

} // namespace

AudioView::AudioView(AudioTrackModel &tracks, WaveformStore &waveforms, QWidget *parent)
    : QWidget(parent)
    , m_tracks(tracks)
    , m_title(new QLineEdit(this))
    , m_performer(new QLineEdit(this))
    , m_table(new QTreeView(this))
    , m_pause(new QDoubleSpinBox(this))
    , m_gapless(new QCheckBox(tr("&Without a break where there is no pause"), this))
    , m_normalize(new QCheckBox(tr("Common &loudness"), this))
    , m_cdText(new QCheckBox(tr("CD-&TEXT"), this))
    , m_sound(new SoundBar(
          waveforms,
          [&tracks](std::uint64_t id) {
              const int row = tracks.rowOf(id);
              return row < 0 ? std::nullopt : std::optional(tracks.tracks()[row]);
          },
          this))
    , m_progress(new JobBar(this))
    , m_meter(new CapacityMeter(this))
    , m_length(new QLabel(this))
    , m_medium(new QComboBox(this))
{
    m_table->setItemDelegateForColumn(AudioTrackModel::Sound, new WaveformDelegate(tracks, waveforms, m_table));
    makeActions();
    layOut();
    connectFields();
    connect(&waveforms, &WaveformStore::found, m_table->viewport(), [this] { m_table->viewport()->update(); });
    showDisc();
}

AudioView::~AudioView() = default;

void AudioView::makeActions()
{
    const auto make = [this](const QString &text, const char *icon, const QKeySequence &shortcut, auto operation) {
        auto *const action = new QAction(QIcon::fromTheme(QString::fromLatin1(icon)), text, this);
        action->setShortcut(shortcut);
        connect(action, &QAction::triggered, this, operation);
        return action;
    };
    m_add = make(tr("Add &Tracks…"), "list-add", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), &AudioView::addFiles);
    m_texts = make(tr("&CD-TEXT…"), "document-edit", QKeySequence(Qt::CTRL | Qt::Key_T), &AudioView::editTexts);
    m_convert = make(tr("Con&vert…"), "document-export", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E),
                     [this] { Q_EMIT conversionWanted(); });
    m_up = make(tr("Move &Up"), "go-up", QKeySequence(Qt::ALT | Qt::Key_Up), [this] { moveSelected(true); });
    m_down = make(tr("Move &Down"), "go-down", QKeySequence(Qt::ALT | Qt::Key_Down), [this] { moveSelected(false); });
    m_remove = make(tr("&Remove Tracks"), "list-remove", QKeySequence::Delete, &AudioView::removeSelected);
    // A key that means text while someone types belongs to the field.
    m_remove->setShortcutContext(Qt::WidgetShortcut);
    m_table->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_table->addActions({m_sound->listenAction(), m_texts, m_convert, m_up, m_down, m_remove});
}

QList<QAction *> AudioView::actions() const
{
    return {m_add, m_sound->listenAction(), m_texts, m_convert, m_up, m_down, m_remove};
}

void AudioView::connectFields()
{
    enum Series : std::uint8_t { DiscTitle = 2, DiscPerformer };
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &AudioView::updateActions);
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &AudioView::showCurrent);
    connect(&m_tracks, &AudioTrackModel::discChanged, this, &AudioView::showDisc);
    const auto connectText = [this](QLineEdit *field, CDTextKind kind, int series) {
        connect(field, &QLineEdit::textEdited, this, [this, kind, series](const QString &text) {
            m_tracks.edit(
                tr("Change Texts"),
                [&](AudioDisc &disc) { setTextOfKind(disc.texts, kind, text.simplified(), m_tracks.language()); },
                series);
        });
    };
    connectText(m_title, CDTextKind::Title, DiscTitle);
    connectText(m_performer, CDTextKind::Performer, DiscPerformer);
    connect(m_pause, &QDoubleSpinBox::valueChanged, &m_tracks, &AudioTrackModel::setPauseOfAll);
    const auto connectBox = [this](QCheckBox *box, bool AudioDisc::*option) {
        connect(box, &QCheckBox::toggled, this, [this, option](bool isOn) {
            m_tracks.edit(tr("Change Options"), [option, isOn](AudioDisc &disc) { disc.*option = isOn; });
        });
    };
    connectBox(m_gapless, &AudioDisc::isGapless);
    connectBox(m_normalize, &AudioDisc::isNormalized);
    connectBox(m_cdText, &AudioDisc::hasCDText);
    connect(m_medium, &QComboBox::currentIndexChanged, this, [this] {
        m_tracks.edit(tr("Change the Kind of Disc"),
                      [this](AudioDisc &disc) { disc.minutes = m_medium->currentData().toInt(); });
    });
    connect(m_progress, &JobBar::cancelWanted, this, &AudioView::cancelWanted);
    connect(m_sound, &SoundBar::failed, this, [this](const ListenResult &result) {
        const QString reason = errorText(result.error);
        if (result.isDeviceMissing)
            Q_EMIT told(tr("There is no sound device, so nothing can be heard. The disc can be made all the same."),
                        {reason});
        else
            Q_EMIT told(reason, {});
    });
}

QLayout *AudioView::names()
{
    auto *const row = new QHBoxLayout;
    auto *const titleLabel = new QLabel(tr("T&itle of the disc:"), this);
    titleLabel->setBuddy(m_title);
    auto *const performerLabel = new QLabel(tr("P&erformer:"), this);
    performerLabel->setBuddy(m_performer);
    row->addWidget(titleLabel);
    row->addWidget(m_title, 1);
    row->addWidget(performerLabel);
    row->addWidget(m_performer, 1);
    return row;
}

QLayout *AudioView::options()
{
    auto *const row = new QHBoxLayout;
    auto *const pauseLabel = new QLabel(tr("&Pause between tracks:"), this);
    pauseLabel->setBuddy(m_pause);
    m_pause->setRange(0, AudioTrackModel::longestPause);
    m_pause->setSingleStep(0.5);
    m_pause->setDecimals(1);
    m_pause->setSuffix(tr(" s"));
    m_pause->setKeyboardTracking(false);
    m_cdText->setToolTip(tr("Titles and performers for players that show them"));
    m_normalize->setToolTip(
        tr("Brings the whole disc to the loudness that is usual, in the same measure for all tracks"));
    row->addWidget(pauseLabel);
    row->addWidget(m_pause);
    for (QWidget *const box : {m_gapless, m_normalize, m_cdText})
        row->addWidget(box);
    row->addStretch(1);
    return row;
}

QLayout *AudioView::lengths()
{
    auto *const row = new QHBoxLayout;
    m_meter->setAccessibleName(tr("How full the disc is"));
    m_length->setAccessibleName(tr("Length of the disc"));
    m_medium->setAccessibleName(tr("Kind of disc"));
    for (const int minutes : minutesOfDiscs)
        m_medium->addItem(tr("CD, %1 minutes").arg(minutes), minutes);
    m_medium->setCurrentIndex(m_medium->findData(m_tracks.disc().minutes));
    row->addWidget(m_meter, 1);
    row->addWidget(m_length);
    row->addWidget(m_medium);
    return row;
}

void AudioView::layOut()
{
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    layOutTable();
    column->addLayout(names());
    column->addWidget(m_table, 1);
    column->addWidget(m_sound);
    column->addLayout(options());
    column->addWidget(m_progress);
    column->addLayout(lengths());
}

void AudioView::layOutTable()
{
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
    header.setStretchLastSection(false);
    header.setSectionResizeMode(AudioTrackModel::Title, QHeaderView::Stretch);
    const QFontMetrics metrics = fontMetrics();
    header.resizeSection(AudioTrackModel::Number, metrics.horizontalAdvance(QStringLiteral("000000")));
    header.resizeSection(AudioTrackModel::Performer, metrics.horizontalAdvance(QString(18, u'n')));
    header.resizeSection(AudioTrackModel::Length, metrics.horizontalAdvance(QStringLiteral("0:00:00000")));
    header.resizeSection(AudioTrackModel::Pause, metrics.horizontalAdvance(QStringLiteral("00.00 s000")));
    header.resizeSection(AudioTrackModel::Sound, metrics.horizontalAdvance(QString(16, u'n')));
    header.resizeSection(AudioTrackModel::File, metrics.horizontalAdvance(QString(14, u'n')));
}

void AudioView::setPauseSeconds(double seconds)
{
    m_pause->setValue(seconds);
}

void AudioView::showDisc()
{
    const AudioDisc &disc = m_tracks.disc();
    // A field that is typed into keeps its blanks and its cursor.
    const auto showText = [](QLineEdit *field, const QString &text) {
        if (field->text().simplified() != text)
            field->setText(text);
    };
    showText(m_title, textOfKind(disc.texts, CDTextKind::Title, m_tracks.language()));
    showText(m_performer, textOfKind(disc.texts, CDTextKind::Performer, m_tracks.language()));
    const auto quietly = [](auto *field, const auto &show) {
        const QSignalBlocker quiet(field);
        show();
    };
    quietly(m_pause, [&] { m_pause->setValue(double(disc.gap) / soundFramesPerSecond); });
    quietly(m_gapless, [&] { m_gapless->setChecked(disc.isGapless); });
    quietly(m_normalize, [&] { m_normalize->setChecked(disc.isNormalized); });
    quietly(m_cdText, [&] { m_cdText->setChecked(disc.hasCDText); });
    quietly(m_medium, [&] { m_medium->setCurrentIndex(std::max(m_medium->findData(disc.minutes), 0)); });
    m_sound->lookAgain();
    showLength();
    showCurrent();
    updateActions();
}

void AudioView::showLength()
{
    const double seconds = secondsOfDisc(m_tracks.disc());
    const double room = m_tracks.disc().minutes * 60.0;
    const auto text = [](double length) { return durationText(std::chrono::seconds(std::llround(length))); };
    m_length->setText(seconds > room ? tr("%1: %2 too long").arg(text(seconds), text(seconds - room))
                                     : tr("%1, %2 free").arg(text(seconds), text(room - seconds)));
    m_meter->setFill(room > 0 ? seconds / room : 0);
    m_meter->setAccessibleDescription(m_length->text());
}

/// Listening plays the track that has the focus in the table, or the first track when no row has it.
void AudioView::showCurrent()
{
    const QList<AudioTrackRow> &tracks = m_tracks.tracks();
    const int current = std::max(m_table->currentIndex().row(), 0);
    m_sound->setTrack(current < tracks.size() ? std::optional(tracks[current]) : std::nullopt);
}

void AudioView::editTexts()
{
    auto *const editor = new AudioTextDialog(m_tracks.disc(), this);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    connect(editor, &QDialog::accepted, this, [this, editor] {
        m_tracks.edit(tr("Change Texts"), [editor](AudioDisc &disc) { editor->putInto(disc); });
    });
    editor->open();
    editor->goTo(m_table->currentIndex().row());
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

QList<int> AudioView::chosenRows() const
{
    QList<int> rows = selectedRows();
    if (rows.isEmpty()) {
        rows.resize(m_tracks.tracks().size());
        std::iota(rows.begin(), rows.end(), 0);
    }
    return rows;
}

void AudioView::updateActions()
{
    const QList<int> rows = selectedRows();
    m_convert->setEnabled(!m_tracks.tracks().isEmpty());
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
