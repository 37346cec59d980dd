#pragma once

#include "platform/foundation/Export.h"

#include <QImage>

#include <functional>

namespace Tessaron
{

/// The picture that the session shows now; false, with the image left alone, when it was taken before or media is not
/// open. Its pixels are those of the disc, not square: DVDGetAspectRatio() says how wide it is to be shown. They are
/// memory of the session: those of that picture until the next one is taken. QImage::copy() keeps one for longer. One
/// thread at a time.
[[nodiscard]] TESSARON_EXPORT bool takeDVDFrame(QImage *image);

/// Calls on a thread of the session whenever there is another picture to take; an empty function ends that, and none
/// runs any more when this has returned. Not from inside of the function.
TESSARON_EXPORT void setDVDFrameHearer(std::function<void()> hearer);

} // namespace Tessaron
