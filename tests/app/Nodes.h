#pragma once

#include "app/DiscDocument.h"
#include "app/SourceIntake.h"

#include <QByteArray>

namespace Tessaron::Testing
{

/// Takes paths in as the program does, and waits for it.
std::shared_ptr<Desktop::TakenIn> takenIn(const QList<QByteArray> &paths);

/// Adds paths to the root of the document as the program does; what had to be told comes back.
QStringList addTo(Desktop::DiscDocument &document, const QList<QByteArray> &paths);

/// Paths on the disc of all its objects in the order of the tree, a folder with a "/" behind it.
QStringList pathsOf(const Desktop::DiscNode &root);

/// The node at a path on the disc; null where there is nothing.
Desktop::DiscNode *nodeAt(const Desktop::DiscDocument &document, const QString &path);

/// Why the tree is not one: children and items that differ, wrong parents, rows, names or totals; empty when it is.
QString faultOf(const Desktop::DiscNode &root);

} // namespace Tessaron::Testing
