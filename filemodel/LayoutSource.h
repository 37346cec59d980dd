#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <QByteArray>

#include <sys/stat.h>

namespace Tessaron
{

/// A folder on disk whose children are being laid out. It stays open, so that a child costs one look and no path, at
/// any depth.
struct LayoutSource {
    UniqueDescriptor descriptor; ///< O_PATH; invalid for a folder that is given up for a while or that could not be had
    std::uint32_t node = 0; ///< the place by which its children's references name it; 0 for a virtual folder
};

/// Where a file lies at this moment.
struct LayoutPlace {
    int errnoValue = 0;
    bool isBelow = false; ///< in the open folder, under the name that its reference has
    QByteArray path; ///< set where it is not
    QByteArrayView name; ///< the last one known where it is gone; lives as long as the process
    struct statx facts = {};
};

[[nodiscard]] LayoutPlace findLayoutPlace(const FSRef &ref, const LayoutSource &folder);

/// Opens the folder that was found there; invalid with `*errnoValue` set when that fails.
[[nodiscard]] UniqueDescriptor openLayoutSource(const FSRef &ref, const LayoutPlace &place, const LayoutSource &folder,
                                                int *errnoValue);

/// Opens again the folder that holds an open one, without its path; invalid where another one does by now.
[[nodiscard]] UniqueDescriptor openSourceAbove(const LayoutSource &below, const FSRef &above);

} // namespace Tessaron
