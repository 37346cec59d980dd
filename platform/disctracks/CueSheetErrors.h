#pragma once

#include "platform/foundation/NSError.h"

#include <cstdint>

namespace Tessaron
{

/// What is wrong with a cue sheet, where, and what to do; line 0 means the whole sheet.
[[nodiscard]] NSError cueSheetError(std::uint32_t line, const QString &reason, const QString &remedy);
/// The same for the descriptions of CloneCD and cdrdao.
[[nodiscard]] NSError cloneCDError(std::uint32_t line, const QString &reason, const QString &remedy);
[[nodiscard]] NSError cdrdaoError(std::uint32_t line, const QString &reason, const QString &remedy);
/// With the remedy to correct the line.
[[nodiscard]] NSError cdrdaoError(std::uint32_t line, const QString &reason);

} // namespace Tessaron
