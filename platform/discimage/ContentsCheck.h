#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"

#include <memory>

namespace Tessaron
{

/// Images that this system made say in each of their trees, and in the system area, which trees they were made with and
/// how long they are (docs/damage.md). Holds that against what is found: trees that are gone without any trace, records
/// that are damaged or disagree, an end that is missing. Nothing is told of an image without such a record, or of one
/// whose record is older than its primary volume descriptor, because another program wrote the image anew.
void checkContentsRecords(const std::shared_ptr<const DiscImageSource> &source, VolumeProblemReport &report);

} // namespace Tessaron
