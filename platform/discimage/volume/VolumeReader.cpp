#include "platform/discimage/volume/VolumeReader.h"

#include <algorithm>
#include <cstring>

namespace Tessaron
{

NSError VolumeReader::read(const VolumeObject &file, std::uint64_t offset, void *buffer, std::size_t length,
                           std::size_t *bytesRead) const
{
    auto *to = static_cast<char *>(buffer);
    *bytesRead = 0;
    for (const VolumeExtent &extent : file.extents) {
        if (*bytesRead == length)
            break;
        if (offset >= extent.length) {
            offset -= extent.length;
            continue;
        }
        const std::size_t part = std::size_t(std::min<std::uint64_t>(extent.length - offset, length - *bytesRead));
        if (extent.isHole)
            std::memset(to + *bytesRead, 0, part);
        else if (NSError error = source().read(extent.offset + offset, to + *bytesRead, part))
            return error;
        *bytesRead += part;
        offset = 0;
    }
    return {};
}

bool appendVolumeExtent(const VolumeExtent &extent, std::vector<VolumeExtent> *extents)
{
    if (extent.length == 0)
        return true;
    if (!extents->empty()) {
        VolumeExtent &last = extents->back();
        const bool touches = extent.isHole ? last.isHole : !last.isHole && last.offset + last.length == extent.offset;
        if (touches) {
            last.length += extent.length;
            return true;
        }
    }
    if (extents->size() >= maximumVolumeExtents)
        return false;
    extents->push_back(extent);
    return true;
}

QString volumeKindName(VolumeKind kind)
{
    switch (kind) {
    case VolumeKind::ISO9660:
        return QStringLiteral("ISO 9660");
    case VolumeKind::RockRidge:
        return QStringLiteral("Rock Ridge");
    case VolumeKind::Joliet:
        return QStringLiteral("Joliet");
    case VolumeKind::UDF:
        return QStringLiteral("UDF");
    case VolumeKind::HFSPlus:
        return QStringLiteral("HFS+");
    }
    return {};
}

} // namespace Tessaron
