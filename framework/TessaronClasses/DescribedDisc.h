#pragma once

#include "platform/disctracks/CueSheet.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Result.h"

#include <QByteArray>
#include <QStringList>

#include <stop_token>

namespace Tessaron
{

/// What is known of an image's tracks, and which files hold them.
struct DescribedDisc {
    QByteArray description; ///< path of the cue sheet, .ccd or .toc file; empty where no such file describes the image
    bool isDescribed = true; ///< false for an image that says nothing of tracks and was taken for one track of data
    CueSheet disc; ///< the paths of its files are those that were found
    QStringList notes; ///< which parts of the description were passed over or had to be interpreted
};

/// Finds the tracks of a disc: of a cue sheet, a .ccd or .toc file; of an image that such a file of the same name
/// describes; of a VANT image; of any other image, which is taken for one track of data. An error of code Source
/// (DiscJobErrors.h) when it cannot be read. Where only a decoder tells how long a sound file is, it is decoded; one
/// that cannot be is noted, and the length of its last track is not known. Reads from the disk, so it is not for the
/// main thread. Thread-safe.
[[nodiscard]] TESSARON_EXPORT Result<DescribedDisc> describedDisc(const QByteArray &path,
                                                                  const std::stop_token &stop = {});

} // namespace Tessaron
