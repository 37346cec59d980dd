#pragma once

#include "filemodel/DirectoryLister.h"
#include "platform/coreservices/FSRefAccess.h"
#include "platform/foundation/NSError.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryTree.h"
#include <TessaronClasses/KRDirectoryScanner.h>
#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/PathHelpers.h>

#include <QCoreApplication>
#include <QThread>

#include <cerrno>
#include <condition_variable>
#include <dirent.h>
#include <gtest/gtest.h>
#include <mutex>
#include <new>
#include <string>
#include <vector>

namespace Tessaron
{

using Names = std::vector<std::string>;

inline std::string nameOf(const KRFileHierarchyItem &item)
{
    return nameOfFSRef(*item.fileReference()->fileRef()).toByteArray().toStdString();
}

inline Names namesOf(const KRFileHierarchyItem &item)
{
    Names names;
    for (const std::shared_ptr<KRFileHierarchyItem> &child : item.items())
        names.push_back(nameOf(*child));
    return names;
}

inline Names systemListing(const QByteArray &path)
{
    Names names;
    DIR *const directory = ::opendir(path.constData());
    while (const dirent *const entry = ::readdir(directory)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.push_back(name);
    }
    ::closedir(directory);
    return names;
}

/// Stops the worker at chosen calls and counts what it asks for.
class TestLister final : public DirectoryLister
{
public:
    /// Fails the `call`-th bulk call (from 0) in the folder of that name with the status.
    void failIn(const QByteArray &folder, int call, OSStatus status)
    {
        m_failingFolder = folder;
        m_failingCall = call;
        m_status = status;
    }
    /// Refuses to open the folder of that name that many times.
    void refuse(const QByteArray &folder, int errnoValue, int times = 1)
    {
        m_refusedFolder = folder;
        m_refusal = errnoValue;
        m_refusals = times;
    }
    /// Runs out of memory at the `call`-th bulk call (from 0) in the folder of that name.
    void runOutOfMemoryIn(const QByteArray &folder, int call)
    {
        failIn(folder, call, memFullErr);
        m_throws = true;
    }
    /// Holds the worker before the `call`-th bulk call of all until letGo().
    void holdAt(int call) { m_holdAt = call; }
    void waitUntilHeld()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isHeld; });
    }
    void letGo()
    {
        const std::lock_guard lock(m_mutex);
        m_holdAt = -1;
        m_changed.notify_all();
    }

    void willOpen(const std::vector<FSRef> &folders) override
    {
        if (readsAhead)
            m_fileSystem->willOpen(folders);
    }

    std::unique_ptr<DirectoryListing> open(const FSRef &folder, DirectoryListing *, int *errnoValue) override
    {
        *errnoValue = m_refusedFolder == nameOfFSRef(folder) && m_refusals-- > 0 ? m_refusal : 0;
        if (*errnoValue != 0)
            return nullptr;
        // Each listing stands alone here, as if the one above were not known.
        std::unique_ptr<DirectoryListing> real = m_fileSystem->open(folder, nullptr, errnoValue);
        return real ? std::make_unique<Listing>(*this, std::move(real), nameOfFSRef(folder).toByteArray()) : nullptr;
    }

    void endScan() override { m_fileSystem->endScan(); }
    void giveBackDescriptors() override { ++timesGivenBack; }

    int timesGivenBack = 0; ///< calls of giveBackDescriptors()
    bool readsAhead = false; ///< folders are listed before the scan comes to them
    std::vector<std::string> calls; ///< "folder:entries" of each bulk call; read when the scan has ended

