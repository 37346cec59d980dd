#include "platform/discrecording/burn/KernelCopy.h"

#include "platform/discrecording/burn/BurnErrors.h"
#include "platform/foundation/DescriptorIO.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

using Outcome = FileCopyResult::Outcome;

constexpr std::uint64_t smallestChunk = std::uint64_t(1) << 20;
constexpr std::uint64_t largestChunk = std::uint64_t(16) << 20;
constexpr std::uint64_t firstChunk = std::uint64_t(4) << 20;
constexpr std::size_t plainChunk = std::size_t(256) << 10; // stays in the processor's cache between read and write

class RangeCopier
{
public:
    RangeCopier(const FileRange &range, int to, const QString &outputName, const CopyProgress &progress)
        : m_from(range.descriptor)
        , m_to(to)
        , m_outputName(outputName)
        , m_progress(progress)
        , m_at(range.offset)
        , m_end(range.offset + range.length)
    {
    }

    FileCopyResult run()
    {
        const bool isSparse = hasHoles();
        while (m_at < m_end && m_result.outcome == Outcome::Copied) {
            const std::uint64_t dataBegin = isSparse ? seek(SEEK_DATA) : m_at;
            if (dataBegin > m_at)
                passHole(dataBegin - m_at);
            else
                copyData(isSparse ? std::max(seek(SEEK_HOLE), m_at + 1) : m_end);
        }
        return m_result;
    }

private:
    /// A file that occupies less than its length is looked through for holes; asking every file would cost more than it
    /// brings.
    [[nodiscard]] bool hasHoles() const
    {
        struct stat status;
        return ::fstat(m_from, &status) == 0 && std::uint64_t(status.st_blocks) * 512 < std::uint64_t(status.st_size);
    }

    /// Next position of the kind, inside the range; its end when there is none. Where the file system cannot tell, all
    /// is data.
    [[nodiscard]] std::uint64_t seek(int whence) const
    {
        const off_t found = ::lseek(m_from, off_t(m_at), whence);
        if (found < 0)
            return whence == SEEK_DATA && errno != ENXIO ? m_at : m_end;
        return std::clamp(std::uint64_t(found), m_at, m_end);
    }

    void failToWrite(int errnoValue)
    {
        m_result = {Outcome::WriteFailed, 0, burnOutputError(errnoValue, m_outputName)};
    }

    void advance(std::uint64_t bytes)
    {
        m_at += bytes;
        if (!m_progress(bytes))
            m_result.outcome = Outcome::Cancelled;
    }

    void passHole(std::uint64_t length)
    {
        const off_t position = ::lseek(m_to, 0, SEEK_CUR);
        struct stat status;
        const bool grows =
            position >= 0 && ::fstat(m_to, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= position;
        if (grows && ::ftruncate(m_to, position + off_t(length)) == 0 && ::lseek(m_to, off_t(length), SEEK_CUR) >= 0) {
            advance(length);
            return;
        }
        while (length > 0 && m_result.outcome == Outcome::Copied) {
            const std::uint64_t part = std::min(length, smallestChunk);
            if (const int failure = writeZeros(m_to, part)) {
                failToWrite(failure);
                return;
            }
            length -= part;
            advance(part);
        }
    }

    void copyData(std::uint64_t end)
    {
        while (m_at < end && m_result.outcome == Outcome::Copied) {
            if (m_isKernelRefusing || !copyInKernel(std::min(m_chunk, end - m_at)))
                copyPlainly(end - m_at);
        }
    }

    /// False when the kernel will not do it. Every failure counts as that: the plain copy then shows whether reading
    /// or writing is what fails, which the kernel's copy does not tell.
    bool copyInKernel(std::uint64_t length)
    {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point begin = Clock::now();
        auto from = off_t(m_at);
        const ssize_t copied = ::copy_file_range(m_from, &from, m_to, nullptr, std::size_t(length), 0);
        if (copied < 0 && errno == EINTR)
            return true;
        if (copied <= 0) {
            m_isKernelRefusing = true;
            return false;
        }
        adaptChunk(Clock::now() - begin);
        advance(std::uint64_t(copied));
        return true;
    }

    /// A cancel waits for one chunk, so chunks shrink on a slow disk.
    void adaptChunk(std::chrono::steady_clock::duration taken)
    {
        if (taken < std::chrono::milliseconds(10))
            m_chunk = std::min(m_chunk * 2, largestChunk);
        else if (taken > std::chrono::milliseconds(30))
            m_chunk = std::max(m_chunk / 2, smallestChunk);
    }

    void copyPlainly(std::uint64_t length)
    {
        if (!m_buffer)
            m_buffer = std::make_unique_for_overwrite<char[]>(plainChunk);
        const auto wanted = std::size_t(std::min<std::uint64_t>(length, plainChunk));
        const ssize_t got = ::pread(m_from, m_buffer.get(), wanted, off_t(m_at));
        if (got < 0 && errno == EINTR)
            return;
        if (got <= 0) {
            m_result = {got < 0 ? Outcome::ReadFailed : Outcome::EndedEarly, got < 0 ? errno : 0, {}};
            return;
        }
        if (const int failure = writeFully(m_to, m_buffer.get(), std::size_t(got)))
            failToWrite(failure);
        else
            advance(std::uint64_t(got));
    }

    const int m_from;
    const int m_to;
    const QString &m_outputName;
    const CopyProgress &m_progress;
    std::uint64_t m_at;
    const std::uint64_t m_end;
    std::uint64_t m_chunk = firstChunk;
    bool m_isKernelRefusing = false;
    std::unique_ptr<char[]> m_buffer;
    FileCopyResult m_result;
};

} // namespace

FileCopyResult copyToDescriptor(const FileRange &range, int to, const QString &outputName, const CopyProgress &progress)
{
    ::posix_fadvise(range.descriptor, off_t(range.offset), off_t(range.length), POSIX_FADV_SEQUENTIAL);
    return RangeCopier(range, to, outputName, progress).run();
}

} // namespace Tessaron
