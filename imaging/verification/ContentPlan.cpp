#include "imaging/verification/ContentPlan.h"

#include <algorithm>

namespace Tessaron
{

bool ContentPlan::isSame(const ContentPlace &place, const VolumeObject &file) const
{
    if (place.runs != none)
        return m_runs[place.runs] == file.extents;
    return file.extents.size() == 1 && file.extents.front() == VolumeExtent{place.offset, place.length, false};
}

void ContentPlan::add(SourceNumber source, VolumeKind kind, const VolumeObject &file)
{
    if (file.extents.empty())
        return;
    for (std::uint32_t index = m_firstPlace[source]; index != none; index = m_places[index].next) {
        if (!isSame(m_places[index], file))
            continue;
        m_places[index].volumes = VolumeSet(m_places[index].volumes | setOf(kind));
        return;
    }
    ContentPlace place{file.extents.front().offset, file.size, source, m_firstPlace[source], none, setOf(kind)};
    if (file.extents.size() > 1 || file.extents.front().isHole) {
        place.runs = std::uint32_t(m_runs.size());
        m_runs.push_back(file.extents);
    }
    m_firstPlace[source] = std::uint32_t(m_places.size());
    m_places.push_back(place);
}

std::vector<std::uint64_t> ContentPlan::offsetsOf(SourceNumber source) const
{
    std::vector<std::uint64_t> offsets;
    for (std::uint32_t index = m_firstPlace[source]; index != none; index = m_places[index].next) {
        const std::uint32_t runs = m_places[index].runs;
        if (runs == none || !m_runs[runs].front().isHole)
            offsets.push_back(m_places[index].offset);
    }
    return offsets;
}

const std::vector<ContentPlace> &ContentPlan::sortedPlaces()
{
    m_firstPlace = {};
    std::sort(m_places.begin(), m_places.end(), [](const ContentPlace &one, const ContentPlace &other) {
        return one.offset != other.offset ? one.offset < other.offset : one.source < other.source;
    });
    return m_places;
}

std::vector<VolumeExtent> ContentPlan::runsOf(const ContentPlace &place) const
{
    if (place.runs == none)
        return {{place.offset, place.length, false}};
    return m_runs[place.runs];
}

} // namespace Tessaron
