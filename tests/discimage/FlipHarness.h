#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <cstdint>
#include <vector>

namespace Tessaron::Testing
{

/// All that readers show of an image, for comparison: for each view its facts and a line for each object with name,
/// kind, size, extents, date, mode and link target, and what the readers complain of.
struct VisibleImage {
    QByteArray text;
    bool hasErrors = false; ///< a reader complains

    explicit VisibleImage(const QByteArray &image);
};

/// The effects of single flipped bits.
struct FlipResult {
    int flips = 0;
    int told = 0; ///< by the check or a reader
    int harmless = 0; ///< neither told nor visible
    /// Not told, but visible as another name, date, permission or link target of a single object or volume in a single
    /// view, or, in HFS+, as another length within the last block: of these a filesystem has but one copy, which the
    /// sources alone can confirm.
    int singleCopies = 0;
    /// Visible otherwise, and not told: the offset, with the lines that changed.
    std::vector<std::pair<std::uint64_t, QString>> missed;
    /// Harmless ones, counted by the region of the image that they lie in.
    QMap<QString, int> harmlessPlaces;
};

/// Flips `count` bits, one at a time, in the blocks of the image that hold no contents of files. The same seed gives
/// the same bits.
[[nodiscard]] FlipResult flipBits(const QByteArray &image, int count, std::uint32_t seed);

} // namespace Tessaron::Testing
