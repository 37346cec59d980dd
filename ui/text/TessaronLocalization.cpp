#include "platform/foundation/NSBundle.h"
#include <TessaronClasses/DiscNames.h>
#include <TessaronClasses/ErrorHelpers.h>
#include <TessaronClasses/TessaronLocalization.h>

namespace Tessaron
{

namespace
{

/// The place behind the "2$" of "%2$@"; where there are no such digits, the place itself.
qsizetype behindPosition(const QString &format, qsizetype at)
{
    qsizetype end = at;
    while (end < format.size() && format[end] >= u'0' && format[end] <= u'9')
        ++end;
    return end > at && end < format.size() && format[end] == u'$' ? end + 1 : at;
}

/// Fills in "%@" and "%d" wherever they stand, also in their forms with a position, "%2$@". There is one value of each
/// kind, so the kind says which one is meant. Texts that were filled in are not searched for further ones. "%%" is a
/// percent sign.
QString filled(const QString &format, const QString &name, int count)
{
    QString result;
    for (qsizetype at = 0; at < format.size(); ++at) {
        const qsizetype kindAt = format[at] == u'%' ? behindPosition(format, at + 1) : format.size();
        const QChar kind = kindAt < format.size() ? format[kindAt] : QChar();
        if (kind == u'@')
            result += name;
        else if (kind == u'd')
            result += QString::number(count);
        else if (kind == u'%' && kindAt == at + 1)
            result += u'%';
        else {
            result += format[at];
            continue;
        }
        at = kindAt;
    }
    return result;
}

QString mainBundleText(const QString &key)
{
    return NSBundle::mainBundle()->localizedString(key);
}

/// The text under the key in the file manager's table, or the default without such a table.
QString finderText(const QString &key, const QString &defaultText)
{
    const std::shared_ptr<NSBundle> finder = _finderBundle();
    return finder ? finder->localizedString(key, {}, QStringLiteral("Localizable")) : defaultText;
}

} // namespace

QString localizedStringForFS(const QString &fileSystemKey, int count)
{
    if (count == 0 || fileSystemKey.isNull())
        return {};
    const QString key = count == 1 ? QStringLiteral("1 %type% track") : QStringLiteral("n %type% tracks");
    return filled(mainBundleText(key), mainBundleText(fileSystemKey), count);
}

QString localizedDiscImageNameForTessaronDiscImageFormat(TessaronDiscImageFormat format)
{
    const QString extension = extensionForTessaronDiscImageFormat(format);
    return mainBundleText(QStringLiteral("disc image type ")
                          + (extension.isNull() ? QStringLiteral("(null)") : extension));
}

QString untitledFolderLocalizedString()
{
    return finderText(QStringLiteral("N2"), QStringLiteral("untitled folder"));
}

QString untitledDiscLocalizedString()
{
    QString key = QStringLiteral("untitled disc");
    QString text = NSBundle::frameworkBundle()->localizedString(key, {}, QStringLiteral("framework-localizable"));
    if (text != key)
        return text;
    // The file manager's words come in two parts, the second to be put into the first; a missing one yields its key.
    const QString formatKey = QStringLiteral("BN20.1");
    const QString nameKey = QStringLiteral("BN20.2");
    QString format = finderText(formatKey, formatKey);
    const QString name = finderText(nameKey, nameKey);
    if (format == formatKey || name == nameKey)
        return key;
    return filled(format.replace(QStringLiteral("^0"), QStringLiteral("%@")), name, 0);
}

QString burnLocalizedString()
{
    const QString key = QStringLiteral("toolbar burn");
    const QString text = mainBundleText(key);
    return text != key ? text : finderText(QStringLiteral("BN7"), QStringLiteral("burn"));
}

} // namespace Tessaron
