#include "imaging/verification/PathSelection.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

QByteArray withoutEmptyNames(const QByteArray &path)
{
    QByteArray result;
    for (const QByteArray &name : path.split('/')) {
        if (name.isEmpty())
            continue;
        if (!result.isEmpty())
            result += '/';
        result += name;
    }
    return result;
}

} // namespace

PathSelection::PathSelection(const QList<QByteArray> &paths)
    : m_isEverything(paths.isEmpty())
{
    for (const QByteArray &given : paths) {
        const QByteArray path = withoutEmptyNames(given);
        m_isEverything = m_isEverything || path.isEmpty();
        m_named.insert(path);
        m_above.insert(QByteArray());
        for (qsizetype slash = path.indexOf('/'); slash >= 0; slash = path.indexOf('/', slash + 1))
            m_above.insert(path.first(slash));
    }
    m_missing = m_named;
    m_missing.remove(QByteArray());
}

QList<QByteArray> PathSelection::missing() const
{
    QList<QByteArray> paths(m_missing.begin(), m_missing.end());
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace Tessaron
