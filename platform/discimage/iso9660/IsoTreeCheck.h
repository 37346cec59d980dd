#pragma once

#include "platform/discimage/iso9660/IsoDescriptorCheck.h"

namespace Tessaron
{

/// Walks the directories of one tree and holds them against its root record, against one another and, with Rock Ridge,
/// against the system use entries; then its path tables against the directories that were found.
void checkIsoTree(const DiscImageSource &source, const CheckedIsoDescriptor &descriptor, VolumeProblemReport &report);

} // namespace Tessaron
