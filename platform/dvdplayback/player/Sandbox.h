#pragma once

#include "platform/dvdplayback/player/DiscFiles.h"
#include "platform/foundation/NSError.h"

namespace Tessaron
{

/// What the process can no longer do once it is shut off.
struct SandboxFacts {
    bool seesOnlyTheDisc = false; ///< files elsewhere cannot be opened; false where the system has no Landlock
};

/// Shuts the process off before it touches the disc: no new process, no network, nothing opened for writing, no other
/// process touched, nothing but the disc read (where the system has Landlock), limits on memory and on what a file can
/// grow to. Cannot be undone. An error where the system refuses what it must be able to do.
[[nodiscard]] NSError shutOffAllBut(const DiscPlace &place, SandboxFacts *facts);

/// To be called again and again while all is well: a process that computes for ten seconds in between is ended
/// (SIGPROF), since the tables of a disc can lead a library around in circles.
void showProgress();

} // namespace Tessaron
