#include "imaging/burning/SoundComparison.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace Tessaron
{

namespace
{

/// What is known of a sector that lies around what is compared.
enum State : char {
    Read,
    Unreadable,
    Outside, ///< of what the disc has
};

/// True when each sample is the same: at any displacement it looks alike.
bool isConstant(const char *bytes, std::size_t size)
{
    constexpr std::size_t sampleSize = 4;
    return std::memcmp(bytes, bytes + sampleSize, size - sampleSize) == 0;
}

} // namespace

SoundComparison::SoundComparison(ReadSectors readSectors, std::int64_t end, std::stop_token stop)
    : m_readSectors(std::move(readSectors))
    , m_end(end)
    , m_stop(std::move(stop))
{
}

void SoundComparison::beginTrack(std::int64_t firstSector)
{
    m_next = firstSector;
    m_inTrack = 0;
    m_findings = {};
}

/// Fills m_read with the sectors from `margin` before the first one to `margin` behind the last. A run that cannot be
/// read whole is read sector by sector.
void SoundComparison::readAround(std::int64_t first, std::uint32_t sectors)
{
    const std::int64_t begin = first - margin;
    const std::size_t count = std::size_t(sectors) + std::size_t{2} * margin;
    m_read.assign(count * sectorSize, '\0');
    m_state.assign(count, Outside);
    const std::int64_t from = std::clamp<std::int64_t>(begin, 0, m_end);
    const std::int64_t to = std::clamp<std::int64_t>(begin + std::int64_t(count), from, m_end);
    constexpr std::int64_t atOnce = 24; // what a drive gives in one command
    for (std::int64_t at = from; at < to && !m_stop.stop_requested();) {
        const std::int64_t part = std::min(atOnce, to - at);
        char *const out = m_read.data() + (at - begin) * sectorSize;
        char *const state = m_state.data() + (at - begin);
        if (!m_readSectors(at, std::uint32_t(part), out)) {
            std::fill_n(state, part, Read);
        } else {
            for (std::int64_t one = 0; one < part && !m_stop.stop_requested(); ++one)
                state[one] = m_readSectors(at + one, 1, out + one * sectorSize) ? Unreadable : Read;
        }
        at += part;
    }
}

/// `sector` counts from the first one that is compared.
bool SoundComparison::isReadable(std::size_t sector, int shift) const
{
    const std::ptrdiff_t byte = (std::ptrdiff_t(sector) + margin) * sectorSize + std::ptrdiff_t(shift) * sampleSize;
    return m_state[std::size_t(byte / sectorSize)] == Read
        && m_state[std::size_t((byte + sectorSize - 1) / sectorSize)] == Read;
}

bool SoundComparison::isSame(const char *sent, std::size_t sector, int shift) const
{
    const std::ptrdiff_t byte = (std::ptrdiff_t(sector) + margin) * sectorSize + std::ptrdiff_t(shift) * sampleSize;
    return std::memcmp(sent + sector * sectorSize, m_read.data() + byte, sectorSize) == 0;
}

std::uint32_t SoundComparison::sameSectors(const char *sent, std::uint32_t sectors, int shift) const
{
    std::uint32_t count = 0;
    for (std::size_t sector = 0; sector < sectors; ++sector)
        count += isReadable(sector, shift) && isSame(sent, sector, shift) ? 1 : 0;
    return count;
}

/// The displacement at which most of the sectors are as they were sent; of several the smallest one.
void SoundComparison::findDisplacement(const char *sent, std::uint32_t sectors)
{
    std::uint32_t best = m_displacement ? sameSectors(sent, sectors, *m_displacement) : 0;
    bool isOnly = true;
    const std::optional<int> known = m_displacement;
    for (int step = 0; step <= 2 * most && !m_stop.stop_requested(); ++step) {
        const int shift = step % 2 == 0 ? step / 2 : -(step + 1) / 2; // 0, -1, 1, -2 …
        if (shift == known)
            continue;
        const std::uint32_t same = sameSectors(sent, sectors, shift);
        if (same > best) {
            best = same;
            m_displacement = shift;
            isOnly = true;
        } else if (same > 0 && same == best) {
            isOnly = false;
        }
    }
    m_isSure = best > 0 && isOnly;
}

void SoundComparison::compare(const char *sent, std::uint32_t sectors)
{
    readAround(m_next, sectors);
    if (m_stop.stop_requested())
        return;
    if (!m_isSure && !isConstant(sent, std::size_t(sectors) * sectorSize))
        findDisplacement(sent, sectors);
    const int shift = m_displacement.value_or(0);
    for (std::uint32_t sector = 0; sector < sectors; ++sector, ++m_inTrack) {
        // The sector itself is named that cannot be read, wherever its samples belong.
        if (m_state[sector + margin] == Unreadable) {
            m_findings.unreadable.add(m_inTrack);
            continue;
        }
        if (!isReadable(sector, shift))
            continue;
        ++m_findings.compared;
        if (!isSame(sent, sector, shift))
            m_findings.different.add(m_inTrack);
    }
    m_next += sectors;
}

} // namespace Tessaron
