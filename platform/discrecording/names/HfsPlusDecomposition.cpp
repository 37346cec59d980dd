#include "platform/discrecording/names/HfsPlusDecomposition.h"

#include <QChar>
#include <QString>

#include <algorithm>

namespace Tessaron
{

namespace
{

/// The first unit that any decomposition or order of combining marks concerns.
constexpr char16_t firstConcerned = 0x00C0;

/// True for what stays as it is and parts the text: all that decompose in the excepted ranges are not combining marks,
/// so that nothing is ordered across them.
bool isKept(char16_t unit)
{
    if (QChar::isSurrogate(unit))
        return true;
    const bool isExcepted = (unit >= 0x2000 && unit <= 0x2FFF) || (unit >= 0xF900 && unit <= 0xFAFF);
    return isExcepted && QChar::decompositionTag(unit) == QChar::Canonical;
}

} // namespace

std::u16string hfsPlusDecomposed(std::u16string_view text)
{
    if (std::ranges::all_of(text, [](char16_t unit) { return unit < firstConcerned; }))
        return std::u16string(text);
    std::u16string result;
    result.reserve(text.size() * 2);
    for (std::size_t at = 0; at < text.size();) {
        if (isKept(text[at])) {
            result += text[at++];
            continue;
        }
        const auto end = std::find_if(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), isKept);
        const auto length = static_cast<std::size_t>(end - text.begin()) - at;
        const QString part = QStringView(text.substr(at, length)).toString();
        result += part.normalized(QString::NormalizationForm_D, QChar::Unicode_3_2).toStdU16String();
        at += length;
    }
    return result;
}

} // namespace Tessaron
