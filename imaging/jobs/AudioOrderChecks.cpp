#include "imaging/jobs/AudioOrderChecks.h"

#include "imaging/jobs/AudioTexts.h"
#include "imaging/jobs/OutputStream.h"
#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/quicktime/CDSound.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <numeric>

namespace Tessaron
{

namespace
{

constexpr std::size_t mostTracks = 99;

QString lengthText(std::uint64_t frames)
{
    return MSF::ofFrames(std::int64_t(frames)).text();
}

NSError errorOfIsrcs(const QList<QByteArray> &codes, std::size_t tracks)
{
    if (std::size_t(codes.size()) > tracks)
        return discJobError(
            DiscJobErrorCode::InvalidOrder,
            QStringLiteral("there are %1 ISRCs for %2").arg(codes.size()).arg(counted(tracks, "track", "tracks")));
    for (const QByteArray &code : codes) {
        if (!code.isEmpty() && soundIsrc(QString::fromUtf8(code)).isEmpty())
            return discJobError(
                DiscJobErrorCode::InvalidOrder, QStringLiteral("%1 is not an ISRC").arg(quoted(code)),
                QStringLiteral("It has two letters for the country, three characters for the owner, and "
                               "seven digits."));
    }
    return {};
}

/// What was put together track by track may lack what sources always have.
NSError errorOfOrderedTracks(const AudioImageOrder &order)
{
    constexpr qsizetype digitsOfNumber = 13;
    QList<QByteArray> codes;
    for (const AudioTrackOrder &track : order.tracks) {
        if (track.sound.empty())
            return discJobError(DiscJobErrorCode::InvalidOrder, QStringLiteral("a track has no sound"));
        codes << track.isrc;
    }
    const QByteArray &number = order.mediaCatalogNumber;
    const bool isNumber =
        std::all_of(number.begin(), number.end(), [](char each) { return each >= '0' && each <= '9'; });
    if (!number.isEmpty() && (number.size() != digitsOfNumber || !isNumber))
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("%1 is not a catalogue number").arg(quoted(number)),
                            QStringLiteral("It has 13 digits."));
    return errorOfIsrcs(codes, order.tracks.size());
}

NSError errorOfCount(std::size_t tracks, const char *what)
{
    if (tracks <= mostTracks)
        return {};
    return discJobError(DiscJobErrorCode::InvalidOrder,
                        QStringLiteral("there are %1 %2, and a CD has %3 tracks at most")
                            .arg(tracks)
                            .arg(QLatin1String(what))
                            .arg(mostTracks),
                        QStringLiteral("Make several images."));
}

} // namespace

NSError errorOfOutput(const AudioImageOrder &order)
{
    if (order.format != DiscFormat::BIN && order.format != DiscFormat::VANT)
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("an image of sound has the format bin or vant"),
                            QStringLiteral("Name an output that ends in .bin or .vant."), order.output);
    const bool isIntoStream = order.outputDescriptor >= 0 || isStream(order.output);
    if (isIntoStream && order.format == DiscFormat::BIN)
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("a BIN image cannot go into a stream: its cue sheet names a file"),
                            QStringLiteral("Name a file for it, or choose the format vant."), order.output);
    return {};
}

NSError errorOfSources(const AudioImageOrder &order, const AudioSources &sources)
{
    if (sources.sources.empty())
        return discJobError(DiscJobErrorCode::InvalidOrder, QStringLiteral("there is no file to make a track of"));
    if (NSError error = errorOfOrderedTracks(order))
        return error;
    return errorOfCount(sources.sources.size() + (order.dataFolder.isEmpty() ? 0 : 1), "files");
}

NSError errorOfTracks(const AudioImageOrder &order, const std::vector<AlbumTrack> &tracks)
{
    for (const AlbumTrack &track : tracks) {
        const std::uint64_t samples =
            std::accumulate(track.sound.begin(), track.sound.end(), std::uint64_t(0),
                            [](std::uint64_t sum, const SoundRun &run) { return sum + run.samples; });
        if (samples < CDSound::samplesPerFrame)
            return discJobError(
                DiscJobErrorCode::Source,
                QStringLiteral("%1 is too short for a track: its sound has %2 samples, and a frame has %3")
                    .arg(quoted(track.source))
                    .arg(samples)
                    .arg(CDSound::samplesPerFrame),
                QStringLiteral("Leave it out."), track.source);
    }
    if (NSError error = errorOfCount(tracks.size() + (order.dataFolder.isEmpty() ? 0 : 1), "tracks"))
        return error;
    if (std::size_t(order.titles.size()) > tracks.size())
        return discJobError(DiscJobErrorCode::InvalidOrder,
                            QStringLiteral("there are texts for %1, but only %2")
                                .arg(counted(std::size_t(order.titles.size()), "track", "tracks"))
                                .arg(tracks.size()));
    return errorOfIsrcs(order.isrcs, tracks.size());
}

NSError errorOfCapacity(std::uint64_t frames, std::uint32_t capacity)
{
    if (capacity == 0 || frames <= capacity)
        return {};
    return discJobError(
        DiscJobErrorCode::Space,
        QStringLiteral("the tracks and gaps take %1 (minutes, seconds, frames), which is %2 more than the "
                       "%3 of the disc")
            .arg(lengthText(frames), lengthText(frames - capacity), lengthText(capacity)),
        QStringLiteral("Leave files out, or take a longer disc."));
}

} // namespace Tessaron
