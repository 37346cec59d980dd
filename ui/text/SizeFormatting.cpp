#include "platform/foundation/NSBundle.h"
#include <TessaronClasses/SizeFormatting.h>

#include <array>
#include <charconv>

namespace Tessaron
{

namespace
{

enum class Unit {
    Bytes,
    Kilobytes,
    Megabytes,
    Gigabytes,
};

QString unitText(Unit unit)
{
    const char *const key = unit == Unit::Bytes ? "Bytes"
        : unit == Unit::Kilobytes               ? "kB"
        : unit == Unit::Megabytes               ? "MB"
                                                : "GB";
    return NSBundle::frameworkBundle()->localizedString(QString::fromLatin1(key), {},
                                                        QStringLiteral("framework-localizable"));
}

struct Size {
    float number = 0;
    Unit unit = Unit::Bytes;
};

/// Decimal thresholds, binary divisions, single precision.
Size sizeOf(std::uint64_t bytes)
{
    constexpr float part = 1.0f / 1024.0f;
    const Size gigabytes{static_cast<float>(bytes >> 20) * part, Unit::Gigabytes};
    if (bytes >= std::uint64_t(1) << 32)
        return gigabytes;
    if (bytes < 1000)
        return {static_cast<float>(bytes), Unit::Bytes};
    if (bytes < 1'000'000)
        return {static_cast<float>(bytes) * part, Unit::Kilobytes};
    if (bytes < 1'000'000'000)
        return {static_cast<float>(bytes >> 10) * part, Unit::Megabytes};
    return gigabytes;
}

/// As "%.*f" prints it, in every locale: of two numbers that are equally near the one with the even last digit, where
/// QString::number() takes the greater one.
QString text(double number, int decimals, Unit unit)
{
    std::array<char, 64> digits;
    const auto [end, error] =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, decimals);
    Q_ASSERT(error == std::errc());
    return QString::fromLatin1(digits.data(), end - digits.data()) + u' ' + unitText(unit);
}

} // namespace

QString sizeFormatForNumber(std::optional<std::uint64_t> bytes)
{
    if (!bytes)
        return {};
    const Size size = sizeOf(*bytes);
    return text(size.number, 2, size.unit);
}

QString sizeFormatForUnsignedLongLong(const unsigned long long *bytes)
{
    if (!bytes)
        return {};
    const Size size = sizeOf(*bytes);
    return text(size.number, 1, size.unit);
}

QString komogo(std::uint64_t bytes)
{
    if (bytes <= 999)
        return QString::number(bytes) + u' ' + unitText(Unit::Bytes);
    const double kilobytes = static_cast<double>(bytes / 100) / 10.24; // NOLINT(bugprone-integer-division)
    if (kilobytes < 1000)
        return text(kilobytes, 1, Unit::Kilobytes);
    const double megabytes = kilobytes * (1.0 / 1024);
    if (megabytes < 1000)
        return text(megabytes, 1, Unit::Megabytes);
    return text(megabytes * (1.0 / 1024), 1, Unit::Gigabytes);
}

QString time(int seconds)
{
    const int hours = seconds / 3600;
    const int rest = seconds - 3600 * hours;
    const int minutes = rest / 60;
    return QString::asprintf("%d:%2d:%2d", hours, minutes, rest - 60 * minutes).replace(u' ', u'0');
}

} // namespace Tessaron
