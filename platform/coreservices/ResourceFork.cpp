#include "platform/coreservices/ResourceFork.h"

#include "platform/foundation/ByteOrder.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

// Where fields lie. All integers are big-endian.
constexpr qsizetype headerSize = 256; ///< with the part that the system reserves
constexpr qsizetype mapHeadSize = 28; ///< copy of the header, handles, attributes, offsets of the lists
constexpr qsizetype mapTypeListOffset = 24;
constexpr qsizetype mapNameListOffset = 26;
constexpr qsizetype typeEntrySize = 8;
constexpr qsizetype referenceSize = 12;
constexpr std::uint16_t noName = 0xFFFF;
constexpr qsizetype dataLimit = 0x1000000; ///< offsets of data have 24 bits

/// Reads integers at offsets that may be anything; a read outside gives no value.
class Window
{
public:
    explicit Window(QByteArrayView bytes)
        : m_bytes(bytes)
    {
    }

    template <typename Integer>
    [[nodiscard]] std::optional<Integer> at(std::int64_t offset) const
    {
        if (offset < 0 || offset > m_bytes.size() - std::int64_t(sizeof(Integer)))
            return std::nullopt;
        return loadBigEndian<Integer>(reinterpret_cast<const std::uint8_t *>(m_bytes.data()) + offset);
    }

    [[nodiscard]] std::optional<QByteArrayView> part(std::int64_t offset, std::int64_t length) const
    {
        if (offset < 0 || length < 0 || offset > m_bytes.size() || length > m_bytes.size() - offset)
            return std::nullopt;
        return m_bytes.sliced(offset, length);
    }

private:
    QByteArrayView m_bytes;
};

/// The parts of a fork that references point into.
struct ForkParts {
    Window data;
    Window map;
    std::int64_t typeList = 0; ///< in the map
    std::int64_t nameList = 0; ///< in the map
};

std::optional<ForkParts> partsOfFork(QByteArrayView fork)
{
    const Window whole(fork);
    const auto dataOffset = whole.at<std::uint32_t>(0);
    const auto mapOffset = whole.at<std::uint32_t>(4);
    const auto dataLength = whole.at<std::uint32_t>(8);
    const auto mapLength = whole.at<std::uint32_t>(12);
    if (!dataOffset || !mapOffset || !dataLength || !mapLength)
        return std::nullopt;
    const auto data = whole.part(*dataOffset, *dataLength);
    const auto map = whole.part(*mapOffset, *mapLength);
    if (!data || !map)
        return std::nullopt;
    const Window mapWindow(*map);
    const auto typeList = mapWindow.at<std::uint16_t>(mapTypeListOffset);
    const auto nameList = mapWindow.at<std::uint16_t>(mapNameListOffset);
    if (!typeList || !nameList)
        return std::nullopt;
    return ForkParts{Window(*data), mapWindow, *typeList, *nameList};
}

std::optional<Resource> readReference(const ForkParts &parts, std::uint32_t type, std::int64_t offset)
{
    const auto id = parts.map.at<std::uint16_t>(offset);
    const auto nameOffset = parts.map.at<std::uint16_t>(offset + 2);
    const auto attributesAndData = parts.map.at<std::uint32_t>(offset + 4);
    if (!id || !nameOffset || !attributesAndData)
        return std::nullopt;
    Resource resource;
    resource.type = type;
    resource.id = std::int16_t(*id);
    resource.attributes = std::uint8_t(*attributesAndData >> 24);
    const std::int64_t dataOffset = *attributesAndData & 0xFFFFFF;
    const auto length = parts.data.at<std::uint32_t>(dataOffset);
    const auto data = length ? parts.data.part(dataOffset + 4, *length) : std::nullopt;
    if (!data)
        return std::nullopt;
    resource.data = data->toByteArray();
    if (*nameOffset != noName) {
        const std::int64_t nameAt = parts.nameList + *nameOffset;
        const auto nameLength = parts.map.at<std::uint8_t>(nameAt);
        const auto name = nameLength ? parts.map.part(nameAt + 1, *nameLength) : std::nullopt;
        if (!name)
            return std::nullopt;
        resource.name = name->isEmpty() ? QByteArray("") : name->toByteArray();
    }
    return resource;
}

template <typename Integer>
void append(QByteArray *to, std::type_identity_t<Integer> value)
{
    std::uint8_t bytes[sizeof(Integer)];
    storeBigEndian<Integer>(bytes, value);
    to->append(reinterpret_cast<const char *>(bytes), sizeof(bytes));
}

} // namespace

