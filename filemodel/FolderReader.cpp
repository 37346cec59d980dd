#include "filemodel/FolderReader.h"

namespace Tessaron
{

namespace
{

/// Folders that may wait for the scan, each with a descriptor if it is long: more would not make it faster.
constexpr std::size_t mostFoldersAhead = 64;
/// Batches read ahead of a folder; the scan reads on by itself.
constexpr std::size_t mostBatchesAhead = 4;

} // namespace

FolderReader::FolderReader()
    : m_thread([this] { run(); })
{
}

FolderReader::~FolderReader()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        m_pending.clear();
    }
    m_hasWork.notify_one();
    m_thread.join();
}

void FolderReader::readAhead(const std::vector<FSRef> &folders)
{
    {
        const std::lock_guard lock(m_mutex);
        for (const FSRef &ref : folders) {
            auto job = std::make_shared<Job>();
            job->ref = ref;
            m_pending.push_back(job);
            m_jobs[ref.node] = std::move(job);
        }
    }
    m_hasWork.notify_one();
}

bool FolderReader::take(const FSRef &ref, Folder *folder)
{
    std::unique_lock lock(m_mutex);
    const auto found = m_jobs.find(ref.node);
    if (found == m_jobs.end())
        return false;
    const std::shared_ptr<Job> job = found->second;
    m_jobs.erase(found);
    if (job->state == State::Pending || job->ref != ref)
        return false;
    m_isRead.wait(lock, [&job] { return job->state == State::Read; });
    --m_readCount;
    m_hasWork.notify_one();
    *folder = std::move(job->folder);
    return true;
}

void FolderReader::run()
{
    while (const std::shared_ptr<Job> job = nextJob()) {
        Folder folder = read(job->ref);
        {
            const std::lock_guard lock(m_mutex);
            job->folder = std::move(folder);
            job->state = State::Read;
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
        const std::shared_ptr<Job> job = m_pending.back().lock();
        m_pending.pop_back();
        // One that the scan took meanwhile is gone.
        if (!job)
            continue;
        job->state = State::Reading;
        ++m_readCount;
        return job;
    }
}

FolderReader::Folder FolderReader::read(const FSRef &ref)
{
    Folder folder;
    OSStatus status = noErr;
    folder.iterator = FSOpenIterator(ref, &status);
    while (folder.iterator && status == noErr && folder.batches.size() < mostBatchesAhead) {
        Batch &batch = folder.batches.emplace_back();
        batch.entries.resize(batchSize);
        std::uint32_t actual = 0;
        status = FSGetCatalogInfoBulk(*folder.iterator, batchSize, &actual, whichInfo, batch.entries.data());
        batch.entries.resize(actual);
        batch.status = status;
    }
    return folder;
}

} // namespace Tessaron
