#pragma once

#include "platform/discrecording/objects/DRFSObject.h"

namespace Tessaron
{

/// A folder of a disc to be made: either real (its contents are taken wholesale from the folder on disk when the disc
/// is made) or virtual (its contents are the children added to it).
class TESSARON_EXPORT DRFolder final : public DRFSObject, public std::enable_shared_from_this<DRFolder>
{
    struct ConstructionKey {
        explicit ConstructionKey() = default;
    };

public:
    /// For the factories only.
    DRFolder(ConstructionKey, const FSRef &source);
    DRFolder(ConstructionKey, const QString &name);
    /// Frees trees of any depth.
    ~DRFolder() override;

    /// A real folder; null when there is no folder at the path.
    [[nodiscard]] static std::shared_ptr<DRFolder> folderWithPath(const QString &path);
    /// A virtual folder. The name may be empty (a root without a volume name).
    [[nodiscard]] static std::shared_ptr<DRFolder> virtualFolderWithName(const QString &name);

    [[nodiscard]] bool isFolder() const override { return true; }

    /// The children in the order in which they were added; always empty for a real folder.
    [[nodiscard]] const std::vector<std::shared_ptr<DRFSObject>> &children() const { return m_children; }
    /// Appends. A child that has a parent already is taken out of it first. Ignored for a real folder and for a child
    /// that is the folder itself or holds it.
    void addChild(const std::shared_ptr<DRFSObject> &child);
    /// Takes the child out; ignored for one that is not in this folder.
    void removeChild(const std::shared_ptr<DRFSObject> &child);
    /// Takes out all at once.
    void removeAllChildren();

private:
    friend std::shared_ptr<DRFolder> DRFolderCreateReal(const FSRef *ref);
    friend std::shared_ptr<DRFolder> DRFolderCreateVirtual(const QString &name);

    std::vector<std::shared_ptr<DRFSObject>> m_children;
};

/// A real folder for the reference; null when it is not valid or not a folder.
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<DRFolder> DRFolderCreateReal(const FSRef *ref);
[[nodiscard]] TESSARON_EXPORT std::shared_ptr<DRFolder> DRFolderCreateVirtual(const QString &name);

} // namespace Tessaron
