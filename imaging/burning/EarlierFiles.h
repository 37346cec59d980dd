#pragma once

#include "platform/discrecording/drives/DRDevice.h"
#include "platform/foundation/Result.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <stop_token>

namespace Tessaron
{

class DRFSObject;
class DRFolder;
class VolumeReader;

/// The files of a disc with sessions. Systems show the filesystem of the last session alone, so that one has to lead to
/// them, too.
class EarlierFiles
{
public:
    /// Reads the directories of the last session that holds data, none of the contents. Null where all sessions hold
    /// sound. Errors of a job (DiscJobErrors.h): the filesystem is not known or damaged, or a file of it cannot be led
    /// to from another one. May take minutes.
    [[nodiscard]] static Result<std::shared_ptr<EarlierFiles>> read(DRDevice &device, const std::stop_token &stop);

    [[nodiscard]] const QString &volumeName() const { return m_volumeName; }

    /// Puts them into the layout of what is added, once. A file that the layout has at the same path takes the place of
    /// the earlier one. An error when one has a folder where the other has a file; the layout is of no use then. A
    /// layout that takes folders wholesale from the disk cannot be added to, and is an error as well.
    [[nodiscard]] NSError addTo(DRFolder &root);

    /// Objects that addTo() has put there; folders that both have are not counted.
    [[nodiscard]] std::uint32_t keptFiles() const { return m_keptFiles; }
    [[nodiscard]] std::uint32_t keptFolders() const { return m_keptFolders; }
    /// Paths of the files that were replaced, from the root.
    [[nodiscard]] const QStringList &replaced() const { return m_replaced; }

    /// An error that names a kept file which the new volume does not have, or has elsewhere. Of another filesystem than
    /// they were read from the names may differ, so that one should be asked that has the same.
    [[nodiscard]] NSError errorInVolume(const VolumeReader &volume, const std::stop_token &stop) const;

private:
    /// What has to be found again.
    struct Place {
        std::uint64_t firstBlock = 0;
        std::uint64_t size = 0;
        bool isFolder = false;
    };

    EarlierFiles() = default;
    [[nodiscard]] NSError readVolume(const VolumeReader &volume, const std::stop_token &stop);
    [[nodiscard]] NSError merge(DRFolder &into, DRFolder &earlier, const QByteArray &path);
    void keepAll(const DRFSObject &object, const QByteArray &path);

    std::shared_ptr<DRFolder> m_root; ///< of what was read; what was added is not in it any more
    QString m_volumeName;
    QHash<QByteArray, Place> m_kept; ///< by path, without a slash in front
    QStringList m_replaced;
    std::uint32_t m_keptFiles = 0;
    std::uint32_t m_keptFolders = 0;
};

} // namespace Tessaron
