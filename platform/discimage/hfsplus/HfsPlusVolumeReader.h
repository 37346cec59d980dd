#pragma once

#include "platform/discimage/hfsplus/HfsPlusBTreeWalker.h"
#include "platform/discimage/hfsplus/HfsPlusCatalogItem.h"
#include "platform/discimage/hfsplus/HfsPlusVolumeHeaderReader.h"
#include "platform/discimage/volume/VolumeReader.h"
#include "platform/foundation/Export.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Tessaron
{

/// Reads an HFS+ or HFSX volume (Apple's Technical Note TN1150, "HFS Plus Volume Format") in any way that an image can
/// hold it: found through a partition map, in an HFS wrapper, or from the first byte on.
///
/// Names come composed, as Linux shows them; comparisons have to use canonical forms. Hard links have the identity,
/// attributes and contents of the file that they lead to. The folders and files that the volume keeps for itself are
/// left out. Listing a folder checks what a mounted system relies on: that its thread leads to it, the order of the
/// catalog, that the index leads to each leaf, and the number of children. Threads of files are looked at for files in
/// more than eight pieces only, the allocation file never: no listing needs them.
class TESSARON_EXPORT HfsPlusVolumeReader final : public VolumeReader
{
public:
    /// Looks for a volume. A reader comes with an error when the copy of the volume header is damaged.
    [[nodiscard]] static VolumeReaderResult open(const std::shared_ptr<const DiscImageSource> &source);

    [[nodiscard]] VolumeObject root() const override;
    /// An object that cannot be understood is left out, the others are told; the first such error is returned.
    [[nodiscard]] NSError listFolder(const VolumeObject &folder, const VolumeVisitor &visitor) const override;

private:
    using VolumeReader::VolumeReader;

    [[nodiscard]] NSError load(const std::shared_ptr<const DiscImageSource> &source, const HfsPlusHeader &header);
    [[nodiscard]] NSError openTrees(const std::shared_ptr<const DiscImageSource> &source);
    [[nodiscard]] NSError readRoot();
    [[nodiscard]] NSError findPrivateFolder();

    [[nodiscard]] NSError find(std::uint32_t parentId, QByteArrayView name, HfsPlusTreePlace *place,
                               bool *isFound) const;
    /// The folder record with the ID, found as a system would: by its thread.
    [[nodiscard]] NSError findFolder(std::uint32_t id, HfsPlusTreePlace *place, HfsPlusItem *item) const;
    /// Fails unless the ID leads to the record of the file there. That lets no two files have the same extents from the
    /// extents file, which a volume could make endlessly many of.
    [[nodiscard]] NSError checkThread(std::uint32_t fileId, std::uint64_t recordOffset) const;
    /// All extents of a data fork or file of the volume (80 bytes of fork data).
    [[nodiscard]] NSError extentsOf(HfsPlusBytes fork, std::uint32_t fileId, std::uint64_t recordOffset,
                                    std::vector<VolumeExtent> *extents) const;
    [[nodiscard]] bool isHidden(std::uint32_t parentId, HfsPlusBytes name) const;
    [[nodiscard]] bool leadsToPrivateFolder(const HfsPlusItem &item) const;
    /// Makes the object of a record of the catalog, the name excepted.
    [[nodiscard]] NSError describe(const HfsPlusItem &item, std::uint64_t recordOffset, VolumeObject *object) const;
    [[nodiscard]] NSError describeLink(const HfsPlusItem &link, std::uint64_t recordOffset, VolumeObject *object) const;
    [[nodiscard]] NSError readLinkTarget(VolumeObject *link) const;

    HfsPlusHeader m_header;
    std::unique_ptr<HfsPlusBTreeWalker> m_extents;
    std::unique_ptr<HfsPlusBTreeWalker> m_catalog;
    VolumeObject m_root;
    std::uint32_t m_rootCreated = 0;
    std::uint32_t m_privateFolder = 0; ///< ID of the folder of files with several names; 0 when there is none
    std::uint32_t m_privateFolderCreated = 0;
};

} // namespace Tessaron
