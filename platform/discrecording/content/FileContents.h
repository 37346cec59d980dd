#pragma once

#include "platform/coreservices/FSRef.h"
#include "platform/foundation/FileTime.h"

#include <cstdint>

namespace Tessaron
{

/// A file whose contents an image takes.
struct FileContents {
    FSRef ref;
    std::uint64_t size = 0; ///< bytes, as planned
    std::uint64_t inode = 0; ///< as planned, like the times: any difference means that the file has changed
    FileTime modification;
    FileTime change; ///< of the contents or the attributes
};

} // namespace Tessaron
