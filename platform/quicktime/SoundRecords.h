#pragma once

#include "platform/quicktime/CDSound.h"

#include <QByteArray>
#include <QMap>
#include <QString>

namespace Tessaron::SoundProtocol
{

// The records of SoundProtocol.h, written by one process and read by the other. Functions that read are false for bytes
// that are no such record.

/// What Open asks for.
struct OpenRequest {
    QByteArray path;
    CDSampleForm form = CDSampleForm::Int16;
    double gain = 1;
    bool needsExactLength = false;
};
[[nodiscard]] QByteArray recordOfRequest(const OpenRequest &request);
[[nodiscard]] bool readRequest(const QByteArray &record, OpenRequest *request);

/// What it tells.
struct OpenedSound {
    CDAudioLength length;
    QMap<QString, QString> tags;
};
/// Leaves out texts that are too long for any use as a title, and those for which there is no room.
[[nodiscard]] QByteArray recordOfOpened(const OpenedSound &opened);
[[nodiscard]] bool readOpened(const QByteArray &record, OpenedSound *opened);

/// Code, reason and suggestion; long texts are cut.
[[nodiscard]] QByteArray recordOfError(const NSError &error);
/// The error, about the file at `path`.
[[nodiscard]] NSError errorOfRecord(const QByteArray &record, const QByteArray &path);

[[nodiscard]] QByteArray recordOfDamage(const AudioDamageReport &damage);
[[nodiscard]] bool readDamage(const QByteArray &record, AudioDamageReport *damage);

} // namespace Tessaron::SoundProtocol
