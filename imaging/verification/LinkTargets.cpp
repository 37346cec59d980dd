#include "imaging/verification/LinkTargets.h"

#include "imaging/verification/NameRules.h"

#include <QList>

#include <algorithm>

namespace Tessaron
{

namespace
{

/// The names on the way; the first one is empty where the target begins at the root.
QList<QByteArray> componentsOf(const QByteArray &target)
{
    QList<QByteArray> components;
    for (const QByteArray &component : target.split('/')) {
        if (!component.isEmpty() || components.isEmpty())
            components.append(component);
    }
    return components;
}

std::string_view viewOf(const QByteArray &name)
{
    return {name.data(), std::size_t(name.size())};
}

} // namespace

bool mayBeLinkTargetOf(VolumeKind kind, const QByteArray &recorded, const QByteArray &target)
{
    if (recorded == target)
        return true;
    QList<QByteArray> recordedComponents = componentsOf(recorded);
    QList<QByteArray> components = componentsOf(target);
    // "folder/" and "folder/." lead to the same place.
    QList<QByteArray> &longer = recordedComponents.size() > components.size() ? recordedComponents : components;
    if (recordedComponents.size() != components.size() && longer.last() == ".")
        longer.removeLast();
    return std::equal(
        recordedComponents.begin(), recordedComponents.end(), components.begin(), components.end(),
        [kind](const QByteArray &one, const QByteArray &other) {
            return one == other
                || (kind == VolumeKind::UDF
                    && mayBeNameOf(kind, ComparableName(kind, viewOf(one)), ComparableName(kind, viewOf(other))));
        });
}

bool surelyHasRoom(VolumeKind kind, const QByteArray &target)
{
    if (kind != VolumeKind::UDF)
        return true;
    // ECMA-167 14.16: four bytes for each name, then a byte for its compression and up to two for each character; the
    // block also has the link's entry.
    constexpr qsizetype surelyFree = 1800;
    qsizetype size = 0;
    for (const QByteArray &component : componentsOf(target))
        size += 5 + 2 * component.size();
    return size <= surelyFree;
}

} // namespace Tessaron
