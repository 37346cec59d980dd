#include "imaging/verification/ContentPlan.h"

#include <algorithm>
#include <numeric>

namespace Tessaron
{

bool ContentPlan::isSame(const ContentPlace &place, const VolumeObject &file) const
{
    return runsOf(place) == file.extents;
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

void ContentPlan::prepareLookup()
{
    m_byOffset.resize(m_places.size());
    std::iota(m_byOffset.begin(), m_byOffset.end(), 0u);
    std::sort(m_byOffset.begin(), m_byOffset.end(),
              [this](std::uint32_t one, std::uint32_t other) { return m_places[one].offset < m_places[other].offset; });
}

std::span<const std::uint32_t> ContentPlan::placesAt(std::uint64_t offset) const
{
    const auto first =
        std::lower_bound(m_byOffset.begin(), m_byOffset.end(), offset,
                         [this](std::uint32_t index, std::uint64_t wanted) { return m_places[index].offset < wanted; });
    auto last = first;
    while (last != m_byOffset.end() && m_places[*last].offset == offset)
        ++last;
    return {first, last};
}

const std::vector<ContentPlace> &ContentPlan::sortedPlaces()
{
    m_byOffset = {};
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
