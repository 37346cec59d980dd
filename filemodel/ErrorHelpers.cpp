#include "platform/foundation/NSBundle.h"
#include <TessaronClasses/ErrorHelpers.h>
#include <TessaronClasses/ErrorTexts.h>

#include <QMutex>

#include <optional>

namespace Tessaron
{

std::shared_ptr<NSBundle> _finderBundle()
{
    struct Known {
        QMutex mutex; // guards the members below
        std::optional<QString> systemRoot; // where the bundle was looked for
        std::shared_ptr<NSBundle> bundle;
    };
    static Known known;
    const QString systemRoot = NSBundle::systemRoot();
    const QMutexLocker lock(&known.mutex);
    if (known.systemRoot != systemRoot) {
        known.bundle = NSBundle::bundleWithPath(QStringLiteral("/System/Library/CoreServices/Finder.app"));
        known.systemRoot = systemRoot;
    }
    return known.bundle;
}

QString getFailureReason(const NSError &error)
{
    if (error.domain() != NSOSStatusErrorDomain)
        return {};
    const std::shared_ptr<NSBundle> finder = _finderBundle();
    QString key;
    if (error.code() == afpAccessDenied)
        key = QStringLiteral("NE23");
    else if (error.code() == dupFNErr)
        key = QStringLiteral("NE21");
    if (!key.isEmpty() && finder)
        return finder->localizedString(key, QString(), QStringLiteral("Localizable"));
    return QStringLiteral("OSStatus error (%1)").arg(qint32(error.code()));
}

NSError filenameAlreadyExistsErrorForName(const QString &name)
{
    return NSError(NSOSStatusErrorDomain, dupFNErr,
                   {{NSLocalizedRecoverySuggestionErrorKey, anItemWithTheSameNameAlreadyExistsLocalizedString()},
                    {NSLocalizedDescriptionKey, theItemCannotBeRenamedLocalizedString(name)}});
}

NSError thereIsAlreadyAnItemWithThatNameError()
{
    return NSError(NSOSStatusErrorDomain, dupFNErr,
                   {{NSLocalizedDescriptionKey, anItemWithTheSameNameAlreadyExistsLocalizedString()},
                    {NSLocalizedRecoverySuggestionErrorKey, renameTheItemLocalizedString()}});
}

NSError unkownError()
{
    return NSError(NSOSStatusErrorDomain, coreFoundationUnknownErr);
}

} // namespace Tessaron
