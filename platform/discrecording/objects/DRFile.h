#pragma once

#include "platform/discrecording/objects/DRFSObject.h"

#include <QByteArray>

namespace Tessaron
{

/// A file of a disc to be made: real (contents, times, permissions from the file on disk, which may also be a symbolic
/// link, a fifo, a socket or a device) or virtual (contents given as bytes).
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

    [[nodiscard]] bool isFolder() const override { return false; }

    /// The contents of a virtual file; empty for a real one.
    [[nodiscard]] QByteArray virtualContents() const;

private:
    friend std::shared_ptr<DRFile> DRFileCreateReal(const FSRef *ref);
};

/// A real file for the reference. Null for the zero reference. It does not look at the disk: a file that vanished is
/// noticed when the disc is prepared.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<DRFile> DRFileCreateReal(const FSRef *ref);

} // namespace Tessaron
