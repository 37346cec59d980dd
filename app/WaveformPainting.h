#pragma once

#include "app/AudioDisc.h"

#include <QColor>
#include <QRect>
#include <QStyledItemDelegate>

class QPainter;

namespace Tessaron::Desktop
{

class AudioTrackModel;
class WaveformStore;

/// Draws how the parts of a track look, from the first to the last; nothing where that is not known.
void drawWaveform(QPainter &painter, const QRect &area, const AudioTrackRow &track, const WaveformStore &waveforms,
                  const QColor &color);

/// Draws the waveform of a track into its column.
class WaveformDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    WaveformDelegate(const AudioTrackModel &tracks, const WaveformStore &waveforms, QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    const AudioTrackModel &m_tracks;
    const WaveformStore &m_waveforms;
};

} // namespace Tessaron::Desktop
