#pragma once

#include <QByteArray>
#include <QList>

class QMimeData;

namespace Tessaron::Desktop
{

/// The path, as bytes, that "file:///path" or "file://host/path" stands for, without '/' at its end; null for what is
/// not on this machine.
[[nodiscard]] QByteArray pathOfUri(const QByteArray &uri);

/// True when the data names files of this machine. Does not touch the disk.
[[nodiscard]] bool holdsFiles(const QMimeData &data);

/// The paths of these files as bytes, in their order, each once: what a file manager drags, copies or cuts. Names that
/// are not UTF-8 keep their bytes, which QUrl would not. What does not lie on this machine is left out.
[[nodiscard]] QList<QByteArray> pathsOfFiles(const QMimeData &data);

} // namespace Tessaron::Desktop
