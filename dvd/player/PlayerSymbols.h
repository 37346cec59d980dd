#pragma once

#include <QByteArray>
#include <QColor>
#include <QIcon>

namespace Tessaron
{

/// The symbols on the players' buttons, drawn at whatever size they are shown: "play", "pause", "stop", "previous",
/// "next", "scanBackward", "scanForward", "menu", "angle", "sound", "muted", "language", "subtitles", "fullScreen" and
/// "leaveFullScreen". Null for any other name. `disabled` is the colour on a button that cannot be pressed.
[[nodiscard]] QIcon playerSymbol(const QByteArray &name, const QColor &colour, const QColor &disabled);

} // namespace Tessaron
