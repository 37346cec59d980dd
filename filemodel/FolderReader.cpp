#include "filemodel/FolderReader.h"

#include "platform/coreservices/FSIterator.h"
#include "platform/foundation/DescriptorLimit.h"

#include <atomic>
#include <cerrno>
#include <new>

namespace Tessaron
{

namespace
{

/// Folders that may wait for the scan, each with a descriptor if it is long: more would not make it faster.
constexpr std::size_t mostFoldersAhead = 64;
/// Batches read ahead of a folder.
constexpr std::size_t mostBatchesAhead = 4;
/// Batches that the reader goes on in a long folder while the scan takes the ones before.
constexpr std::size_t batchesReadOn = 16;
/// Buffers that are kept for further batches.
constexpr std::size_t mostSpare = 64;

} // namespace

struct FolderReader::Job {
    enum class State { Pending, Reading, Read, Withdrawn };

    void read(FolderReader &reader);
    void readOrGiveUp(FolderReader &reader) noexcept;

    FSRef ref;
    std::atomic<bool> isAbandoned = false; ///< ends the reading after the bulk call that it is in
    std::size_t mostBatches = mostBatchesAhead;
    bool hasNoRoom = false; ///< there was no descriptor, or no memory, for the folder; the scan is to try again
    State state = State::Pending; ///< guarded by the reader's mutex; the folder is the thread's own while it reads
    Folder folder;
};

void FolderReader::Job::read(FolderReader &reader)
{
    OSStatus status = noErr;
    if (!folder.iterator)
        folder.iterator = openIteratorBelow(ref, nullptr, &folder.errnoValue);
    hasNoRoom = !folder.iterator && isLackOfDescriptors(folder.errnoValue);
    while (folder.iterator && status == noErr && folder.batches.size() < mostBatches && !isAbandoned) {
        Batch &batch = folder.batches.emplace_back();
        batch.entries = reader.roomForBatch();
        status = FSGetCatalogInfoBulk(*folder.iterator, batchSize, &batch.count, whichInfo, batch.entries.data());
        batch.status = status;
        batch.errnoValue = folder.iterator->errnoValue();
    }
    if (folder.iterator && status == errFSNoMoreItems)
        folder.iterator->releaseDescriptor();
}

/// On the reader's thread, where nothing may be thrown.
void FolderReader::Job::readOrGiveUp(FolderReader &reader) noexcept
{
    try {
        read(reader);
    } catch (const std::bad_alloc &) {
        hasNoRoom = true;
        folder = {};
    }
}

FolderReader::FolderReader()
{
    m_spare.reserve(mostSpare);
    m_thread = std::thread([this] { run(); });
}

FolderReader::~FolderReader()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        if (m_current)
            m_current->isAbandoned = true;
    }
    m_hasWork.notify_one();
    m_thread.join();
}

void FolderReader::readAhead(const std::vector<FSRef> &folders)
{
    {
        const std::lock_guard lock(m_mutex);
        forgetWhatIsTaken();
        for (const FSRef &ref : folders) {
            std::shared_ptr<Job> job(new Job); // not make_shared: weak pointers in m_pending would keep its memory
            job->ref = ref;
            // A file system that lists one name twice gets it read once.
            if (m_jobs.try_emplace(ref.node, job).second)
                m_pending.push_back(job);
        }
    }
    m_hasWork.notify_one();
}

FolderReader::Reading FolderReader::readOn(std::shared_ptr<FSIterator> iterator)
{
    auto job = std::make_shared<Job>();
    job->folder.iterator = std::move(iterator);
    job->mostBatches = batchesReadOn;
    {
        const std::lock_guard lock(m_mutex);
        m_pending.push_back(job);
    }
    m_hasWork.notify_one();
    return job;
}

std::vector<FolderReader::Batch> FolderReader::takeOn(const Reading &reading)
{
    std::unique_lock lock(m_mutex);
    if (reading->state == Job::State::Pending) {
        reading->state = Job::State::Withdrawn;
        lock.unlock();
        // A single one: the caller asks again at once.
        reading->mostBatches = 1;
        reading->read(*this);
    } else {
        m_isRead.wait(lock, [&reading] { return reading->state == Job::State::Read; });
        --m_readCount;
        m_hasWork.notify_one();
        if (reading->hasNoRoom)
            throw std::bad_alloc(); // with names that were taken from the iterator
    }
    return std::move(reading->folder.batches);
}

void FolderReader::abandon(const Reading &reading)
{
    std::unique_lock lock(m_mutex);
    if (reading->state == Job::State::Pending) {
        reading->state = Job::State::Withdrawn;
        return;
    }
    reading->isAbandoned = true;
    m_isRead.wait(lock, [&reading] { return reading->state == Job::State::Read; });
    --m_readCount;
}

bool FolderReader::take(const FSRef &ref, Folder *folder)
{
    std::unique_lock lock(m_mutex);
    const auto found = m_jobs.find(ref.node);
    if (found == m_jobs.end())
        return false;
    const std::shared_ptr<Job> job = found->second;
    m_jobs.erase(found);
    if (job->state == Job::State::Pending) {
        job->state = Job::State::Withdrawn;
        return false;
    }
    m_isRead.wait(lock, [&job] { return job->state == Job::State::Read; });
    --m_readCount;
    m_hasWork.notify_one();
    // Another folder of the name may have come between the two looks.
    if (job->ref != ref || job->hasNoRoom)
        return false;
    *folder = std::move(job->folder);
    return true;
}

void FolderReader::reuse(Batch &&batch)
{
    const std::lock_guard lock(m_mutex);
    if (m_spare.size() < mostSpare)
        m_spare.push_back(std::move(batch.entries));
}

std::vector<FSBulkEntry> FolderReader::roomForBatch()
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_spare.empty()) {
            std::vector<FSBulkEntry> room = std::move(m_spare.back());
            m_spare.pop_back();
            return room;
        }
    }
    return std::vector<FSBulkEntry>(batchSize);
}

void FolderReader::dropFolders()
{
    std::unique_lock lock(m_mutex);
    if (m_current)
        m_isRead.wait(lock, [current = m_current] { return current->state == Job::State::Read; });
    for (const auto &[node, job] : m_jobs) {
        m_readCount -= job->state == Job::State::Read ? 1 : 0;
        job->state = Job::State::Withdrawn;
    }
    m_jobs.clear();
    m_hasWork.notify_one();
}

/// Takes withdrawn jobs out of m_pending, which the thread does not do while it has read enough.
void FolderReader::forgetWhatIsTaken()
{
    constexpr std::size_t fewPending = 64;
    if (m_pending.size() > 2 * m_jobs.size() + fewPending)
        std::erase_if(m_pending, [](const auto &each) { return each.expired(); });
}

void FolderReader::run()
{
    while (const std::shared_ptr<Job> job = nextJob()) {
        job->readOrGiveUp(*this);
        {
            const std::lock_guard lock(m_mutex);
            job->state = Job::State::Read;
            m_current.reset();
        }
        m_isRead.notify_one();
    }
}

/// The next folder to read, null at the end.
std::shared_ptr<FolderReader::Job> FolderReader::nextJob()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_hasWork.wait(lock, [this] { return m_isEnding || (!m_pending.empty() && m_readCount < mostFoldersAhead); });
        if (m_isEnding)
            return nullptr;
        std::shared_ptr<Job> job = m_pending.back().lock();
        m_pending.pop_back();
        if (!job || job->state != Job::State::Pending)
            continue;
        job->state = Job::State::Reading;
        m_current = job;
        ++m_readCount;
        return job;
    }
}

} // namespace Tessaron
