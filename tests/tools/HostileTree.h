#pragma once

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

/// Makes trees of files that are hard to put onto a disc: names of every awkward kind, many of which collide once a
/// filesystem has changed them, objects of all kinds, odd times and modes. The same seed gives the same tree.
class HostileTree
{
public:
    explicit HostileTree(std::uint64_t seed);

    /// Fills the folder, which must be empty. Fails the running test when the system refuses something.
    void fill(const QByteArray &folder);

private:
    struct Folder {
        QByteArray path;
        int depth = 0;
        QList<QByteArray> names; ///< that are in it
    };

    void addObject(std::size_t folder);
    void addFolder(std::size_t parent, const QByteArray &name);
    void addChain(std::size_t parent);
    void addFile(const QByteArray &path);
    void addLink(const QByteArray &path);
    void setTime(const QByteArray &path);
    [[nodiscard]] QByteArray newName(const Folder &folder);
    [[nodiscard]] QByteArray freshName();
    [[nodiscard]] QByteArray relativeOf(const QByteArray &name);
    [[nodiscard]] QByteArray contents();
    [[nodiscard]] QByteArray linkTarget();
    [[nodiscard]] std::uint64_t below(std::uint64_t limit) { return m_random() % limit; }
    template <typename List>
    [[nodiscard]] auto oneOf(const List &list)
    {
        return list[below(std::size(list))];
    }

    std::mt19937_64 m_random;
    std::vector<Folder> m_folders;
    QList<QByteArray> m_files; ///< paths, for hard links
    std::vector<std::pair<QByteArray, bool>> m_made; ///< in the order of making, and whether a folder
};

/// Removes all that is in the folder, however deep.
void emptyFolder(const QByteArray &folder);

} // namespace Tessaron::Testing
