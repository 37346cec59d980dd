#pragma once

#include "TessaronClasses/ImageDifferences.h"

#include "platform/discimage/VolumeFinder.h"
#include "platform/discimage/source/DiscImageSource.h"
#include "platform/foundation/Export.h"

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace Tessaron
{

/// One of the files and folders that an image was made of. One folder alone is the root of the disc; a file, or several
/// of them, lie side by side in the root under their names.
struct VerificationSource {
    QByteArray path; ///< where the content is, symbolic links resolved
    QByteArray name; ///< on the disc; means nothing for a folder that is the root
    bool isFolder = false;
};

/// What is held against what.
struct VerificationRequest {
    std::shared_ptr<const DiscImageSource> image;
    std::vector<FoundVolume> volumes; ///< of the image, see volumesInImage()
    std::vector<VerificationSource> sources;
};

/// How far a comparison has come.
struct VerificationProgress {
    enum class Phase : std::uint8_t {
        ListingSources,
        ComparingNames, ///< and all else that the volumes say of files, besides their contents
        ComparingContents,
    };

    Phase phase = Phase::ListingSources;
    std::uint64_t files = 0; ///< of the sources; 0 until they are listed
    std::uint64_t folders = 0;
    std::uint64_t bytesDone = 0; ///< of contents
    std::uint64_t bytesTotal = 0; ///< 0 until it is known

    friend bool operator==(const VerificationProgress &, const VerificationProgress &) = default;
};

/// How one volume compares with the sources.
struct VolumeVerification {
    VolumeKind kind = VolumeKind::ISO9660;
    std::uint64_t files = 0; ///< found in it, all but folders
    std::uint64_t folders = 0;
    std::uint64_t renamed = 0; ///< under another name than the source's, as the filesystem's rules allow
    std::uint64_t leftOut = 0; ///< links and special files that the filesystem cannot hold
};

/// How an image compares with its sources.
struct VerificationResult {
    bool isCancelled = false; ///< a stop came first: the rest says what was found until then
    std::vector<VolumeVerification> volumes; ///< in the order in which they were compared
    ImageDifferenceList differences;
    std::uint64_t files = 0; ///< of the sources
    std::uint64_t folders = 0;
    std::uint64_t bytesCompared = 0; ///< contents that several filesystems or names share count once
};

/// Reads every filesystem of an image and compares it with the sources that the image was made of: names, kinds, sizes,
/// contents, modification times and targets of links. Blocks until it is done or stopped; `progress` is called on the
/// same thread, several times a second while contents are compared. Programs with an event loop use VerifyJob.
[[nodiscard]] TESSARON_EXPORT VerificationResult
verifyImage(const VerificationRequest &request, const std::stop_token &stop,
            const std::function<void(const VerificationProgress &)> &progress);

} // namespace Tessaron
