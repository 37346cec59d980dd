#include "app/ProjectKeeper.h"

#include "app/AtomicFile.h"
#include "app/ProjectFile.h"
#include "app/Words.h"

#include <TessaronClasses/DiscJobErrors.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <fcntl.h>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/UniqueDescriptor.h>
#include <sys/file.h>
#include <unistd.h>

namespace Tessaron::Desktop
{

namespace
{

using namespace std::chrono_literals;

constexpr auto copyDelay = 5s;
const QByteArray copyEnding = QByteArrayLiteral(".tessaron");
const QByteArray lockEnding = QByteArrayLiteral(".lock");

/// Held by a program as long as it lives: what is not held was left behind.
UniqueDescriptor lockedFile(const QByteArray &path)
{
    UniqueDescriptor file(::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (file && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        file.reset();
    return file;
}

/// The newest copy that no living program holds; empty for none. Its lock goes with it.
QByteArray abandonedCopy(const QByteArray &folder)
{
    QDir directory(stringWithFileSystemRepresentation(folder));
    const QFileInfoList copies = directory.entryInfoList({QStringLiteral("*.tessaron")}, QDir::Files, QDir::Time);
    for (const QFileInfo &copy : copies) {
        QByteArray path = fileSystemRepresentation(copy.filePath());
        if (lockedFile(path + lockEnding))
            return path;
    }
    return {};
}

} // namespace

ProjectKeeper::ProjectKeeper(DiscDocument &document, QByteArray recoveryFolder, QObject *parent)
    : QObject(parent)
    , m_document(document)
    , m_recoveryFolder(std::move(recoveryFolder))
    , m_copyName(QUuid::createUuid().toByteArray(QUuid::WithoutBraces))
    , m_mediumKey(QStringLiteral("dvd"))
{
    m_copyDelay.setSingleShot(true);
    m_copyDelay.setInterval(copyDelay);
    connect(&m_copyDelay, &QTimer::timeout, this, &ProjectKeeper::keepCopy);
    connect(&m_document.undoStack(), &QUndoStack::indexChanged, this, [this] {
        if (!m_document.undoStack().isClean() && !m_copyDelay.isActive())
            m_copyDelay.start();
    });
}

ProjectKeeper::~ProjectKeeper() = default;

QByteArray ProjectKeeper::copyPath() const
{
    return m_recoveryFolder + '/' + m_copyName + copyEnding;
}

void ProjectKeeper::setPath(const QByteArray &path)
{
    m_path = path;
    Q_EMIT pathChanged();
}

void ProjectKeeper::save(const QByteArray &path, WhenEnded whenEnded)
{
    if (m_work.isRunning()) {
        whenEnded(discJobError(DiscJobErrorCode::InvalidOrder, tr("another project is being saved or opened"),
                               tr("Try again in a moment.")));
        return;
    }
    const ProjectContents contents(m_document.model().root(), m_document.volumeName(), m_mediumKey);
    const int savedIndex = m_document.undoStack().index();
    const auto outcome = std::make_shared<NSError>();
    m_work.start(
        [contents, path, outcome](const std::stop_token &stop) {
            const QByteArray json = contents.json(folderOf(path), true, stop);
            *outcome = json.isEmpty() ? discJobCancellation() : writeAtomically(path, json);
        },
        [this, path, outcome, savedIndex, whenEnded = std::move(whenEnded)] {
            if (!*outcome) {
                if (m_document.undoStack().index() == savedIndex) {
                    m_document.undoStack().setClean();
                    forgetCopy();
                }
                setPath(path);
            }
            whenEnded(*outcome);
        });
}

void ProjectKeeper::read(const QByteArray &path,
                         std::function<void(const NSError &, const std::shared_ptr<DiscProject> &)> then)
{
    const auto outcome = std::make_shared<std::pair<NSError, std::shared_ptr<DiscProject>>>();
    m_work.start(
        [path, outcome](const std::stop_token &stop) {
            Result<std::shared_ptr<DiscProject>> found = readProject(path, stop);
            if (found)
                outcome->second = *found;
            outcome->first = found.error();
        },
        [outcome, then = std::move(then)] { then(outcome->first, outcome->second); });
}

void ProjectKeeper::open(const QByteArray &path, WhenEnded whenEnded)
{
    read(path,
         [this, path, whenEnded = std::move(whenEnded)](const NSError &error,
                                                        const std::shared_ptr<DiscProject> &project) {
             if (!error) {
                 show(*project);
                 setPath(path);
                 forgetCopy();
             }
             whenEnded(error);
         });
}

void ProjectKeeper::show(DiscProject &project)
{
    m_missing.clear();
    std::vector<const DiscNode *> waiting = {project.root.get()};
    while (!waiting.empty()) {
        const DiscNode *const node = waiting.back();
        waiting.pop_back();
        if (node->isMissing)
            m_missing << node->discPath();
        for (auto child = node->children.rbegin(); child != node->children.rend(); ++child)
            waiting.push_back(child->get());
    }
    m_mediumKey = project.mediumKey;
    m_document.replace(std::move(project.root), project.volumeName);
    Q_EMIT opened();
}

void ProjectKeeper::close()
{
    m_missing.clear();
    m_document.replace(virtualFolderNode(QStringLiteral("disc")), untitledDiscName());
    forgetCopy();
    setPath({});
    Q_EMIT opened();
}

void ProjectKeeper::recover(std::function<void()> whenFound)
{
    const auto outcome = std::make_shared<std::pair<QByteArray, std::shared_ptr<DiscProject>>>();
    m_work.start(
        [folder = m_recoveryFolder, outcome](const std::stop_token &stop) {
            outcome->first = abandonedCopy(folder);
            if (outcome->first.isEmpty())
                return;
            Result<std::shared_ptr<DiscProject>> found = readProject(outcome->first, stop);
            if (found)
                outcome->second = *found;
        },
        [this, outcome, whenFound = std::move(whenFound)] {
            // Someone was faster than the disk: what was begun meanwhile is not replaced.
            if (!outcome->second || !m_document.model().root().children.empty())
                return;
            show(*outcome->second);
            m_document.undoStack().resetClean();
            keepCopy();
            (void)::unlink(outcome->first.constData());
            (void)::unlink((outcome->first + lockEnding).constData());
            whenFound();
        });
}

void ProjectKeeper::keepCopy()
{
    if (m_copyWork.isRunning()) {
        m_copyDelay.start();
        return;
    }
    m_hasCopy = true;
    const ProjectContents contents(m_document.model().root(), m_document.volumeName(), m_mediumKey);
    m_copyWork.start(
        [contents, folder = m_recoveryFolder, path = copyPath()](const std::stop_token &stop) {
            // Held to the end of the process, for each copy once.
            static const bool isLocked = [&] {
                QDir().mkpath(stringWithFileSystemRepresentation(folder));
                return lockedFile(path + lockEnding).release() >= 0;
            }();
            (void)isLocked;
            const QByteArray json = contents.json(folder, false, stop);
            if (!json.isEmpty())
                (void)writeAtomically(path, json);
        },
        [this] {
            if (!m_hasCopy)
                removeCopy(); // forgotten meanwhile
        });
}

void ProjectKeeper::forgetCopy()
{
    m_copyDelay.stop();
    if (!m_hasCopy)
        return;
    m_hasCopy = false;
    if (!m_copyWork.isRunning())
        removeCopy();
}

void ProjectKeeper::removeCopy()
{
    m_copyWork.start([path = copyPath()](const std::stop_token &) { (void)::unlink(path.constData()); }, [] {});
}

void ProjectKeeper::letGo()
{
    m_work.letGo();
    m_copyWork.letGo();
}

} // namespace Tessaron::Desktop
