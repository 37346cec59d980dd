#pragma once

#include "platform/discrecording/content/FileContents.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/UniqueDescriptor.h"

#include <stop_token>

namespace Tessaron
{

/// Opens a planned file for reading. `*error` says what happened, naming the file, when it cannot be opened or is no
/// longer the planned one. A file that another program keeps busy is waited for, as long as `cancellation` is not
/// requested.
[[nodiscard]] UniqueDescriptor openFileContents(const FileContents &file, NSError *error,
                                                const std::stop_token &cancellation = {});

/// Reads `length` bytes at `offset` of an open planned file into `buffer`; an error naming the file when it fails or
/// ends early.
[[nodiscard]] NSError readFileContents(int descriptor, const FileContents &file, std::uint64_t offset, void *buffer,
                                       std::uint64_t length);

/// What to say when a read of an open planned file failed with `errnoValue`, or gave no more bytes (0): that the file
/// has changed, if it has, else that it cannot be read.
[[nodiscard]] NSError fileContentsReadError(int descriptor, const FileContents &file, int errnoValue);

/// Compares the open file with the plan (size, inode, modification and change time); call it after the last read. The
/// error names the file and says whether it shrank, grew or changed.
[[nodiscard]] NSError verifyFileContentsUnchanged(int descriptor, const FileContents &file);

} // namespace Tessaron
