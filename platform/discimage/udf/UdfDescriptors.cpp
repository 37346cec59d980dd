#include "platform/discimage/udf/UdfDescriptors.h"

#include "platform/discimage/iso9660/IsoDescriptors.h"
#include "platform/discimage/source/DiscImageErrors.h"
#include "platform/discimage/udf/UdfRecordFields.h"
#include "platform/discimage/volume/VolumeTimeFields.h"
#include "platform/foundation/ByteOrder.h"

#include <array>

namespace Tessaron
{

namespace
{

namespace Tag = UdfTagField;

constexpr std::array<std::uint16_t, 256> makeTable()
{
    std::array<std::uint16_t, 256> table{};
    for (unsigned int byte = 0; byte < 256; ++byte) {
        unsigned int value = byte << 8;
        for (int bit = 0; bit < 8; ++bit)
            value = (value << 1) ^ ((value & 0x8000u) != 0 ? 0x1021u : 0u);
        table[byte] = std::uint16_t(value);
    }
    return table;
}

/// The checksum of ECMA-167 3/7.2.6: polynomial x^16 + x^12 + x^5 + 1.
std::uint16_t checksumOf(std::span<const std::uint8_t> bytes)
{
    static constexpr std::array<std::uint16_t, 256> table = makeTable();
    std::uint16_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = std::uint16_t(table[std::size_t(value >> 8) ^ byte] ^ (value << 8));
    return value;
}

NSError damaged(std::uint64_t offset, const QString &reason)
{
    return discImageError(DiscImageErrorCode::Damaged, offset, reason);
}

} // namespace

UdfDescriptorKind udfDescriptorKind(std::span<const std::uint8_t> bytes)
{
    return UdfDescriptorKind(loadLittleEndian<std::uint16_t>(bytes.data()));
}

NSError checkUdfDescriptor(std::span<const std::uint8_t> bytes, UdfDescriptorKind kind,
                           std::optional<std::uint32_t> block, std::uint64_t offset)
{
    if (bytes.size() < Tag::size)
        return damaged(offset, QStringLiteral("A descriptor is cut off"));
    const auto stated = std::uint16_t(udfDescriptorKind(bytes));
    if (stated != std::uint16_t(kind))
        return damaged(
            offset,
            QStringLiteral("There is a descriptor of kind %1 instead of %2").arg(stated).arg(std::uint16_t(kind)));
    std::uint8_t sum = 0;
    for (std::size_t at = 0; at < Tag::size; ++at)
        sum = std::uint8_t(sum + (at == Tag::checksum ? 0 : bytes[at]));
    if (sum != bytes[Tag::checksum])
        return damaged(offset + Tag::checksum, QStringLiteral("The checksum of a descriptor's tag is wrong"));
    const std::size_t covered = loadLittleEndian<std::uint16_t>(&bytes[Tag::covered]);
    if (covered > bytes.size() - Tag::size)
        return damaged(offset + Tag::covered, QStringLiteral("A checksum covers more than the descriptor"));
    if (checksumOf(bytes.subspan(Tag::size, covered)) != loadLittleEndian<std::uint16_t>(&bytes[Tag::crc]))
        return damaged(offset + Tag::crc, QStringLiteral("The checksum of a descriptor is wrong"));
    if (block && loadLittleEndian<std::uint32_t>(&bytes[Tag::place]) != *block)
        return damaged(offset + Tag::place, QStringLiteral("A descriptor says that it belongs elsewhere"));
    return {};
}

std::optional<QString> udfText(std::span<const std::uint8_t> recorded)
{
    if (recorded.empty())
        return QString();
    constexpr std::uint8_t eightBits = 8;
    constexpr std::uint8_t sixteenBits = 16;
    const auto characters = recorded.subspan(1);
    if (recorded.front() == eightBits)
        return QString::fromLatin1(reinterpret_cast<const char *>(characters.data()), qsizetype(characters.size()));
    if (recorded.front() == sixteenBits && characters.size() % 2 == 0)
        return textFromBigEndianUnits(characters.data(), characters.size());
    return std::nullopt;
}

QString udfFieldText(std::span<const std::uint8_t> field)
{
    const std::size_t length = field.back();
    return length < field.size() ? udfText(field.first(length)).value_or(QString()) : QString();
}

std::optional<VolumeTime> udfTime(const std::uint8_t *timestamp)
{
    namespace Field = UdfTimestampField;
    constexpr int unstatedZone = -2047;
    constexpr std::uint8_t mostParts = 99; // of each part of a second
    int zone = loadLittleEndian<std::uint16_t>(timestamp + Field::typeAndZone) & Field::zoneMask;
    if (zone >= Field::zoneSign)
        zone -= Field::zoneMask + 1;
    const auto year = std::int16_t(loadLittleEndian<std::uint16_t>(timestamp + Field::year));
    std::optional<VolumeTime> time =
        volumeTimeFromCalendar(year, timestamp[Field::month], timestamp[Field::day], timestamp[Field::hour],
                               timestamp[Field::minute], timestamp[Field::second], zone == unstatedZone ? 0 : zone);
    const std::uint8_t hundredths = timestamp[Field::hundredths];
    const std::uint8_t hundredsOfMicroseconds = timestamp[Field::hundredsOfMicroseconds];
    const std::uint8_t microseconds = timestamp[Field::microseconds];
    if (!time || hundredths > mostParts || hundredsOfMicroseconds > mostParts || microseconds > mostParts)
        return std::nullopt;
    time->nanoseconds = (hundredths * 10'000u + hundredsOfMicroseconds * 100u + microseconds) * 1'000u;
    time->granularity = 1'000;
    return time;
}

} // namespace Tessaron
