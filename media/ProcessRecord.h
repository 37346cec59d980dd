#pragma once

#include <TessaronClasses/KRProcess.h>

#include <QByteArray>

#include <optional>
#include <vector>

namespace Tessaron
{

/// What a file "stat" of a process says (proc(5)); empty for bytes that are not such a file.
[[nodiscard]] std::optional<kinfo_proc> processRecord(const QByteArray &stat);

/// The record of each process that the folder lists, in its order. Empty where it cannot be listed; processes that end
/// meanwhile are left out.
[[nodiscard]] std::optional<std::vector<kinfo_proc>> processRecords(const QByteArray &folder);

} // namespace Tessaron
