#pragma once

#include "platform/foundation/NSError.h"
#include "platform/foundation/Result.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace Tessaron
{

class DRDevice;
class DRFSObject;
class DRFolder;
class DiscImageSource;
class VolumeReader;
struct DRRecordedObject;
struct FoundVolume;

/// The files of a disc to which something is added. Systems show the filesystem of the last session alone, or the one
/// at the begin of what has no sessions, so that what is added has to lead to them, too.
class EarlierFiles
{
public:
    /// What it means that no filesystem is found, and nothing was ever written where they begin.
    enum class EmptyBegin : std::uint8_t {
        HasNoFiles, ///< of what is overwritten
        IsAnError, ///< of a session, which somebody has written
    };

    /// Reads the directories of the last session that holds data, or of what is overwritten, none of the contents. Null
    /// where all sessions hold sound, or there is nothing. Errors of a job (DiscJobErrors.h): the filesystem is not
    /// known or damaged, or a file of it cannot be led to from another one. May take minutes.
    [[nodiscard]] static Result<std::shared_ptr<EarlierFiles>> read(DRDevice &device, const std::stop_token &stop);
    /// The same, from the blocks of that session, which lead to those in front of them.
    [[nodiscard]] static Result<std::shared_ptr<EarlierFiles>>
    readFrom(const std::shared_ptr<const DiscImageSource> &session, EmptyBegin emptyBegin, const std::stop_token &stop);

    [[nodiscard]] const QString &volumeName() const { return m_volumeName; }

    /// Blocks from the disc's begin up to behind all that was found.
    [[nodiscard]] std::uint64_t endBlock() const { return m_endBlock; }
    /// The first block that a file's contents take; none where all files are empty.
    [[nodiscard]] std::optional<std::uint64_t> firstBlockOfContents() const { return m_firstBlockOfContents; }
    [[nodiscard]] bool hasUDF() const { return m_hasUDF; }
    [[nodiscard]] bool hasHFSPlus() const { return m_hasHFSPlus; }
    /// Computers can be started from the disc (El Torito), and cannot once something is added.
    [[nodiscard]] bool startsComputers() const { return m_startsComputers; }

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
    void measure(const std::vector<FoundVolume> &volumes, const DiscImageSource &source);
    [[nodiscard]] NSError readVolume(const VolumeReader &volume, const std::stop_token &stop);
    void noteContents(const DRRecordedObject &recorded);
    [[nodiscard]] NSError merge(DRFolder &into, DRFolder &earlier, const QByteArray &path);
    void keepAll(const DRFSObject &object, const QByteArray &path);

    std::shared_ptr<DRFolder> m_root; ///< of what was read; what was added is not in it any more
    QString m_volumeName;
    std::uint64_t m_endBlock = 0;
    std::optional<std::uint64_t> m_firstBlockOfContents;
    bool m_hasUDF = false;
    bool m_hasHFSPlus = false;
    bool m_startsComputers = false;
    QHash<QByteArray, Place> m_kept; ///< by path, without a slash in front
    QStringList m_replaced;
    std::uint32_t m_keptFiles = 0;
    std::uint32_t m_keptFolders = 0;
};

} // namespace Tessaron
