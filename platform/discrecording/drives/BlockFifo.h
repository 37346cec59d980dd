#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

namespace Tessaron
{

/// Bytes on their way from the thread that makes them to the thread that a drive is fed by: a ring of fixed size. One
/// thread puts, one takes; either may end it.
class BlockFifo
{
public:
    explicit BlockFifo(std::size_t capacity);

    /// Puts as many bytes as fit, waiting up to `patience` for room; returns how many. 0 also once it has failed.
    [[nodiscard]] std::size_t put(std::span<const std::uint8_t> bytes, std::chrono::milliseconds patience);
    /// No more bytes will come.
    void end();
    /// Drops what has not been taken yet and wakes both threads. Until restart(), put() and take() fail at once.
    void fail();

    /// Waits until all of `out` is filled. False, with nothing taken, when the bytes end before that, or after fail().
    [[nodiscard]] bool take(std::span<std::uint8_t> out);

    /// Takes up the next run of bytes: as new. Only when neither thread uses it.
    void restart();

    [[nodiscard]] std::size_t capacity() const { return m_capacity; }
    [[nodiscard]] std::size_t filled() const;
    [[nodiscard]] bool hasFailed() const;
    /// How often take() had to wait in the midst of the bytes: each time the drive ran dry.
    [[nodiscard]] std::uint64_t waits() const;

private:
    const std::size_t m_capacity;
    const std::unique_ptr<std::uint8_t[]> m_ring;

    mutable std::mutex m_mutex; ///< guards what follows
    std::condition_variable m_hasRoom;
    std::condition_variable m_hasBytes;
    std::size_t m_first = 0; ///< place of the oldest byte
    std::size_t m_filled = 0;
    std::uint64_t m_waits = 0;
    bool m_wasTaken = false; ///< take() has been called
    bool m_hasEnded = false;
    bool m_hasFailed = false;
};

} // namespace Tessaron
