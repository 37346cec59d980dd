#pragma once

#include "platform/discimage/source/ImageBytes.h"

#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <vector>

namespace Tessaron
{

/// The data of a disc in a drive, read in runs of 64 KiB, of which the last few are kept: structures of filesystems are
/// asked for in small pieces again and again, and each question to a drive takes a turn of the disc.
class DriveReader final : public ImageBytes
{
public:
    /// Reads whole blocks of 2048 bytes; called by one thread at a time.
    using ReadBlocks = std::function<NSError(std::uint64_t first, std::uint32_t count, char *out)>;

    DriveReader(ReadBlocks readBlocks, std::uint64_t firstBlock, std::uint64_t blocks);

    [[nodiscard]] std::uint64_t length() const override;
    [[nodiscard]] NSError read(std::uint64_t offset, void *buffer, std::size_t length) const override;

private:
    struct Run {
        std::uint64_t number = 0;
        std::vector<char> bytes;
    };

    [[nodiscard]] NSError readRun(std::uint64_t number, const Run **run) const;

    const ReadBlocks m_readBlocks;
    const std::uint64_t m_firstBlock; ///< of the disc
    const std::uint64_t m_blocks;
    mutable std::mutex m_mutex; ///< guards what follows, and the drive
    mutable std::list<Run> m_runs; ///< the one that was used last is the first
};

} // namespace Tessaron
