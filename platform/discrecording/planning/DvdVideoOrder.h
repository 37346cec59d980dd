#pragma once

#include "platform/discrecording/content/ContentTree.h"

#include <vector>

namespace Tessaron
{

class ImageLayout;

/// Where the root has a folder VIDEO_TS, gives the files of DVD-Video in it their extents: the
/// manager first, then each title set; in each the information, the video objects, the backup of the information. Files
/// follow each other without gaps but for what makes information and backup begin a unit of 32 KiB, so that one flaw of
/// the disc does not hit both.
///
/// Players find title sets and video objects by the block numbers that the information files hold, counted from the
/// first file. Where these ask for a place a little further on, they are followed; so the head of each information file
/// is read. A file that cannot be read has no such wishes: whatever is wrong with it turns up when its contents are
/// written.
///
/// Adds the files to `files`, in the order of their places. What else lies in the folder is left for later. Returns the
/// files that do not lie where the information files say.
[[nodiscard]] std::vector<NodeIndex> placeDvdVideoFiles(ContentTree &tree, DRFilesystemMask filesystems,
                                                        ImageLayout &layout, std::vector<NodeIndex> &files);

} // namespace Tessaron
