#include "platform/coreservices/VolumeFacts.h"

#include "platform/foundation/UniqueDescriptor.h"

#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <linux/magic.h>
#include <map>
#include <mutex>
#include <sys/vfs.h>

namespace Tessaron
{

namespace
{

using Clock = std::chrono::steady_clock;

/// Device numbers are given again to other volumes when media change, so that nothing is believed for long.
constexpr std::chrono::seconds longestBelief(10);

struct KnownVolume {
    VolumeFacts facts;
    Clock::time_point asked;
};

struct KnownVolumes {
    std::mutex mutex; ///< guards the members below
    std::map<std::uint64_t, KnownVolume> facts;
    std::map<std::uint64_t, Clock::time_point> withoutAttributes; ///< and when that was found
};

KnownVolumes &knownVolumes()
{
    static KnownVolumes *const volumes = new KnownVolumes; // never deleted: used until the very end
    return *volumes;
}

bool findVolume(std::uint64_t device, VolumeFacts *facts)
{
    KnownVolumes &volumes = knownVolumes();
    const std::lock_guard lock(volumes.mutex);
    const auto known = volumes.facts.find(device);
    if (known == volumes.facts.end() || Clock::now() - known->second.asked > longestBelief)
        return false;
    *facts = known->second.facts;
    return true;
}

VolumeFacts keepVolume(std::uint64_t device, const struct statfs &from)
{
    VolumeFacts facts;
    facts.device = device;
    facts.blockSize = from.f_bsize > 0 ? static_cast<std::uint32_t>(from.f_bsize) : facts.blockSize;
    facts.type = static_cast<std::int64_t>(from.f_type);
    std::memcpy(&facts.identifier, &from.f_fsid, sizeof facts.identifier);
    KnownVolumes &volumes = knownVolumes();
    const std::lock_guard lock(volumes.mutex);
    volumes.facts[device] = {facts, Clock::now()};
    return facts;
}

} // namespace

VolumeFacts volumeFactsOf(std::uint64_t device, int folder, const char *name)
{
    VolumeFacts facts;
    if (findVolume(device, &facts))
        return facts;
    facts.device = device;
    // Asked through a descriptor that opens nothing, so that a link or a fifo answers for the volume it lies on.
    struct statfs from;
    const UniqueDescriptor file(::openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    return file && ::fstatfs(file.get(), &from) == 0 ? keepVolume(device, from) : facts;
}

bool volumeKeepsAttributes(std::uint64_t device)
{
    KnownVolumes &volumes = knownVolumes();
    const std::lock_guard lock(volumes.mutex);
    const auto known = volumes.withoutAttributes.find(device);
    return known == volumes.withoutAttributes.end() || Clock::now() - known->second > longestBelief;
}

void noteVolumeKeepsNoAttributes(std::uint64_t device)
{
    KnownVolumes &volumes = knownVolumes();
    const std::lock_guard lock(volumes.mutex);
    volumes.withoutAttributes[device] = Clock::now();
}

bool volumeFindsInodes(int descriptor)
{
    struct statfs from;
    return ::fstatfs(descriptor, &from) == 0 && from.f_type == EXT4_SUPER_MAGIC;
}

} // namespace Tessaron
