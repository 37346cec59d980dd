#pragma once

#include "platform/quicktime/MovieAtoms.h"
#include "platform/quicktime/MovieDescription.h"

#include <optional>
#include <vector>

namespace Tessaron
{

/// The texts of a QuickTime or MP4 file and its first cover.
struct MovieMetadata {
    std::vector<MovieMetadataItem> items;
    std::optional<MovieCover> cover;
};

/// Reads the user data (QuickTime File Format, "User Data Atoms"), the list of items that MP4 files have in it, and the
/// metadata of QuickTime ("QuickTime Metadata File Format"), each as far as it makes sense, in the order of the file.
/// Texts that are marked as UTF-16 become UTF-8; all others stay what they are. A cover inside of a compressed movie is
/// left out.
[[nodiscard]] MovieMetadata metadataOfMovie(const MovieTree &tree);

} // namespace Tessaron
