#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

namespace Tessaron
{

/// One resource of a resource fork.
struct Resource {
    std::uint32_t type = 0; ///< four letters
    std::int16_t id = 0;
    std::uint8_t attributes = 0;
    QByteArray name; ///< at most 255 bytes; null for none, which differs from empty
    QByteArray data;

    friend bool operator==(const Resource &, const Resource &) = default;
};

// A resource fork is a header of 16 bytes, the data of all resources with their lengths, and a map: a list of types,
// lists of the resources of each type, and their names (Inside Macintosh: More Macintosh Toolbox, chapter 1).

/// The resources in the order of the map; no value for bytes that are not a resource fork. An empty fork has none. Safe
/// for any bytes.
[[nodiscard]] std::optional<std::vector<Resource>> resourcesOfFork(QByteArrayView fork);

/// A fork with these resources; those of one type are put together. Null when they do not fit the format: more than
/// 65535 of them, a name longer than 255 bytes, or data beyond 16 MiB.
[[nodiscard]] QByteArray forkWithResources(const std::vector<Resource> &resources);

} // namespace Tessaron
