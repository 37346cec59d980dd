#pragma once

#include "platform/discimage/source/DiscImageSource.h"
#include "platform/discimage/volume/VolumeCheck.h"
#include "platform/foundation/Export.h"

#include <memory>
#include <stop_token>

namespace Tessaron
{

/// Holds all structures of an image against one another: the description behind a VANT image, partition maps, what
/// raw sectors have besides their user data, and every filesystem, including filesystems of which only remains are
/// left, which volumesInImage() does not find. It tells the problems that a reader would stumble over, and also wrong
/// copies, counts and checksums that no reader looks at. It does not look at the contents of files, except that it
/// reads raw sectors whole.
///
/// Takes time in proportion to the objects of the volumes (and to the size of an image of raw sectors), and memory of
/// some 100 bytes for each at most. Returns the number of problems told. Ends early when the token asks for it or the
/// visitor returns false. On any thread; the visitor is called on the same.
TESSARON_EXPORT std::uint64_t checkDiscImage(const std::shared_ptr<const DiscImageSource> &source,
                                             const VolumeProblemVisitor &visitor, const std::stop_token &stop = {});

/// The same for a further track or a partition: the problems name the part.
TESSARON_EXPORT std::uint64_t checkDiscImagePart(const std::shared_ptr<const DiscImageSource> &source,
                                                 const QString &name, const VolumeProblemVisitor &visitor,
                                                 const std::stop_token &stop = {});

/// One line for people: where it belongs, what is wrong, and the byte: "UDF, anchor: it is damaged (at byte 524288)".
[[nodiscard]] TESSARON_EXPORT QString volumeProblemText(const VolumeProblem &problem);

} // namespace Tessaron
