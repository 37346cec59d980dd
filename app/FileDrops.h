#pragma once

#include <QByteArray>
#include <QList>

#include <memory>

class QDragEnterEvent;
class QDropEvent;
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

/// "file:///path" for a path (bytes), such that pathOfUri() gives the path back.
[[nodiscard]] QByteArray uriOfPath(const QByteArray &path);

/// What file managers paste and take drops of: these files (bytes), which are to be copied, and stay for a while only.
[[nodiscard]] std::unique_ptr<QMimeData> offerOfLentFiles(const QList<QByteArray> &paths);

/// True for such an offer of this program: its files are not a source for a disc.
[[nodiscard]] bool holdsLentFiles(const QMimeData &data);

// For widgets that open what is dropped onto them.

/// Lets files come as copies, except lent ones.
void acceptFiles(QDragEnterEvent &event);
/// Takes the first of the files; null where no file of this machine is dropped.
[[nodiscard]] QByteArray takeDroppedFile(QDropEvent &event);

} // namespace Tessaron::Desktop
