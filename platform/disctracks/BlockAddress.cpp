#include "platform/disctracks/BlockAddress.h"

#include <array>

namespace Tessaron
{

namespace
{

constexpr int mostDigits = 9; // so that no sum of three leaves 64 bits

/// Reads the digits at the start of the text and drops them; no value when there are none or too many.
std::optional<std::int64_t> takeNumber(QByteArrayView *text)
{
    std::int64_t value = 0;
    qsizetype digits = 0;
    for (; digits < text->size() && (*text)[digits] >= '0' && (*text)[digits] <= '9'; ++digits) {
        if (digits == mostDigits)
            return std::nullopt;
        value = value * 10 + ((*text)[digits] - '0');
    }
    *text = text->sliced(digits);
    return digits > 0 ? std::optional(value) : std::nullopt;
}

} // namespace

std::optional<MSF> MSF::fromText(QByteArrayView text)
{
    std::array<std::int64_t, 3> numbers{};
    for (std::size_t part = 0; part < numbers.size(); ++part) {
        if (part > 0) {
            if (!text.startsWith(':'))
                return std::nullopt;
            text = text.sliced(1);
        }
        const std::optional<std::int64_t> number = takeNumber(&text);
        if (!number)
            return std::nullopt;
        numbers[part] = *number;
    }
    return text.isEmpty() ? std::optional(MSF{numbers[0], numbers[1], numbers[2]}) : std::nullopt;
}

QString MSF::text() const
{
    constexpr QChar zero = u'0';
    return QStringLiteral("%1:%2:%3").arg(minutes, 2, 10, zero).arg(seconds, 2, 10, zero).arg(frames, 2, 10, zero);
}

} // namespace Tessaron
