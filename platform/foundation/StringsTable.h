#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

namespace Tessaron
{

/// Reads the text of a ".strings" table (see NSBundle). What cannot be read is skipped to the end of its line, so that
/// one bad entry does not take the others with it.
[[nodiscard]] QHash<QString, QString> parseStringsTable(const QByteArray &utf8);

} // namespace Tessaron
