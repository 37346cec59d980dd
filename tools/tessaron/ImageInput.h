#pragma once

#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/source/DiscImageSource.h"
#include "tools/tessaron/Problem.h"

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron::Tool
{

/// One track of an image's table of contents.
struct ImageTrack {
    std::uint32_t session = 1;
    std::uint32_t number = 0;
    QByteArray mode; ///< such as "MODE1/2048" or "AUDIO"
    bool isData = false;
    std::uint32_t blockSize = 0;
    std::uint64_t offset = 0; ///< of its data in the file, bytes
    std::uint64_t length = 0; ///< blocks
    std::uint32_t pregap = 0; ///< blocks that are not in the file
    std::uint32_t postgap = 0;
};

/// A disc image that is to be looked at.
struct ImageInput {
    QByteArray path; ///< of the file that holds the blocks
    QByteArray cueSheet; ///< path of the sheet that describes it; empty when there is none
    const char *format = "iso"; ///< "iso", "bin" (with a cue sheet), "vant", or "raw" for raw sectors without a sheet
    std::shared_ptr<const DiscImageSource> source;
    std::vector<ImageTrack> tracks; ///< empty when nothing describes them
    std::vector<FoundVolume> volumes;
};

/// Opens the image: a file of blocks, a cue sheet, or a file with a cue sheet of the same name beside it that names it.
/// Finds its tracks and filesystems. A problem of kind Source when it cannot be read.
[[nodiscard]] Problem openImage(const QByteArray &argument, ImageInput *input);

} // namespace Tessaron::Tool
