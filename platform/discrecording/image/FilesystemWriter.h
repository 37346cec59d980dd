#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/content/PlanProgress.h"
#include "platform/discrecording/content/StorageIssue.h"
#include "platform/discrecording/image/ContentsRecord.h"
#include "platform/discrecording/image/TreeDisplayNames.h"
#include "platform/discrecording/objects/DRStorageReport.h"
#include "platform/foundation/NSError.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Tessaron
{

class ImageLayout;

/// A tree of a disc with its own names, for the report.
struct NamedTree {
    DRDiscTree tree = DRDiscTree::ISO9660;
    DRFilesystemMask filesystem = 0; ///< the bit that puts an object into it
    std::shared_ptr<const TreeDisplayNames> names;
};

/// One filesystem of a disc image. A writer goes through the steps below once, in their order, and is constant
/// afterwards: fillRegion() may then be called by several threads at once.
class FilesystemWriter
{
public:
    virtual ~FilesystemWriter() = default;

    /// Makes names and order and finds out every size; adds what cannot be held as it stands. Writers prepare at the
    /// same time on different threads. False when cancelled.
    [[nodiscard]] virtual bool prepare(const PlanProgress &progress, StorageIssues &issues) = 0;
    /// Why the filesystem cannot be written at all; asked after prepare(). The null error when it can.
    [[nodiscard]] virtual NSError obstacle() const { return {}; }
    /// The trees that the writer makes; valid after prepare().
    [[nodiscard]] virtual std::vector<NamedTree> trees() const = 0;

    /// How many volume descriptors it adds to those of ECMA-119, which begin at block 16, before their terminator …
    [[nodiscard]] virtual std::uint32_t volumeDescriptorCount() const { return 0; }
    /// … and how many descriptors behind it, where ECMA-167 looks for its own.
    [[nodiscard]] virtual std::uint32_t extendedDescriptorCount() const { return 0; }
    /// Fills one block of zeros with the `index`-th of these descriptors; those before the terminator are counted
    /// first.
    virtual void fillDescriptor(std::uint32_t index, std::span<std::uint8_t> descriptor) const = 0;

    /// Takes the blocks that must lie at fixed places; called for all writers before anything else gets a place.
    virtual void placeFixed(ImageLayout &layout) { (void)layout; }
    /// Takes the blocks for everything that may lie anywhere.
    virtual void place(ImageLayout &layout) = 0;
    /// Takes blocks for what depends on where everything else lies; called when the files have got their places.
    /// `padding` blocks and the writers' tails will follow. No writer may count on being the last.
    virtual void placeLast(ImageLayout &layout, std::uint64_t padding)
    {
        (void)layout;
        (void)padding;
    }
    /// Told when the files have got their places and the size of the image is known.
    virtual void didPlaceFiles(const ImageFacts &image) = 0;

    /// Fills blocks of a region that the writer took under `tag`: those from `firstBlock`, counted within the region.
    /// `out` holds zeros, or what another writer put into the same blocks.
    virtual void fillRegion(std::uint32_t tag, std::uint32_t firstBlock, std::span<std::uint8_t> out) const = 0;
    /// The same for a writer that has to read files to fill a region: an error that names the file ends the image.
    [[nodiscard]] virtual NSError produceRegion(std::uint32_t tag, std::uint32_t firstBlock,
                                                std::span<std::uint8_t> out) const
    {
        fillRegion(tag, firstBlock, out);
        return {};
    }
};

} // namespace Tessaron
