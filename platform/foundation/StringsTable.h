#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

namespace Tessaron
{

/// Reads the text of a ".strings" table (see NSBundle). An entry that cannot be read is skipped up to the end of its
/// line, so that it does not spoil the others.
[[nodiscard]] QHash<QString, QString> parseStringsTable(const QByteArray &utf8);

} // namespace Tessaron
