#include "filemodel/FileAttributeCache.h"

#include <chrono>

namespace Tessaron
{

KRFileReference::Cache::~Cache()
{
    for (std::uint8_t text = 0; text < TextCount; ++text)
        clear(static_cast<Text>(text));
}

void KRFileReference::Cache::own(Text text, MallocBuffer buffer)
{
    clear(text);
    if (!buffer)
        return;
    texts[text] = buffer.release();
    owned = static_cast<std::uint8_t>(owned | (1u << text));
}

void KRFileReference::Cache::refer(Text text, QByteArrayView bytes)
{
    clear(text);
    texts[text] = bytes.isEmpty() ? nullptr : bytes.data();
}

void KRFileReference::Cache::clear(Text text)
{
    if (owned & (1u << text))
        std::free(const_cast<char *>(texts[text]));
    owned = static_cast<std::uint8_t>(owned & ~(1u << text));
    texts[text] = nullptr;
}

std::uint32_t KRFileReference::Cache::ticks()
{
    using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, ticksPerSecond>>;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<Ticks>(now).count()) | 1u;
}

} // namespace Tessaron
