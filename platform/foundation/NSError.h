#pragma once

#include "platform/foundation/Export.h"
#include "platform/foundation/OSStatus.h"

#include <QString>
#include <QVariantMap>

namespace Tessaron
{

/// Domain of the classic status codes (OSStatus.h).
TESSARON_EXPORT extern const QString NSOSStatusErrorDomain;
/// Domain of `errno` values.
TESSARON_EXPORT extern const QString NSPOSIXErrorDomain;
/// Domain of errors that the application layer of the platform makes.
TESSARON_EXPORT extern const QString NSCocoaErrorDomain;

// Keys of the user information; each value is a QString unless said otherwise.
TESSARON_EXPORT extern const QString NSLocalizedDescriptionKey; ///< what happened, a sentence for people
TESSARON_EXPORT extern const QString NSLocalizedFailureReasonErrorKey; ///< why
TESSARON_EXPORT extern const QString NSLocalizedRecoverySuggestionErrorKey; ///< what to do about it
TESSARON_EXPORT extern const QString NSFilePathErrorKey; ///< path of the file it happened to

/// A failure as a value: domain, code and user information. A default-made error is the null error: no failure.
///
/// Cheap to copy (its members are implicitly shared). A value: each thread may use its own copy freely.
class TESSARON_EXPORT NSError
{
public:
    /// The null error: no failure happened.
    NSError() = default;

    /// `domain` must not be empty: a null error is made by the default constructor alone.
    NSError(const QString &domain, qint64 code, const QVariantMap &userInfo = {});

    /// Turns an `errno` value into an error of NSOSStatusErrorDomain for the file at `path`: its code is
    /// statusForErrno(), its failure reason the system's own text, its path `path`. The one place where a system
    /// error becomes an error value.
    [[nodiscard]] static NSError errorWithErrno(int errnoValue, const QString &path);

    [[nodiscard]] bool isNull() const { return m_domain.isEmpty(); }
    /// True when there is an error, so that `if (error)` reads as "if it failed".
    explicit operator bool() const { return !isNull(); }

    [[nodiscard]] QString domain() const { return m_domain; }
    [[nodiscard]] qint64 code() const { return m_code; }
    [[nodiscard]] QVariantMap userInfo() const { return m_userInfo; }

    /// The value under NSLocalizedDescriptionKey, else the failure reason, else "domain error code".
    [[nodiscard]] QString localizedDescription() const;
    /// The value under NSLocalizedFailureReasonErrorKey; empty when there is none.
    [[nodiscard]] QString localizedFailureReason() const;
    /// The value under NSLocalizedRecoverySuggestionErrorKey; empty when there is none.
    [[nodiscard]] QString localizedRecoverySuggestion() const;
    /// The value under NSFilePathErrorKey; empty when there is none.
    [[nodiscard]] QString filePath() const;

    friend bool operator==(const NSError &, const NSError &) = default;

private:
    QString m_domain;
    qint64 m_code = 0;
    QVariantMap m_userInfo;
};

/// The classic status for an `errno` value: ENOENT gives fnfErr, ENOSPC dskFulErr, EACCES afpAccessDenied and so on;
/// a value without a counterpart gives ioErr; 0 gives noErr.
[[nodiscard]] TESSARON_EXPORT OSErr statusForErrno(int errnoValue);

} // namespace Tessaron
