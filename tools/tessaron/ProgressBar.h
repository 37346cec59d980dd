#pragma once

#include "tools/tessaron/ProgressDisplay.h"

#include <QByteArray>

namespace Tessaron::Tool
{

/// Columns of the terminal behind a descriptor; 80 when it does not say.
[[nodiscard]] int terminalWidth(int descriptor);

/// The line that shows a state, at most `width` columns of ASCII: what is going on, or a bar with percentage, amount,
/// rate and remaining time. What does not fit is left out from the right; the percentage always stands.
[[nodiscard]] QByteArray progressLine(const DiscJobProgress &progress, int width);

/// "0:07", "12:34", "1:02:03".
[[nodiscard]] QByteArray durationText(std::chrono::seconds duration);

} // namespace Tessaron::Tool
