#pragma once

#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// A set of views of an image: bit 1 << VolumeKind.
using VolumeSet = std::uint8_t;

[[nodiscard]] constexpr VolumeSet setOf(VolumeKind kind)
{
    return VolumeSet(1u << unsigned(kind));
}

/// Something in which an image and its sources do not agree.
struct ImageDifference {
    enum class Kind : std::uint8_t {
        Missing, ///< in the sources only
        Extra, ///< in the image only
        Type, ///< a folder here, a file there
        Size,
        Contents,
        LinkTarget,
        Time,
        Damage, ///< the image cannot be read there
        Source, ///< the source cannot be read
    };

    Kind kind = Kind::Missing;
    VolumeSet volumes = 0; ///< that disagree; none for Source
    QByteArray path; ///< on the disc
    std::optional<std::uint64_t> offset; ///< in the image, bytes
    QString message; ///< what is there and what was expected, without the full stop
};

/// "missing", "extra", "type" …
[[nodiscard]] TESSARON_EXPORT QString nameOfDifference(ImageDifference::Kind kind);

/// Collects differences; keeps the first ten thousand and counts the rest.
class TESSARON_EXPORT ImageDifferenceList
{
public:
    void add(ImageDifference difference);
    /// An error of a reader, at the offset that it names.
    void addDamage(VolumeSet volumes, const QByteArray &path, const NSError &error);

    [[nodiscard]] const std::vector<ImageDifference> &items() const { return m_items; }
    [[nodiscard]] std::uint64_t count() const { return m_count; }
    [[nodiscard]] std::uint64_t countIn(VolumeKind kind) const { return m_counts[std::size_t(kind)]; }

private:
    std::vector<ImageDifference> m_items;
    std::uint64_t m_count = 0;
    std::uint64_t m_counts[5] = {}; ///< by VolumeKind
};

} // namespace Tessaron
