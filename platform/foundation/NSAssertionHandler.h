#pragma once

#include "platform/foundation/Export.h"

#include <QString>

#include <memory>
#include <stdexcept>

namespace Tessaron
{

/// What the standard handler of failed assertions throws; what() is the description, UTF-8.
class TESSARON_EXPORT NSInternalInconsistencyException : public std::runtime_error
{
public:
    explicit NSInternalInconsistencyException(const QString &description);
    ~NSInternalInconsistencyException() override;
};

/// Told when an operation finds that something it relies on does not hold. Each thread has its own.
class TESSARON_EXPORT NSAssertionHandler
{
public:
    NSAssertionHandler() = default;
    virtual ~NSAssertionHandler();
    NSAssertionHandler(const NSAssertionHandler &) = delete;
    NSAssertionHandler &operator=(const NSAssertionHandler &) = delete;

    /// The calling thread's, the standard one unless another was set; never null.
    [[nodiscard]] static std::shared_ptr<NSAssertionHandler> currentHandler();
    /// For the calling thread; null for the standard one.
    static void setCurrentHandler(std::shared_ptr<NSAssertionHandler> handler);

    /// `object` is whose operation failed, or null for a class; it is not touched. The standard handler logs the
    /// failure and throws NSInternalInconsistencyException; one that returns lets the operation go on.
    virtual void handleFailureInMethod(const QString &method, const void *object, const QString &file, int lineNumber,
                                       const QString &description);
};

} // namespace Tessaron