private:
    class Listing final : public DirectoryListing
    {
    public:
        Listing(TestLister &lister, std::unique_ptr<DirectoryListing> real, const QByteArray &name)
            : m_lister(lister)
            , m_real(std::move(real))
            , m_name(name)
        {
        }
        OSStatus next(std::uint32_t maximum, std::uint32_t *actual, std::uint32_t whichInfo,
                      FSBulkEntry *entries) override
        {
            m_lister.waitWhileHeld();
            OSStatus status = noErr;
            if (m_name == m_lister.m_failingFolder && m_call++ == m_lister.m_failingCall) {
                if (m_lister.m_throws)
                    throw std::bad_alloc();
                // As the system does: some entries, and then the failure.
                (void)m_real->next(2, actual, whichInfo, entries);
                status = m_lister.m_status;
            } else {
                status = m_real->next(maximum, actual, whichInfo, entries);
            }
            m_lister.calls.push_back(m_name.toStdString() + ':' + std::to_string(*actual));
            return status;
        }
        int errnoValue() const override { return m_call > m_lister.m_failingCall ? EIO : m_real->errnoValue(); }
        void rest() override { m_real->rest(); }

    private:
        TestLister &m_lister;
        const std::unique_ptr<DirectoryListing> m_real;
        const QByteArray m_name;
        int m_call = 0;
    };

    void waitWhileHeld()
    {
        std::unique_lock lock(m_mutex);
        if (m_calls++ != m_holdAt)
            return;
        m_isHeld = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_holdAt < 0; });
    }

    const std::shared_ptr<DirectoryLister> m_fileSystem = fileSystem();
    QByteArray m_failingFolder;
    int m_failingCall = 0;
    OSStatus m_status = noErr;
    bool m_throws = false;
    QByteArray m_refusedFolder;
    int m_refusal = 0;
    int m_refusals = 0;
    std::mutex m_mutex; ///< guards the members below
    std::condition_variable m_changed;
    int m_holdAt = -1;
    int m_calls = 0;
    bool m_isHeld = false;
};

/// A tree to scan, and what the delegate hears of the scan, in order.
class DirectoryScannerFixture : public ::testing::Test
{
protected:
    void listenTo(const std::shared_ptr<KRDirectoryScanner> &scanner)
    {
        KRDirectoryScannerDelegate delegate;
        delegate.directoryScannerReportedError = [this](KRDirectoryScanner &, const NSError &error) {
            events.push_back("error " + std::to_string(error.code()) + ' ' + error.filePath().toStdString());
            errors.push_back(error);
        };
        delegate.directoryScannerScanDidFinishWithHierarchyItem =
            [this](KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &item) { ended("finished", item); };
        delegate.directoryScannerScanDidCancelWithHierarchyItem =
            [this](KRDirectoryScanner &, const std::shared_ptr<KRFileHierarchyItem> &item) {
                ended("cancelled", item);
            };
        scanner->setDelegate(delegate);
    }

    std::shared_ptr<KRDirectoryScanner> scannerFor(const QByteArray &relative)
    {
        std::shared_ptr<KRDirectoryScanner> scanner =
            KRDirectoryScanner::directoryScannerWithPath(tree.pathText(relative));
        listenTo(scanner);
        return scanner;
    }

    std::shared_ptr<KRDirectoryScanner> scannerFor(const QByteArray &relative,
                                                   const std::shared_ptr<TestLister> &lister)
    {
        std::shared_ptr<KRDirectoryScanner> scanner =
            KRDirectoryScanner::directoryScannerWithFSRef(fsRef(tree.pathText(relative)), lister);
        listenTo(scanner);
        return scanner;
    }

    /// Scans to the end; the root item.
    std::shared_ptr<KRFileHierarchyItem> scan(const std::shared_ptr<KRDirectoryScanner> &scanner)
    {
        root.reset();
        EXPECT_TRUE(scanner->startDirectoryScan());
        EXPECT_TRUE(Testing::runEventLoopUntil([this] { return root != nullptr; }));
        return root;
    }

    /// The worker leaves the scan before it schedules its report.
    void waitForTheEnd() const
    {
        ASSERT_TRUE(Testing::runEventLoopUntil([this] { return root != nullptr; }));
    }

    void makeFiles(const QByteArray &folder, int count) const
    {
        for (int number = 0; number < count; ++number)
            tree.makeFile(folder + '/' + QByteArray::number(number));
    }

    const Testing::TemporaryTree tree;
    Names events;
    std::vector<NSError> errors;
    std::shared_ptr<KRFileHierarchyItem> root;

private:
    void ended(const char *how, const std::shared_ptr<KRFileHierarchyItem> &item)
    {
        EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
        events.emplace_back(how);
        root = item;
    }
};

} // namespace Tessaron
