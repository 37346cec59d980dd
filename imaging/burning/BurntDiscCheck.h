#pragma once

#include "imaging/burning/EarlierFiles.h"
#include "platform/discrecording/burn/BurnPlan.h"
#include "platform/discrecording/drives/DRDevice.h"
#include <TessaronClasses/DiscImageJob.h>
#include <TessaronClasses/ImageVerification.h>

#include <functional>
#include <stop_token>

namespace Tessaron
{

/// Told how far a comparison is.
using CheckProgress = std::function<void(const DiscJobProgress &)>;

/// Where folders and files were written to.
struct WrittenData {
    std::uint64_t firstBlock = 0;
    std::uint64_t blocks = 0;
    const EarlierFiles *earlier = nullptr; ///< that are still to be there; null for none
};

/// Compares what is on the disc with what it was made of, which the request says; its image and volumes are filled in
/// here. Of earlier files it is looked whether the new session leads to where they lie; their contents are not read
/// again.
[[nodiscard]] VerificationResult checkWrittenData(DRDevice &device, const WrittenData &written,
                                                  VerificationRequest request, const std::stop_token &stop,
                                                  const CheckProgress &progress);

/// How the written tracks of an image compare with it.
struct WrittenImageCheck {
    NSError error; ///< of code Write: what of the first track that is not right is not as it was sent
    std::uint64_t bytesCompared = 0;
    QStringList notes;
};

/// Compares the tracks on the disc, from the one with the index `firstTrack` on, with what the plan writes: it reads
/// the sources once more. Sound is compared as far as the drive's displacement is within four sectors; see
/// SoundComparison.
[[nodiscard]] WrittenImageCheck checkWrittenImage(DRDevice &device, const BurnPlan &plan, std::size_t firstTrack,
                                                  const std::stop_token &stop, const CheckProgress &progress);

} // namespace Tessaron
