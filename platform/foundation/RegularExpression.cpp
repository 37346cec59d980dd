#include "platform/foundation/RegularExpression.h"

#include <limits>
#include <memory>
#include <unicode/uregex.h>

namespace Tessaron
{

namespace
{

// ICU counts steps of its matcher, not time: a unit is about a millisecond on the machines of 2020.
constexpr int32_t timeLimit = 1000;
// The matcher keeps the states that it may return to: "(a|b)*" takes 80 bytes a character.
constexpr int32_t stackLimit = 64 * 1024 * 1024;

struct Closer {
    void operator()(URegularExpression *expression) const { uregex_close(expression); }
};

int32_t lengthForIcu(QStringView text)
{
    return static_cast<int32_t>(text.size());
}

} // namespace

bool regularExpressionMatches(QStringView pattern, QStringView text)
{
    constexpr qsizetype greatestLength = std::numeric_limits<int32_t>::max();
    if (pattern.size() > greatestLength || text.size() > greatestLength)
        return false;
    // ICU takes an empty pattern for a mistake.
    if (pattern.isEmpty())
        return text.isEmpty();
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<URegularExpression, Closer> expression(
        uregex_open(pattern.utf16(), lengthForIcu(pattern), 0, nullptr, &status));
    uregex_setTimeLimit(expression.get(), timeLimit, &status);
    uregex_setStackLimit(expression.get(), stackLimit, &status);
    constexpr char16_t nothing[] = u"";
    uregex_setText(expression.get(), text.isEmpty() ? nothing : text.utf16(), lengthForIcu(text), &status);
    // ICU functions do nothing once the status holds a failure.
    constexpr int32_t fromTheStart = 0;
    const bool isMatch = uregex_matches(expression.get(), fromTheStart, &status);
    return isMatch && U_SUCCESS(status);
}

} // namespace Tessaron
