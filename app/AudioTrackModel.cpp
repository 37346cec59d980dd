#include "app/AudioTrackModel.h"

#include "app/FileDrops.h"
#include "app/Words.h"

#include <QMimeData>
#include <QSet>
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
    Change(AudioTrackModel &model, QList<AudioTrackRow> after, const QString &text)
        : QUndoCommand(text)
        , m_model(model)
        , m_before(model.m_tracks)
        , m_after(std::move(after))
    {
    }

    void redo() override { m_model.set(m_after); }
    void undo() override { m_model.set(m_before); }

private:
    AudioTrackModel &m_model;
    const QList<AudioTrackRow> m_before;
    const QList<AudioTrackRow> m_after;
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

void AudioTrackModel::set(const QList<AudioTrackRow> &tracks)
{
    beginResetModel();
    m_tracks = tracks;
    endResetModel();
    Q_EMIT tracksChanged();
}

void AudioTrackModel::change(QList<AudioTrackRow> after, const QString &text)
{
    if (after != m_tracks)
        m_undoStack.push(new Change(*this, std::move(after), text));
}

void AudioTrackModel::add(const QList<AudioTrackRow> &tracks, int row)
{
    QList<AudioTrackRow> after = m_tracks;
    qsizetype place = row < 0 ? after.size() : std::min<qsizetype>(row, after.size());
    for (const AudioTrackRow &track : tracks)
        after.insert(place++, track);
    change(std::move(after), tr("Add %n Track(s)", nullptr, int(tracks.size())));
}

void AudioTrackModel::remove(const QList<int> &rows)
{
    const QSet<int> leaving(rows.begin(), rows.end());
    QList<AudioTrackRow> after;
    for (int row = 0; row < int(m_tracks.size()); ++row) {
        if (!leaving.contains(row))
            after << m_tracks[row];
    }
    change(std::move(after), tr("Remove %n Track(s)", nullptr, int(leaving.size())));
}

void AudioTrackModel::move(const QList<int> &rows, int to)
{
    const QSet<int> moving(rows.begin(), rows.end());
    QList<AudioTrackRow> before;
    QList<AudioTrackRow> moved;
    QList<AudioTrackRow> behind;
    for (int row = 0; row < int(m_tracks.size()); ++row)
        (moving.contains(row) ? moved : row < to ? before : behind) << m_tracks[row];
    change(before + moved + behind, tr("Move %n Track(s)", nullptr, int(moving.size())));
}

int AudioTrackModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_tracks.size());
}

int AudioTrackModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : columnCountOfAll;
}

QVariant AudioTrackModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const AudioTrackRow &track = m_tracks[index.row()];
    const QString path = displayableText(stringWithFileSystemRepresentation(track.path));
    if (role == Qt::ToolTipRole)
        return path;
    if (role == Qt::TextAlignmentRole && (index.column() == Number || index.column() == Length))
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return {};
    switch (index.column()) {
    case Number:
        return index.row() + 1;
    case Title:
        return track.title;
    case Performer:
        return track.performer;
    case Length:
        return durationText(std::chrono::seconds(std::llround(track.seconds)));
    default:
        return path.mid(path.lastIndexOf(u'/') + 1);
    }
}

bool AudioTrackModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || (index.column() != Title && index.column() != Performer))
        return false;
    QList<AudioTrackRow> after = m_tracks;
    AudioTrackRow &track = after[index.row()];
    (index.column() == Title ? track.title : track.performer) = value.toString().simplified();
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
    default:
        return tr("File");
    }
}

Qt::ItemFlags AudioTrackModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    const Qt::ItemFlags result = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled;
    return index.column() == Title || index.column() == Performer ? result | Qt::ItemIsEditable : result;
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
    const int place = row >= 0 ? row : parent.isValid() ? parent.row() : int(m_tracks.size());
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
