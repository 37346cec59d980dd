#pragma once

#include "platform/foundation/UniqueDescriptor.h"
#include "tools/tessaron/Arguments.h"
#include "tools/tessaron/Problem.h"
#include "tools/tessaron/Sources.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace Tessaron::Tool
{

/// Where an image goes: an open folder and names in it.
struct Destination {
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
[[nodiscard]] Problem openDestination(const QByteArray &output, ImageFormat format, Destination *destination);

/// The image must neither lie inside a source folder, by whatever path, nor be one of the sources.
[[nodiscard]] Problem checkOutside(const Destination &destination, const std::vector<Source> &sources);

/// The image's name with "cue" in place of its extension.
[[nodiscard]] QByteArray cueNameFor(const QByteArray &imageName);

} // namespace Tessaron::Tool
