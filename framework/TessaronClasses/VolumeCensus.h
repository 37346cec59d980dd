#pragma once

#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QByteArray>

#include <cstdint>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// What was counted in a volume.
struct VolumeCensus {
    std::uint64_t files = 0;
    std::uint64_t folders = 0; ///< the root not counted
    std::uint64_t symbolicLinks = 0;
    std::uint64_t others = 0;
    std::uint64_t bytes = 0; ///< of all files, each name counted; stays at the greatest number when it would exceed it

    /// Something that cannot be read.
    struct Failure {
        QByteArray path; ///< of the folder it happened in, empty for the root
        NSError error;
    };
    std::vector<Failure> failures; ///< the first hundred
    std::uint64_t failureCount = 0;
};

/// Walks the volume and counts. After a stop it returns the counts so far.
[[nodiscard]] TESSARON_EXPORT VolumeCensus censusOf(const VolumeReader &reader, const std::stop_token &stop);

} // namespace Tessaron
