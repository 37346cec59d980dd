#pragma once

#include "platform/disctracks/DiscTrack.h"

#include <QByteArray>

namespace Tessaron
{

/// Sets kind, block size and numbers of the track as the word behind TRACK and its number says ("MODE1/2048", in
/// capitals). False for a word that is not known.
[[nodiscard]] bool setCueMode(const QByteArray &mode, DiscTrack *track);

/// The word for the track; empty for a kind and size that sheets have no word for.
[[nodiscard]] QByteArray cueModeOf(const DiscTrack &track);

/// All words, for people.
[[nodiscard]] QByteArray knownCueModes();

} // namespace Tessaron
