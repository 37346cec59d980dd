#pragma once

#include "platform/discimage/iso9660/IsoDescriptors.h"
#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/Export.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Tessaron
{

/// Reads one hierarchy of an ISO 9660 image: the primary one with its short names, the same with Rock Ridge, or that of
/// Joliet.
class TESSARON_EXPORT IsoVolumeReader final : public VolumeReader
{
public:
    /// A reader for the view, when the image has it: the kind is ISO9660, RockRidge or Joliet.
    [[nodiscard]] static VolumeReaderResult open(const std::shared_ptr<const DiscImageSource> &source, VolumeKind kind);

    [[nodiscard]] VolumeObject root() const override;
    [[nodiscard]] NSError listFolder(const VolumeObject &folder, const VolumeVisitor &visitor) const override;

private:
    IsoVolumeReader(std::shared_ptr<const DiscImageSource> source, const IsoDescriptor &descriptor);
    [[nodiscard]] NSError findRockRidge(bool *isThere);

    const IsoDescriptor m_descriptor;
    std::size_t m_skippedBytes = 0; ///< in front of the system use entries of every record but the root's
};

} // namespace Tessaron
