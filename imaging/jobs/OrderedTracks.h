#pragma once

#include "imaging/jobs/AudioAlbum.h"
#include "imaging/jobs/AudioSources.h"
#include "platform/foundation/Result.h"
#include <TessaronClasses/AudioTracks.h>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// Tracks that were put together part by part, as the sources and the album of a job.
class OrderedTracks
{
public:
    explicit OrderedTracks(std::vector<AudioTrackOrder> tracks);

    /// The files in the order in which they are heard. A file is decoded from its begin on: it is named again for what
    /// lies in front of a part that was heard before.
    [[nodiscard]] const AudioSources &sources() const { return m_sources; }

    /// `lengths` are those of the files, in samples. An error of code Source says which file is shorter than a track
    /// needs.
    [[nodiscard]] Result<AudioAlbum> album(const std::vector<std::uint64_t> &lengths) const;

private:
    [[nodiscard]] std::size_t placeOf(const AudioPart &part);

    const std::vector<AudioTrackOrder> m_tracks;
    AudioSources m_sources;
    std::vector<std::uint64_t> m_ends; ///< of each file, how far it is heard; frames
    std::vector<std::size_t> m_places; ///< of each part in the order of the disc, that of its file
};

} // namespace Tessaron
