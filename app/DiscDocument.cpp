#include "app/DiscDocument.h"

#include "app/DiscCommands.h"
#include "app/SourceIntake.h"
#include "app/Words.h"

#include <QSet>

#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

QSet<QString> namesIn(const DiscNode &folder)
{
    QSet<QString> names;
    names.reserve(qsizetype(folder.children.size()));
    for (const std::unique_ptr<DiscNode> &child : folder.children)
        names.insert(child->name);
    return names;
}

} // namespace

class DiscDocument::VolumeNameCommand final : public QUndoCommand
{
public:
    VolumeNameCommand(DiscDocument &document, const QString &name)
        : QUndoCommand(tr("Rename the Disc"))
        , m_document(document)
        , m_before(document.m_volumeName)
        , m_name(name)
    {
    }

    void redo() override { set(m_name); }
    void undo() override { set(m_before); }
    [[nodiscard]] int id() const override { return 1; }
    bool mergeWith(const QUndoCommand *next) override
    {
        m_name = static_cast<const VolumeNameCommand *>(next)->m_name;
        return true;
    }

private:
    void set(const QString &name)
    {
        m_document.m_volumeName = name;
        Q_EMIT m_document.volumeNameChanged(name);
    }

    DiscDocument &m_document;
    const QString m_before;
    QString m_name;
};

DiscDocument::DiscDocument(QObject *parent)
    : QObject(parent)
    , m_volumeName(untitledDiscName())
{
}

void DiscDocument::setVolumeName(const QString &name)
{
    if (name != m_volumeName)
        m_undoStack.push(new VolumeNameCommand(*this, name));
}

DiscNode &DiscDocument::folderAt(const QStringList &path) const
{
    DiscNode *folder = &m_model.root();
    for (const QString &name : path) {
        DiscNode *const next = folder->child(name);
        if (!next || !next->isFolder())
            return m_model.root();
        folder = next;
    }
    return *folder;
}

QStringList DiscDocument::addTaken(TakenIn &taken)
{
    QStringList told = taken.problems;
    DiscNode &folder = folderAt(taken.folder);
    QSet<QString> names = namesIn(folder);
    QSet<QByteArray> sources;
    for (const std::unique_ptr<DiscNode> &child : folder.children)
        sources.insert(child->sourcePath());
    std::vector<std::unique_ptr<DiscNode>> adding;
    for (std::unique_ptr<DiscNode> &node : taken.nodes) {
        if (sources.contains(node->sourcePath())) {
            told << tr("%1 is on the disc already.").arg(node->shownName());
            continue;
        }
        sources.insert(node->sourcePath());
        const QString name = freeName(node->name, [&names](const QString &each) { return names.contains(each); });
        if (name != node->name) {
            told
                << tr("%1 is called %2 on the disc: its name was taken.").arg(node->shownName(), displayableText(name));
            m_model.setNames({{node.get(), name}});
        }
        names.insert(name);
        adding.push_back(std::move(node));
    }
    taken.nodes.clear();
    if (!adding.empty()) {
        const QString text = tr("Add %n Item(s)", nullptr, int(adding.size()));
        m_undoStack.push(new AddNodesCommand(m_model, folder, std::move(adding), text));
    }
    return told;
}

DiscNode &DiscDocument::addFolder(DiscNode &parent)
{
    const QSet<QString> names = namesIn(parent);
    std::vector<std::unique_ptr<DiscNode>> nodes;
    nodes.push_back(virtualFolderNode(
        freeName(untitledFolderName(), [&names](const QString &each) { return names.contains(each); })));
    DiscNode &folder = *nodes.front();
    m_undoStack.push(new AddNodesCommand(m_model, parent, std::move(nodes), tr("New Folder")));
    return folder;
}

void DiscDocument::remove(const std::vector<DiscNode *> &nodes)
{
    if (!nodes.empty())
        m_undoStack.push(new RemoveNodesCommand(m_model, nodes, tr("Remove %n Item(s)", nullptr, int(nodes.size()))));
}

QStringList DiscDocument::move(const std::vector<DiscNode *> &nodes, DiscNode &folder)
{
    QStringList told;
    QSet<QString> taken = namesIn(folder);
    std::vector<DiscNode *> moving;
    std::vector<QString> names;
    for (DiscNode *const node : nodes) {
        if (node->parent == &folder)
            continue;
        if (folder.isInside(*node)) {
            told << tr("%1 cannot be moved into itself.").arg(node->shownName());
            continue;
        }
        const QString name = freeName(node->name, [&taken](const QString &each) { return taken.contains(each); });
        if (name != node->name)
            told
                << tr("%1 is called %2 on the disc: its name was taken.").arg(node->shownName(), displayableText(name));
        taken.insert(name);
        moving.push_back(node);
        names.push_back(name);
    }
    if (!moving.empty()) {
        const QString text = tr("Move %n Item(s)", nullptr, int(moving.size()));
        m_undoStack.push(new MoveNodesCommand(m_model, std::move(moving), folder, std::move(names), text));
    }
    return told;
}

QString DiscDocument::rename(DiscNode &node, const QString &name)
{
    if (name.isEmpty())
        return tr("A name cannot be empty.");
    if (name == QStringLiteral(".") || name == QStringLiteral("..") || name.contains(u'/') || name.contains(QChar(0)))
        return tr("A name cannot be %1: no system could open it.").arg(name);
    if (fileSystemRepresentation(name).size() > 255)
        return tr("A name can have 255 bytes at most.");
    const DiscNode *const other = node.parent ? node.parent->child(name) : nullptr;
    if (other && other != &node)
        return tr("There is a %1 in this folder already.").arg(displayableText(name));
    if (name != node.name)
        m_undoStack.push(new RenameNodeCommand(m_model, node, name, tr("Rename %1").arg(node.shownName())));
    return {};
}

void DiscDocument::setOptions(const std::vector<DiscNode *> &nodes, const _TessaronAttributes &options)
{
    if (!nodes.empty())
        m_undoStack.push(new SetOptionsCommand(m_model, nodes, options, tr("Change Options")));
}

void DiscDocument::replace(std::unique_ptr<DiscNode> root, const QString &volumeName)
{
    m_undoStack.clear();
    m_model.setRoot(std::move(root));
    m_volumeName = volumeName;
    Q_EMIT volumeNameChanged(volumeName);
}

} // namespace Tessaron::Desktop
