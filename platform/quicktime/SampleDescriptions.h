#pragma once

#include "platform/quicktime/QTMovie.h"

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// A sound description (QuickTime File Format, "Sound Sample Descriptions"; ISO/IEC 14496-12 12.2.3) with its header,
/// whose length may have been more. The tick of the media stands for a rate that does not fit into the description. No
/// value when it is cut.
[[nodiscard]] std::optional<QTSoundDescription> soundDescription(const QByteArray &bytes, std::int64_t length,
                                                                 std::uint32_t mediaTimeScale);

/// An image description ("Video Sample Description"; 12.1.3); no value when it is cut.
[[nodiscard]] std::optional<QTImageDescription> imageDescription(const QByteArray &bytes);

/// How many bytes a number of samples takes that a table counts as samples of a byte each, which stand for those of a
/// sound (QuickTime File Format, "Sample Size Atoms"); no value where the description does not tell.
[[nodiscard]] std::optional<std::uint64_t> bytesOfSoundSamples(const QByteArray &bytes, std::uint64_t samples);

/// The name of a codec of Windows Media that is known by its code alone; else empty.
[[nodiscard]] QString windowsMediaName(std::uint32_t code);

} // namespace Tessaron
