#include "app/AudioTrackModel.h"

#include "app/FileDrops.h"
#include "app/TextLanguages.h"
#include "app/Words.h"

#include <QApplication>
#include <QLocale>
#include <QMimeData>
#include <QSet>
#include <QStyle>
#include <QUndoCommand>

#include <algorithm>
#include <cmath>
#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

const QString trackRowsMimeType = QStringLiteral("application/x-tessaron-track-rows");

} // namespace

class AudioTrackModel::Change final : public QUndoCommand
{
public:
    Change(AudioTrackModel &model, AudioDisc after, const QString &text, int series)
        : QUndoCommand(text)
        , m_model(model)
        , m_before(model.m_disc)
        , m_after(std::move(after))
        , m_series(series)
    {
    }

    void redo() override { m_model.set(m_after); }
    void undo() override { m_model.set(m_before); }
    [[nodiscard]] int id() const override { return m_series; }
    bool mergeWith(const QUndoCommand *next) override
    {
        m_after = static_cast<const Change *>(next)->m_after;
        return true;
    }

private:
    AudioTrackModel &m_model;
    const AudioDisc m_before;
    AudioDisc m_after;
    const int m_series;
};

/// Rows travel as an object of this process: another window of the program, in a process of its own, has the type, too.
class AudioTrackModel::Rows final : public QMimeData
{
public:
    Rows(const AudioTrackModel &model, QList<int> rows)
        : m_model(model)
        , m_rows(std::move(rows))
    {
        setData(trackRowsMimeType, {});
    }

    [[nodiscard]] static const QList<int> *of(const AudioTrackModel &model, const QMimeData &data)
    {
        const auto *const rows = dynamic_cast<const Rows *>(&data);
        return rows && &rows->m_model == &model ? &rows->m_rows : nullptr;
    }

private:
    const AudioTrackModel &m_model;
    const QList<int> m_rows;
};

AudioTrackModel::AudioTrackModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

/// What stays is not told as gone: a view keeps its selection, and an editor its row.
void AudioTrackModel::set(const AudioDisc &disc)
{
    const auto idsOf = [](const AudioDisc &one) {
        QList<std::uint64_t> ids;
        for (const AudioTrackRow &track : one.tracks)
            ids << track.id;
        return ids;
    };
    m_language = firstTextLanguageOf(disc);
    const QList<std::uint64_t> before = idsOf(m_disc);
    const QList<std::uint64_t> after = idsOf(disc);
    if (before == after) {
        m_disc = disc;
        if (!after.isEmpty())
            Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCountOfAll - 1));
    } else if (QSet(before.begin(), before.end()) == QSet(after.begin(), after.end())) {
        Q_EMIT layoutAboutToBeChanged();
        const QModelIndexList moved = persistentIndexList();
        m_disc = disc;
        for (const QModelIndex &each : moved)
            changePersistentIndex(each, index(int(after.indexOf(before[each.row()])), each.column()));
        Q_EMIT layoutChanged();
    } else {
        beginResetModel();
        m_disc = disc;
        endResetModel();
    }
    Q_EMIT discChanged();
}

void AudioTrackModel::change(AudioDisc after, const QString &text, int series)
{
    if (after != m_disc)
        m_undoStack.push(new Change(*this, std::move(after), text, series));
}

void AudioTrackModel::edit(const QString &text, const std::function<void(AudioDisc &)> &modify, int series)
{
    AudioDisc after = m_disc;
    modify(after);
    change(std::move(after), text, series);
}

void AudioTrackModel::replace(AudioDisc disc)
{
    for (AudioTrackRow &track : disc.tracks)
        track.id = ++m_lastId;
    m_undoStack.clear();
    set(disc);
}

int AudioTrackModel::rowOf(std::uint64_t id) const
{
    const auto found = std::find_if(m_disc.tracks.begin(), m_disc.tracks.end(),
                                    [id](const AudioTrackRow &track) { return track.id == id; });
    return found == m_disc.tracks.end() ? -1 : int(found - m_disc.tracks.begin());
}

void AudioTrackModel::add(const QList<AudioTrackRow> &tracks, int row, const std::function<void(AudioDisc &)> &also)
{
    AudioDisc after = m_disc;
    qsizetype place = row < 0 ? after.tracks.size() : std::min<qsizetype>(row, after.tracks.size());
    for (AudioTrackRow track : tracks) {
        track.id = ++m_lastId;
        after.tracks.insert(place++, track);
    }
    if (also)
        also(after);
    change(std::move(after), tr("Add %n Track(s)", nullptr, int(tracks.size())));
}

void AudioTrackModel::remove(const QList<int> &rows)
{
    const QSet<int> leaving(rows.begin(), rows.end());
    AudioDisc after = m_disc;
    after.tracks.clear();
    for (int row = 0; row < int(m_disc.tracks.size()); ++row) {
        if (!leaving.contains(row))
            after.tracks << m_disc.tracks[row];
    }
    change(std::move(after), tr("Remove %n Track(s)", nullptr, int(leaving.size())));
}

void AudioTrackModel::move(const QList<int> &rows, int to)
{
    const QSet<int> moving(rows.begin(), rows.end());
    QList<AudioTrackRow> before;
    QList<AudioTrackRow> moved;
    QList<AudioTrackRow> behind;
    for (int row = 0; row < int(m_disc.tracks.size()); ++row) {
        QList<AudioTrackRow> &list = moving.contains(row) ? moved : row < to ? before : behind;
        list << m_disc.tracks[row];
    }
    AudioDisc after = m_disc;
    after.tracks = before + moved + behind;
    change(std::move(after), tr("Move %n Track(s)", nullptr, int(moving.size())));
}

