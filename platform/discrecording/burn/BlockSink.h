#pragma once

#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/NSError.h"

#include <cstdint>
#include <functional>

namespace Tessaron
{

struct DiscTrack;
struct TableOfContents;

/// Whole blocks, one after another.
struct BlockBatch {
    const void *bytes = nullptr;
    std::uint32_t count = 0; ///< blocks
    std::uint32_t blockSize = 0; ///< bytes
    BlockAddress at; ///< of the first one, by the disc's table of contents
};

/// A part of a regular file.
struct FileRange {
    int descriptor = -1; ///< open for reading
    std::uint64_t offset = 0; ///< bytes
    std::uint64_t length = 0; ///< bytes
};

/// How the copying of a part of a file has ended.
struct FileCopyResult {
    enum class Outcome : std::uint8_t {
        Copied,
        Cancelled,
        EndedEarly, ///< the file has fewer bytes
        ReadFailed, ///< `readErrno` says why
        WriteFailed, ///< `writeError` says why
    };
    Outcome outcome = Outcome::Copied;
    int readErrno = 0;
    NSError writeError;
};

/// Told how many more bytes were copied; false cancels.
using CopyProgress = std::function<bool(std::uint64_t bytes)>;

/// Where the blocks of a disc go: into a file, to a callback, to a drive.
///
/// One thread makes the calls, in this order: beginDisc(); for each track beginTrack(), its blocks, endTrack();
/// endDisc(), or abandonDisc() at any place. Where takesBlocksFromAnyThread(), the blocks of a track may come from
/// other threads, one call at a time. Blocks come in ascending order without a gap. Nothing but abandonDisc() is called
/// after an error or a cancel; files that were begun are up to the owner of the sink. An error says what happened,
/// names the output, and has a recovery suggestion.
class BlockSink
{
public:
    BlockSink() = default;
    BlockSink(const BlockSink &) = delete;
    BlockSink &operator=(const BlockSink &) = delete;
    virtual ~BlockSink();

    /// What will come, down to the last block. Also the place to refuse it. The default takes everything, as do those
    /// of the next three.
    [[nodiscard]] virtual NSError beginDisc(const TableOfContents &disc);
    [[nodiscard]] virtual NSError beginTrack(const DiscTrack &track);
    [[nodiscard]] virtual NSError endTrack();
    /// All blocks were written: what the sink still holds goes out, and what fails only now is reported now.
    [[nodiscard]] virtual NSError endDisc();

    /// The writing has ended early, by an error of the sink or of what was to be written, or by a cancel; endDisc()
    /// follows in no case. Returns what is to be told: the reason as it is, which is what the default does, or with
    /// more about what became of the disc.
    [[nodiscard]] virtual NSError abandonDisc(const NSError &reason);

    [[nodiscard]] virtual NSError writeBlocks(const BlockBatch &run) = 0;

    /// Whether writeBlocks() and copyFile() may be called by other threads than the one that calls the rest. The
    /// default wants one thread. Asked when a track begins.
    [[nodiscard]] virtual bool takesBlocksFromAnyThread() const;

    /// Whether the sink can take contents of files without their passing through this process. Asked when a track
    /// begins.
    [[nodiscard]] virtual bool copiesFiles() const;
    /// Takes a part of a file in place of blocks; only where copiesFiles(). The last block is filled up with zero
    /// bytes, of which `progress` hears as well.
    [[nodiscard]] virtual FileCopyResult copyFile(const FileRange &range, std::uint32_t blockSize,
                                                  const CopyProgress &progress);
};

} // namespace Tessaron
