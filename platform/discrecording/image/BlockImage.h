#pragma once

#include "platform/discrecording/content/FileContents.h"
#include "platform/disctracks/BlockAddress.h"
#include "platform/foundation/NSError.h"

#include <cstdint>
#include <span>
#include <stop_token>

namespace Tessaron
{

/// Size of a logical block of every filesystem that is written, in bytes.
inline constexpr std::uint32_t logicalBlockSize = 2048;

/// A run of blocks whose bytes are those of one file on disk. A device may have the kernel copy them, past this
/// process.
struct FileRun {
    std::uint32_t fileIndex = 0; ///< which file of the image, for BlockImage::fileContents()
    std::uint64_t offset = 0; ///< where in the file the run begins, bytes
    std::uint64_t length = 0; ///< bytes; the rest of the run's last block is zero
};

/// What BlockImage::pieceAt() answers.
struct ImagePiece {
    std::uint32_t blockCount = 0; ///< whole blocks of the piece, at least 1
    bool isFileRun = false; ///< the piece is exactly `run`
    FileRun run;
};

/// A planned disc image: a fixed number of blocks whose every byte is a function of the plan and of the files'
/// contents. Blocks are addressed from the image's begin, wherever on a disc it will lie. All operations are const and
/// may be called by several threads at once.
class BlockImage
{
public:
    virtual ~BlockImage() = default;

    /// Exact size of the image, known before its first byte.
    [[nodiscard]] virtual std::uint32_t blockCount() const = 0;

    /// The piece that begins at block `at` (a boundary: 0 or the end of an earlier piece) and has about `wanted`
    /// blocks: less where a big file begins or ends, more only where something cannot be cut. A big file's
    /// contents come as pieces of their own with `isFileRun` set; small files are gathered.
    [[nodiscard]] virtual ImagePiece pieceAt(BlockAddress at, std::uint32_t wanted) const = 0;

    /// Produces the bytes of the piece at block `at`; `out` has exactly the size of the piece. File contents in it are
    /// read from disk and compared with the plan: a file that changed, shrank, grew or vanished gives an error that
    /// names it, as does a failing read. `cancellation` ends a wait for a file that another program keeps busy; the
    /// error is then of no interest.
    [[nodiscard]] virtual NSError fillPiece(BlockAddress at, std::span<std::uint8_t> out,
                                            const std::stop_token &cancellation) const = 0;

    /// Looks again at the files that have no byte in the image because they were empty: an error names one that holds
    /// something now, which no read would notice. Call it when all blocks are written. What follows a cancel is of no
    /// interest.
    [[nodiscard]] virtual NSError verifyEmptyFiles(const std::stop_token &cancellation) const = 0;

    /// The file behind FileRun::fileIndex.
    [[nodiscard]] virtual FileContents fileContents(std::uint32_t fileIndex) const = 0;
};

} // namespace Tessaron
