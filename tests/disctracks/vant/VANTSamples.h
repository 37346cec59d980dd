#pragma once

#include "platform/discrecording/objects/DRTrack.h"
#include "platform/disctracks/vant/VANTReader.h"

#include <QByteArray>

namespace Tessaron::Testing
{

/// A track that is never asked for data, with the given properties.
[[nodiscard]] std::shared_ptr<DRTrack> trackWith(const QVariantMap &properties);
/// A mode 1 data track as the layout writer describes an image.
[[nodiscard]] std::shared_ptr<DRTrack> dataTrack(quint64 blocks);
/// An audio track with pregap, postgap, index points and both audio flags.
[[nodiscard]] std::shared_ptr<DRTrack> audioTrack(quint64 blocks);

/// Two sessions, three tracks, two blocks of CD-TEXT; and the data that belongs in front, so that it is a whole image.
[[nodiscard]] QByteArray richImage();

/// Puts the right checksum into an image whose trailer was changed, so that a reader looks at the change itself.
/// Nothing happens when there is no trailer.
void correctChecksum(QByteArray *image);

/// What is wrong with a result that a reader gave, empty when it keeps all its promises.
[[nodiscard]] QByteArray brokenPromise(const VANTReadResult &result, quint64 fileSize);

} // namespace Tessaron::Testing