std::optional<std::vector<Resource>> resourcesOfFork(QByteArrayView fork)
{
    std::vector<Resource> resources;
    if (fork.isEmpty())
        return resources;
    const std::optional<ForkParts> parts = partsOfFork(fork);
    const auto lastType = parts ? parts->map.at<std::uint16_t>(parts->typeList) : std::nullopt;
    if (!lastType)
        return std::nullopt;
    // The count is one less than there are; 0xFFFF stands for none. Overlapping lists of a hostile fork could name a
    // piece of data over and over, so what is taken out may not exceed what is there.
    std::int64_t room = fork.size();
    const std::uint16_t typeCount = std::uint16_t(*lastType + 1);
    for (std::uint16_t typeIndex = 0; typeIndex < typeCount; ++typeIndex) {
        const std::int64_t entry = parts->typeList + 2 + typeIndex * typeEntrySize;
        const auto type = parts->map.at<std::uint32_t>(entry);
        const auto lastReference = parts->map.at<std::uint16_t>(entry + 4);
        const auto listOffset = parts->map.at<std::uint16_t>(entry + 6);
        if (!type || !lastReference || !listOffset)
            return std::nullopt;
        for (std::int64_t index = 0; index <= *lastReference; ++index) {
            const std::int64_t offset = parts->typeList + *listOffset + index * referenceSize;
            std::optional<Resource> resource = readReference(*parts, *type, offset);
            if (resource)
                room -= referenceSize + resource->data.size() + resource->name.size();
            if (!resource || room < 0)
                return std::nullopt;
            resources.push_back(std::move(*resource));
        }
    }
    return resources;
}

QByteArray forkWithResources(const std::vector<Resource> &resources)
{
    std::vector<const Resource *> sorted;
    sorted.reserve(resources.size());
    for (const Resource &resource : resources)
        sorted.push_back(&resource);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Resource *one, const Resource *other) { return one->type < other->type; });
    std::vector<std::pair<std::uint32_t, std::size_t>> types; // and how many there are of each
    for (const Resource *const resource : sorted) {
        if (types.empty() || types.back().first != resource->type)
            types.emplace_back(resource->type, 0);
        ++types.back().second;
    }

    QByteArray data;
    QByteArray names;
    QByteArray references;
    for (const Resource *const resource : sorted) {
        if (resource->name.size() > 255 || data.size() >= dataLimit || names.size() >= noName)
            return {};
        append<std::uint16_t>(&references, std::uint16_t(resource->id));
        append<std::uint16_t>(&references, resource->name.isNull() ? noName : std::uint16_t(names.size()));
        append<std::uint32_t>(&references, std::uint32_t(resource->attributes) << 24 | std::uint32_t(data.size()));
        append<std::uint32_t>(&references, 0);
        append<std::uint32_t>(&data, std::uint32_t(resource->data.size()));
        data += resource->data;
        if (!resource->name.isNull())
            names += char(resource->name.size()) + resource->name;
    }

    QByteArray typeList;
    append<std::uint16_t>(&typeList, std::uint16_t(types.size() - 1));
    qsizetype listOffset = 2 + qsizetype(types.size()) * typeEntrySize;
    for (const auto &[type, count] : types) {
        append<std::uint32_t>(&typeList, type);
        append<std::uint16_t>(&typeList, std::uint16_t(count - 1));
        append<std::uint16_t>(&typeList, std::uint16_t(listOffset));
        listOffset += qsizetype(count) * referenceSize;
    }
    const qsizetype nameListOffset = mapHeadSize + listOffset;
    if (nameListOffset >= noName)
        return {};

    QByteArray header;
    append<std::uint32_t>(&header, headerSize);
    append<std::uint32_t>(&header, std::uint32_t(headerSize + data.size()));
    append<std::uint32_t>(&header, std::uint32_t(data.size()));
    append<std::uint32_t>(&header, std::uint32_t(nameListOffset + names.size()));
    QByteArray map = header + QByteArray(mapTypeListOffset - header.size(), '\0');
    append<std::uint16_t>(&map, mapHeadSize);
    append<std::uint16_t>(&map, std::uint16_t(nameListOffset));
    header.append(headerSize - header.size(), '\0');
    return header + data + map + typeList + references + names;
}

} // namespace Tessaron
