#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

/// An array that grows without ever moving what it holds, so that a plan of a million files neither keeps half of its
/// memory in reserve nor needs it twice while it grows. Reading by several threads at once is fine.
template <typename Value>
class ChunkedArray
{
public:
    [[nodiscard]] std::uint32_t size() const { return m_size; }

    [[nodiscard]] Value &operator[](std::uint32_t index) { return (*m_chunks[index / chunkSize])[index % chunkSize]; }
    [[nodiscard]] const Value &operator[](std::uint32_t index) const
    {
        return (*m_chunks[index / chunkSize])[index % chunkSize];
    }

    Value &append(const Value &value)
    {
        if (m_size % chunkSize == 0)
            m_chunks.push_back(std::make_unique<Chunk>());
        Value &place = (*m_chunks.back())[m_size % chunkSize];
        place = value;
        ++m_size;
        return place;
    }

private:
    static constexpr std::uint32_t chunkSize = 1024;
    using Chunk = std::array<Value, chunkSize>;

    std::vector<std::unique_ptr<Chunk>> m_chunks;
    std::uint32_t m_size = 0;
};

} // namespace Tessaron
