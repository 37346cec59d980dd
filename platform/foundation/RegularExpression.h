#pragma once

#include <QStringView>

namespace Tessaron
{

/// True when the whole of `text` matches `pattern`, a regular expression as ICU understands it.
///
/// Text and pattern are UTF-16 and may hold lone surrogates, so names that are not UTF-8 can be matched. An invalid
/// pattern matches nothing, nor does one that needs more than about a second or 64 MiB for this text, such as
/// "(x+x+)+y" for a long row of x. Thread-safe.
[[nodiscard]] bool regularExpressionMatches(QStringView pattern, QStringView text);

} // namespace Tessaron
