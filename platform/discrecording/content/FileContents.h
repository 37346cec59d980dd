#pragma once

#include "platform/coreservices/FSRef.h"

#include <cstdint>

namespace Tessaron
{

/// A file whose contents an image takes.
struct FileContents {
    FSRef ref;
    std::uint64_t size = 0; ///< bytes, as planned
    std::uint64_t inode = 0; ///< as planned, like the times: any difference means that the file has changed
    std::int64_t modificationSeconds = 0;
    std::uint32_t modificationNanoseconds = 0;
    std::int64_t changeSeconds = 0;
    std::uint32_t changeNanoseconds = 0;
};

} // namespace Tessaron
