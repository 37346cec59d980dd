#pragma once

#include "app/DiscNode.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <platform/foundation/Result.h>

namespace Tessaron::Desktop
{

/// A disc as it is written into a project and read from it.
struct DiscProject {
    std::unique_ptr<DiscNode> root;
    QString volumeName;
    QString mediumKey;
};

/// What a project is written from: a copy that a thread may use while the disc changes. Does not touch the disk.
class ProjectContents
{
public:
    ProjectContents(const DiscNode &root, QString volumeName, QString mediumKey);

    /// The project for a file in the folder (bytes, without a slash behind): paths below it are written relative to it.
    /// With `hasAliases`, every file carries what finds it again when it is moved. Touches the disk.
    [[nodiscard]] QByteArray json(const QByteArray &folder, bool hasAliases, const std::stop_token &stop) const;

private:
    struct Entry;

    std::shared_ptr<const std::vector<Entry>> m_entries; ///< in the order of the tree
    QString m_volumeName;
    QString m_mediumKey;
};

/// Reads a project and finds its files: at their places, relative to the project's first, else where they were moved
/// to. What cannot be found is in the tree, and is missing. Touches the disk. An error says why it is no project.
[[nodiscard]] Result<std::shared_ptr<DiscProject>> readProject(const QByteArray &path, const std::stop_token &stop);

} // namespace Tessaron::Desktop
