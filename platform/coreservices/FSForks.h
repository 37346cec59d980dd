#pragma once

#include "platform/coreservices/FSRef.h"

#include <QByteArray>

#include <cstdint>

namespace Tessaron
{

/// Where FSIterateForks() stands; a fresh one starts at the first fork.
struct FSForkPosition {
    int next = 0;
};

/// One fork of a file. Sizes are bytes; "physical" is what is allocated on disk.
struct FSForkInfo {
    QByteArray name; ///< empty for the data fork
    std::uint64_t logicalSize = 0;
    std::uint64_t physicalSize = 0;
};

/// The next fork of a file: the data fork, then the resource fork when there is one that is not empty. errFSNoMoreItems
/// behind the last; a folder has no forks. Other errors as of FSGetCatalogInfo(). Thread-safe.
[[nodiscard]] TESSARON_EXPORT OSErr FSIterateForks(const FSRef *ref, FSForkPosition *position, FSForkInfo *fork);

} // namespace Tessaron
