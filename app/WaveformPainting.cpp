#include "app/WaveformPainting.h"

#include "app/AudioTrackModel.h"
#include "app/WaveformStore.h"

#include <QPainter>

#include <algorithm>

namespace Tessaron::Desktop
{

namespace
{

/// A part in the peaks of its file.
struct PartPeaks {
    const Waveform *waveform;
    std::uint64_t first; ///< frame
    std::uint64_t frames;
};

/// The parts of a track with their lengths; nothing while one of them is not known.
std::vector<PartPeaks> peaksOf(const AudioTrackRow &track, const WaveformStore &waveforms)
{
    std::vector<PartPeaks> parts;
    for (const AudioPart &part : track.order.sound) {
        const Waveform *const waveform = waveforms.waveformOf(part.path);
        if (!waveform)
            return {};
        const std::uint64_t all = waveform->peaks.size() * waveform->framesPerPeak;
        const std::uint64_t first = std::min(part.first, all);
        const std::uint64_t frames = part.frames == 0 ? all - first : std::min(part.frames, all - first);
        parts.push_back({waveform, first, frames});
    }
    return parts;
}

/// The peak of a stretch of a track, in frames from its begin.
WaveformPeak peakOf(const std::vector<PartPeaks> &parts, std::uint64_t from, std::uint64_t to)
{
    WaveformPeak result;
    for (const PartPeaks &part : parts) {
        const std::uint64_t end = std::min(to, part.frames);
        for (std::uint64_t frame = from; frame < end;) {
            const std::uint64_t place = (part.first + frame) / part.waveform->framesPerPeak;
            const WaveformPeak &peak = part.waveform->peaks[std::size_t(place)];
            result.lowest = std::min(result.lowest, peak.lowest);
            result.highest = std::max(result.highest, peak.highest);
            frame = (place + 1) * part.waveform->framesPerPeak - part.first;
        }
        from -= std::min(from, part.frames);
        to -= std::min(to, part.frames);
        if (to == 0)
            break;
    }
    return result;
}

} // namespace

void drawWaveform(QPainter &painter, const QRect &area, const AudioTrackRow &track, const WaveformStore &waveforms,
                  const QColor &color)
{
    const std::vector<PartPeaks> parts = peaksOf(track, waveforms);
    std::uint64_t frames = 0;
    for (const PartPeaks &part : parts)
        frames += part.frames;
    if (frames == 0 || area.width() <= 0)
        return;
    constexpr double fullScale = 127;
    const double middle = area.top() + area.height() / 2.0;
    const double scale = area.height() / 2.0 / fullScale;
    painter.save();
    painter.setPen(color);
    const auto width = std::uint64_t(area.width());
    for (std::uint64_t x = 0; x < width; ++x) {
        const std::uint64_t from = frames * x / width;
        const WaveformPeak peak = peakOf(parts, from, std::max(frames * (x + 1) / width, from + 1));
        const double left = area.left() + double(x);
        painter.drawLine(QPointF(left, middle - peak.highest * scale), QPointF(left, middle - peak.lowest * scale));
    }
    painter.restore();
}

WaveformDelegate::WaveformDelegate(const AudioTrackModel &tracks, const WaveformStore &waveforms, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_tracks(tracks)
    , m_waveforms(waveforms)
{
}

void WaveformDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    const bool isChosen = option.state & QStyle::State_Selected;
    const QColor color = option.palette.color(isChosen ? QPalette::HighlightedText : QPalette::Text);
    drawWaveform(*painter, option.rect.adjusted(4, 2, -4, -2), m_tracks.tracks()[index.row()], m_waveforms, color);
}

} // namespace Tessaron::Desktop
