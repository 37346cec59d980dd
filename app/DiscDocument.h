#pragma once

#include "app/DiscTreeModel.h"

#include <TessaronClasses/ZelFileAttribute.h>

#include <QObject>
#include <QStringList>
#include <QUndoStack>

namespace Tessaron::Desktop
{

struct TakenIn;

/// A data disc that is being put together: its tree, its name, and the steps that led there. Everything that changes it
/// can be undone. On the main thread.
class DiscDocument final : public QObject
{
    Q_OBJECT

public:
    explicit DiscDocument(QObject *parent = nullptr);

    [[nodiscard]] DiscTreeModel &model() { return m_model; }
    [[nodiscard]] const DiscTreeModel &model() const { return m_model; }
    [[nodiscard]] QUndoStack &undoStack() { return m_undoStack; }

    [[nodiscard]] QString volumeName() const { return m_volumeName; }
    void setVolumeName(const QString &name);

    /// Puts what was found into the folder that was to take it, else into the root. What lies there from the same place
    /// already is left out, and what finds its name taken gets a free one: each is told.
    [[nodiscard]] QStringList addTaken(TakenIn &taken);
    /// Adds an empty folder with a free name.
    DiscNode &addFolder(DiscNode &parent);
    void remove(const std::vector<DiscNode *> &nodes);
    /// Moves nodes into a folder; what finds its name taken gets a free one, which is told. A folder is not moved into
    /// itself.
    [[nodiscard]] QStringList move(const std::vector<DiscNode *> &nodes, DiscNode &folder);
    /// Why the name cannot be given; empty when it was.
    [[nodiscard]] QString rename(DiscNode &node, const QString &name);
    void setOptions(const std::vector<DiscNode *> &nodes, const _TessaronAttributes &options);

    /// Another disc, without steps to undo.
    void replace(std::unique_ptr<DiscNode> root, const QString &volumeName);

Q_SIGNALS:
    void volumeNameChanged(const QString &name);

private:
    class VolumeNameCommand;

    [[nodiscard]] DiscNode &folderAt(const QStringList &path) const;

    DiscTreeModel m_model;
    QString m_volumeName;
    QUndoStack m_undoStack; ///< refers to the model, so it goes first
};

} // namespace Tessaron::Desktop
