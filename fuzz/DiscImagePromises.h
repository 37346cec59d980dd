#pragma once

#include "platform/discimage/ImageCheck.h"
#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/iso9660/ElTorito.h"
#include "platform/discimage/volume/VolumeWalk.h"
#include "platform/foundation/ByteOrder.h"

#include <QByteArray>

#include <cstdint>
#include <cstring>

namespace Tessaron
{

/// Inputs are images in short: what is not zero in them, as records of a 16-bit number of a block of 2048 bytes, a
/// 16-bit offset in it, a 16-bit length (all big-endian) and the bytes. A seed of half a megabyte so takes a few
/// kilobytes.
[[nodiscard]] inline QByteArray expandedImage(const std::uint8_t *bytes, std::size_t size)
{
    constexpr std::size_t headSize = 6;
    constexpr std::size_t maximumBlocks = 512; // a megabyte
    QByteArray image;
    for (std::size_t at = 0; at + headSize <= size;) {
        const std::size_t block = loadBigEndian<std::uint16_t>(bytes + at) % maximumBlocks;
        const std::size_t offset = block * 2048 + loadBigEndian<std::uint16_t>(bytes + at + 2) % 2048;
        const std::size_t length =
            std::min<std::size_t>(loadBigEndian<std::uint16_t>(bytes + at + 4) % 2049, size - at - headSize);
        if (std::size_t(image.size()) < offset + length)
            image.append(qsizetype(offset + length) - image.size(), '\0');
        std::memcpy(image.data() + offset, bytes + at + headSize, length);
        at += headSize + length;
    }
    return image;
}

/// Gives everything in the image that looks like a descriptor of UDF the checksums that it needs: no engine finds them
/// by chance.
inline void correctUdfTags(QByteArray *image)
{
    auto *const bytes = reinterpret_cast<std::uint8_t *>(image->data());
    const auto size = std::size_t(image->size());
    for (std::size_t at = 32768; at + 16 <= size; at += 4) {
        const auto kind = loadLittleEndian<std::uint16_t>(bytes + at);
        const bool isKind = (kind >= 1 && kind <= 9) || (kind >= 256 && kind <= 266);
        const std::size_t covered = loadLittleEndian<std::uint16_t>(bytes + at + 10);
        if (!isKind || bytes[at + 2] < 2 || bytes[at + 2] > 3 || bytes[at + 3] != 0 || covered == 0 || covered > 2032
            || at + 16 + covered > size)
            continue;
        unsigned int value = 0;
        for (std::size_t index = 0; index < covered; ++index) {
            value ^= unsigned(bytes[at + 16 + index]) << 8;
            for (int bit = 0; bit < 8; ++bit)
                value = ((value << 1) ^ ((value & 0x8000u) != 0 ? 0x1021u : 0u)) & 0xFFFFu;
        }
        storeLittleEndian<std::uint16_t>(bytes + at + 8, std::uint16_t(value));
        unsigned int sum = 0;
        for (std::size_t index = 0; index < 16; ++index)
            sum += index == 4 ? 0u : bytes[at + index];
        bytes[at + 4] = std::uint8_t(sum);
    }
}

/// Walks every volume of the image and reads a little of each file. A promise that the readers
/// break for these bytes, as a text; null when they keep all.
[[nodiscard]] inline const char *brokenDiscImagePromise(const QByteArray &image)
{
    const auto source = DiscImageSource::sourceWithBytes(image);
    const char *broken = nullptr;
    std::uint64_t told = 0;
    const auto count = checkDiscImage(source, [&](const VolumeProblem &problem) {
        if (problem.message.isEmpty() || problem.structure.isEmpty())
            broken = "a problem without a place or a reason";
        return ++told < 20'000;
    });
    if (count != told)
        return "the check does not count what it tells";
    if (const std::optional<BootCatalog> catalog = readBootCatalog(*source); catalog && catalog->entries.size() > 64)
        return "a boot catalog with more entries than it has room for";
    for (const FoundVolume &volume : volumesInImage(source)) {
        if (!volume.reader && !volume.error)
            return "a volume with neither reader nor error";
        if (!volume.reader)
            continue;
        int objects = 20'000; // what a sound image of this size could have, and more
        VolumeWalker walker;
        walker.object = [&](const QByteArray &, const VolumeObject &object) {
            std::uint64_t total = 0;
            for (const VolumeExtent &extent : object.extents)
                total += extent.length;
            if (object.kind == VolumeObjectKind::File && total != object.size)
                broken = "the extents of a file do not add up to its size";
            if (object.kind != VolumeObjectKind::File && object.size != 0)
                broken = "something that is not a file has a size";
            char buffer[64];
            std::size_t got = 0;
            if (!volume.reader->read(object, object.size / 2, buffer, sizeof buffer, &got) && got > sizeof buffer)
                broken = "more was read than asked for";
            return broken == nullptr && --objects > 0;
        };
        walkVolume(*volume.reader, walker);
    }
    return broken;
}

} // namespace Tessaron
