#pragma once

#include <TessaronClasses/UnreadableFolder.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

namespace Tessaron
{

struct FSRef;

/// What a scan has met so far. The worker writes; any thread may read.
class ScanRecord
{
public:
    /// Forgets the scan before.
    void begin();

    void countFile() { countOneMore(m_files); }
    void countFolder() { countOneMore(m_folders); }
    void countError() { countOneMore(m_errors); }
    /// Notes a folder of which something is missing in the tree.
    void noteUnreadable(const FSRef &folder, int errnoValue);
    /// Notes that there was no memory to name the rest of what is missing; allocates nothing.
    void noteOutOfMemory() noexcept;

    [[nodiscard]] std::uint32_t files() const { return m_files.load(std::memory_order_relaxed); }
    [[nodiscard]] std::uint32_t folders() const { return m_folders.load(std::memory_order_relaxed); }
    [[nodiscard]] std::uint32_t errors() const { return m_errors.load(std::memory_order_relaxed); }
    [[nodiscard]] std::vector<UnreadableFolder> unreadableFolders() const;

private:
    static void countOneMore(std::atomic<std::uint32_t> &counter)
    {
        // Only the worker writes: no need for a locked increment.
        counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }

    std::atomic<std::uint32_t> m_files = 0;
    std::atomic<std::uint32_t> m_folders = 0;
    std::atomic<std::uint32_t> m_errors = 0;
    mutable std::mutex m_mutex; ///< guards the member below
    std::vector<UnreadableFolder> m_unreadable;
};

} // namespace Tessaron
