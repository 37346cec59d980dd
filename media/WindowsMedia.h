#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace Tessaron
{

/// Whether a file is one of Windows Media. Its extension ("wmv", "asf", in any case) says so when neither names of
/// codecs nor types of content are known; else a codec whose name holds "Windows" does, or a type that holds
/// "microsoft". False for a null path. Thread-safe.
[[nodiscard]] bool isWindowsMedia(const QString &path, const std::optional<QStringList> &codecs,
                                  const std::optional<QStringList> &contentTypes);

/// The types of content that the shared MIME database knows for a name, with those that they are kinds of; no value for
/// a name that says nothing. Types of Microsoft, which are called "x-ms-" and "vnd.ms-" there, begin with
/// "com.microsoft.". The file itself is not looked at. Thread-safe.
[[nodiscard]] std::optional<QStringList> contentTypeTree(const QString &path);

} // namespace Tessaron
