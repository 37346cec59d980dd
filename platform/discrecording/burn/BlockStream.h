#pragma once

#include "platform/discrecording/burn/BlockSink.h"
#include "platform/discrecording/image/BlockImage.h"
#include "platform/disctracks/DiscTrack.h"

#include <functional>
#include <stop_token>

namespace Tessaron
{

/// The way of a disc's blocks from the writers of its tracks to a sink: gives each block its address, counts what was
/// taken, and ends with an error once a stop was asked for. Used by one thread at a time.
class BlockStream
{
public:
    /// Told how many more bytes the sink has taken.
    using BytesTaken = std::function<void(std::uint64_t bytes)>;

    /// The sink must outlive the stream. Blocks are numbered from 0; see beginSession().
    explicit BlockStream(BlockSink &sink, std::stop_token cancellation = {}, BytesTaken bytesTaken = {});

    /// The next block will have this address.
    void beginSession(BlockAddress firstBlock) { m_position = firstBlock; }

    /// The blocks that follow are those of this track, which the sink hears of; the part of its pregap that is not
    /// stored only counts in the addresses.
    [[nodiscard]] NSError beginTrack(const DiscTrack &track);
    /// The same at the track's end, with its postgap.
    [[nodiscard]] NSError endTrack();
    /// The track that was begun last.
    [[nodiscard]] const DiscTrack &track() const { return m_track; }

    /// Whole blocks; burnCancelledError() once a stop was asked for, as from copyFileRun().
    [[nodiscard]] NSError writeBlocks(const void *bytes, std::uint32_t blockCount, std::uint32_t blockSize);

    /// True when writeBlocks() and copyFileRun() may be called by another thread than the one that made the stream.
    [[nodiscard]] bool takesBlocksFromAnyThread() const { return m_sink.takesBlocksFromAnyThread(); }
    /// True when copyFileRun() may be used.
    [[nodiscard]] bool copiesFiles() const { return m_sink.copiesFiles(); }
    /// Lets the sink copy contents of a planned file, and compares the file with the plan before and after.
    [[nodiscard]] NSError copyFileRun(const FileContents &file, const FileRun &run);

    /// The address of the next block.
    [[nodiscard]] BlockAddress position() const { return m_position; }
    [[nodiscard]] const std::stop_token &cancellation() const { return m_cancellation; }

private:
    void skip(std::uint64_t blockCount) { m_position = m_position + std::int64_t(blockCount); }
    void countBytes(std::uint64_t bytes) const;

    BlockSink &m_sink;
    const std::stop_token m_cancellation;
    const BytesTaken m_bytesTaken;
    BlockAddress m_position;
    DiscTrack m_track;
};

} // namespace Tessaron
