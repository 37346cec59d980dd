#include "media/ChildTask.h"
#include "media/TaskControl.h"
#include "media/TaskStages.h"
#include "media/TaskStream.h"
#include "media/Utf8Pieces.h"
#include "platform/foundation/FileSystemRepresentation.h"
#include "platform/foundation/MessageTexts.h"
#include <TessaronClasses/taskLauncher.h>

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <unistd.h>

namespace Tessaron
{

namespace
{

constexpr int launchImpossible = 4;
/// A task that has written its last byte ends a moment after the one that has read it: it gets this long to say how.
constexpr std::chrono::milliseconds graceAtEnd(20);
/// So that tasks that were killed are gone when terminate() returns, and make no files any more. One that the system
/// keeps longer, as on a disk that does not answer, ends later.
constexpr std::chrono::milliseconds graceAtKill(50);

struct Pipe {
    UniqueDescriptor readEnd;
    UniqueDescriptor writeEnd;
};

/// Between two tasks. What a pipe holds by itself, 64 KiB, a fast encoder has eaten in 6 ms: less than a decoder may
/// have to wait for a processor when all are at work, and then the encoder stands still, too.
constexpr int bytesBetweenTasks = 1 << 20;

/// None of its ends is a standard descriptor, even where this process has closed its own: a child's end would take the
/// place of another one then.
Result<Pipe> makePipe()
{
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return NSError::errorWithErrno(errno, {});
    UniqueDescriptor given[2] = {UniqueDescriptor(ends[0]), UniqueDescriptor(ends[1])};
    for (UniqueDescriptor &end : given) {
        if (end.get() <= STDERR_FILENO)
            end = UniqueDescriptor(::fcntl(end.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        if (!end)
            return NSError::errorWithErrno(errno, {});
    }
    return Pipe{std::move(given[0]), std::move(given[1])};
}

NSError launchFailure(OSErr status, const QString &description, const QString &suggestion, const QByteArray &path = {})
{
    QVariantMap information{{NSLocalizedDescriptionKey, description},
                            {NSLocalizedRecoverySuggestionErrorKey, suggestion}};
    if (!path.isEmpty())
        information.insert(NSFilePathErrorKey, stringWithFileSystemRepresentation(path));
    return NSError(NSOSStatusErrorDomain, status, information);
}

NSError errorOfStages(const TaskStages &stages)
{
    switch (stages.status) {
    case TaskStages::Status::Complete:
        break;
    case TaskStages::Status::NoArguments:
        return launchFailure(paramErr, QStringLiteral("no program was named"), QStringLiteral("Name one."));
    case TaskStages::Status::EmptyStage:
        return launchFailure(paramErr, QStringLiteral("a stage of the pipeline names no program"),
                             QStringLiteral("Name a program before each \"|\"."));
    case TaskStages::Status::ToolNotFound:
        return launchFailure(fnfErr, QStringLiteral("the program %1 cannot be found").arg(quoted(stages.missingTool)),
                             QStringLiteral("Name it with its full path."), stages.missingTool);
    }
    return {};
}

} // namespace

class taskLauncher::Private
{
public:
    explicit Private(taskLauncher &launcher)
        : owner(launcher)
    {
    }

    [[nodiscard]] NSError launch(const TaskStages &stages);
    [[nodiscard]] NSError launchStages(const TaskStages &stages, Pipe &outputPipe, int errorsOfLast,
                                       int errorsOfOthers);
    [[nodiscard]] Result<Pipe> launchStage(const TaskStage &stage, UniqueDescriptor input, int standardError);
    void listen(UniqueDescriptor fromOutput, UniqueDescriptor fromErrors, UniqueDescriptor fromEarlierErrors);
    void received(const QByteArray &data, Utf8Pieces &pieces);
    void receivedFromEarlierTasks(const QByteArray &data);
    void lookForEnd();
    void waitForTasks(std::chrono::milliseconds atMost);
    void killTasks();
    void forgetTasks();

    template <typename Callback, typename... Arguments>
    void send(Callback taskLauncherDelegate::*callback, const Arguments &...arguments)
    {
        if (!delegate.context.isAlive())
            return;
        const Callback function = delegate.*callback; // The delegate may be replaced meanwhile.
        if (function)
            function(owner, arguments...);
    }

    taskLauncher &owner;
    taskLauncherDelegate delegate;
    NSError launchError;
    std::vector<ChildTask> tasks; ///< of the running pipeline, in its order
    std::vector<TaskEnd> ends;
    std::unique_ptr<TaskStream> errors;
    std::unique_ptr<TaskStream> output;
    std::unique_ptr<TaskStream> earlierErrors; ///< null unless the delegate wants them
    Utf8Pieces errorText;
    Utf8Pieces outputText;
    std::unique_ptr<QSocketNotifier> lastTaskEnd;
    bool alreadyNotified = false;
    bool isRunning = false;
    bool isSuspended = false;
    bool hasEndedNormally = false;
    bool convertsToText = true;
    std::int32_t terminationStatus = 0;
    std::int32_t uid = 0; ///< 0 until it was asked for
    std::unique_ptr<TaskControl> control;
};

taskLauncher::taskLauncher()
    : d(std::make_unique<Private>(*this))
{
}

taskLauncher::~taskLauncher()
{
    d->killTasks();
    d->forgetTasks();
}

std::shared_ptr<taskLauncher> taskLauncher::init()
{
    return std::shared_ptr<taskLauncher>(new taskLauncher);
}

int taskLauncher::launchTasksWithArguments(const QVariantList &arguments)
{
    const TaskStages stages = taskStages(arguments);
    d->launchError = errorOfStages(stages);
    if (stages.status == TaskStages::Status::NoArguments)
        return int(stages.status);
    if (!d->tasks.empty()) {
        d->launchError = launchFailure(paramErr, QStringLiteral("a pipeline of this launcher still runs"),
                                       QStringLiteral("Wait for its end, or terminate it."));
        return launchImpossible;
    }
    d->alreadyNotified = false;
    d->isSuspended = false;
    d->hasEndedNormally = false;
    d->isRunning = true; // Also when nothing can be started: terminate() alone clears it.
    d->terminationStatus = 0;
    d->ends.clear();
    if (stages.status != TaskStages::Status::Complete)
        return int(stages.status);
    d->launchError = d->launch(stages);
    return d->launchError ? launchImpossible : 0;
}

NSError taskLauncher::Private::launch(const TaskStages &stages)
{
    if (!QAbstractEventDispatcher::instance())
        return launchFailure(paramErr, QStringLiteral("this thread has no event loop to read what programs write"),
                             QStringLiteral("Launch on the main thread or in a QThread."));
    Result<Pipe> errorPipe = makePipe();
    if (!errorPipe)
        return errorPipe.error();
    Pipe earlierErrorPipe, outputPipe;
    if (stages.stages.size() > 1 && delegate.taskLauncherDidReceiveErrorsOfEarlierTasks) {
        Result<Pipe> pipe = makePipe();
        if (!pipe)
            return pipe.error();
        earlierErrorPipe = *std::move(pipe);
    }
    NSError error = launchStages(stages, outputPipe, errorPipe->writeEnd.get(), earlierErrorPipe.writeEnd.get());
    if (error) {
        killTasks();
        forgetTasks();
        return error;
    }
    listen(std::move(outputPipe.readEnd), std::move(errorPipe->readEnd), std::move(earlierErrorPipe.readEnd));
    return {};
}

/// -1 for errors stands for those of this process. In the end, the pipe is that of the last stage.
NSError taskLauncher::Private::launchStages(const TaskStages &stages, Pipe &outputPipe, int errorsOfLast,
                                            int errorsOfOthers)
{
    for (const TaskStage &stage : stages.stages) {
        const bool isLast = &stage == &stages.stages.back();
        Result<Pipe> pipe = launchStage(stage, std::move(outputPipe.readEnd), isLast ? errorsOfLast : errorsOfOthers);
        if (!pipe)
            return pipe.error();
        // Where the system gives this user no more room, the pipe works as it is.
        if (!isLast)
            ::fcntl(pipe->readEnd.get(), F_SETPIPE_SZ, bytesBetweenTasks);
        outputPipe = *std::move(pipe);
    }
    return {};
}

/// The pipe that the stage writes to; its end for writing is closed here already.
Result<Pipe> taskLauncher::Private::launchStage(const TaskStage &stage, UniqueDescriptor input, int standardError)
{
    Result<Pipe> pipe = makePipe();
    if (!pipe)
        return pipe.error();
    ChildTask::Order order;
    order.arguments = stage;
    order.standardInput = input.get();
    order.standardOutput = pipe->writeEnd.get();
    order.standardError = standardError;
    order.processGroup = tasks.empty() ? 0 : tasks.front().processIdentifier();
    Result<ChildTask> task = ChildTask::launch(order);
    if (!task)
        return task.error();
    tasks.push_back(*std::move(task));
    pipe->writeEnd.reset();
    return pipe;
}

void taskLauncher::Private::listen(UniqueDescriptor fromOutput, UniqueDescriptor fromErrors,
                                   UniqueDescriptor fromEarlierErrors)
{
    errorText = outputText = {};
    errors = std::make_unique<TaskStream>(std::move(fromErrors),
                                          [this](const QByteArray &data) { received(data, errorText); });
    output = std::make_unique<TaskStream>(std::move(fromOutput),
                                          [this](const QByteArray &data) { received(data, outputText); });
    if (fromEarlierErrors)
        earlierErrors = std::make_unique<TaskStream>(
            std::move(fromEarlierErrors), [this](const QByteArray &data) { receivedFromEarlierTasks(data); });
    lastTaskEnd = std::make_unique<QSocketNotifier>(tasks.back().descriptor(), QSocketNotifier::Read);
    QObject::connect(lastTaskEnd.get(), &QSocketNotifier::activated, lastTaskEnd.get(), [this] {
        lastTaskEnd->setEnabled(false); // It would come again and again while output is still to be read.
        lookForEnd();
    });
}

void taskLauncher::Private::receivedFromEarlierTasks(const QByteArray &data)
{
    const std::shared_ptr<taskLauncher> self = owner.shared_from_this();
    if (!data.isEmpty())
        send(&taskLauncherDelegate::taskLauncherDidReceiveErrorsOfEarlierTasks, data);
}

void taskLauncher::Private::received(const QByteArray &data, Utf8Pieces &pieces)
{
    // The delegate may let go of the launcher.
    const std::shared_ptr<taskLauncher> self = owner.shared_from_this();
    if (convertsToText) {
        const QString text = data.isEmpty() ? pieces.finish() : pieces.add(data);
        if (!text.isEmpty())
            send(&taskLauncherDelegate::taskLauncherDidReceiveNewString, text);
    } else {
        const QByteArray rest = pieces.takeRest();
        if (const QByteArray bytes = rest.isEmpty() ? data : rest + data; !bytes.isEmpty())
            send(&taskLauncherDelegate::taskLauncherDidReceiveNewData, bytes);
    }
    if (data.isEmpty())
        lookForEnd();
}

/// Which of the two streams ends first, and whether the task ends before them, says nothing about what is still to
/// come: all three must have ended.
void taskLauncher::Private::lookForEnd()
{
    if (tasks.empty() || !errors->hasEnded() || !output->hasEnded())
        return;
    const std::optional<ChildTask::End> end = tasks.back().end();
    if (!end)
        return;
    const std::shared_ptr<taskLauncher> self = owner.shared_from_this();
    hasEndedNormally = true;
    terminationStatus = end->status;
    waitForTasks(graceAtEnd);
    // A task before the last one may outlive it, so the end of this stream is not waited for.
    if (earlierErrors)
        earlierErrors->readWhatIsThere();
    if (!tasks.empty()) // The delegate may have terminated it just now.
        owner.terminate();
}

void taskLauncher::Private::waitForTasks(std::chrono::milliseconds atMost)
{
    const auto deadline = std::chrono::steady_clock::now() + atMost;
    for (ChildTask &task : tasks) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd end = {task.descriptor(), POLLIN, 0};
        if (!task.end())
            ::poll(&end, 1, int(std::max<std::int64_t>(left.count(), 0)));
    }
}

void taskLauncher::Private::killTasks()
{
    for (ChildTask &task : tasks)
        task.sendSignal(SIGKILL);
    // What the tasks have started themselves may have been meant to stay when they ended by themselves.
    if (!hasEndedNormally && !tasks.empty())
        tasks.front().sendSignalToGroup(SIGKILL);
    waitForTasks(graceAtKill);
}

void taskLauncher::Private::forgetTasks()
{
    if (lastTaskEnd) {
        lastTaskEnd->setEnabled(false);
        lastTaskEnd->disconnect();
        lastTaskEnd.release()->deleteLater(); // It may be sending.
    }
    errors.reset();
    output.reset();
    earlierErrors.reset();
    for (ChildTask &task : tasks)
        ChildTask::abandon(std::move(task));
    tasks.clear();
}

void taskLauncher::terminate()
{
    const std::shared_ptr<taskLauncher> self = shared_from_this();
    d->isRunning = false;
    resume(); // A stopped process cannot die cleanly.
    if (!d->tasks.empty()) { // The delegate may have terminated it just now.
        d->ends.clear();
        for (ChildTask &task : d->tasks) {
            const std::optional<ChildTask::End> end = task.end();
            d->ends.push_back(end ? TaskEnd{true, end->isBySignal, end->status} : TaskEnd());
        }
        d->killTasks();
        d->forgetTasks();
    }
    if (!d->hasEndedNormally)
        d->terminationStatus = terminatedStatus;
    if (!std::exchange(d->alreadyNotified, true))
        d->send(&taskLauncherDelegate::taskLauncherTaskDidEnd);
}

void taskLauncher::suspend()
{
    if (d->tasks.empty() || d->isSuspended)
        return;
    const std::shared_ptr<taskLauncher> self = shared_from_this();
    for (auto task = d->tasks.rbegin(); task != d->tasks.rend(); ++task)
        task->sendSignal(SIGSTOP);
    d->tasks.front().sendSignalToGroup(SIGSTOP);
    d->isSuspended = true;
    d->send(&taskLauncherDelegate::taskLauncherTaskDidSuspend);
}

void taskLauncher::resume()
{
    if (!d->isSuspended)
        return;
    const std::shared_ptr<taskLauncher> self = shared_from_this();
    for (ChildTask &task : d->tasks)
        task.sendSignal(SIGCONT);
    if (!d->tasks.empty())
        d->tasks.front().sendSignalToGroup(SIGCONT);
    d->isSuspended = false;
    d->send(&taskLauncherDelegate::taskLauncherTaskDidResume);
}

NSError taskLauncher::launchError() const
{
    return d->launchError;
}

void taskLauncher::setDelegate(const taskLauncherDelegate &delegate)
{
    d->delegate = delegate;
}

const taskLauncherDelegate &taskLauncher::delegate() const
{
    return d->delegate;
}

std::int32_t taskLauncher::terminationStatus() const
{
    return d->terminationStatus;
}

const std::vector<taskLauncher::TaskEnd> &taskLauncher::taskEnds() const
{
    return d->ends;
}

bool taskLauncher::isSuspended() const
{
    return d->isSuspended;
}

bool taskLauncher::isRunning() const
{
    return d->isRunning;
}

void taskLauncher::dontConvertDataToString(bool doNotConvert)
{
    d->convertsToText = !doNotConvert;
}

std::int32_t taskLauncher::uid()
{
    if (d->uid != 0)
        return d->uid;
    d->uid = std::int32_t(std::time(nullptr));
    const auto calling = [weakThis = weak_from_this()](void (taskLauncher::*operation)()) {
        return [weakThis, operation] {
            if (const std::shared_ptr<taskLauncher> launcher = weakThis.lock())
                (*launcher.*operation)();
        };
    };
    d->control = std::make_unique<TaskControl>(d->uid,
                                               TaskControl::Actions{calling(&taskLauncher::terminate),
                                                                    calling(&taskLauncher::suspend),
                                                                    calling(&taskLauncher::resume)});
    return d->uid;
}

} // namespace Tessaron
