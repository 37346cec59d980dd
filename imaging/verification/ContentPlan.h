#pragma once

#include "imaging/verification/SourceIndex.h"
#include "platform/discimage/volume/VolumeObject.h"
#include <TessaronClasses/ImageDifferences.h>

#include <cstdint>
#include <vector>

namespace Tessaron
{

/// Where a source's contents are said to lie in the image, and by whom.
struct ContentPlace {
    std::uint64_t offset = 0; ///< of the first run, bytes
    std::uint64_t length = 0; ///< of all runs
    SourceNumber source = noSource;
    std::uint32_t next = UINT32_MAX; ///< another place of the same source
    std::uint32_t runs = UINT32_MAX; ///< index of the list of runs; none for a single one
    VolumeSet volumes = 0;
};

/// Gathers what the volumes say of the places of files, so that contents which several of them share are compared once.
/// About 40 bytes for each file.
class ContentPlan
{
public:
    explicit ContentPlan(std::size_t sourceCount)
        : m_firstPlace(sourceCount, none)
    {
    }

    void add(SourceNumber source, VolumeKind kind, const VolumeObject &file);

    /// Where the volumes added up to now have the source's contents: the offsets of their first runs.
    [[nodiscard]] std::vector<std::uint64_t> offsetsOf(SourceNumber source) const;

    /// All places in the order of the image. Ends the use of add() and offsetsOf().
    [[nodiscard]] const std::vector<ContentPlace> &sortedPlaces();
    [[nodiscard]] std::vector<VolumeExtent> runsOf(const ContentPlace &place) const;

private:
    static constexpr std::uint32_t none = UINT32_MAX;

    [[nodiscard]] bool isSame(const ContentPlace &place, const VolumeObject &file) const;

    std::vector<ContentPlace> m_places;
    std::vector<std::uint32_t> m_firstPlace; ///< by source
    std::vector<std::vector<VolumeExtent>> m_runs;
};

} // namespace Tessaron
