#include "platform/foundation/DelayedPerform.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSDistributedNotificationCenter.h"
#include "platform/foundation/PathBytes.h"
#include <TessaronClasses/KRAudioConverter.h>
#include <TessaronClasses/PathHelpers.h>

#include <QStandardPaths>

#include <algorithm>
#include <chrono>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Tessaron
{

namespace
{

constexpr qint64 folderIsMissing = 100020;
constexpr qsizetype mostOutputKept = 16384; ///< bytes; a hundred places of damage are described in 8 thousand
/// From 1970 to the reference date, the begin of 2001, both in UTC.
constexpr std::chrono::seconds referenceDate(978307200);
constexpr std::chrono::milliseconds timeBetweenFiles(10);

QString textOfFramework(const QString &key)
{
    return NSBundle::frameworkBundle()->localizedString(key, QString(), QStringLiteral("framework-localizable"));
}

/// A name for notifications that no file before this one had.
QString nameOfThisMoment()
{
    const std::chrono::duration<double> seconds = std::chrono::system_clock::now().time_since_epoch() - referenceDate;
    return QString::number(seconds.count(), 'g', 16);
}

/// The folder of a destination: that of the path, "." for a name alone.
QByteArray folderOfPath(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : path.first(std::max<qsizetype>(slash, 1));
}

bool isFolder(const QByteArray &path)
{
    struct stat status;
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// The encoder that the application brings with it, else the one of the system.
QString pathOfLame()
{
    const QString name = QStringLiteral("lame");
    const QString own = NSBundle::mainBundle()->pathForResource(name);
    return own.isEmpty() ? QStandardPaths::findExecutable(name) : own;
}

void keepEnd(QByteArray &kept, const QByteArray &data)
{
    kept += data;
    kept = kept.last(std::min(kept.size(), mostOutputKept));
}

NSError exportFailedError(const QString &path)
{
    const QString name =
        stringWithFileSystemRepresentation(lastPathComponent(fileSystemRepresentation(path)).toByteArray());
    QString suggestion = textOfFramework(QStringLiteral("audio export failed msg"));
    return NSError(NSOSStatusErrorDomain, 0,
                   {{NSFilePathErrorKey, path},
                    {NSLocalizedRecoverySuggestionErrorKey, suggestion.replace(QStringLiteral("%@"), name)},
                    {NSLocalizedDescriptionKey, textOfFramework(QStringLiteral("audio export failed"))}});
}

} // namespace

KRAudioConverterInterface::~KRAudioConverterInterface() = default;

KRAudioConverter::KRAudioConverter() = default;

KRAudioConverter::~KRAudioConverter()
{
    cancelPreviousPerformRequests(this);
    NSDistributedNotificationCenter::defaultCenter().removeObserver(&m_progressObserver);
}

bool KRAudioConverter::hasEncoder()
{
    return !pathOfLame().isEmpty();
}

std::shared_ptr<KRAudioConverter> KRAudioConverter::init()
{
    return std::shared_ptr<KRAudioConverter>(new KRAudioConverter);
}

void KRAudioConverter::convertAudioFiles(const std::optional<QStringList> &sources,
                                         const std::optional<QStringList> &toPaths, std::int32_t format)
{
    if (!sources || !toPaths || sources->size() != toPaths->size())
        return;
    m_queue = *sources;
    m_outPaths = *toPaths;
    m_outFormat = format;
    m_totalProgress = 0;
    m_aborted = false;
    m_fileCount = float(sources->size());
    m_isNextFileDue = false;
    convertNextFile();
}

void KRAudioConverter::abort()
{
    const std::shared_ptr<KRAudioConverter> self = shared_from_this();
    m_aborted = true;
    if (m_win)
        m_win->setCancelButtonEnabled(false);
    if (const std::shared_ptr<taskLauncher> task = std::exchange(m_task, nullptr)) {
        task->setDelegate({});
        if (task->isRunning())
            task->terminate();
    }
    m_queue.clear();
    m_outPaths.clear();
    m_isNextFileDue = false; // Between two files, the end would be told twice.
    convertNextFile();
}

QString KRAudioConverter::lastTaskMessage() const
{
    return QString::fromUtf8(m_taskOutput).trimmed();
}

QString KRAudioConverter::earlierTaskMessage() const
{
    return QString::fromUtf8(m_earlierTaskOutput).trimmed();
}

void KRAudioConverter::convertNextFile()
{
    m_oldProgress = 0;
    if (!std::exchange(m_hasLoadedInterface, true))
        loadInterface();
    if (m_queue.isEmpty()) {
        notifyAboutTheEnd();
        return;
    }
    const QByteArray folder = folderOfPath(fileSystemRepresentation(m_outPaths.first()));
    if (!isFolder(folder)) {
        notifyAboutError(NSError(NSPOSIXErrorDomain, folderIsMissing,
                                 {{NSFilePathErrorKey, stringWithFileSystemRepresentation(folder)}}));
        return;
    }
    m_currentOutPath = m_outPaths.first();
    m_uid = nameOfThisMoment();
    if (startConversion(m_queue.first()))
        notifyAboutError({});
    m_queue.removeFirst();
    m_outPaths.removeFirst();
}

void KRAudioConverter::loadInterface()
{
    if (m_interfaceLoader)
        m_win = m_interfaceLoader(*this);
    if (!m_sheetModal && m_useStandardUI)
        qWarning("error no sheet modal in audio converter");
    if (!m_win)
        return;
    if (m_sheetModal)
        m_win->beginSheet(*m_sheetModal);
    m_win->setIndeterminate(true);
    m_win->setCancelButtonEnabled(true);
}

/// True when it failed, as with the operations that follow. A code of no format starts nothing, which does not count.
bool KRAudioConverter::startConversion(const QString &source)
{
    switch (m_outFormat) {
    case waveFormat:
        return convertFile(source, m_currentOutPath, true);
    case aiffFormat:
        return convertFile(source, m_currentOutPath, false);
    case mp3FormatVariable128:
        return convertFile(source, m_currentOutPath, 128, true);
    case mp3FormatVariable160:
        return convertFile(source, m_currentOutPath, 160, true);
    case mp3FormatConstant128:
        return convertFile(source, m_currentOutPath, 128, false);
    case mp3FormatConstant160:
        return convertFile(source, m_currentOutPath, 160, false);
    default:
        return false;
    }
}

bool KRAudioConverter::convertFile(const QString &source, const QString &toPCM, bool wave)
{
    const QString application =
        NSBundle::mainBundle()->pathForResource(QStringLiteral("QrlMov2Wav"), QStringLiteral("app"));
    return launch({application + QStringLiteral("/Contents/MacOS/QrlMov2Wav"), source, toPCM,
                   wave ? QStringLiteral("wave") : QStringLiteral("aiff"), QStringLiteral("44100"), m_uid});
}

bool KRAudioConverter::convertFile(const QString &source, const QString &toMP3, int bitrate, bool useVBR)
{
    QVariantList arguments{NSBundle::mainBundle()->pathForResource(QStringLiteral("DummyRedbook")),
                           source,
                           QStringLiteral("-"),
                           m_uid,
                           QStringLiteral("|"),
                           pathOfLame()};
    for (const char *option : {"-s", "44.1", "--bitwidth", "16", "--signed", "--little-endian", "-r", "-h",
                               "--ignore-tag-errors", "--strictly-enforce-ISO", "-b", "96", "-t", "--preset"})
        arguments << QString::fromLatin1(option);
    if (!useVBR)
        arguments << QStringLiteral("cbr");
    arguments << bitrate << QStringLiteral("-") << toMP3;
    return launch(arguments);
}

bool KRAudioConverter::launch(const QVariantList &arguments)
{
    NSDistributedNotificationCenter &center = NSDistributedNotificationCenter::defaultCenter();
    center.removeObserver(&m_progressObserver);
    // Without a bus, the files are converted without their progress.
    static_cast<void>(
        center.addObserver(&m_progressObserver, m_uid, {}, [this](const NSDistributedNotification &notification) {
            dummyProgress(notification.userInfo);
        }));
    m_taskOutput.clear();
    m_earlierTaskOutput.clear();
    m_lastTaskEnds.clear();
    m_task = taskLauncher::init();
    taskLauncherDelegate delegate;
    delegate.taskLauncherDidReceiveNewData = [this](taskLauncher &, const QByteArray &data) {
        keepEnd(m_taskOutput, data);
    };
    delegate.taskLauncherDidReceiveErrorsOfEarlierTasks = [this](taskLauncher &, const QByteArray &data) {
        keepEnd(m_earlierTaskOutput, data);
    };
    delegate.taskLauncherTaskDidEnd = [this](taskLauncher &) { taskLauncherTaskDidEnd(); };
    m_task->setDelegate(delegate);
    m_task->dontConvertDataToString(true);
    return m_task->launchTasksWithArguments(arguments) != 0;
}

void KRAudioConverter::dummyProgress(const QVariantMap &userInfo)
{
    const QVariant progress = userInfo.value(QStringLiteral("progress"));
    if (!progress.isValid())
        return;
    const float fraction = progress.toFloat();
    m_totalProgress += fraction - m_oldProgress;
    m_oldProgress = fraction;
    notifyAboutProgress();
}

void KRAudioConverter::notifyAboutProgress()
{
    const float done = m_totalProgress / m_fileCount;
    if (!m_useStandardUI) {
        send(&KRAudioConverterDelegate::KRAudioConverterProgress, done);
        return;
    }
    if (!m_win)
        return;
    if (m_win->isIndeterminate())
        m_win->setIndeterminate(false);
    m_win->setDoubleValue(double(done));
}

/// How the tools ended does not matter here: the next file follows.
void KRAudioConverter::taskLauncherTaskDidEnd()
{
    const std::shared_ptr<taskLauncher> task = std::exchange(m_task, nullptr);
    m_lastTaskEnds = task->taskEnds();
    const auto endedWell = [](const taskLauncher::TaskEnd &end) { return end.hasEnded && end.status == 0; };
    if (std::all_of(m_lastTaskEnds.begin(), m_lastTaskEnds.end(), endedWell))
        m_currentOutPath.clear(); // It is whole: an abort or a failure of the next file leaves it alone.
    m_isNextFileDue = true;
    performLater(timeBetweenFiles, [this] {
        if (std::exchange(m_isNextFileDue, false))
            convertNextFile();
    });
}

void KRAudioConverter::notifyAboutTheEnd()
{
    endSheet();
    if (m_aborted)
        deleteCurrentOutput();
    m_currentOutPath.clear();
    const bool wasAborted = m_aborted;
    performLater(std::chrono::milliseconds(0), [this, wasAborted] {
        if (wasAborted)
            send(&KRAudioConverterDelegate::KRAudioConverterDidAbort);
        else
            send(&KRAudioConverterDelegate::KRAudioConverterDidEnd);
    });
}

void KRAudioConverter::notifyAboutError(const NSError &error)
{
    performLater(std::chrono::milliseconds(0), [this, error] { _realnotifyAboutError(error); });
}

void KRAudioConverter::_realnotifyAboutError(const NSError &given)
{
    endSheet();
    deleteCurrentOutput();
    const NSError error = given ? given : exportFailedError(m_currentOutPath);
    m_currentOutPath.clear();
    send(&KRAudioConverterDelegate::KRAudioConverterDidFailWithError, error);
}

/// A closed window does not come back: the next batch loads another one.
void KRAudioConverter::endSheet()
{
    if (!m_useStandardUI || !m_sheetModal || !m_win)
        return;
    m_hasLoadedInterface = false;
    m_win->endSheetAndClose();
    // Its cancel button may be what has led here.
    performLater(std::chrono::milliseconds(0),
                 [closed = std::shared_ptr<KRAudioConverterInterface>(std::move(m_win))] {});
}

void KRAudioConverter::deleteCurrentOutput()
{
    if (m_currentOutPath.isEmpty())
        return;
    const QByteArray path = fileSystemRepresentation(m_currentOutPath);
    ::unlink(path.constData());
    deleteDirectoryAtPathIfEmpty(stringWithFileSystemRepresentation(folderOfPath(path)));
}

void KRAudioConverter::performLater(std::chrono::milliseconds delay, std::function<void()> function)
{
    performAfterDelay(this, delay, [weakThis = weak_from_this(), function = std::move(function)] {
        // What is called may let go of the converter.
        if (const std::shared_ptr<KRAudioConverter> self = weakThis.lock())
            function();
    });
}

template <typename Callback, typename... Arguments>
void KRAudioConverter::send(Callback KRAudioConverterDelegate::*callback, const Arguments &...arguments)
{
    const std::shared_ptr<KRAudioConverter> self = shared_from_this();
    const Callback function = m_delegate.*callback; // The delegate may be replaced meanwhile.
    if (function && m_delegate.context.isAlive())
        function(*this, arguments...);
}

} // namespace Tessaron
