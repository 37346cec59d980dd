#include "platform/workspace/NSApplication.h"

#include <QCoreApplication>

#include <utility>

namespace Tessaron
{

NSApplication &NSApplication::sharedApplication()
{
    // Never destroyed: the event loop may end after static objects do.
    static auto *const application = new NSApplication;
    return *application;
}

void NSApplication::setDelegate(NSApplicationDelegate delegate)
{
    m_delegate = std::move(delegate);
    if (std::exchange(m_hearsEventLoop, true))
        return;
    // Each is called on a copy: what it does may name another delegate.
    performOnMainThread([this] {
        const NSApplicationDelegate now = m_delegate;
        if (now.applicationDidFinishLaunching && now.context.isAlive())
            now.applicationDidFinishLaunching();
    });
    QCoreApplication *const application = QCoreApplication::instance();
    QObject::connect(application, &QCoreApplication::aboutToQuit, application, [this] {
        const NSApplicationDelegate now = m_delegate;
        if (now.applicationWillTerminate && now.context.isAlive())
            now.applicationWillTerminate();
    });
}

void NSApplication::terminate(const void * /*sender*/)
{
    performOnMainThread([this] {
        const NSApplicationDelegate now = m_delegate;
        const bool isAsked = now.applicationShouldTerminate && now.context.isAlive();
        if (!isAsked || now.applicationShouldTerminate() == NSTerminateNow)
            QCoreApplication::exit(0);
    });
}

} // namespace Tessaron
