#pragma once

#include "platform/foundation/UniqueDescriptor.h"
#include <TessaronClasses/DiscFormat.h>
#include <TessaronClasses/DiscSources.h>

#include <QByteArray>

#include <optional>
#include <vector>

namespace Tessaron
{

/// Where an image goes: an open folder and names in it.
struct ImageDestination {
    QByteArray path; ///< of the image, as given or, for a symbolic link, where that leads
    QByteArray folderPath;
    UniqueDescriptor folder; ///< opened without rights over its content (O_PATH)
    QByteArray name;
    QByteArray cueName; ///< empty when there is no cue sheet
    std::optional<DeviceAndInode> existingImage; ///< the file that will be replaced
    std::optional<DeviceAndInode> existingCue;
};

/// Looks at the place for the image: its folder must exist and take new files, and what is there already must be a
/// regular file that may be replaced. A symbolic link is followed: what it leads to is replaced.
[[nodiscard]] NSError openDestination(const QByteArray &output, DiscFormat format, ImageDestination *destination);

/// Looks at the place for a further file of the image, such as its cue sheet: what is there already must be a regular
/// file that may be replaced; `*existing` becomes its identity. `what` is what errors call it.
[[nodiscard]] NSError inspectBeside(const ImageDestination &destination, const QByteArray &name, const QString &what,
                                    std::optional<DeviceAndInode> *existing);

/// The image must neither lie inside a source folder, by any path, nor be one of the sources.
[[nodiscard]] NSError checkOutside(const ImageDestination &destination, const std::vector<DiscSource> &sources);

} // namespace Tessaron
