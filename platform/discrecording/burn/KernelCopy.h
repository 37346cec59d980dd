#pragma once

#include "platform/discrecording/burn/BlockSink.h"

#include <QString>

namespace Tessaron
{

/// Copies a part of a file to the position of an open file, which moves on: inside the kernel where it can
/// (copy_file_range(2)), which shares extents where the file systems have them, and by reading and writing where it
/// cannot. Holes of the source become holes of a regular output that grows by them, and zero bytes of any other: they
/// are never read.
///
/// `progress` is called at least every 16 MiB, and about every 20 ms on a slow disk. `outputName` is for errors.
[[nodiscard]] FileCopyResult copyToDescriptor(const FileRange &range, int to, const QString &outputName,
                                              const CopyProgress &progress);

} // namespace Tessaron
