#pragma once

#include "tools/tessaron/OptionParser.h"

namespace Tessaron::Tool
{

/// Whether the words that a command was given, each understood by itself, make sense together; what is wrong otherwise,
/// without the full stop. Sets the action, and what follows from several words.
[[nodiscard]] QString checkCommand(Arguments &arguments, const NamedOptions &named);

} // namespace Tessaron::Tool
