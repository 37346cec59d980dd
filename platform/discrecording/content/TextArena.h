#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace Tessaron
{

/// Keeps texts of a few bytes each at addresses that never change, without an allocation for each.
class TextArena
{
public:
    /// A copy of the text, followed by a NUL byte that is not part of it; lives as long as the arena.
    [[nodiscard]] std::string_view store(std::string_view text)
    {
        if (m_free < text.size() + 1) {
            m_free = std::max(chunkSize, text.size() + 1);
            m_chunks.push_back(std::make_unique<char[]>(m_free));
            m_next = m_chunks.back().get();
        }
        char *const place = m_next;
        std::copy(text.begin(), text.end(), place);
        place[text.size()] = '\0';
        m_next += text.size() + 1;
        m_free -= text.size() + 1;
        return {place, text.size()};
    }

private:
    static constexpr std::size_t chunkSize = std::size_t{16} * 1024;

    std::vector<std::unique_ptr<char[]>> m_chunks;
    char *m_next = nullptr;
    std::size_t m_free = 0;
};

} // namespace Tessaron
