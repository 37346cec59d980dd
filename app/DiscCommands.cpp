#include "app/DiscCommands.h"

#include "app/DiscTreeModel.h"

#include <TessaronClasses/KRFileReference.h>

#include <map>

namespace Tessaron::Desktop
{

namespace
{

/// Puts each node into its folder, those of one folder together.
void insertIntoFolders(DiscTreeModel &model, const std::vector<DiscNode *> &folders,
                       std::vector<std::unique_ptr<DiscNode>> nodes)
{
    std::map<DiscNode *, std::vector<std::unique_ptr<DiscNode>>> byFolder;
    for (std::size_t index = 0; index < nodes.size(); ++index)
        byFolder[folders[index]].push_back(std::move(nodes[index]));
    for (auto &[folder, those] : byFolder)
        model.insert(*folder, std::move(those));
}

std::vector<std::pair<DiscNode *, QString>> named(const std::vector<DiscNode *> &nodes,
                                                  const std::vector<QString> &names)
{
    std::vector<std::pair<DiscNode *, QString>> changes;
    for (std::size_t index = 0; index < nodes.size(); ++index) {
        if (nodes[index]->name != names[index])
            changes.emplace_back(nodes[index], names[index]);
    }
    return changes;
}

} // namespace

AddNodesCommand::AddNodesCommand(DiscTreeModel &model, DiscNode &folder, std::vector<std::unique_ptr<DiscNode>> nodes,
                                 const QString &text)
    : QUndoCommand(text)
    , m_model(model)
    , m_folder(folder)
    , m_kept(std::move(nodes))
{
    for (const std::unique_ptr<DiscNode> &node : m_kept)
        m_nodes.push_back(node.get());
}

void AddNodesCommand::redo()
{
    m_model.insert(m_folder, std::exchange(m_kept, {}));
}

void AddNodesCommand::undo()
{
    m_kept = m_model.take(m_nodes);
}

RemoveNodesCommand::RemoveNodesCommand(DiscTreeModel &model, std::vector<DiscNode *> nodes, const QString &text)
    : QUndoCommand(text)
    , m_model(model)
    , m_nodes(std::move(nodes))
{
    for (const DiscNode *const node : m_nodes)
        m_folders.push_back(node->parent);
}

void RemoveNodesCommand::redo()
{
    m_kept = m_model.take(m_nodes);
}

void RemoveNodesCommand::undo()
{
    insertIntoFolders(m_model, m_folders, std::exchange(m_kept, {}));
}

MoveNodesCommand::MoveNodesCommand(DiscTreeModel &model, std::vector<DiscNode *> nodes, DiscNode &folder,
                                   std::vector<QString> names, const QString &text)
    : QUndoCommand(text)
    , m_model(model)
    , m_nodes(std::move(nodes))
    , m_folder(folder)
    , m_names(std::move(names))
{
    for (const DiscNode *const node : m_nodes) {
        m_foldersBefore.push_back(node->parent);
        m_namesBefore.push_back(node->name);
    }
}

void MoveNodesCommand::redo()
{
    std::vector<std::unique_ptr<DiscNode>> moving = m_model.take(m_nodes);
    m_model.setNames(named(m_nodes, m_names));
    m_model.insert(m_folder, std::move(moving));
}

void MoveNodesCommand::undo()
{
    std::vector<std::unique_ptr<DiscNode>> moving = m_model.take(m_nodes);
    m_model.setNames(named(m_nodes, m_namesBefore));
    insertIntoFolders(m_model, m_foldersBefore, std::move(moving));
}

RenameNodeCommand::RenameNodeCommand(DiscTreeModel &model, DiscNode &node, const QString &name, const QString &text)
    : QUndoCommand(text)
    , m_model(model)
    , m_node(node)
    , m_before(node.name)
    , m_name(name)
{
}

void RenameNodeCommand::redo()
{
    m_model.setNames({{&m_node, m_name}});
}

void RenameNodeCommand::undo()
{
    m_model.setNames({{&m_node, m_before}});
}

SetOptionsCommand::SetOptionsCommand(DiscTreeModel &model, const std::vector<DiscNode *> &nodes,
                                     const _TessaronAttributes &options, const QString &text)
    : QUndoCommand(text)
    , m_model(model)
{
    for (DiscNode *const node : nodes) {
        m_before.emplace_back(node, *node->item->fileReference()->tessaronAttributes());
        m_after.emplace_back(node, options);
    }
}

void SetOptionsCommand::redo()
{
    m_model.setOptions(m_after);
}

void SetOptionsCommand::undo()
{
    m_model.setOptions(m_before);
}

} // namespace Tessaron::Desktop
