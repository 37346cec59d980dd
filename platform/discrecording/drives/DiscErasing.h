#pragma once

#include "platform/discrecording/drives/DriveActivity.h"
#include "platform/discrecording/drives/GrabbedDrive.h"
#include "platform/foundation/NSError.h"

#include <cstdint>

namespace Tessaron
{

enum class DiscErasure : std::uint8_t {
    Quick, ///< what says where things are
    Full, ///< everything
    Format, ///< for overwriting
};

/// Blanks or formats the disc and waits for the end; then looks at it again. A drive cannot be stopped at that. An
/// error when the disc is of a kind that this cannot be done to, which is found out before anything is touched, when
/// the drive fails, or when it does not get on for so long that it is given up.
[[nodiscard]] NSError eraseDisc(GrabbedDrive &drive, DiscErasure erasure, DriveActivity &activity);

} // namespace Tessaron
