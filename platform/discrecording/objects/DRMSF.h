#pragma once

#include "platform/disctracks/BlockAddress.h"
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
    [[nodiscard]] constexpr std::uint32_t minutes() const { return std::uint32_t(msf().minutes); }
    [[nodiscard]] constexpr std::uint32_t seconds() const { return std::uint32_t(msf().seconds); }
    [[nodiscard]] constexpr std::uint32_t frames() const { return std::uint32_t(msf().frames); }
    /// "MM:SS:FF"; minutes grow beyond two digits where needed.
    [[nodiscard]] QString description() const;

    // The check takes the zero that the compiler itself compares with for one in the source.
    friend constexpr auto operator<=>(DRMSF, DRMSF) = default; // NOLINT(modernize-use-nullptr)

private:
    constexpr explicit DRMSF(std::uint32_t frames)
        : m_frames(frames)
    {
    }

    [[nodiscard]] constexpr MSF msf() const { return MSF::ofFrames(m_frames); }

    std::uint32_t m_frames;
};

} // namespace Tessaron
