#include "imaging/jobs/BackgroundTask.h"

#include "platform/foundation/MainThread.h"
#include "platform/foundation/WhenThereIsMemory.h"
#include <TessaronClasses/DiscJobErrors.h>

#include <new>
#include <system_error>

namespace Tessaron
{

namespace
{

NSError resultOf(const std::function<NSError(const std::stop_token &)> &work, const std::stop_token &stop)
{
    NSError error;
    try {
        error = work(stop);
    } catch (const std::bad_alloc &) {
        whenThereIsMemory([&error] { error = outOfMemoryError(); });
    }
    return error;
}

} // namespace

BackgroundTask::~BackgroundTask()
{
    m_life.reset();
}

void BackgroundTask::start(std::function<NSError(const std::stop_token &)> work,
                           std::function<void(const NSError &)> whenEnded)
{
    m_life = std::make_shared<int>();
    const CallbackContext life(m_life);
    const auto tell = [life, whenEnded = std::move(whenEnded)](const NSError &error) {
        performOnMainThread([life, whenEnded, error] {
            if (life.isAlive())
                whenEnded(error);
        });
    };
    try {
        m_thread = std::jthread([work = std::move(work), tell](const std::stop_token &stop) {
            const NSError error = resultOf(work, stop);
            whenThereIsMemory([&] { tell(error); });
        });
    } catch (const std::system_error &) {
        tell(discJobError(DiscJobErrorCode::Layout, QStringLiteral("the system has no thread to give"),
                          QStringLiteral("Close other programs, and try again."), {}, memFullErr));
    }
}

} // namespace Tessaron
