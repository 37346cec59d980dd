#pragma once

#include <QByteArray>

#include <mutex>

namespace Tessaron
{

/// A folder for this user alone in a place where all users may write: with mode 0700, never a link, never a folder of
/// another user. Thread-safe.
class PrivateFolder
{
public:
    /// Nothing is made yet.
    PrivateFolder(const QByteArray &place, const QByteArray &name);

    /// The folder's path; it exists when the call returns. Where the name is taken by something that cannot be trusted,
    /// it is "<place>/<name>-XXXXXX", the same one as long as it lasts. Empty when nothing can be made.
    [[nodiscard]] QByteArray path();

    /// Makes a folder for the user alone, or takes an existing one; false when the name is taken by something else or
    /// the folder cannot be made.
    [[nodiscard]] static bool makeOrTake(const QByteArray &path);

private:
    const QByteArray m_wanted;
    std::mutex m_mutex; ///< guards the member below
    QByteArray m_substitute; ///< empty until it was needed
};

} // namespace Tessaron
