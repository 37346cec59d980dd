#pragma once

#include <QByteArray>
#include <QString>

namespace Tessaron::Tool
{

/// Makes sure that descriptors 0, 1 and 2 are open, so that no file of the command ever gets one of these numbers and
/// with it the text meant for a person. One that was closed becomes a descriptor on which every read or write fails.
void occupyStandardDescriptors();

/// Writes everything; false (with `errno` set) when the system refuses. Restarts after signals and waits for a
/// descriptor that does not block.
[[nodiscard]] bool writeAll(int descriptor, QByteArrayView bytes);

/// One line to standard error: "tessaron: " and the text, made printable. What cannot be written there is dropped:
/// there is no place left to complain to.
void printDiagnostic(const QString &text);
/// Text to standard error as it stands.
void printToStandardError(const QByteArray &text);

} // namespace Tessaron::Tool
