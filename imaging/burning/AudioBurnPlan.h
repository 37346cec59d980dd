#pragma once

#include "imaging/burning/SoundPipe.h"
#include "platform/discrecording/burn/BurnPlan.h"
#include "platform/disctracks/TableOfContents.h"

namespace Tessaron
{

/// The plan of a disc whose blocks come out of a pipe, one track after the other, as the table has them. The pipe must
/// have been started, and outlive the plan.
[[nodiscard]] BurnPlan planPipedDisc(const TableOfContents &contents, SoundPipe &pipe);

} // namespace Tessaron
