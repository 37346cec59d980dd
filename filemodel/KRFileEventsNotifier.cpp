#include <TessaronClasses/KRFileEventsNotifier.h>

#include <QtDebug>

#include <chrono>
#include <cstdio>

namespace Tessaron
{

namespace
{

std::shared_ptr<KRFileEventsNotifier> theNotifier;
std::shared_ptr<FSEventStream> theStream;

void logProblem(const NSError &problem)
{
    qWarning("%s %s %s", qUtf8Printable(problem.localizedDescription()),
             qUtf8Printable(problem.localizedFailureReason()), qUtf8Printable(problem.localizedRecoverySuggestion()));
}

} // namespace

std::shared_ptr<KRFileEventsNotifier> KRFileEventsNotifier::sharedNotifier()
{
    return theNotifier ? theNotifier : init();
}

std::shared_ptr<KRFileEventsNotifier> KRFileEventsNotifier::init()
{
    std::shared_ptr<KRFileEventsNotifier> notifier(new KRFileEventsNotifier);
    if (!theNotifier)
        theNotifier = std::move(notifier);
    return theNotifier;
}

NSError KRFileEventsNotifier::startEventStream()
{
    if (theStream)
        return {};
    constexpr std::chrono::duration<double> latency(5.0);
    const auto stream = FSEventStream::create(fileStreamCallback, FSEventStreamContext{nullptr, logProblem}, {"/"},
                                              kFSEventStreamEventIdSinceNow, latency, kFSEventStreamCreateFlagNone);
    if (!stream)
        return stream.error();
    (*stream)->scheduleWithRunLoop();
    NSError error = (*stream)->start();
    if (!error)
        theStream = *stream;
    return error;
}

void KRFileEventsNotifier::stopEventStream()
{
    if (!theStream)
        return;
    theStream->stop();
    theStream->invalidate();
    theStream.reset();
}

void KRFileEventsNotifier::watchEventsForFileReference(const std::shared_ptr<KRFileReference> & /*reference*/) { }

void fileStreamCallback(ConstFSEventStreamRef /*streamRef*/, void * /*clientCallBackInfo*/, std::size_t numEvents,
                        void *eventPaths, const FSEventStreamEventFlags *eventFlags,
                        const FSEventStreamEventId *eventIds)
{
    const auto *paths = static_cast<const char *const *>(eventPaths);
    std::puts("EVENT");
    for (std::size_t event = 0; event < numEvents; ++event)
        std::printf("Change %llu in %s, flags %lu\n", static_cast<unsigned long long>(eventIds[event]), paths[event],
                    static_cast<unsigned long>(eventFlags[event]));
}

} // namespace Tessaron
