#pragma once

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// Puts the presentation times of a disc, which begin anew again and again, onto one line: each video unit follows on
/// the one that was read before it. 90 kHz ticks.
class Timeline
{
public:
    /// The next unit, by the times of its navigation pack.
    void follow(std::uint32_t begin, std::uint32_t end)
    {
        if (!m_isOnLine)
            m_offset = m_end - begin;
        else if (begin != m_lastEnd)
            m_offset += std::int64_t(m_lastEnd) - begin;
        m_isOnLine = true;
        m_begin = begin + m_offset;
        m_lastEnd = end > begin && end - begin <= longestUnit ? end : begin;
        m_end = m_lastEnd + m_offset;
    }
    /// What comes next is elsewhere on the disc.
    void forget() { m_isOnLine = false; }

    [[nodiscard]] std::optional<std::int64_t> at(const std::optional<std::int64_t> &presentation) const
    {
        return presentation && m_isOnLine ? std::optional(*presentation + m_offset) : std::nullopt;
    }
    /// Of the unit.
    [[nodiscard]] std::int64_t begin() const { return m_begin; }

private:
    static constexpr std::uint32_t longestUnit = 90'000 * 10; // a video unit has a second, or is a still picture

    bool m_isOnLine = false;
    std::int64_t m_offset = 0;
    std::int64_t m_begin = 0;
    std::int64_t m_end = 0;
    std::uint32_t m_lastEnd = 0; ///< as the disc counts
};

} // namespace Tessaron
