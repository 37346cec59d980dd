#include "platform/quicktime/decoding/OggPages.h"

#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr qsizetype headSize = 27;
constexpr std::int64_t longestPage = 27 + 255 + 255 * 255;
constexpr qsizetype granuleAt = 6;
constexpr qsizetype serialAt = 14;

template <typename Integer>
Integer numberAt(const QByteArray &bytes, qsizetype at)
{
    return loadLittleEndian<Integer>(reinterpret_cast<const std::uint8_t *>(bytes.constData()) + at);
}

} // namespace

std::optional<std::int64_t> endOfOggStream(const LocalMediaFile &file)
{
    const QByteArray first = file.file().bytesAt(0, headSize);
    const QByteArray tail = file.file().bytesAt(std::max<std::int64_t>(file.length() - longestPage, 0), longestPage);
    const qsizetype last = tail.lastIndexOf("OggS");
    if (first.size() < headSize || !first.startsWith("OggS") || last < 0 || tail.size() - last < headSize)
        return {};
    const auto granule = std::int64_t(numberAt<std::uint64_t>(tail, last + granuleAt));
    const bool isSameStream =
        numberAt<std::uint32_t>(first, serialAt) == numberAt<std::uint32_t>(tail, last + serialAt);
    return isSameStream && granule >= 0 ? std::optional(granule) : std::nullopt;
}

} // namespace Tessaron
