#include "platform/foundation/NSBundle.h"
#include <TessaronClasses/ErrorHelpers.h>
#include <TessaronClasses/ErrorTexts.h>

namespace Tessaron
{

namespace
{

/// The Finder's text for a key, or the English one without its bundle.
QString finderText(const QString &key, const QString &english, bool *isFinders = nullptr)
{
    const std::shared_ptr<NSBundle> finder = _finderBundle();
    if (isFinders)
        *isFinders = finder != nullptr;
    return finder ? finder->localizedString(key, QString(), QStringLiteral("Localizable")) : english;
}

} // namespace

QString anItemWithTheSameNameAlreadyExistsLocalizedString()
{
    return finderText(
        QStringLiteral("NE21"),
        QStringLiteral("The operation could not be completed because there is already an item with that name."));
}

QString theItemCannotBeRenamedLocalizedString(const QString &name)
{
    bool isFinders = false;
    QString text = finderText(QStringLiteral("RN33"), QStringLiteral("The item cannot be renamed."), &isFinders);
    return isFinders ? text.split(QStringLiteral("^0")).join(name) : text;
}

QString renameTheItemLocalizedString()
{
    return finderText(QStringLiteral("NE22"), QStringLiteral("Rename the item and try again."));
}

} // namespace Tessaron
