#include "platform/discrecording/planning/PlannedImage.h"

#include "platform/coreservices/FSRefAccess.h"
#include "platform/discrecording/content/FileContentsReader.h"
#include "platform/discrecording/content/SourceFolder.h"

#include <algorithm>
#include <array>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>

namespace Tessaron
{

namespace
{

/// Opens a file in a folder that is open already; invalid when that fails.
UniqueDescriptor openIn(int folder, const FSRef &ref)
{
    const QByteArrayView name = nameOfFSRef(ref);
    std::array<char, NAME_MAX + 1> terminated;
    if (folder < 0 || name.size() > NAME_MAX)
        return {};
    *std::copy(name.begin(), name.end(), terminated.begin()) = '\0';
    return UniqueDescriptor(
        ::openat(folder, terminated.data(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

/// True when a file that was empty certainly still is, or is gone: then nothing is lost.
bool isStillEmpty(int folder, const FSRef &ref)
{
    const UniqueDescriptor descriptor = openIn(folder, ref);
    struct stat status;
    return descriptor && ::fstat(descriptor.get(), &status) == 0 && (!S_ISREG(status.st_mode) || status.st_size == 0);
}

/// Reads a part of a file and makes sure that the file is the planned one.
NSError readChecked(const FileContents &file, SourceFolder &folder, std::uint64_t offset, std::span<std::uint8_t> out,
                    const std::stop_token &cancellation)
{
    UniqueDescriptor descriptor = openIn(folder.descriptorFor(file.ref), file.ref);
    if (!descriptor) {
        NSError error;
        descriptor = openFileContents(file, &error, cancellation);
        if (!descriptor)
            return error;
    }
    if (NSError error = readFileContents(descriptor.get(), file, offset, out.data(), out.size()))
        return error;
    return verifyFileContentsUnchanged(descriptor.get(), file);
}

} // namespace

PlannedImage::PlannedImage(std::shared_ptr<const ContentTree> tree,
                           std::vector<std::unique_ptr<FilesystemWriter>> writers, ImageLayout layout,
                           std::vector<NodeIndex> files, std::uint32_t bigFileSize)
    : m_tree(std::move(tree))
    , m_writers(std::move(writers))
    , m_layout(std::move(layout))
    , m_files(std::move(files))
    , m_bigFileSize(std::max(bigFileSize, 1u))
{
    for (std::size_t position = 0; position < m_files.size(); ++position) {
        if (isBig(m_files[position]))
            m_bigFiles.push_back(static_cast<std::uint32_t>(position));
    }
}

std::uint32_t PlannedImage::blockCount() const
{
    return static_cast<std::uint32_t>(m_layout.blockCount());
}

std::uint64_t PlannedImage::endOf(NodeIndex file) const
{
    return startOf(file) + blocksForBytes(m_tree->nodes[file].fileSize());
}

bool PlannedImage::isBig(NodeIndex file) const
{
    const ContentNode &content = m_tree->nodes[file];
    return content.fileSize() >= m_bigFileSize && !content.has(ContentNode::HasContentsInMemory);
}

std::size_t PlannedImage::firstFileEndingAfter(std::uint64_t block) const
{
    const auto found =
        std::partition_point(m_files.begin(), m_files.end(), [&](NodeIndex file) { return endOf(file) <= block; });
    return static_cast<std::size_t>(found - m_files.begin());
}

ImagePiece PlannedImage::pieceAt(BlockAddress address, std::uint32_t wanted) const
{
    ImagePiece piece;
    const auto at = std::uint64_t(address.number());
    const std::uint64_t limit = at + std::max(wanted, 1u);
    const std::size_t here = firstFileEndingAfter(at);
    if (here < m_files.size() && startOf(m_files[here]) <= at && isBig(m_files[here])) {
        const NodeIndex file = m_files[here];
        const std::uint64_t end = std::min(limit, endOf(file));
        piece.blockCount = static_cast<std::uint32_t>(end - at);
        piece.isFileRun = true;
        piece.run.fileIndex = file;
        piece.run.offset = (at - startOf(file)) * logicalBlockSize;
        piece.run.length = std::min((end - at) * logicalBlockSize, m_tree->nodes[file].fileSize() - piece.run.offset);
        return piece;
    }
    std::uint64_t end = std::min(limit, m_layout.blockCount());
    const auto big = std::lower_bound(m_bigFiles.begin(), m_bigFiles.end(), here);
    if (big != m_bigFiles.end())
        end = std::min(end, startOf(m_files[*big]));
    // A small file is not cut, so that it is opened once only: the piece ends before it or, if it begins with it,
    // behind it.
    const std::size_t last = firstFileEndingAfter(end - 1);
    if (last < m_files.size() && startOf(m_files[last]) < end && end < endOf(m_files[last]))
        end = startOf(m_files[last]) > at ? startOf(m_files[last]) : endOf(m_files[last]);
    piece.blockCount = static_cast<std::uint32_t>(end - at);
    return piece;
}

NSError PlannedImage::fillPiece(BlockAddress address, std::span<std::uint8_t> out,
                                const std::stop_token &cancellation) const
{
    const auto at = std::uint64_t(address.number());
    const std::uint64_t endBlock = at + out.size() / logicalBlockSize;
    SourceFolder folder;
    std::size_t cleared = 0; // bytes of the piece that hold what they are to hold
    const auto clearUpTo = [&](std::size_t byte) {
        if (byte > cleared)
            std::fill(out.begin() + static_cast<std::ptrdiff_t>(cleared),
                      out.begin() + static_cast<std::ptrdiff_t>(byte), std::uint8_t{0});
        cleared = std::max(cleared, byte);
    };
    for (std::size_t position = firstFileEndingAfter(at); position < m_files.size(); ++position) {
        const NodeIndex file = m_files[position];
        if (startOf(file) >= endBlock)
            break;
        const std::uint64_t pieceStart = at * logicalBlockSize;
        const std::uint64_t fileStart = startOf(file) * logicalBlockSize;
        const std::uint64_t from = std::max(pieceStart, fileStart);
        const std::uint64_t to = std::min(pieceStart + out.size(), fileStart + m_tree->nodes[file].fileSize());
        if (from >= to)
            continue; // its last block's padding alone
        clearUpTo(from - pieceStart);
        const std::span<std::uint8_t> contents = out.subspan(from - pieceStart, to - from);
        if (NSError error = fillFile(file, from - fileStart, contents, folder, cancellation))
            return error;
        cleared = to - pieceStart;
    }
    clearUpTo(out.size());
    return fillRegions(at, out);
}

NSError PlannedImage::fillRegions(std::uint64_t at, std::span<std::uint8_t> out) const
{
    const std::uint64_t end = at + out.size() / logicalBlockSize;
    for (const BlockRegion &region : m_layout.regions()) {
        if (region.start >= end)
            break;
        const std::uint64_t from = std::max(at, region.start);
        const std::uint64_t to = std::min(end, region.start + region.count);
        if (from >= to)
            continue;
        if (NSError error = region.owner->produceRegion(
                region.tag, static_cast<std::uint32_t>(from - region.start),
                out.subspan((from - at) * logicalBlockSize, (to - from) * logicalBlockSize)))
            return error;
    }
    return {};
}

NSError PlannedImage::fillFile(NodeIndex file, std::uint64_t offset, std::span<std::uint8_t> out, SourceFolder &folder,
                               const std::stop_token &cancellation) const
{
    if (m_tree->nodes[file].has(ContentNode::HasContentsInMemory)) {
        const QByteArray contents = m_tree->memoryContents(file);
        std::copy_n(contents.constData() + offset, out.size(), out.begin());
        return {};
    }
    return readChecked(m_tree->fileContents(file), folder, offset, out, cancellation);
}

NSError PlannedImage::verifyEmptyFiles(const std::stop_token &cancellation) const
{
    SourceFolder folder;
    for (NodeIndex node = 0; node < m_tree->nodes.size(); ++node) {
        const ContentNode &content = m_tree->nodes[node];
        if (!content.isFile() || content.fileSize() > 0 || content.sourceNode == 0)
            continue;
        if (cancellation.stop_requested())
            return {};
        const FileContents file = m_tree->fileContents(node);
        if (isStillEmpty(folder.descriptorFor(file.ref), file.ref))
            continue;
        NSError error;
        (void)openFileContents(file, &error, cancellation);
        // Of a file that vanished, cannot be opened or was only touched, everything is in the image.
        if (error && error.code() == fBsyErr)
            return error;
    }
    return {};
}

FileContents PlannedImage::fileContents(std::uint32_t fileIndex) const
{
    return m_tree->fileContents(fileIndex);
}

} // namespace Tessaron
