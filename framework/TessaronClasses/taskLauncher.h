#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSError.h"

#include <QByteArray>
#include <QString>
#include <QVariantList>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace Tessaron
{

class taskLauncher;

// Names of the notifications that control launchers. Their object is the identifier of the launcher (uid()) in digits;
// they may be posted inside of the process (NSNotificationCenter) or on the bus of the session
// (NSDistributedNotificationCenter).
TESSARON_EXPORT extern const QString zelKillTasks; ///< calls terminate()
TESSARON_EXPORT extern const QString zelPauseTasks; ///< calls suspend()
TESSARON_EXPORT extern const QString zelResumeTasks; ///< calls resume()

/// What a launcher reports, on the thread that launched. Each function may be empty. A function may let go of the
/// launcher.
struct taskLauncherDelegate {
    CallbackContext context; ///< its end silences the rest
    /// What the last task wrote to standard output or to standard error, as text of UTF-8: a character that comes in
    /// two pieces arrives whole, what is not valid is U+FFFD.
    std::function<void(taskLauncher &launcher, const QString &string)> taskLauncherDidReceiveNewString;
    /// The same as it is, when dontConvertDataToString() was told so.
    std::function<void(taskLauncher &launcher, const QByteArray &data)> taskLauncherDidReceiveNewData;
    /// What the tasks before the last one write to standard error, as it is. Where this function is empty at the
    /// launch, they write to the standard error of this process.
    std::function<void(taskLauncher &launcher, const QByteArray &data)> taskLauncherDidReceiveErrorsOfEarlierTasks;
    /// Once for each launch: all output was delivered and the last task has ended, or the launcher was terminated.
    std::function<void(taskLauncher &launcher)> taskLauncherTaskDidEnd;
    std::function<void(taskLauncher &launcher)> taskLauncherTaskDidSuspend;
    std::function<void(taskLauncher &launcher)> taskLauncherTaskDidResume;
};

/// Runs programs as a pipeline of child processes and passes on what the last one writes. No shell is involved: each
/// argument reaches its program as it is. The tasks share a process group of their own, and no descriptors of this
/// process but the first task's standard input (a terminal excepted) and, unless the delegate hears of it, the standard
/// error of all but the last one.
///
/// Made, used and destroyed on one thread, whose event loop reads: what is written while it does not turn waits in the
/// pipe, and the task with it. Destroying a launcher kills the tasks that still run; the delegate hears nothing then.
class TESSARON_EXPORT taskLauncher final : public std::enable_shared_from_this<taskLauncher>
{
public:
    /// How one task of a pipeline ended.
    struct TaskEnd {
        bool hasEnded = false; ///< false where the task was still running when the pipeline ended, and was killed then
        bool isBySignal = false;
        int status = 0; ///< what it returned, or the number of the signal; -1 where the system does not tell
    };

    /// The status of a pipeline that was terminated.
    static constexpr std::int32_t terminatedStatus = -7654312;

    /// Never null.
    [[nodiscard]] static std::shared_ptr<taskLauncher> init();
    ~taskLauncher();
    taskLauncher(const taskLauncher &) = delete;
    taskLauncher &operator=(const taskLauncher &) = delete;

    /// Starts the programs that the arguments name, one stage between each two elements "|": the first element of a
    /// stage is the tool, the others are its arguments. Elements are texts (QString), file names as bytes (QByteArray)
    /// or numbers; a leading "~" becomes the home folder.
    ///
    /// A tool is the file at its path, or else the resource of that name of the framework's own bundle, which has the
    /// library's helper programs. PATH is not looked at.
    ///
    /// Returns 0 when all were started; 1 without arguments; 2 for a stage without words, save the last one, which is
    /// left out; 3 when a tool cannot be found; 4 when the system could not start it, or a pipeline still runs: then
    /// launchError() says why. Unless it returns 0, nothing runs.
    [[nodiscard]] int launchTasksWithArguments(const QVariantList &arguments);
    /// Why the last launch returned something else than 0; null after a 0.
    [[nodiscard]] NSError launchError() const;

    void setDelegate(const taskLauncherDelegate &delegate);
    [[nodiscard]] const taskLauncherDelegate &delegate() const;

    /// What the last task returned, or the number of the signal that ended it, once the pipeline has ended;
    /// `terminatedStatus` when terminate() ended it; -1 where the system does not tell.
    [[nodiscard]] std::int32_t terminationStatus() const;
    /// How each task ended, in the order of the pipeline; empty while it runs and before the first launch.
    [[nodiscard]] const std::vector<TaskEnd> &taskEnds() const;

    /// Resumes, kills the tasks that still run and reports the end, unless that was reported before. Waits a twentieth
    /// of a second at most for the tasks to be gone.
    void terminate();
    /// Stops all tasks, the last one first. Does nothing when no pipeline runs or when they are stopped already.
    void suspend();
    /// Lets them go on, the first one first. Does nothing unless they are suspended.
    void resume();

    [[nodiscard]] bool isSuspended() const;
    /// True from a launch with arguments on, one that could not start anything included, until the end was reported or
    /// terminate() was called.
    [[nodiscard]] bool isRunning() const;

    /// Whether output is passed on as it is, without making text of it. False at first.
    void dontConvertDataToString(bool doNotConvert);

    /// The identifier of this launcher: the time, in seconds since 1970, of the first call, so launchers that are first
    /// asked in one second have one identifier. From that call on the launcher follows the notifications for it. That
    /// may wait for the bus of the session; without one, only those from inside of the process are heard.
    [[nodiscard]] std::int32_t uid();

private:
    class Private;

    taskLauncher();

    const std::unique_ptr<Private> d;
};

} // namespace Tessaron
