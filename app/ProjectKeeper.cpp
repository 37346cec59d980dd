#include "app/ProjectKeeper.h"

#include "app/AtomicFile.h"
#include "app/ProjectFile.h"

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

/// Held as long as a disc is open: what is not held was left behind.
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

void removeCopyAt(const QByteArray &path)
{
    (void)::unlink(path.constData());
    (void)::unlink((path + lockEnding).constData());
}

} // namespace

ProjectKeeper::ProjectKeeper(ProjectSubject &subject, QByteArray recoveryFolder, QObject *parent)
    : QObject(parent)
    , m_subject(subject)
    , m_recoveryFolder(std::move(recoveryFolder))
    , m_copyName(QUuid::createUuid().toByteArray(QUuid::WithoutBraces))
{
    m_copyDelay.setSingleShot(true);
    m_copyDelay.setInterval(copyDelay);
    connect(&m_copyDelay, &QTimer::timeout, this, &ProjectKeeper::keepCopy);
    // Also told where the index stays: a step may become a part of the last one.
    connect(&m_subject.undoStack(), &QUndoStack::indexChanged, this, [this] {
        m_isSavingOlder = true;
        if (!isSaved() && !m_copyDelay.isActive())
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
    if (m_saving.isRunning()) {
        whenEnded(discJobError(DiscJobErrorCode::InvalidOrder, tr("another project is being saved"),
                               tr("Try again in a moment.")));
        return;
    }
    m_isSavingOlder = false;
    const auto outcome = std::make_shared<NSError>();
    m_saving.start(
        [write = m_subject.writer(), kind = m_subject.kind(), path, outcome](const std::stop_token &stop) {
            const QJsonObject contents = write(folderOf(path), true, stop);
            *outcome =
                contents.isEmpty() ? discJobCancellation() : writeAtomically(path, bytesOfProject(contents, kind));
        },
        [this, path, outcome, whenEnded = std::move(whenEnded)] {
            if (!*outcome) {
                if (!m_isSavingOlder) {
                    m_subject.undoStack().setClean();
                    forgetCopy();
                }
                setPath(path);
            }
            whenEnded(*outcome);
        });
}

void ProjectKeeper::open(const QByteArray &path, const QJsonObject &project, WhenEnded whenEnded)
{
    const auto outcome = std::make_shared<Result<ProjectSubject::Replacement>>(discJobCancellation());
    m_opening.start([read = m_subject.reader(), path, project,
                     outcome](const std::stop_token &stop) { *outcome = read(project, folderOf(path), stop); },
                    [this, path, outcome, whenEnded = std::move(whenEnded)] {
                        if (!*outcome) {
                            whenEnded(notAProject(path, outcome->error().localizedDescription()));
                            return;
                        }
                        show(**outcome);
                        setPath(path);
                        forgetCopy();
                        whenEnded({});
                    });
}

void ProjectKeeper::show(const ProjectSubject::Replacement &replacement)
{
    m_missing = replacement();
    Q_EMIT opened();
}

void ProjectKeeper::close()
{
    m_missing.clear();
    m_subject.clear();
    forgetCopy();
    setPath({});
    Q_EMIT opened();
}

void ProjectKeeper::recover(std::function<void()> whenFound)
{
    struct Found {
        QByteArray path;
        Result<ProjectSubject::Replacement> replacement = discJobCancellation();
    };
    const auto found = std::make_shared<Found>();
    m_opening.start(
        [read = m_subject.reader(), folder = m_recoveryFolder, found](const std::stop_token &stop) {
            found->path = abandonedCopy(folder);
            if (found->path.isEmpty())
                return;
            const Result<QJsonObject> project = projectAt(found->path);
            if (project)
                found->replacement = read(*project, folder, stop);
        },
        [this, found, whenFound = std::move(whenFound)] {
            // Someone was faster than the disk: what was begun meanwhile is not replaced.
            if (!found->replacement || !m_subject.isEmpty())
                return;
            show(*found->replacement);
            m_subject.undoStack().resetClean();
            startCopy(found->path);
            whenFound();
        });
}

void ProjectKeeper::keepCopy()
{
    if (m_copyWork.isRunning())
        m_copyDelay.start();
    else
        startCopy({});
}

/// On a full disk the older copy is the only one that is left.
void ProjectKeeper::startCopy(const QByteArray &older)
{
    m_hasCopy = true;
    m_copyWork.start(
        [write = m_subject.writer(), kind = m_subject.kind(), folder = m_recoveryFolder, path = copyPath(), older,
         lock = m_lock](const std::stop_token &stop) {
            if (!*lock) {
                QDir().mkpath(stringWithFileSystemRepresentation(folder));
                *lock = lockedFile(path + lockEnding);
            }
            const QJsonObject contents = write(folder, false, stop);
            const bool isWritten = !contents.isEmpty() && !writeAtomically(path, bytesOfProject(contents, kind));
            if (isWritten && !older.isEmpty())
                removeCopyAt(older);
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
    m_copyWork.start(
        [path = copyPath(), lock = m_lock](const std::stop_token &) {
            removeCopyAt(path);
            lock->reset();
        },
        [] {});
}

void ProjectKeeper::letGo()
{
    m_opening.letGo();
    m_saving.letGo();
    if (m_hasCopy || !m_copyWork.isRunning()) {
        m_copyWork.letGo();
        return;
    }
    // What the user has dropped must not come back the next time.
    m_copyWork.finish();
    removeCopyAt(copyPath());
}

} // namespace Tessaron::Desktop
