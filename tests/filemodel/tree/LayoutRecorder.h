#pragma once

#include <TessaronClasses/KRFileHierarchyItem.h>
#include <TessaronClasses/KRFileReference.h>

#include <QStringList>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Tessaron::Testing
{

/// A target that notes every callback in order: "progress", "finished" and "cancelled".
struct LayoutRecorder {
    std::vector<std::string> calls;
    std::vector<float> progress;
    std::shared_ptr<DRFSObject> madeRoot;
    std::shared_ptr<DRFolder> folder; ///< the root where it is one
    bool isOver = false;
    std::function<void(KRFileHierarchyItem &)> onProgress; ///< called as well
    std::function<void(KRFileHierarchyItem &)> onEnd; ///< called as well, at either end

    [[nodiscard]] KRFileHierarchyItemLayoutTarget target();
    /// Starts, waits for the end and returns the folder.
    std::shared_ptr<DRFolder> run(KRFileHierarchyItem &root);
    [[nodiscard]] bool waitForEnd() const;
};

[[nodiscard]] std::shared_ptr<KRFileHierarchyItem> virtualFolderItem(const QString &name);
[[nodiscard]] std::shared_ptr<KRFileHierarchyItem> itemAt(const QString &path);
/// A file about which nothing is left to be asked of the system: 4096 bytes.
[[nodiscard]] std::shared_ptr<KRFileHierarchyItem> knownFileItem(const FSRef &ref);

/// "folder/", "folder/file" … of everything below the folder, by base names, depth first.
[[nodiscard]] QStringList pathsBelow(const DRFolder &folder, const QString &prefix = {});

} // namespace Tessaron::Testing
