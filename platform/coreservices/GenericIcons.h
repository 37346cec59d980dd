#pragma once

#include <QImage>

namespace Tessaron
{

/// A folder, or a sheet of paper with a folded corner, `side` pixels square with a transparent ground. Needs no display
/// and no application object; may be called on any thread.
[[nodiscard]] QImage drawnIcon(bool isFolder, int side);

} // namespace Tessaron
