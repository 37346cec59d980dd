#pragma once

#include "platform/foundation/Export.h"

#include <QStringView>

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// The number of CD-TEXT (EBU Tech 3264 annex 1) for a language of ISO 639-2, in either of its two codes where there
/// are two ("ger" and "deu"). No value for a language without a number. Thread-safe.
[[nodiscard]] TESSARON_EXPORT std::optional<std::uint8_t> cdTextLanguage(QStringView code);

} // namespace Tessaron
