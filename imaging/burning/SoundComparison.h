#pragma once

#include "platform/foundation/NSError.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// Sectors of a track that are wrong in the same way.
struct SoundFlaws {
    std::uint64_t count = 0;
    std::uint64_t first = 0; ///< in the track; of no meaning without any

    void add(std::uint64_t sector) { first = count++ == 0 ? sector : first; }
};

/// How the sound of one track is on the disc.
struct SoundFindings {
    SoundFlaws different; ///< not as it was sent
    SoundFlaws unreadable; ///< the drive cannot read them
    std::uint64_t compared = 0; ///< sectors
};

/// Holds sound that was written against what a drive reads. Drives find sound only to within some hundred samples, each
/// drive by the same number always, so that number is found out first: by the sound itself, wherever that does not
/// repeat. Used by one thread.
class SoundComparison
{
public:
    /// Reads sectors of 2352 bytes, as readSound() of DRDevice.
    using ReadSectors = std::function<NSError(std::int64_t first, std::uint32_t count, char *out)>;

    /// `end` is behind the last sector that can be read. What the drive's displacement moves beyond that, or in front
    /// of sector 0, is not compared: four sectors at most.
    SoundComparison(ReadSectors readSectors, std::int64_t end, std::stop_token stop);

    /// The next track's first sector, on the disc and as it will be sent.
    void beginTrack(std::int64_t firstSector);
    /// Compares the next sectors of the track. After a stop there is nothing to be relied on.
    void compare(const char *sent, std::uint32_t sectors);

    /// Of the track that was begun last.
    [[nodiscard]] const SoundFindings &findings() const { return m_findings; }
    /// By how many samples the drive reads later than was asked; no value while it is not known.
    [[nodiscard]] std::optional<int> displacement() const { return m_displacement; }

private:
    static constexpr int sectorSize = 2352;
    static constexpr int sampleSize = 4;
    /// More than any drive is known to be off by, writing and reading together.
    static constexpr int margin = 4; // sectors
    static constexpr int most = margin * sectorSize / sampleSize; // samples

    void readAround(std::int64_t first, std::uint32_t sectors);
    [[nodiscard]] bool isReadable(std::size_t sector, int shift) const;
    [[nodiscard]] bool isSame(const char *sent, std::size_t sector, int shift) const;
    [[nodiscard]] std::uint32_t sameSectors(const char *sent, std::uint32_t sectors, int shift) const;
    void findDisplacement(const char *sent, std::uint32_t sectors);

    const ReadSectors m_readSectors;
    const std::int64_t m_end;
    const std::stop_token m_stop;
    std::vector<char> m_read; ///< of the disc, with the margins around what is compared
    std::vector<char> m_state; ///< for each of its sectors, what readAround() came to
    std::int64_t m_next = 0; ///< sector of the disc
    std::uint64_t m_inTrack = 0; ///< the same, counted in the track
    SoundFindings m_findings;
    std::optional<int> m_displacement; ///< samples
    bool m_isSure = false; ///< no other one is possible
};

} // namespace Tessaron
