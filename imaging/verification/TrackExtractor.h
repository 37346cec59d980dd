#pragma once

#include "platform/disctracks/CueSheet.h"
#include "platform/foundation/NSError.h"
#include <TessaronClasses/ExtractJob.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

class DRTrackProducer;
class DecodedSounds;
class TrackSink;

/// Takes one track out of an image: sound as a sound file, data as its user data alone. Serves one track, on one
/// thread.
class TrackExtractor
{
public:
    /// What of a track is taken.
    enum class Part : std::uint8_t {
        Track, ///< from index 1 on
        Pregap, ///< what the image holds in front of it
    };

    /// The track at this place among all tracks of the disc. That and `sounds`, which several of these may share on one
    /// thread, must outlive this object.
    TrackExtractor(const CueSheet &disc, std::size_t index, Part part, DecodedSounds &sounds);
    ~TrackExtractor();
    TrackExtractor(const TrackExtractor &) = delete;
    TrackExtractor &operator=(const TrackExtractor &) = delete;

    using Progress = std::function<void(std::uint64_t bytes)>;

    /// Why the track cannot be taken out; the null error when it can.
    [[nodiscard]] NSError check() const;
    /// Bytes of sound or user data.
    [[nodiscard]] std::uint64_t keptBytes() const;
    /// Makes the file, which is empty and open for reading and writing. `progress` is told of those bytes as they are
    /// written.
    [[nodiscard]] NSError write(int descriptor, const QByteArray &path, ExtractedSound form, const Progress &progress,
                                const std::stop_token &stop);
    /// What is known of the track; after write() also what was found in its sectors. Without a path.
    [[nodiscard]] const ExtractedTrack &result() const { return m_result; }

private:
    [[nodiscard]] std::uint64_t blocks() const;
    [[nodiscard]] const std::vector<CueRun> &runs() const;
    /// Bytes of sound behind the last block.
    [[nodiscard]] std::uint32_t restBytes() const;
    [[nodiscard]] bool mustDecode(const CueRun &run) const;
    [[nodiscard]] std::shared_ptr<DRTrackProducer> producerOf(const CueRun &run) const;
    [[nodiscard]] NSError writeRun(const CueRun &run, TrackSink &sink, const Progress &progress,
                                   const std::stop_token &stop);
    [[nodiscard]] NSError writeRest(const CueRun &run, TrackSink &sink, const Progress &progress,
                                    const std::stop_token &stop);
    [[nodiscard]] NSError writeDecoded(const CueFile &file, std::uint64_t first, std::uint64_t samples, TrackSink &sink,
                                       const Progress &progress, const std::stop_token &stop);
    std::size_t keepUserData(char *sectors, std::size_t count, std::uint64_t first, bool isBigEndian);
    [[nodiscard]] std::size_t keptOffset(const std::uint8_t *sector, std::uint64_t number);
    [[nodiscard]] NSError notOpenedError(const QByteArray &path) const;
    [[nodiscard]] NSError sourceError(const QString &reason, const QByteArray &path,
                                      const QString &remedy = QString()) const;

    const CueSheet &m_disc;
    const std::size_t m_index;
    const Part m_part;
    const DiscTrack &m_track;
    DecodedSounds &m_sounds;
    std::size_t m_keptSize = 0; ///< bytes of a block; 0 where it is not known what to keep
    std::size_t m_keptOffset = 0; ///< in a sector as the file has it
    std::uint64_t m_done = 0; ///< blocks
    ExtractedTrack m_result;
};

} // namespace Tessaron
