#include "platform/foundation/NSAssertionHandler.h"

#include <QtGlobal>

namespace Tessaron
{

namespace
{

std::shared_ptr<NSAssertionHandler> &handlerOfThread()
{
    thread_local std::shared_ptr<NSAssertionHandler> handler;
    return handler;
}

} // namespace

NSInternalInconsistencyException::NSInternalInconsistencyException(const QString &description)
    : std::runtime_error(description.toStdString())
{
}

NSInternalInconsistencyException::~NSInternalInconsistencyException() = default;

NSAssertionHandler::~NSAssertionHandler() = default;

std::shared_ptr<NSAssertionHandler> NSAssertionHandler::currentHandler()
{
    static const auto standard = std::make_shared<NSAssertionHandler>();
    const std::shared_ptr<NSAssertionHandler> &handler = handlerOfThread();
    return handler ? handler : standard;
}

void NSAssertionHandler::setCurrentHandler(std::shared_ptr<NSAssertionHandler> handler)
{
    handlerOfThread() = std::move(handler);
}

void NSAssertionHandler::handleFailureInMethod(const QString &method, const void * /*object*/, const QString &file,
                                               int lineNumber, const QString &description)
{
    qWarning("*** Assertion failure in %s, %s:%d: %s", method.toUtf8().constData(), file.toUtf8().constData(),
             lineNumber, description.toUtf8().constData());
    throw NSInternalInconsistencyException(description);
}

} // namespace Tessaron
