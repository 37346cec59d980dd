#include "platform/coreservices/AppleDouble.h"

#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

constexpr std::uint32_t appleDoubleMagic = 0x00051607;
constexpr std::uint32_t appleDoubleVersion = 0x00020000;
constexpr qsizetype entryCountOffset = 24;
constexpr qsizetype headSize = 26; ///< magic, version, filler, count of entries
constexpr qsizetype entrySize = 12; ///< id, offset, length
constexpr std::uint32_t resourceForkEntry = 2;
constexpr std::uint32_t finderInfoEntry = 9;

const std::uint8_t *at(QByteArrayView bytes, qsizetype offset)
{
    return reinterpret_cast<const std::uint8_t *>(bytes.data()) + offset;
}

} // namespace

std::optional<AppleDouble> appleDoubleFromBytes(QByteArrayView bytes)
{
    if (bytes.size() < headSize || loadBigEndian<std::uint32_t>(at(bytes, 0)) != appleDoubleMagic
        || loadBigEndian<std::uint32_t>(at(bytes, 4)) != appleDoubleVersion)
        return std::nullopt;
    const auto count = loadBigEndian<std::uint16_t>(at(bytes, entryCountOffset));
    if (bytes.size() - headSize < count * entrySize)
        return std::nullopt;
    AppleDouble contents;
    for (qsizetype index = 0; index < count; ++index) {
        const std::uint8_t *const entry = at(bytes, headSize + index * entrySize);
        const auto id = loadBigEndian<std::uint32_t>(entry);
        const auto offset = qsizetype(loadBigEndian<std::uint32_t>(entry + 4));
        const auto length = qsizetype(loadBigEndian<std::uint32_t>(entry + 8));
        if (offset > bytes.size() || length > bytes.size() - offset)
            return std::nullopt;
        const QByteArrayView part = bytes.sliced(offset, length);
        if (id == resourceForkEntry) {
            contents.resourceFork = part.toByteArray();
        } else if (id == finderInfoEntry) {
            const qsizetype used = std::min<qsizetype>(length, qsizetype(contents.finderInfo.size()));
            std::copy_n(part.begin(), used, contents.finderInfo.begin());
        }
    }
    return contents;
}

QByteArray bytesOfAppleDouble(const AppleDouble &contents)
{
    constexpr qsizetype entryCount = 2;
    constexpr qsizetype finderInfoOffset = headSize + entryCount * entrySize;
    constexpr auto finderInfoSize = qsizetype(std::tuple_size_v<FinderInfoBytes>);
    QByteArray bytes(finderInfoOffset, '\0');
    auto *const head = reinterpret_cast<std::uint8_t *>(bytes.data());
    storeBigEndian<std::uint32_t>(head, appleDoubleMagic);
    storeBigEndian<std::uint32_t>(head + 4, appleDoubleVersion);
    storeBigEndian<std::uint16_t>(head + entryCountOffset, entryCount);
    std::uint8_t *const entries = head + headSize;
    storeBigEndian<std::uint32_t>(entries, finderInfoEntry);
    storeBigEndian<std::uint32_t>(entries + 4, finderInfoOffset);
    storeBigEndian<std::uint32_t>(entries + 8, finderInfoSize);
    storeBigEndian<std::uint32_t>(entries + entrySize, resourceForkEntry);
    storeBigEndian<std::uint32_t>(entries + entrySize + 4, finderInfoOffset + finderInfoSize);
    storeBigEndian<std::uint32_t>(entries + entrySize + 8, std::uint32_t(contents.resourceFork.size()));
    bytes.append(reinterpret_cast<const char *>(contents.finderInfo.data()), finderInfoSize);
    return bytes + contents.resourceFork;
}

} // namespace Tessaron
