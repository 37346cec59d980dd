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

/// Takes one track out of an image: sound as a WAVE file, data as its user data alone. Serves one track, on one thread.
class TrackExtractor
{
public:
    /// The track at this place among all tracks of the disc, which must outlive this object.
    TrackExtractor(const CueSheet &disc, std::size_t index);
    ~TrackExtractor();
    TrackExtractor(const TrackExtractor &) = delete;
    TrackExtractor &operator=(const TrackExtractor &) = delete;

    /// Why the track cannot be taken out; the null error when it can.
    [[nodiscard]] NSError check() const;
    /// Bytes that the file will have.
    [[nodiscard]] std::uint64_t outputBytes() const;
    /// Writes to the descriptor from its start. `progress` is told of bytes as they are written.
    [[nodiscard]] NSError write(int descriptor, const std::function<void(std::uint64_t)> &progress,
                                const std::stop_token &stop);
    /// What is known of the track; after write() also what was found in its sectors. Without a path.
    [[nodiscard]] const ExtractedTrack &result() const { return m_result; }

private:
    [[nodiscard]] std::uint64_t blocks() const;
    [[nodiscard]] const std::vector<CueRun> &runs() const { return m_disc.places[m_index].data; }
    [[nodiscard]] std::shared_ptr<DRTrackProducer> producerOf(const CueRun &run) const;
    [[nodiscard]] NSError writeRun(const CueRun &run, int descriptor,
                                   const std::function<void(std::uint64_t)> &progress, const std::stop_token &stop);
    std::size_t keepUserData(char *sectors, std::size_t count, std::uint64_t first, bool isBigEndian);
    [[nodiscard]] std::size_t keptOffset(const std::uint8_t *sector, std::uint64_t number);
    [[nodiscard]] NSError sourceError(const QString &reason, const QByteArray &path,
                                      const QString &remedy = QString()) const;

    const CueSheet &m_disc;
    const std::size_t m_index;
    const DiscTrack &m_track;
    std::size_t m_keptSize = 0; ///< bytes of a block; 0 where it is not known what to keep
    std::size_t m_keptOffset = 0; ///< in a sector as the file has it
    std::uint64_t m_done = 0; ///< blocks
    ExtractedTrack m_result;
};

} // namespace Tessaron
