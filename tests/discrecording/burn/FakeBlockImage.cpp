#include "tests/discrecording/burn/FakeBlockImage.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/discrecording/content/FileContentsReader.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <sys/stat.h>

namespace Tessaron::Testing
{

void Gate::open()
{
    const std::lock_guard lock(m_mutex);
    m_isOpen = true;
    m_changed.notify_all();
}

void Gate::pass()
{
    std::unique_lock lock(m_mutex);
    ++m_visitors;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_isOpen; });
}

void Gate::waitForVisitor()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_visitors > 0; });
}

FileContents fileContentsOf(const QByteArray &path)
{
    FileContents result;
    EXPECT_EQ(FSPathMakeRef(path, &result.ref, nullptr), noErr) << path.constData();
    struct stat status = {};
    EXPECT_EQ(::stat(path.constData(), &status), 0) << path.constData();
    result.size = std::uint64_t(status.st_size);
    result.inode = status.st_ino;
    result.modification = FileTime::from(status.st_mtim);
    result.change = FileTime::from(status.st_ctim);
    return result;
}

QByteArray generatedBlock(std::uint32_t block)
{
    QByteArray bytes(logicalBlockSize, char('a' + block % 26));
    std::memcpy(bytes.data(), &block, sizeof block);
    return bytes;
}

void FakeBlockImage::addGenerated(std::uint32_t blockCount)
{
    m_segments.push_back({m_blockCount, blockCount, {}});
    m_blockCount += blockCount;
}

void FakeBlockImage::addFileRun(const FileContents &file, std::uint64_t offset, std::uint64_t length)
{
    const auto blocks = std::uint32_t((length + logicalBlockSize - 1) / logicalBlockSize);
    m_segments.push_back({m_blockCount, blocks, FileRun{std::uint32_t(m_files.size()), offset, length}});
    m_files.push_back(file);
    m_blockCount += blocks;
}

const FakeBlockImage::Segment &FakeBlockImage::segmentAt(std::uint32_t block) const
{
    const auto behind = std::ranges::upper_bound(m_segments, block, {}, &Segment::first);
    return *std::prev(behind);
}

ImagePiece FakeBlockImage::pieceAt(BlockAddress address, std::uint32_t wanted) const
{
    const auto at = std::uint32_t(address.number());
    if (invalidBlock && at >= *invalidBlock)
        return {};
    const Segment &segment = segmentAt(at);
    const std::uint32_t count = std::min(wanted, segment.first + segment.count - at);
    if (!segment.run)
        return {count, false, {}};
    FileRun run = *segment.run;
    const std::uint64_t skipped = std::uint64_t(at - segment.first) * logicalBlockSize;
    run.offset += skipped;
    run.length = std::min(run.length - skipped, std::uint64_t(count) * logicalBlockSize);
    return {count, true, run};
}

NSError FakeBlockImage::fillPiece(BlockAddress address, std::span<std::uint8_t> out,
                                  const std::stop_token & /*cancellation*/) const
{
    const auto at = std::uint32_t(address.number());
    const auto count = std::uint32_t(out.size() / logicalBlockSize);
    const auto holds = [=](const std::optional<std::uint32_t> &block) {
        return block && *block >= at && *block < at + count;
    };
    ++filledPieces;
    if (holds(slowBlock))
        gate.pass();
    if (holds(hungryBlock))
        throw std::bad_alloc();
    if (holds(failingBlock))
        return burnError(ioErr, QStringLiteral("Block %1 cannot be read.").arg(*failingBlock));
    const ImagePiece piece = pieceAt(address, count);
    if (piece.isFileRun) {
        NSError error;
        const FileContents &file = m_files[piece.run.fileIndex];
        const UniqueDescriptor descriptor = openFileContents(file, &error);
        if (!error)
            error = readFileContents(descriptor.get(), file, piece.run.offset, out.data(), piece.run.length);
        std::ranges::fill(out.subspan(std::size_t(piece.run.length)), std::uint8_t(0));
        return error;
    }
    for (std::uint32_t block = 0; block < count; ++block)
        std::memcpy(&out[std::size_t(block) * logicalBlockSize], generatedBlock(at + block).constData(),
                    logicalBlockSize);
    return {};
}

} // namespace Tessaron::Testing
