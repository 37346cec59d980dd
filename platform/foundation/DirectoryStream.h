#pragma once

#include "platform/foundation/UniqueDescriptor.h"

#include <dirent.h>
#include <memory>

namespace Tessaron
{

struct DirectoryCloser {
    void operator()(DIR *directory) const { ::closedir(directory); }
};

/// An open folder being listed; closes it at the end of its life.
using DirectoryStream = std::unique_ptr<DIR, DirectoryCloser>;

/// Begins to list the open folder, which the stream owns from now on. Null with `errno` set when that fails; the folder
/// is closed then.
[[nodiscard]] inline DirectoryStream directoryStream(UniqueDescriptor folder)
{
    DirectoryStream stream(folder ? ::fdopendir(folder.get()) : nullptr);
    if (stream)
        (void)folder.release();
    return stream;
}

} // namespace Tessaron
