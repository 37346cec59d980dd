#include "platform/discrecording/drives/DriveReader.h"

#include <algorithm>
#include <cstring>

namespace Tessaron
{

namespace
{

constexpr std::uint64_t blockSize = 2048;
constexpr std::uint64_t runBlocks = 32; // what a drive gives at once
constexpr std::uint64_t runSize = runBlocks * blockSize;
constexpr std::size_t mostRuns = 64;

} // namespace

DriveReader::DriveReader(ReadBlocks readBlocks, std::uint64_t firstBlock, std::uint64_t blocks)
    : m_readBlocks(std::move(readBlocks))
    , m_firstBlock(firstBlock)
    , m_blocks(blocks)
{
}

std::uint64_t DriveReader::length() const
{
    return m_blocks * blockSize;
}

NSError DriveReader::read(std::uint64_t offset, void *buffer, std::size_t length) const
{
    const std::lock_guard lock(m_mutex);
    auto *to = static_cast<char *>(buffer);
    while (length > 0) {
        const Run *run = nullptr;
        if (NSError error = readRun(offset / runSize, &run))
            return error;
        const std::uint64_t within = offset % runSize;
        const auto part = std::size_t(std::min<std::uint64_t>(length, run->bytes.size() - within));
        std::memcpy(to, run->bytes.data() + within, part);
        to += part;
        offset += part;
        length -= part;
    }
    return {};
}

NSError DriveReader::readRun(std::uint64_t number, const Run **run) const
{
    const auto known =
        std::find_if(m_runs.begin(), m_runs.end(), [number](const Run &one) { return one.number == number; });
    if (known != m_runs.end()) {
        m_runs.splice(m_runs.begin(), m_runs, known);
    } else {
        const std::uint64_t first = number * runBlocks;
        const std::uint64_t count = std::min(runBlocks, m_blocks - first);
        Run read{number, std::vector<char>(std::size_t(count * blockSize))};
        if (NSError error = m_readBlocks(m_firstBlock + first, std::uint32_t(count), read.bytes.data()))
            return error;
        if (m_runs.size() == mostRuns)
            m_runs.pop_back();
        m_runs.push_front(std::move(read));
    }
    *run = &m_runs.front();
    return {};
}

} // namespace Tessaron
