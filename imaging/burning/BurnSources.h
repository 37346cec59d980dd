#pragma once

#include "platform/foundation/Result.h"
#include <TessaronClasses/DescribedDisc.h>
#include <TessaronClasses/DiscSources.h>

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// What an order's paths turn out to be: an image, or folders and files.
struct BurnSources {
    std::vector<DiscSource> sources; ///< of which the contents of a disc are made; empty for an image
    std::optional<DescribedDisc> image;
    QStringList notes; ///< about the image
};

/// A single file is an image when it describes one, has the name of one, or holds filesystems; any other file is data.
/// Errors are those of a job (DiscJobErrors.h). Touches the disk.
[[nodiscard]] Result<BurnSources> burnSourcesAtPaths(const QList<QByteArray> &paths, const std::stop_token &stop);

/// An error when the drive is a file that is one of the sources, or lies in one of them: it would be written over.
[[nodiscard]] NSError errorOfDriveAmongSources(const BurnSources &sources, const QByteArray &drive);

} // namespace Tessaron
