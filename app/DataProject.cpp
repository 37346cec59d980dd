#include "app/DataProject.h"

#include "app/ProjectFile.h"
#include "app/Words.h"

#include <TessaronClasses/FileReferenceFunctions.h>
#include <TessaronClasses/KRFileReference.h>

#include <QCoreApplication>
#include <QJsonArray>

#include <optional>
#include <platform/foundation/FileSystemRepresentation.h>
#include <platform/foundation/OSStatus.h>

namespace Tessaron::Desktop
{

namespace
{

void setOptions(QJsonObject &object, const _TessaronAttributes &options)
{
    if (options.invisible)
        object.insert(QStringLiteral("hidden"), true);
    if (options.useBasicFSInclusion && options.hasBasicFSInclusion && options.basicFSInclusion != 0)
        object.insert(QStringLiteral("systems"),
                      options.basicFSInclusion == 1 ? QStringLiteral("mac") : QStringLiteral("pc"));
    if (!options.useBasicFSInclusion && options.hasAdvancedFSInclusion)
        object.insert(QStringLiteral("filesystems"), int(options.advancedFSInclusion));
}

_TessaronAttributes optionsIn(const QJsonObject &object)
{
    _TessaronAttributes options = TessaronFileAttributesNone_fct();
    options.invisible = object.value(QStringLiteral("hidden")).toBool() ? 1 : 0;
    const QString systems = object.value(QStringLiteral("systems")).toString();
    if (systems == QStringLiteral("mac") || systems == QStringLiteral("pc")) {
        options.hasBasicFSInclusion = 1;
        options.basicFSInclusion = systems == QStringLiteral("mac") ? 1 : 2;
    }
    const QJsonValue filesystems = object.value(QStringLiteral("filesystems"));
    constexpr int allFilesystems = 15;
    if (filesystems.isDouble()) {
        options.useBasicFSInclusion = 0;
        options.hasAdvancedFSInclusion = 1;
        options.advancedFSInclusion = std::uint32_t(filesystems.toInt()) & allFilesystems;
    }
    return options;
}

std::unique_ptr<DiscNode> nodeFor(const QJsonObject &object, const QByteArray &projectFolder)
{
    const QString name = stringWithFileSystemRepresentation(bytesIn(object, QStringLiteral("name")));
    if (name.isEmpty() || name.contains(u'/'))
        return nullptr;
    const QString kind = object.value(QStringLiteral("kind")).toString();
    if (kind == QStringLiteral("newFolder")) {
        std::unique_ptr<DiscNode> node = virtualFolderNode(name);
        *node->item->fileReference()->tessaronAttributes() = optionsIn(object);
        return node;
    }
    const bool isFolder = kind == QStringLiteral("folder");
    auto node = std::make_unique<DiscNode>();
    FSRef ref;
    const bool isFound = findSource(object, projectFolder, isFolder, &ref);
    _ZelFileAttribute known = ZelFileAttributeNone_fct();
    if (!isFound) {
        ref = FSRef();
        known.empty = 0;
        known.directory = isFolder ? 0 : 1;
        known.dataSizeIsKnown = known.rsrcSizeIsKnown = 0;
        const ProjectSource source = sourceIn(object);
        node->lost = std::make_shared<DiscNode::LostSource>(DiscNode::LostSource{source.path, source.alias});
    }
    const std::shared_ptr<KRFileReference> reference = KRFileReference::initWithFSRef(ref, std::move(known));
    node->item = KRFileHierarchyItem::fileHierarchyItemWithFileReference(reference);
    *reference->tessaronAttributes() = optionsIn(object);
    if (isFound) {
        describeNode(*node);
        (void)reference->physicalSize(); // asked here, so that the main thread never has to
    } else {
        node->isMissing = true;
        node->kind = isFolder ? DiscNodeKind::Folder : DiscNodeKind::File;
    }
    if (node->name != name) {
        reference->setDesiredName(name);
        node->name = name;
    }
    node->hasUndecodableName = holdsUndecodableBytes(name);
    return node;
}

/// All that the thread needs of a node.
struct Entry {
    std::size_t parent;
    QString name;
    DiscNodeKind kind;
    FSRef ref;
    _TessaronAttributes options;
    std::shared_ptr<const DiscNode::LostSource> lost;
};

std::shared_ptr<const std::vector<Entry>> entriesOf(const DiscNode &root)
{
    auto entries = std::make_shared<std::vector<Entry>>();
    entries->reserve(root.objects);
    std::vector<const DiscNode *> order = {&root};
    std::vector<std::size_t> parents = {0};
    for (std::size_t index = 0; index < order.size(); ++index) {
        const DiscNode &node = *order[index];
        const KRFileReference &reference = *node.item->fileReference();
        entries->push_back(
            {parents[index], node.name, node.kind, *reference.fileRef(), *reference.tessaronAttributes(), node.lost});
        for (const std::unique_ptr<DiscNode> &child : node.children) {
            order.push_back(child.get());
            parents.push_back(index);
        }
    }
    return entries;
}

/// What is missing is on none of the discs.
std::shared_ptr<const std::vector<Entry>> entriesOf(const KRFileHierarchyItem &root)
{
    auto entries = std::make_shared<std::vector<Entry>>();
    std::vector<std::pair<const KRFileHierarchyItem *, std::size_t>> order = {{&root, 0}};
    for (std::size_t index = 0; index < order.size(); ++index) {
        const auto [item, parent] = order[index];
        KRFileReference &reference = *item->fileReference();
        const DiscNodeKind kind = reference.isVirtual() ? DiscNodeKind::VirtualFolder
            : reference.isContainer()                   ? DiscNodeKind::Folder
                                                        : DiscNodeKind::File;
        entries->push_back(
            {parent, nameOnDisc(*item), kind, *reference.fileRef(), *reference.tessaronAttributes(), nullptr});
        for (const std::shared_ptr<KRFileHierarchyItem> &child : item->items()) {
            const KRFileReference &below = *child->fileReference();
            if (below.isVirtual() || !lastKnownPath(*below.fileRef()).isEmpty())
                order.emplace_back(child.get(), index);
        }
    }
    return entries;
}

/// The items of a disc; absent after a stop.
std::optional<QJsonArray> itemsOf(const std::vector<Entry> &entries, const QByteArray &folder, bool hasAliases,
                                  const std::stop_token &stop)
{
    std::vector<QJsonArray> children(entries.size());
    // Every entry stands behind its parent: from the last on, each is whole when its parent takes it.
    for (std::size_t index = entries.size(); index-- > 1;) {
        if (stop.stop_requested())
            return std::nullopt;
        const Entry &entry = entries[index];
        QJsonObject object;
        setBytes(object, QStringLiteral("name"), fileSystemRepresentation(entry.name));
        const bool isFolder = entry.kind == DiscNodeKind::Folder || entry.kind == DiscNodeKind::VirtualFolder;
        if (entry.kind == DiscNodeKind::VirtualFolder) {
            object.insert(QStringLiteral("kind"), QStringLiteral("newFolder"));
        } else {
            object.insert(QStringLiteral("kind"), isFolder ? QStringLiteral("folder") : QStringLiteral("file"));
            const QByteArray path = entry.lost ? entry.lost->path : lastKnownPath(entry.ref);
            const QByteArray alias = entry.lost ? entry.lost->alias
                : hasAliases                    ? AliasDataFromFSRef(&entry.ref)
                                                : QByteArray();
            setSource(object, {path, alias}, folder);
        }
        setOptions(object, entry.options);
        if (isFolder) {
            // They came last first.
            QJsonArray inOrder;
            for (qsizetype place = children[index].size(); place-- > 0;)
                inOrder.append(children[index].at(place));
            object.insert(QStringLiteral("items"), inOrder);
            children[index] = {};
        }
        children[entry.parent].append(object);
    }
    QJsonArray items;
    for (qsizetype place = children.empty() ? 0 : children.front().size(); place-- > 0;)
        items.append(children.front().at(place));
    return items;
}

/// The tree of a project. False where it names what cannot be on a disc.
bool readTree(const QJsonObject &project, const QByteArray &folder, const std::stop_token &stop,
              std::unique_ptr<DiscNode> *root)
{
    *root = virtualFolderNode(QStringLiteral("disc"));
    std::vector<std::pair<DiscNode *, QJsonArray>> waiting = {
        {root->get(), project.value(QStringLiteral("items")).toArray()}};
    while (!waiting.empty()) {
        const auto [parent, items] = std::move(waiting.back());
        waiting.pop_back();
        for (const QJsonValue value : items) {
            if (stop.stop_requested())
                return true;
            const QJsonObject item = value.toObject();
            std::unique_ptr<DiscNode> node = nodeFor(item, folder);
            if (!node)
                return false;
            node->parent = parent;
            parent->item->addItem(node->item);
            if (node->isFolder())
                waiting.emplace_back(node.get(), item.value(QStringLiteral("items")).toArray());
            parent->children.push_back(std::move(node));
        }
    }
    addUpTree(**root);
    return true;
}

/// The paths on the disc of what cannot be found, in the order of the tree.
QStringList missingIn(const DiscNode &root)
{
    QStringList missing;
    std::vector<const DiscNode *> waiting = {&root};
    while (!waiting.empty()) {
        const DiscNode *const node = waiting.back();
        waiting.pop_back();
        if (node->isMissing)
            missing << node->discPath();
        for (auto child = node->children.rbegin(); child != node->children.rend(); ++child)
            waiting.push_back(child->get());
    }
    return missing;
}

ProjectSubject::Writer writerOf(std::shared_ptr<const std::vector<Entry>> entries, const QString &name,
                                const QString &medium)
{
    return [entries = std::move(entries), name, medium](const QByteArray &folder, bool hasAliases,
                                                        const std::stop_token &stop) {
        const std::optional<QJsonArray> items = itemsOf(*entries, folder, hasAliases, stop);
        return items ? QJsonObject{{QStringLiteral("name"), name},
                                   {QStringLiteral("medium"), medium},
                                   {QStringLiteral("items"), *items}}
                     : QJsonObject();
    };
}

} // namespace

ProjectSubject::Writer DataProject::writer() const
{
    return writerOf(entriesOf(m_document.model().root()), m_document.volumeName(), m_mediumKey);
}

ProjectSubject::Writer writerOfShare(const DiscShare &share, const QString &mediumKey)
{
    return writerOf(entriesOf(*share.tree), share.volumeName, mediumKey);
}

ProjectSubject::Reader DataProject::reader()
{
    return [this](const QJsonObject &project, const QByteArray &folder,
                  const std::stop_token &stop) -> Result<Replacement> {
        // Shared, since functions are copied.
        const auto root = std::make_shared<std::unique_ptr<DiscNode>>();
        if (!readTree(project, folder, stop, root.get()))
            return NSError(NSCocoaErrorDomain, 1,
                           {{NSLocalizedDescriptionKey,
                             QCoreApplication::translate("Project", "it names an item that cannot be on a disc")}});
        return Replacement([this, root, name = project.value(QStringLiteral("name")).toString(),
                            medium = project.value(QStringLiteral("medium")).toString()] {
            QStringList missing = missingIn(**root);
            m_mediumKey = medium;
            m_document.replace(std::move(*root), name);
            return missing;
        });
    };
}

void DataProject::clear()
{
    m_document.replace(virtualFolderNode(QStringLiteral("disc")), untitledDiscName());
}

} // namespace Tessaron::Desktop
