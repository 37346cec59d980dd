#pragma once

#include <QSizeF>

#include <cstdint>

namespace Tessaron
{

/// What VideoWindow::setWindowSize() can be asked for; any other code leaves the size as it is.
enum VideoSizeCode : std::uint32_t {
    RefitVideo = 0, ///< the width that goes with the height, as far as the screen is wide enough
    SmallVideo = 1, ///< half of the disc's own size
    NormalVideo = 2, ///< the disc's own size
    MaximumVideo = 3, ///< as large as the screen
};

/// Width to height of pictures with a DVDAspectRatio; 4:3 for one that is not known.
[[nodiscard]] float ratioOfAspect(std::int16_t aspect);

/// The new size of a video window's content, in points. `ratio` is that of width to height of the title, `visible` what
/// the screen has free for windows, `content` the size now, `disc` the disc's own.
[[nodiscard]] QSizeF videoContentSize(std::uint32_t sizeCode, double ratio, const QSizeF &visible,
                                      const QSizeF &content, const QSizeF &disc);

} // namespace Tessaron
