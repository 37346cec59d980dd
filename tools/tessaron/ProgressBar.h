#pragma once

#include "tools/tessaron/ProgressDisplay.h"

#include <QByteArray>

namespace Tessaron::Tool
{

struct TerminalSize {
    int columns = 80;
    int rows = 24;
};

/// That of the terminal behind a descriptor; the usual one when it does not say.
[[nodiscard]] TerminalSize terminalSize(int descriptor);

/// The line that shows a state, at most `width` columns of ASCII: what is going on, or a bar with percentage, amount,
/// rate and remaining time. What does not fit is left out from the right; the percentage always stands.
[[nodiscard]] QByteArray progressLine(const DiscJobProgress &progress, int width);

/// The line for one file: how much of it is done, and its name, in at most `width` columns of a terminal; the end of a
/// name that is too long is left out.
[[nodiscard]] QByteArray fileProgressLine(const FileProgress &file, int width);

/// "0:07", "12:34", "1:02:03".
[[nodiscard]] QByteArray durationText(std::chrono::seconds duration);

} // namespace Tessaron::Tool
