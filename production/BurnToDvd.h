#pragma once

#include <QVariantMap>

#include <cstdint>

namespace Tessaron
{

class DRTrack;

/// True when the record of a medium, as producers get it, says that it is a DVD.
[[nodiscard]] bool isDvd(const QVariantMap &media);

/// Gives the track, which may be null, the numbers that a DVD is recorded with. False, with the track as it was, for
/// sectors of another size than 2048: a DVD has no others.
[[nodiscard]] bool describeForDvd(DRTrack *track, std::uint32_t sectorSize);

} // namespace Tessaron
