#pragma once

#include "platform/discrecording/image/BlockImage.h"

#include <QByteArray>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <vector>

namespace Tessaron::Testing
{

/// A door that tests hold shut for as long as a thread is to hang behind it.
class Gate
{
public:
    void open();
    /// Waits until the gate is open.
    void pass();
    /// Waits until a thread waits at the gate.
    void waitForVisitor();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOpen = false;
    int m_visitors = 0;
};

/// What a file on disk is like now, as a plan would note it.
[[nodiscard]] FileContents fileContentsOf(const QByteArray &path);

/// The bytes that a generated block has.
[[nodiscard]] QByteArray generatedBlock(std::uint32_t block);

/// An image made of generated blocks and of runs of real files. Keeps the contract of BlockImage; the members below may
/// be set before it is used.
class FakeBlockImage final : public BlockImage
{
public:
    void addGenerated(std::uint32_t blockCount);
    void addFileRun(const FileContents &file, std::uint64_t offset, std::uint64_t length);

    [[nodiscard]] std::uint32_t blockCount() const override { return m_blockCount; }
    [[nodiscard]] ImagePiece pieceAt(BlockAddress at, std::uint32_t wanted) const override;
    [[nodiscard]] NSError fillPiece(BlockAddress at, std::span<std::uint8_t> out,
                                    const std::stop_token &cancellation) const override;
    [[nodiscard]] NSError verifyEmptyFiles(const std::stop_token & /*cancellation*/) const override { return {}; }
    [[nodiscard]] FileContents fileContents(std::uint32_t fileIndex) const override { return m_files[fileIndex]; }

    std::optional<std::uint32_t> failingBlock; ///< the piece with it cannot be read
    std::optional<std::uint32_t> hungryBlock; ///< there is no memory for the piece with it
    std::optional<std::uint32_t> slowBlock; ///< the piece with it is read once the gate is open
    std::optional<std::uint32_t> invalidBlock; ///< a piece that begins at or behind it is not a piece at all
    mutable Gate gate;
    mutable std::atomic<int> filledPieces = 0;

private:
    struct Segment {
        std::uint32_t first = 0;
        std::uint32_t count = 0;
        std::optional<FileRun> run;
    };
    [[nodiscard]] const Segment &segmentAt(std::uint32_t block) const;

    std::vector<Segment> m_segments;
    std::vector<FileContents> m_files;
    std::uint32_t m_blockCount = 0;
};

} // namespace Tessaron::Testing
