#pragma once

#include <string>
#include <string_view>

namespace Tessaron
{

/// The form in which HFS+ stores text: canonically decomposed and ordered as of Unicode 3.2, without the ranges whose
/// characters stand for those of old Macintosh encodings (U+2000 to U+2FFF, U+F900 to U+FAFF) and without what lies
/// beyond the first plane (HFS Plus Volume Format, "Unicode Subtleties").
[[nodiscard]] std::u16string hfsPlusDecomposed(std::u16string_view text);

} // namespace Tessaron
