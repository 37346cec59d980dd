#pragma once

#include "platform/discimage/udf/UdfPartitions.h"
#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/Export.h"

#include <memory>

namespace Tessaron
{

/// Reads the UDF volume of an image: revision 1.02 and what later ones have in common with it.
class TESSARON_EXPORT UdfVolumeReader final : public VolumeReader
{
public:
    /// A reader, when the image says that it holds UDF.
    [[nodiscard]] static VolumeReaderResult open(const std::shared_ptr<const DiscImageSource> &source);

    [[nodiscard]] VolumeObject root() const override { return m_root; }
    [[nodiscard]] NSError listFolder(const VolumeObject &folder, const VolumeVisitor &visitor) const override;

private:
    explicit UdfVolumeReader(std::shared_ptr<const DiscImageSource> source)
        : VolumeReader(std::move(source))
    {
    }
    [[nodiscard]] NSError findRoot();

    UdfVolumeStructure m_structure;
    VolumeObject m_root;
};

} // namespace Tessaron
