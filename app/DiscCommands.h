#pragma once

#include "app/DiscNode.h"

#include <TessaronClasses/ZelFileAttribute.h>

#include <QUndoCommand>

#include <memory>
#include <utility>
#include <vector>

namespace Tessaron::Desktop
{

class DiscTreeModel;

// What is done to the tree of a disc, each as one step that can be undone. What a step takes out it keeps.

/// Puts new nodes into a folder.
class AddNodesCommand final : public QUndoCommand
{
public:
    AddNodesCommand(DiscTreeModel &model, DiscNode &folder, std::vector<std::unique_ptr<DiscNode>> nodes,
                    const QString &text);

    void redo() override;
    void undo() override;

private:
    DiscTreeModel &m_model;
    DiscNode &m_folder;
    std::vector<std::unique_ptr<DiscNode>> m_kept;
    std::vector<DiscNode *> m_nodes;
};

/// Takes nodes out.
class RemoveNodesCommand final : public QUndoCommand
{
public:
    RemoveNodesCommand(DiscTreeModel &model, std::vector<DiscNode *> nodes, const QString &text);

    void redo() override;
    void undo() override;

private:
    DiscTreeModel &m_model;
    const std::vector<DiscNode *> m_nodes;
    std::vector<DiscNode *> m_folders; ///< the one of each
    std::vector<std::unique_ptr<DiscNode>> m_kept;
};

/// Moves nodes into another folder, with the names that they get there.
class MoveNodesCommand final : public QUndoCommand
{
public:
    MoveNodesCommand(DiscTreeModel &model, std::vector<DiscNode *> nodes, DiscNode &folder, std::vector<QString> names,
                     const QString &text);

    void redo() override;
    void undo() override;

private:
    DiscTreeModel &m_model;
    const std::vector<DiscNode *> m_nodes;
    std::vector<DiscNode *> m_foldersBefore;
    std::vector<QString> m_namesBefore;
    DiscNode &m_folder;
    const std::vector<QString> m_names;
};

class RenameNodeCommand final : public QUndoCommand
{
public:
    RenameNodeCommand(DiscTreeModel &model, DiscNode &node, const QString &name, const QString &text);

    void redo() override;
    void undo() override;

private:
    DiscTreeModel &m_model;
    DiscNode &m_node;
    const QString m_before;
    const QString m_name;
};

class SetOptionsCommand final : public QUndoCommand
{
public:
    SetOptionsCommand(DiscTreeModel &model, const std::vector<DiscNode *> &nodes, const _TessaronAttributes &options,
                      const QString &text);

    void redo() override;
    void undo() override;

private:
    using Options = std::vector<std::pair<DiscNode *, _TessaronAttributes>>;

    DiscTreeModel &m_model;
    Options m_before;
    Options m_after;
};

} // namespace Tessaron::Desktop
