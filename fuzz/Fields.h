#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Tessaron
{

/// Takes numbers from the front of the input of a fuzz target, in the byte order of this machine; what lacks is 0.
class Fields
{
public:
    Fields(const std::uint8_t *bytes, std::size_t size)
        : m_bytes(bytes)
        , m_left(size)
    {
    }

    template <typename Number>
    Number next()
    {
        Number number{};
        const std::size_t taken = std::min(sizeof number, m_left);
        if (taken > 0) // an empty input may have no address
            std::memcpy(&number, m_bytes, taken);
        m_bytes += taken;
        m_left -= taken;
        return number;
    }
    [[nodiscard]] bool isEmpty() const { return m_left == 0; }
    [[nodiscard]] const std::uint8_t *rest() const { return m_bytes; }
    [[nodiscard]] std::size_t restSize() const { return m_left; }

private:
    const std::uint8_t *m_bytes;
    std::size_t m_left;
};

} // namespace Tessaron
