#pragma once

#include "platform/foundation/Export.h"

#include <QByteArray>
#include <QStringView>

namespace Tessaron
{

/// Text that holds file names, made fit for a terminal, as UTF-8: control characters, characters that reverse the
/// writing direction, and bytes that are not UTF-8 appear as \n, \t, \xNN or \u{N}. A name can so neither move the
/// cursor nor pass for another.
[[nodiscard]] TESSARON_EXPORT QByteArray printable(QStringView text);
/// The same for a name or path given as bytes.
[[nodiscard]] TESSARON_EXPORT QByteArray printable(const QByteArray &bytes);

} // namespace Tessaron
