#pragma once

#include "platform/dvdplayback/SharedMemory.h"

#include <QImage>

#include <atomic>
#include <cstdint>
#include <memory>

namespace Tessaron
{

inline constexpr std::uint32_t mostFrameWidth = 720;
inline constexpr std::uint32_t mostFrameHeight = 576;

/// Memory that a session shares with its helper: three pictures, of which the helper fills one, the session shows one,
/// and the third one is the newest that is whole. The session believes nothing in it: numbers are checked, pixels may
/// be anything, and change at any time.
class SharedFrames
{
public:
    /// For the session.
    [[nodiscard]] static Result<std::unique_ptr<SharedFrames>> create();
    /// For the helper, which was given the descriptor.
    [[nodiscard]] static Result<std::unique_ptr<SharedFrames>> attach(UniqueDescriptor descriptor);

    [[nodiscard]] int descriptor() const { return m_memory->descriptor(); }

    // For the helper, one thread.

    /// Four bytes for each pixel, as in QImage::Format_RGB32; lines are mostFrameWidth pixels apart.
    [[nodiscard]] std::uint8_t *pixelsToFill();
    /// Makes what was filled the newest picture; its number.
    std::uint32_t publish(std::uint32_t width, std::uint32_t height);

    // For the session, one thread at a time.

    /// The newest picture; false when it was taken before. The image shares the memory, and keeps it: it is that
    /// picture until the next one is taken, and may be anything from then on.
    [[nodiscard]] bool takeNewest(QImage *image, std::uint32_t *number);

private:
    struct Layout;

    explicit SharedFrames(SharedMemory memory, std::uint32_t own);

    const std::shared_ptr<const SharedMemory> m_memory;
    Layout *const m_layout;
    std::uint32_t m_own; ///< index of the picture that this side has
    std::uint32_t m_number = 0;
};

} // namespace Tessaron
