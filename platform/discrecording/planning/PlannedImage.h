#pragma once

#include "platform/discrecording/content/ContentTree.h"
#include "platform/discrecording/image/BlockImage.h"
#include "platform/discrecording/image/FilesystemWriter.h"
#include "platform/discrecording/image/ImageLayout.h"

#include <memory>
#include <vector>

namespace Tessaron
{

class SourceFolder;

/// A disc image with all addresses given. Regions that writers fill and extents of files never share a block; all other
/// blocks are zero.
class PlannedImage final : public BlockImage
{
public:
    /// `files` are those that own an extent, in the order of their addresses. Files of at least `bigFileSize` bytes are
    /// FileRun pieces.
    PlannedImage(std::shared_ptr<const ContentTree> tree, std::vector<std::unique_ptr<FilesystemWriter>> writers,
                 ImageLayout layout, std::vector<NodeIndex> files, std::uint32_t bigFileSize);

    [[nodiscard]] std::uint32_t blockCount() const override;
    [[nodiscard]] ImagePiece pieceAt(BlockAddress at, std::uint32_t wanted) const override;
    [[nodiscard]] NSError fillPiece(BlockAddress at, std::span<std::uint8_t> out,
                                    const std::stop_token &cancellation) const override;
    [[nodiscard]] NSError verifyEmptyFiles(const std::stop_token &cancellation) const override;
    [[nodiscard]] FileContents fileContents(std::uint32_t fileIndex) const override;

private:
    /// Position in m_files of the first file whose extent ends behind the block.
    [[nodiscard]] std::size_t firstFileEndingAfter(std::uint64_t block) const;
    [[nodiscard]] std::uint64_t startOf(NodeIndex file) const { return m_tree->nodes[file].extentStart(); }
    [[nodiscard]] std::uint64_t endOf(NodeIndex file) const;
    [[nodiscard]] bool isBig(NodeIndex file) const;

    [[nodiscard]] NSError fillRegions(std::uint64_t at, std::span<std::uint8_t> out) const;
    /// Fills `out` with the bytes of one file from `offset` on.
    [[nodiscard]] NSError fillFile(NodeIndex file, std::uint64_t offset, std::span<std::uint8_t> out,
                                   SourceFolder &folder, const std::stop_token &cancellation) const;

    const std::shared_ptr<const ContentTree> m_tree;
    const std::vector<std::unique_ptr<FilesystemWriter>> m_writers;
    const ImageLayout m_layout;
    const std::vector<NodeIndex> m_files;
    std::vector<std::uint32_t> m_bigFiles; ///< positions in m_files
    const std::uint32_t m_bigFileSize;
};

} // namespace Tessaron
