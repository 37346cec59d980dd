#include "imaging/jobs/OrderedTracks.h"

#include "imaging/jobs/AudioTexts.h"
#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/MessageTexts.h"
#include "platform/quicktime/CDSound.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <algorithm>
#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t samplesPerFrame = CDSound::samplesPerFrame;
constexpr std::uint64_t endOfFile = std::numeric_limits<std::uint64_t>::max();
/// Longer than any file of sound, in samples, and of whole frames.
constexpr std::uint64_t unknownLength = (std::uint64_t(1) << 48) / samplesPerFrame * samplesPerFrame;

std::uint64_t endOf(const AudioPart &part)
{
    return part.frames == 0 || part.frames > endOfFile - part.first ? endOfFile : part.first + part.frames;
}

NSError shortFileError(const AudioPart &part, std::uint64_t frames)
{
    const std::uint64_t needed = part.frames == 0 ? part.first : part.first + part.frames;
    return discJobError(DiscJobErrorCode::Source,
                        QStringLiteral("%1 is too short for a track that lies in it: it ends at %2, the track at %3")
                            .arg(quoted(part.path), MSF::ofFrames(std::int64_t(frames)).text(),
                                 MSF::ofFrames(std::int64_t(needed)).text()),
                        QStringLiteral("The file has changed: add its tracks again."), part.path);
}

/// A frame that a file does not fill is filled up with silence.
Result<SoundRun> runOf(const AudioPart &part, std::size_t file, std::uint64_t length)
{
    const std::uint64_t frames = (length + samplesPerFrame - 1) / samplesPerFrame;
    const std::uint64_t end = endOf(part);
    if (part.first >= frames || (end != endOfFile && end > frames))
        return shortFileError(part, frames);
    const std::uint64_t first = part.first * samplesPerFrame;
    return SoundRun{file, first, (end == endOfFile ? length : std::min(end * samplesPerFrame, length)) - first};
}

AudioPart partOf(const SoundRun &run, const QList<QByteArray> &files)
{
    const bool isToEnd = run.first + run.samples >= unknownLength;
    return {files[qsizetype(run.file)], run.first / samplesPerFrame, isToEnd ? 0 : run.samples / samplesPerFrame};
}

AudioTrackOrder orderOf(const AlbumTrack &track, const QList<QByteArray> &files)
{
    AudioTrackOrder order;
    order.gap = std::uint32_t(track.silence);
    for (const SoundRun &run : track.pregap)
        order.pregap.push_back(partOf(run, files));
    for (const SoundRun &run : track.sound)
        order.sound.push_back(partOf(run, files));
    for (const std::uint64_t point : track.indexPoints)
        order.indexPoints.push_back(point / samplesPerFrame);
    order.postgap = track.postgap;
    order.isrc = track.marks.isrc;
    order.copyState = track.marks.copyState;
    order.hasPreEmphasis = track.marks.hasPreEmphasis;
    order.hasFourChannels = track.marks.hasFourChannels;
    order.texts = track.texts;
    order.hasOwnFile = track.ownFile.has_value();
    return order;
}

} // namespace

OrderedTracks::OrderedTracks(std::vector<AudioTrackOrder> tracks)
    : m_tracks(std::move(tracks))
{
    for (const AudioTrackOrder &track : m_tracks) {
        for (const std::vector<AudioPart> *const parts : {&track.pregap, &track.sound}) {
            for (const AudioPart &part : *parts)
                m_places.push_back(placeOf(part));
        }
        m_sources.sources.push_back({m_places.empty() ? 0 : m_places.back(), 1, {}, {}, {}});
    }
}

std::size_t OrderedTracks::placeOf(const AudioPart &part)
{
    const qsizetype last = m_sources.files.lastIndexOf(part.path);
    if (last >= 0 && part.first >= m_ends[std::size_t(last)]) {
        m_ends[std::size_t(last)] = endOf(part);
        return std::size_t(last);
    }
    m_sources.files << part.path;
    m_ends.push_back(endOf(part));
    return m_ends.size() - 1;
}

Result<AudioAlbum> OrderedTracks::album(const std::vector<std::uint64_t> &lengths) const
{
    AudioAlbum album;
    auto place = m_places.begin();
    for (const AudioTrackOrder &order : m_tracks) {
        AlbumTrack track;
        const auto addRuns = [&](const std::vector<AudioPart> &parts, std::vector<SoundRun> *runs) -> NSError {
            for (const AudioPart &part : parts) {
                const std::size_t file = *place++;
                const Result<SoundRun> run = runOf(part, file, lengths[file]);
                if (!run)
                    return run.error();
                runs->push_back(*run);
            }
            return {};
        };
        if (NSError error = addRuns(order.pregap, &track.pregap))
            return error;
        if (NSError error = addRuns(order.sound, &track.sound))
            return error;
        track.source = order.sound.empty() ? QByteArray() : order.sound.front().path;
        track.silence = order.gap;
        for (const std::uint64_t point : order.indexPoints)
            track.indexPoints.push_back(point * samplesPerFrame);
        track.postgap = order.postgap;
        track.marks.isrc = soundIsrc(QString::fromUtf8(order.isrc));
        track.marks.copyState = order.copyState;
        track.marks.hasPreEmphasis = order.hasPreEmphasis;
        track.marks.hasFourChannels = order.hasFourChannels;
        track.texts = order.texts;
        album.tracks.push_back(std::move(track));
    }
    return album;
}

Result<AudioTracks> audioTracksAt(const QByteArray &path)
{
    const Result<AudioSources> sources = audioSourcesOf({path});
    if (!sources)
        return sources.error();
    // How long files are only a decoder knows: what ends with a file is told by a length that no file has.
    const std::vector<std::uint64_t> lengths(std::size_t(sources->files.size()), unknownLength);
    Result<AudioAlbum> album = audioAlbumOf(*sources, lengths, 0);
    if (!album)
        return album.error();
    AudioTracks result;
    for (const AlbumTrack &track : album->tracks)
        result.tracks.push_back(orderOf(track, sources->files));
    result.texts = std::move(album->texts);
    result.mediaCatalogNumber = album->mediaCatalogNumber;
    result.notes = album->notes;
    return result;
}

} // namespace Tessaron