void AudioTrackModel::setPauseOfAll(double seconds)
{
    constexpr int series = 1;
    const auto gap = std::uint32_t(std::lround(std::clamp(seconds, 0.0, longestPause) * soundFramesPerSecond));
    edit(
        tr("Change Pauses"),
        [gap](AudioDisc &disc) {
            disc.gap = gap;
            for (AudioTrackRow &track : disc.tracks)
                track.order.gap = gap;
        },
        series);
}

int AudioTrackModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_disc.tracks.size());
}

int AudioTrackModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : columnCountOfAll;
}

QVariant AudioTrackModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const AudioTrackRow &track = m_disc.tracks[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return textAt(index);
    case Qt::EditRole:
        return index.column() == Pause ? QVariant(double(track.order.gap) / soundFramesPerSecond) : textAt(index);
    case Qt::ToolTipRole:
        return toolTipOf(track);
    case Qt::AccessibleDescriptionRole:
        return index.column() == Title ? toolTipOf(track) : QVariant();
    case Qt::DecorationRole:
        return index.column() == Title && track.isMissing
            ? QVariant(QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning))
            : QVariant();
    case Qt::TextAlignmentRole:
        return index.column() == Number || index.column() == Length || index.column() == Pause
            ? QVariant(int(Qt::AlignRight | Qt::AlignVCenter))
            : QVariant();
    default:
        return {};
    }
}

QVariant AudioTrackModel::textAt(const QModelIndex &index) const
{
    const AudioTrackRow &track = m_disc.tracks[index.row()];
    switch (index.column()) {
    case Number:
        return index.row() + 1;
    case Title:
        return textOfKind(track.order.texts, CDTextKind::Title, m_language);
    case Performer:
        return textOfKind(track.order.texts, CDTextKind::Performer, m_language);
    case Length:
        return durationText(std::chrono::seconds(std::llround(track.seconds)));
    case Pause:
        // In front of the first track is the silence that every disc has.
        return index.row() == 0
            ? QString()
            : tr("%1 s").arg(QLocale().toString(double(track.order.gap) / soundFramesPerSecond, 'f',
                                                track.order.gap * 10 % soundFramesPerSecond == 0 ? 1 : 2));
    case File: {
        const QString path = displayableText(stringWithFileSystemRepresentation(track.path()));
        return path.mid(path.lastIndexOf(u'/') + 1);
    }
    default:
        return {};
    }
}

QString AudioTrackModel::toolTipOf(const AudioTrackRow &track) const
{
    QStringList lines;
    if (track.isMissing)
        lines << tr("The file is missing: it was moved or removed.");
    if (!track.format.isEmpty())
        lines << track.format;
    if (!track.order.isrc.isEmpty())
        lines << tr("ISRC %1").arg(QString::fromUtf8(track.order.isrc));
    if (!track.order.pregap.empty())
        lines << tr("Sound in the pause in front of it");
    lines << displayableText(stringWithFileSystemRepresentation(track.path()));
    return lines.join(u'\n');
}

bool AudioTrackModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable))
        return false;
    AudioDisc after = m_disc;
    AudioTrackOrder &order = after.tracks[index.row()].order;
    if (index.column() == Pause) {
        order.gap = std::uint32_t(std::lround(std::clamp(value.toDouble(), 0.0, longestPause) * soundFramesPerSecond));
        change(std::move(after), tr("Change Pause"));
        return true;
    }
    setTextOfKind(order.texts, index.column() == Title ? CDTextKind::Title : CDTextKind::Performer,
                  value.toString().simplified(), m_language);
    change(std::move(after), tr("Change Texts"));
    return true;
}

QVariant AudioTrackModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Number:
        return tr("No.");
    case Title:
        return tr("Title");
    case Performer:
        return tr("Performer");
    case Length:
        return tr("Length");
    case Pause:
        return tr("Pause");
    case Sound:
        return tr("Sound");
    default:
        return tr("File");
    }
}

Qt::ItemFlags AudioTrackModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    const Qt::ItemFlags result = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled;
    const bool isEditable =
        index.column() == Title || index.column() == Performer || (index.column() == Pause && index.row() > 0);
    return isEditable ? result | Qt::ItemIsEditable : result;
}

QStringList AudioTrackModel::mimeTypes() const
{
    return {trackRowsMimeType, QStringLiteral("text/uri-list")};
}

QMimeData *AudioTrackModel::mimeData(const QModelIndexList &indexes) const
{
    QSet<int> rows;
    for (const QModelIndex &index : indexes)
        rows.insert(index.row());
    return new Rows(*this, rows.values());
}

bool AudioTrackModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int, const QModelIndex &) const
{
    return Rows::of(*this, *data) || holdsFiles(*data);
}

bool AudioTrackModel::dropMimeData(const QMimeData *data, Qt::DropAction, int row, int, const QModelIndex &parent)
{
    const int place = row >= 0 ? row : parent.isValid() ? parent.row() : int(m_disc.tracks.size());
    if (const QList<int> *const rows = Rows::of(*this, *data)) {
        move(*rows, place);
        return false; // not true: the view would remove the rows that it dragged
    }
    const QList<QByteArray> paths = pathsOfFiles(*data);
    if (paths.isEmpty())
        return false;
    Q_EMIT filesDropped(paths, place);
    return true;
}

} // namespace Tessaron::Desktop
