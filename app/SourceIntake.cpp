#include "app/SourceIntake.h"

#include "app/AbandonedJob.h"
#include "app/Words.h"

#include <TessaronClasses/DiscJobErrors.h>
#include <TessaronClasses/DiscSources.h>
#include <TessaronClasses/KRFileReference.h>
#include <TessaronClasses/ScanJob.h>

#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/MessageTexts.h>

namespace Tessaron::Desktop
{

/// What the thread works on; the main thread reads it when the thread has ended.
struct SourceIntake::Work {
    QList<QByteArray> paths; ///< those that are left
    std::vector<QByteArray> names; ///< on the disc, one for each of these
    std::vector<ScannedSource> sources;
    std::shared_ptr<TakenIn> result = std::make_shared<TakenIn>();
    std::atomic<std::uint64_t> looked = 0;
};

SourceIntake::SourceIntake(QObject *parent)
    : QObject(parent)
{
}

SourceIntake::~SourceIntake() = default;

void SourceIntake::add(const QList<QByteArray> &paths, const DiscNode &folder)
{
    if (paths.isEmpty())
        return;
    Request request = {paths, {}};
    for (const DiscNode *node = &folder; node->parent; node = node->parent)
        request.folder.prepend(node->name);
    m_waiting << request;
    if (!m_isRunning)
        startNext();
}

std::uint64_t SourceIntake::found() const
{
    if (m_scan) {
        const DiscJobProgress progress = m_scan->progress();
        return progress.files + progress.folders;
    }
    return m_work ? m_work->looked.load() : 0;
}

void SourceIntake::cancel()
{
    if (!m_isRunning)
        return;
    m_waiting.clear();
    m_background.cancel();
    abandonJob(std::move(m_scan));
    m_work.reset();
    m_isRunning = false;
    Q_EMIT finished(std::make_shared<TakenIn>());
}

void SourceIntake::letGo()
{
    m_background.letGo();
    abandonJob(std::move(m_scan));
}

void SourceIntake::startNext()
{
    const Request request = m_waiting.takeFirst();
    m_isRunning = true;
    m_work = std::make_shared<Work>();
    m_work->paths = request.paths;
    m_work->result->folder = request.folder;
    Q_EMIT started();
    lookAtPaths();
}

/// A scan ends at the first path that is not there: such are told and left out before.
void SourceIntake::lookAtPaths()
{
    m_background.start(
        [work = m_work](const std::stop_token &stop) {
            QList<QByteArray> readable;
            for (const QByteArray &path : std::as_const(work->paths)) {
                if (stop.stop_requested())
                    return;
                const Result<std::vector<DiscSource>> found = discSourcesAtPaths({path});
                if (!found) {
                    work->result->problems << errorText(found.error());
                    continue;
                }
                readable << path;
                work->names.push_back(found->front().name);
                ++work->looked;
            }
            work->paths = readable;
        },
        [this] {
            if (m_work->paths.isEmpty())
                end();
            else
                scan();
        });
}

void SourceIntake::scan()
{
    m_scan = std::make_unique<ScanJob>(m_work->paths);
    connect(m_scan.get(), &DiscJob::progressed, this, &SourceIntake::progressed);
    connect(m_scan.get(), &ScanJob::finished, this, &SourceIntake::scanned);
    m_scan->start();
}

void SourceIntake::scanned(const ScanResult &result)
{
    ScanResult own = result;
    m_scan.release()->deleteLater();
    if (!own.error) {
        describe(own);
        return;
    }
    m_work->result->problems << errorText(own.error);
    // A folder that cannot be listed ends the scan of all.
    const qsizetype place = m_work->paths.indexOf(fileSystemRepresentation(own.error.filePath()));
    if (place < 0 || m_work->paths.size() == 1) {
        end();
        return;
    }
    m_work->paths.removeAt(place);
    m_work->names.erase(m_work->names.begin() + place);
    scan();
}

void SourceIntake::describe(const ScanResult &result)
{
    for (const UnreadableFolder &folder : result.unreadable)
        m_work->result->problems << tr("The folder %1 cannot be listed: %2")
                                        .arg(displayableText(quoted(folder.path)), systemText(folder.errnoValue));
    m_work->sources = result.sources;
    m_work->looked = 0;
    m_background.start(
        [work = m_work](const std::stop_token &stop) {
            for (std::size_t index = 0; index < work->sources.size(); ++index) {
                // The tree is this thread's alone from here on.
                std::shared_ptr<KRFileHierarchyItem> tree = std::move(work->sources[index].tree);
                const QString name = stringWithFileSystemRepresentation(work->names[index]);
                std::unique_ptr<DiscNode> node = describedTree(tree, stop, &work->looked);
                if (!node)
                    return;
                if (node->name != name) { // the path was that of a link
                    tree->fileReference()->setDesiredName(name);
                    node->name = name;
                }
                work->result->nodes.push_back(std::move(node));
            }
            work->sources.clear();
        },
        [this] { end(); });
}

void SourceIntake::end()
{
    const std::shared_ptr<TakenIn> result = m_work->result;
    m_work.reset();
    m_isRunning = false;
    Q_EMIT finished(result);
    if (!m_isRunning && !m_waiting.isEmpty())
        startNext();
}

} // namespace Tessaron::Desktop
