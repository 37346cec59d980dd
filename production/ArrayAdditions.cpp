#include <TessaronClasses/ArrayAdditions.h>

namespace Tessaron
{

QVariantList flattenedArray(const QVariantList &array)
{
    QVariantList flat;
    for (const QVariant &element : array) {
        if (element.typeId() == QMetaType::QVariantList)
            flat += element.toList();
        else
            flat.append(element);
    }
    return flat;
}

QString stringWithPrefix(const QVariantList &array, const QString &prefix)
{
    if (prefix.isEmpty())
        return {};
    for (const QVariant &element : array) {
        if (element.typeId() == QMetaType::QString && element.toString().startsWith(prefix))
            return element.toString();
    }
    return {};
}

} // namespace Tessaron
