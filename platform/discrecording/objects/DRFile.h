#pragma once

#include "platform/discrecording/objects/DRFSObject.h"
#include "platform/foundation/FileTime.h"

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace Tessaron
{

/// An object, other than a folder, that an earlier session of a disc has. The new session's directories tell of it, and
/// lead to the contents where they lie.
struct DRRecordedObject {
    std::uint32_t mode = 0; ///< `st_mode`: its kind and permissions
    std::uint32_t userId = 0;
    std::uint32_t groupId = 0;
    std::optional<FileTime> modification; ///< absent: that of the volume
    std::uint64_t size = 0; ///< of a file, bytes
    std::uint32_t firstBlock = 0; ///< of the disc, where a file's contents begin; they lie in one piece
    std::uint64_t deviceNumber = 0; ///< of a device, `st_rdev`
    QByteArray linkTarget; ///< of a symbolic link
};

/// A file of a disc to be made: real (contents, times, permissions from the file on disk, which may also be a symbolic
/// link, a fifo, a socket or a device), virtual (contents given as bytes) or recorded (it lies on the disc already).
class TESSARON_EXPORT DRFile final : public DRFSObject
{
    struct ConstructionKey {
        explicit ConstructionKey() = default;
    };

public:
    /// For the factories only.
    DRFile(ConstructionKey, const FSRef &source);
    DRFile(ConstructionKey, const QString &name);
    ~DRFile() override;

    /// A real file, a symbolic link at the end of the path not followed; null when there is none or it is a folder.
    [[nodiscard]] static std::shared_ptr<DRFile> fileWithPath(const QString &path);
    /// A virtual file with the given contents.
    [[nodiscard]] static std::shared_ptr<DRFile> virtualFileWithName(const QString &name, const QByteArray &contents);
    /// Something that lies on the disc already. Only ISO 9660 and Joliet can lead there.
    [[nodiscard]] static std::shared_ptr<DRFile> recordedFileWithName(const QString &name,
                                                                      const DRRecordedObject &recorded);

    [[nodiscard]] bool isFolder() const override { return false; }

    /// The contents of a virtual file; empty for a real one.
    [[nodiscard]] QByteArray virtualContents() const;
    /// What the disc has of a recorded file; null for any other one. Lives as long as the file.
    [[nodiscard]] const DRRecordedObject *recordedObject() const;

private:
    friend std::shared_ptr<DRFile> DRFileCreateReal(const FSRef *ref);
};

/// A real file for the reference. Null for the zero reference. It does not look at the disk: a file that vanished is
/// noticed when the disc is prepared.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<DRFile> DRFileCreateReal(const FSRef *ref);

} // namespace Tessaron
