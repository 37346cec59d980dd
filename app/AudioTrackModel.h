#pragma once

#include "app/AudioDisc.h"

#include <QAbstractTableModel>
#include <QByteArray>
#include <QList>
#include <QString>
#include <QUndoStack>

#include <functional>

namespace Tessaron::Desktop
{

/// An audio CD that is being put together, and its tracks in their order as views see them. Each change is a step that
/// can be undone: it keeps the disc as it was, which is short. Never touches the disk. On the main thread.
class AudioTrackModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column : std::uint8_t { Number, Title, Performer, Length, Pause, Sound, File };
    static constexpr int columnCountOfAll = 7;
    static constexpr int mostTracks = 99;
    static constexpr double longestPause = 99; ///< seconds

    explicit AudioTrackModel(QObject *parent = nullptr);

    [[nodiscard]] const AudioDisc &disc() const { return m_disc; }
    [[nodiscard]] const QList<AudioTrackRow> &tracks() const { return m_disc.tracks; }
    /// That of the texts that views show and edit: the one that players show first.
    [[nodiscard]] std::uint8_t language() const { return m_language; }
    [[nodiscard]] QUndoStack &undoStack() { return m_undoStack; }
    /// The row of the track with this id; -1 for none.
    [[nodiscard]] int rowOf(std::uint64_t id) const;

    /// Puts tracks in front of the row; behind the last one for -1. `also` changes what else comes with them.
    void add(const QList<AudioTrackRow> &tracks, int row = -1, const std::function<void(AudioDisc &)> &also = {});
    void remove(const QList<int> &rows);
    /// Moves rows in front of the row `to`, in their order.
    void move(const QList<int> &rows, int to);
    /// The pause in front of every track but the first, and of those that will be added.
    void setPauseOfAll(double seconds);
    /// Changes anything else; `text` names the step. Steps of the same `series`, when they follow each other, become
    /// one; -1 for a step of its own.
    void edit(const QString &text, const std::function<void(AudioDisc &)> &modify, int series = -1);
    /// Another disc, without steps to undo.
    void replace(AudioDisc disc);

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
    /// The tracks or anything else of the disc has changed.
    void discChanged();
    /// Files were dropped in front of the row.
    void filesDropped(const QList<QByteArray> &paths, int row);

private:
    class Change;
    class Rows;

    void change(AudioDisc after, const QString &text, int series = -1);
    void set(const AudioDisc &disc);
    [[nodiscard]] QVariant textAt(const QModelIndex &index) const;
    [[nodiscard]] QString toolTipOf(const AudioTrackRow &track) const;

    AudioDisc m_disc;
    std::uint8_t m_language = CDTextBlock::english;
    std::uint64_t m_lastId = 0;
    QUndoStack m_undoStack; ///< refers to this, so it goes first
};

} // namespace Tessaron::Desktop
