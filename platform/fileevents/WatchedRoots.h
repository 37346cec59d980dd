#pragma once

#include <QByteArray>
#include <QSet>

#include <vector>

namespace Tessaron
{

/// The paths that a stream was asked to watch, and where they lead at present. Belongs to one thread at a time.
class WatchedRoots
{
public:
    struct Root {
        QByteArray given;
        QByteArray real; ///< without symbolic links; empty while the path leads to no folder
        int error = 0; ///< the `errno` value why, else 0
        QSet<QByteArray> way; ///< each entry of a folder that leads there, as a real path
        bool hasChanged = false; ///< something happened to an entry on the way since the last resolve()
    };

    explicit WatchedRoots(const std::vector<QByteArray> &absolutePaths);

    /// Looks anew where the paths lead.
    void resolve();
    /// The same, once the ways are watched: roots that lead elsewhere than before have changed, since no watch
    /// has told what happened before they stood.
    void resolveAgain();

    [[nodiscard]] const std::vector<Root> &roots() const { return m_roots; }
    /// True for a root's folder and for what lies below it.
    [[nodiscard]] bool contains(const QByteArray &realPath) const;
    /// True when the way to a root leads through the folder.
    [[nodiscard]] bool leadsThrough(const QByteArray &realPath) const { return m_foldersOnTheWay.contains(realPath); }
    [[nodiscard]] const QSet<QByteArray> &foldersOnTheWay() const { return m_foldersOnTheWay; }
    /// Where each root is: its real path, or the given one while it leads nowhere.
    [[nodiscard]] std::vector<QByteArray> places() const;

    /// Something was made, removed or renamed at the path: notes which roots it leads to.
    void entryHasChanged(const QByteArray &realPath);
    /// Something was mounted or unmounted at the path.
    void mountHasChanged(const QByteArray &point);
    [[nodiscard]] bool haveChanged() const;

private:
    std::vector<Root> m_roots;
    QSet<QByteArray> m_foldersOnTheWay;
};

/// True for the folder itself, too.
[[nodiscard]] bool isAtOrBelow(const QByteArray &path, const QByteArray &folder);

} // namespace Tessaron
