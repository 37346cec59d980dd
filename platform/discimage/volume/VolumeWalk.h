#pragma once

#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/Export.h"

#include <QByteArray>

#include <functional>

namespace Tessaron
{

/// What walkVolume() tells; each may be absent. Paths are the names from the root, joined by '/', without one in front;
/// the root's is empty. They and the objects live for the call only.
struct VolumeWalker {
    /// A folder is about to be listed, the root first. False leaves it out.
    std::function<bool(const QByteArray &path, const VolumeObject &folder)> enterFolder;
    /// An object of the folder entered last, folders included. False ends the walk.
    std::function<bool(const QByteArray &folderPath, const VolumeObject &object)> object;
    /// The folder is listed, and all below it is walked.
    std::function<void(const QByteArray &path)> leaveFolder;
    /// A folder cannot be listed (any further). False ends the walk.
    std::function<bool(const QByteArray &path, const NSError &error)> failed;
};

/// Walks all objects of a volume: a folder's own objects first, in the volume's order, then each of its folders in
/// turn. Folders that lead back to one that was there, and folders that claim more bytes together than the image has,
/// are told as failures of code DiscImageErrorCode::Loop, so that it always ends. Memory is in proportion to the number
/// of folders, not of files. False when a callback ended it.
TESSARON_EXPORT bool walkVolume(const VolumeReader &reader, const VolumeWalker &walker);

} // namespace Tessaron
