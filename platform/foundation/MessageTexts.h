#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/FileTime.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace Tessaron
{

// Parts of the sentences that errors and reports are made of. Thread-safe.

/// A name or path between typographic quotation marks for use inside a message; undecodable bytes survive in it.
[[nodiscard]] TESSARON_EXPORT QString quoted(const QByteArray &path);

/// "1 file", "2 files".
[[nodiscard]] TESSARON_EXPORT QString counted(std::uint64_t count, const char *singular, const char *plural);

/// "2024-02-29 12:34:56", UTC.
[[nodiscard]] TESSARON_EXPORT QString timeText(FileTime time);

/// The last component of a path, trailing slashes ignored; "/" for the root folder, empty for no path.
[[nodiscard]] TESSARON_EXPORT QByteArray lastComponent(const QByteArray &path);

/// The text of the system for an `errno` value.
[[nodiscard]] TESSARON_EXPORT QString systemText(int errnoValue);

/// The same for a status code (OSStatus.h): words for people, never the bare number where the code is a known one.
[[nodiscard]] TESSARON_EXPORT QString reasonOfStatus(qint64 status);

} // namespace Tessaron
