#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <vector>

namespace Tessaron
{

class ImageLayout;

/// Gives the files of DVD-Video in a folder VIDEO_TS of the root (in capitals, as players look for it) their extents:
/// the manager first, then each title set; in each the information, the video objects, the backup of the information.
/// Files follow each other without gaps but for what makes information and backup begin a unit of 32 KiB, so that one
/// flaw of the disc does not hit both.
///
/// Players find title sets and video objects by the block numbers that the information files hold, counted from the
/// first file. Where these ask for a place a little further on, they are followed, for which the head of each
/// information file is read. One that cannot be read is placed as if it asked for nothing; the error comes when its
/// contents are written.
///
/// Adds the files to `files`, in the order of their places. Other files of the folder are left for later. Returns the
/// files that do not lie where the information files say.
[[nodiscard]] std::vector<NodeIndex> placeDvdVideoFiles(ContentTree &tree, DRFilesystemMask filesystems,
                                                        ImageLayout &layout, std::vector<NodeIndex> &files);

} // namespace Tessaron
