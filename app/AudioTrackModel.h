#pragma once

#include <QAbstractTableModel>
#include <QByteArray>
#include <QList>
#include <QString>
#include <QUndoStack>

#include <functional>

namespace Tessaron::Desktop
{

/// A track of an audio CD that is being put together.
struct AudioTrackRow {
    QByteArray path;
    QString title; ///< of the CD-TEXT, as the file says or the user typed it
    QString performer;
    double seconds = 0;

    friend bool operator==(const AudioTrackRow &, const AudioTrackRow &) = default;
};

/// The tracks of an audio CD in their order. Each change is a step that can be undone: it keeps the list as it was,
/// which is short. Never touches the disk. On the main thread.
class AudioTrackModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column : std::uint8_t { Number, Title, Performer, Length, File };
    static constexpr int columnCountOfAll = 5;
    static constexpr int mostTracks = 99;

    explicit AudioTrackModel(QObject *parent = nullptr);

    [[nodiscard]] const QList<AudioTrackRow> &tracks() const { return m_tracks; }
    [[nodiscard]] QUndoStack &undoStack() { return m_undoStack; }

    /// Puts tracks in front of the row; behind the last one for -1.
    void add(const QList<AudioTrackRow> &tracks, int row = -1);
    void remove(const QList<int> &rows);
    /// Moves rows in front of the row `to`, in their order.
    void move(const QList<int> &rows, int to);

    // QAbstractItemModel
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    [[nodiscard]] QStringList mimeTypes() const override;
    [[nodiscard]] QMimeData *mimeData(const QModelIndexList &indexes) const override;
    [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::CopyAction | Qt::MoveAction; }
    [[nodiscard]] Qt::DropActions supportedDragActions() const override { return Qt::MoveAction; }
    [[nodiscard]] bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                       const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

Q_SIGNALS:
    void tracksChanged();
    /// Files were dropped in front of the row.
    void filesDropped(const QList<QByteArray> &paths, int row);

private:
    class Change;
    class Rows;

    void change(QList<AudioTrackRow> after, const QString &text);
    void set(const QList<AudioTrackRow> &tracks);

    QList<AudioTrackRow> m_tracks;
    QUndoStack m_undoStack; ///< refers to this, so it goes first
};

} // namespace Tessaron::Desktop
