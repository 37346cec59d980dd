#pragma once

#include <QByteArray>
#include <QList>
#include <QSet>

namespace Tessaron
{

/// Paths of a filesystem that were chosen: each with all that is below it. Paths are names joined by '/', the root's is
/// empty. To be asked on a walk from the root on.
class PathSelection
{
public:
    /// '/' in front, behind and doubled means nothing. An empty list, or the root among the paths, chooses everything.
    explicit PathSelection(const QList<QByteArray> &paths);

    [[nodiscard]] bool isEverything() const { return m_isEverything; }
    /// How many there are but the root.
    [[nodiscard]] qsizetype namedCount() const { return m_named.size() - (m_named.contains(QByteArray()) ? 1 : 0); }
    /// True when it was named itself.
    [[nodiscard]] bool isNamed(const QByteArray &path) const { return m_named.contains(path); }
    /// True for folders above something that was named.
    [[nodiscard]] bool leadsOn(const QByteArray &path) const { return m_above.contains(path); }
    /// Remembers that a path is there.
    void noteFound(const QByteArray &path) { m_missing.remove(path); }
    /// What was named and not found, in order.
    [[nodiscard]] QList<QByteArray> missing() const;

private:
    bool m_isEverything = false;
    QSet<QByteArray> m_named;
    QSet<QByteArray> m_above;
    QSet<QByteArray> m_missing;
};

} // namespace Tessaron
