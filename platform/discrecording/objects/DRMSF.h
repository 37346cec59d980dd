#pragma once

#include "platform/foundation/Export.h"

#include <QString>

#include <cstdint>

namespace Tessaron
{

/// A position on a CD in frames (blocks), shown as minutes, seconds and frames: 75 frames a second.
class TESSARON_EXPORT DRMSF
{
public:
    [[nodiscard]] static constexpr DRMSF msfWithFrames(std::uint32_t frames) { return DRMSF(frames); }

    [[nodiscard]] constexpr std::uint32_t intValue() const { return m_frames; }
    [[nodiscard]] constexpr std::uint32_t minutes() const { return m_frames / (75 * 60); }
    [[nodiscard]] constexpr std::uint32_t seconds() const { return m_frames / 75 % 60; }
    [[nodiscard]] constexpr std::uint32_t frames() const { return m_frames % 75; }
    /// "MM:SS:FF"; minutes grow beyond two digits where needed.
    [[nodiscard]] QString description() const;

    friend constexpr auto operator<=>(DRMSF, DRMSF) = default;

private:
    constexpr explicit DRMSF(std::uint32_t frames)
        : m_frames(frames)
    {
    }

    std::uint32_t m_frames;
};

} // namespace Tessaron
