#pragma once

#include <QByteArray>

#include <platform/foundation/Result.h>
#include <platform/foundation/UniqueDescriptor.h>

namespace Tessaron::Desktop
{

/// A folder of this process that only its user can look into. It goes with all that is in it, and one that a process
/// has left behind goes when the next one is made. Touches the disk, so it is not for the main thread.
class PrivateFolder
{
public:
    /// Makes a folder below `base`, which is made, too. The error names `base`.
    [[nodiscard]] static Result<PrivateFolder> makeBelow(const QByteArray &base);
    PrivateFolder(PrivateFolder &&other) noexcept;
    PrivateFolder &operator=(PrivateFolder &&other) noexcept;
    PrivateFolder(const PrivateFolder &) = delete;
    PrivateFolder &operator=(const PrivateFolder &) = delete;
    /// Removes the folder.
    ~PrivateFolder();

    [[nodiscard]] const QByteArray &path() const { return m_path; }

private:
    PrivateFolder(QByteArray path, UniqueDescriptor lock);

    QByteArray m_path; ///< empty for one that was moved from
    UniqueDescriptor m_lock; ///< tells other processes that this one lives
};

} // namespace Tessaron::Desktop
