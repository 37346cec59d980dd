#pragma once

namespace Tessaron::Tool
{

/// What the command tells the shell. The numbers are part of its interface; the manual page lists them.
enum class ExitStatus : int {
    Done = 0,
    Failed = 1,
    WrongUsage = 2, ///< the command line itself cannot be carried out
    Incomplete = 3, ///< done, but something could not be stored or read
    Interrupted = 130, ///< by SIGINT, SIGTERM or SIGHUP; nothing is left behind
};

} // namespace Tessaron::Tool
