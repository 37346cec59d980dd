#pragma once

#include <QByteArray>

#include <vector>

namespace Tessaron
{

/// Makes folders, and remembers which were not there before, so that those that stay empty can go again. Paths are
/// absolute, or count from a working folder that stays. Any thread, one at a time.
class MadeFolders
{
public:
    MadeFolders() = default;
    /// Removes what is empty.
    ~MadeFolders() { removeEmpty(); }
    MadeFolders(const MadeFolders &) = delete;
    MadeFolders &operator=(const MadeFolders &) = delete;

    /// Makes the folder, with those on the way to it, where it is not there; 0 or the errno value.
    [[nodiscard]] int make(const QByteArray &path);
    /// Removes those of the folders made so far in which there is nothing, and forgets the others.
    void removeEmpty();

private:
    std::vector<QByteArray> m_paths; ///< each behind the one around it
};

} // namespace Tessaron
