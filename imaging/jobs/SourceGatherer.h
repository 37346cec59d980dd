#pragma once

#include "imaging/jobs/BackgroundTask.h"
#include "platform/foundation/MainThread.h"
#include <TessaronClasses/DiscSources.h>
#include <TessaronClasses/UnreadableFolder.h>

#include <QByteArray>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Tessaron
{

class KRDirectoryScanner;
class KRFileHierarchyItem;

/// What was found at one source.
struct GatheredSource {
    std::shared_ptr<KRFileHierarchyItem> item;
    std::uint64_t files = 0;
    std::uint64_t folders = 0; ///< the source itself not counted
};

/// Turns sources into item trees, one after the other: a folder is scanned on a worker thread, a file is a tree of one
/// item; files in a row are looked at together, on one. On the main thread only; needs an event loop, of which it takes
/// as many events as there are folders, and rows of files between them. Destroying it stops and waits for its workers.
class SourceGatherer
{
public:
    explicit SourceGatherer(std::vector<DiscSource> sources);
    ~SourceGatherer();
    SourceGatherer(const SourceGatherer &) = delete;
    SourceGatherer &operator=(const SourceGatherer &) = delete;

    /// Starts; `whenEnded` is called once, never from inside start(), also after cancel(). Call it once only.
    void start(std::function<void()> whenEnded);
    /// Ends what runs as soon as it can.
    void cancel();
    [[nodiscard]] bool isCancelled() const { return m_isCancelled; }

    /// Counts so far, of all sources together.
    [[nodiscard]] std::uint64_t files() const;
    [[nodiscard]] std::uint64_t folders() const;

    /// Why a source could not be gathered, a lack of memory included. The null error when all went well, also when
    /// some folders below a source could not be listed: see unreadable().
    [[nodiscard]] const NSError &error() const { return m_error; }
    [[nodiscard]] const std::vector<UnreadableFolder> &unreadable() const { return m_unreadable; }
    [[nodiscard]] const std::vector<DiscSource> &sources() const { return m_sources; }
    /// One for each source, in order, once everything has ended well. The caller may take the items out.
    [[nodiscard]] std::vector<GatheredSource> &gathered() { return m_gathered; }

private:
    void continueLater();
    void gatherNext();
    void gatherFolder(const DiscSource &source);
    void gatherFiles();
    [[nodiscard]] NSError lookAtFiles(std::size_t first, const std::stop_token &stop);
    void judge(const KRFileHierarchyItem &root);
    void folderEnded(const std::shared_ptr<KRFileHierarchyItem> &item);
    void fail(const DiscSource &source, const QString &message);
    void end();

    const std::vector<DiscSource> m_sources;
    std::vector<GatheredSource> m_gathered;
    std::vector<UnreadableFolder> m_unreadable;
    std::function<void()> m_whenEnded;
    std::shared_ptr<KRDirectoryScanner> m_scanner;
    QByteArray m_scannedPath; ///< of the folder that is scanned, as the scanner names it
    std::vector<GatheredSource> m_row; ///< of files that are looked at: the worker's until it has ended
    std::atomic<std::uint64_t> m_filesInRow = 0; ///< of these, so far
    NSError m_error;
    bool m_isCancelled = false;
    std::shared_ptr<const void> m_life; ///< its end silences what is scheduled; goes before what it protects
    BackgroundTask m_task; ///< works on the members above, so it goes first
};

} // namespace Tessaron
