#include "platform/discimage/volume/VolumeWalk.h"
#include <TessaronClasses/VolumeCensus.h>

#include <limits>

namespace Tessaron
{

namespace
{

constexpr std::size_t shownFailures = 100;

void count(const VolumeObject &object, VolumeCensus *census)
{
    switch (object.kind) {
    case VolumeObjectKind::File:
        ++census->files;
        break;
    case VolumeObjectKind::Folder:
        ++census->folders;
        break;
    case VolumeObjectKind::SymbolicLink:
        ++census->symbolicLinks;
        break;
    case VolumeObjectKind::Other:
        ++census->others;
        break;
    }
    const std::uint64_t room = std::numeric_limits<std::uint64_t>::max() - census->bytes;
    census->bytes += std::min(room, object.size);
}

} // namespace

VolumeCensus censusOf(const VolumeReader &reader, const std::stop_token &stop)
{
    VolumeCensus census;
    VolumeWalker walker;
    walker.object = [&](const QByteArray &, const VolumeObject &object) {
        count(object, &census);
        return !stop.stop_requested();
    };
    walker.failed = [&](const QByteArray &path, const NSError &error) {
        if (census.failures.size() < shownFailures)
            census.failures.push_back({path, error});
        ++census.failureCount;
        return !stop.stop_requested();
    };
    walkVolume(reader, walker);
    return census;
}

} // namespace Tessaron
