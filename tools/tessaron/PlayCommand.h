#pragma once

#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/ExitStatus.h"

namespace Tessaron::Tool
{

/// `tessaron dvd --play`: becomes the player, a program of its own in the library's private folder, so that this one
/// never loads widgets. Serves one run.
class PlayCommand
{
public:
    explicit PlayCommand(const Arguments &arguments);

    /// Returns only where the player cannot be started.
    [[nodiscard]] ExitStatus run();

private:
    const Arguments m_arguments;
};

} // namespace Tessaron::Tool
