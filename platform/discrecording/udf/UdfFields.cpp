#include "platform/discrecording/udf/UdfFields.h"

#include "platform/discrecording/image/CalendarTime.h"
#include "platform/discrecording/udf/UdfCompressedText.h"
#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

// Fields of a timestamp (ECMA-167 1/7.3), counted from 0.
namespace Timestamp
{
constexpr std::size_t typeAndZone = 0;
constexpr std::size_t year = 2;
constexpr std::size_t month = 4;
constexpr std::size_t day = 5;
constexpr std::size_t hour = 6;
constexpr std::size_t minute = 7;
constexpr std::size_t second = 8;
constexpr std::size_t hundredths = 9; // of a second
constexpr std::size_t hundredsOfMicroseconds = 10;
constexpr std::size_t microseconds = 11;
} // namespace Timestamp
static_assert(Timestamp::microseconds + 1 == udfTimestampSize);

// Fields of a character set (1/7.2.1). Its type is 0, CS0.
namespace CharacterSet
{
constexpr std::size_t name = 1;
} // namespace CharacterSet

// Fields of an entity identifier (1/7.4). Its flags, the first byte, are 0.
namespace EntityIdentifier
{
constexpr std::size_t identifier = 1;
constexpr std::size_t suffix = 24;
} // namespace EntityIdentifier

// Fields of an extent and of a short or long allocation descriptor (3/7.1, 4/14.14.1, 4/14.14.2).
namespace Extent
{
constexpr std::size_t length = 0;
constexpr std::size_t block = 4;
} // namespace Extent

constexpr std::int64_t firstSecond = startOfYear(1);
constexpr std::int64_t lastSecond = startOfYear(10000) - 1;

/// Local time as opposed to one of unknown zone (ECMA-167 1/7.3.1), with a zone of 0 minutes beside it.
constexpr std::uint16_t localTimeOfZoneZero = 1u << 12;

/// UNIX, generic (UDF 6.3): the class of the system and the system.
constexpr std::uint8_t systemClass = 4;
constexpr std::uint8_t systemNumber = 0;

} // namespace

bool fitsUdfTimestamp(FileTime time)
{
    return time.seconds >= firstSecond && time.seconds <= lastSecond;
}

void storeUdfTimestamp(std::uint8_t *to, FileTime time)
{
    const CalendarTime parts = calendarTime(std::clamp(time.seconds, firstSecond, lastSecond));
    storeLittleEndian<std::uint16_t>(to + Timestamp::typeAndZone, localTimeOfZoneZero);
    storeLittleEndian<std::uint16_t>(to + Timestamp::year, static_cast<std::uint16_t>(parts.year));
    to[Timestamp::month] = static_cast<std::uint8_t>(parts.month);
    to[Timestamp::day] = static_cast<std::uint8_t>(parts.day);
    to[Timestamp::hour] = static_cast<std::uint8_t>(parts.hour);
    to[Timestamp::minute] = static_cast<std::uint8_t>(parts.minute);
    to[Timestamp::second] = static_cast<std::uint8_t>(parts.second);
    const std::uint32_t microseconds = time.nanoseconds / 1000;
    to[Timestamp::hundredths] = static_cast<std::uint8_t>(microseconds / 10'000);
    to[Timestamp::hundredsOfMicroseconds] = static_cast<std::uint8_t>(microseconds / 100 % 100);
    to[Timestamp::microseconds] = static_cast<std::uint8_t>(microseconds % 100);
}

void storeUdfCharacterSet(std::uint8_t *to)
{
    constexpr std::string_view name = "OSTA Compressed Unicode";
    std::copy(name.begin(), name.end(), to + CharacterSet::name);
}

void storeUdfText(std::span<std::uint8_t> field, std::u16string_view text)
{
    UdfCompressedText name;
    name.assign(text, field.size() - 2);
    if (text.empty())
        return;
    const std::string_view bytes = name.view();
    std::copy(bytes.begin(), bytes.end(), field.begin());
    field.back() = static_cast<std::uint8_t>(bytes.size());
}

void storeUdfEntityIdentifier(std::uint8_t *to, std::string_view identifier, UdfIdentifierSuffix suffix)
{
    std::copy(identifier.begin(), identifier.end(), to + EntityIdentifier::identifier);
    std::uint8_t *at = to + EntityIdentifier::suffix;
    if (suffix == UdfIdentifierSuffix::Domain || suffix == UdfIdentifierSuffix::Udf) {
        storeLittleEndian<std::uint16_t>(at, udfRevision);
        at += sizeof udfRevision;
    }
    if (suffix == UdfIdentifierSuffix::Implementation || suffix == UdfIdentifierSuffix::Udf) {
        *at++ = systemClass;
        *at = systemNumber;
    }
}

void storeUdfImplementation(std::uint8_t *to)
{
    storeUdfEntityIdentifier(to, "*Tessaron", UdfIdentifierSuffix::Implementation);
}

void storeUdfVolumeExtent(std::uint8_t *to, std::uint32_t bytes, std::uint32_t block)
{
    storeLittleEndian<std::uint32_t>(to + Extent::length, bytes);
    storeLittleEndian<std::uint32_t>(to + Extent::block, block);
}

void storeUdfShortDescriptor(std::uint8_t *to, std::uint32_t bytes, std::uint32_t block)
{
    // The two highest bits of the length are the extent's type, 0 for one that is recorded.
    storeUdfVolumeExtent(to, bytes, block);
}

void storeUdfLongDescriptor(std::uint8_t *to, std::uint32_t bytes, std::uint32_t block)
{
    storeUdfVolumeExtent(to, bytes, block);
}

} // namespace Tessaron
