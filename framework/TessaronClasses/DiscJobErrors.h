#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/NSError.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace Tessaron
{

/// Domain of the errors that jobs end with (DiscJob.h). Their description is a sentence without the full stop that says
/// what happened and names what it happened to; their recovery suggestion, a full sentence, says what to do and may be
/// missing; NSFilePathErrorKey has the file where there is one.
TESSARON_EXPORT extern const QString DiscJobErrorDomain;

/// Key of the user information: qint64, the status of the service below (OSStatus.h) that the error comes from.
TESSARON_EXPORT extern const QString DiscJobUnderlyingStatusKey;

/// The codes of that domain: at which end of the work it failed.
enum class DiscJobErrorCode : std::uint8_t {
    InvalidOrder = 1, ///< what was asked for makes no sense in itself
    Source, ///< something that was to be read
    Destination, ///< where the result was to go
    Space, ///< too little room for the result
    Layout, ///< the disc's structure could not be made
    Write, ///< making or writing the image failed
    NotStored, ///< something cannot be stored as it is, and the order said that this is a failure
    Cancelled,
};

/// An error of that domain. `path` is a path as bytes, empty for none; `status` 0 for none.
[[nodiscard]] TESSARON_EXPORT NSError discJobError(DiscJobErrorCode code, const QString &description,
                                                   const QString &suggestion = {}, const QByteArray &path = {},
                                                   qint64 status = 0);

/// The error of a job that ran out of memory.
[[nodiscard]] TESSARON_EXPORT NSError outOfMemoryError();

/// The error of a cancelled job.
[[nodiscard]] TESSARON_EXPORT NSError discJobCancellation();

/// True for an error of that domain and code.
[[nodiscard]] TESSARON_EXPORT bool isDiscJobError(const NSError &error, DiscJobErrorCode code);

} // namespace Tessaron
