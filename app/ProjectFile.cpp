#include "app/ProjectFile.h"

#include "app/AtomicFile.h"

#include <TessaronClasses/FileReferenceFunctions.h>
#include <TessaronClasses/KRFileReference.h>

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

struct ProjectWords {
    Q_DECLARE_TR_FUNCTIONS(Project)
};

constexpr int currentVersion = 1;
const QString formatName = QStringLiteral("tessaron-project");
/// Where a file can be opened only if it is one of a person's making: more than that is no project.
constexpr qint64 longestProject = qint64(2) << 30;

/// Bytes that are text are written as text, others in base64 under another key.
void setBytes(QJsonObject &object, const QString &key, const QByteArray &bytes)
{
    const QString text = stringWithFileSystemRepresentation(bytes);
    if (holdsUndecodableBytes(text))
        object.insert(key + QStringLiteral("Bytes"), QString::fromLatin1(bytes.toBase64()));
    else
        object.insert(key, text);
}

QByteArray bytesIn(const QJsonObject &object, const QString &key)
{
    const QJsonValue encoded = object.value(key + QStringLiteral("Bytes"));
    if (encoded.isString())
        return QByteArray::fromBase64(encoded.toString().toLatin1());
    return fileSystemRepresentation(object.value(key).toString());
}

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

NSError notAProject(const QByteArray &path, const QString &why)
{
    const QString shown = displayableText(stringWithFileSystemRepresentation(path));
    return NSError(NSCocoaErrorDomain, 1,
                   {{NSLocalizedDescriptionKey, ProjectWords::tr("%1 cannot be opened: %2").arg(shown, why)},
                    {NSFilePathErrorKey, shown}});
}

/// A file or folder as a project names it; links are not followed.
bool findAt(const QByteArray &path, bool isFolder, FSRef *ref)
{
    bool foundFolder = false;
    return FSPathMakeRefWithOptions(path, kFSPathMakeRefDoNotFollowLeafSymlink, ref, &foundFolder) == noErr
        && foundFolder == isFolder;
}

bool findSource(const QJsonObject &object, const QByteArray &projectFolder, bool isFolder, FSRef *ref)
{
    const QByteArray path = bytesIn(object, QStringLiteral("path"));
    const QByteArray place = path.startsWith('/') ? path : projectFolder + '/' + path;
    if (!path.isEmpty() && findAt(place, isFolder, ref))
        return true;
    const QByteArray absolute = bytesIn(object, QStringLiteral("absolutePath"));
    if (!absolute.isEmpty() && findAt(absolute, isFolder, ref))
        return true;
    const QByteArray alias = QByteArray::fromBase64(object.value(QStringLiteral("alias")).toString().toLatin1());
    return !alias.isEmpty() && FSRefFromAliasData(alias, ref) == noErr;
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
        const QByteArray absolute = bytesIn(object, QStringLiteral("absolutePath"));
        const QByteArray path = bytesIn(object, QStringLiteral("path"));
        node->lost = std::make_shared<DiscNode::LostSource>(
            DiscNode::LostSource{absolute.isEmpty() ? path : absolute,
                                 QByteArray::fromBase64(object.value(QStringLiteral("alias")).toString().toLatin1())});
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

} // namespace

/// All that the thread needs of a node.
struct ProjectContents::Entry {
    std::size_t parent;
    QString name;
    DiscNodeKind kind;
    FSRef ref;
    _TessaronAttributes options;
    std::shared_ptr<const DiscNode::LostSource> lost;
};

ProjectContents::ProjectContents(const DiscNode &root, QString volumeName, QString mediumKey)
    : m_volumeName(std::move(volumeName))
    , m_mediumKey(std::move(mediumKey))
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
    m_entries = std::move(entries);
}

QByteArray ProjectContents::json(const QByteArray &folder, bool hasAliases, const std::stop_token &stop) const
{
    const QByteArray inside = folder + '/';
    std::vector<QJsonObject> objects(m_entries->size());
    std::vector<QJsonArray> children(m_entries->size());
    // Every entry stands behind its parent: from the last on, each is whole when its parent takes it.
    for (std::size_t index = m_entries->size(); index-- > 1;) {
        if (stop.stop_requested())
            return {};
        const Entry &entry = (*m_entries)[index];
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
            if (path.startsWith(inside)) {
                setBytes(object, QStringLiteral("path"), path.mid(inside.size()));
                setBytes(object, QStringLiteral("absolutePath"), path);
            } else {
                setBytes(object, QStringLiteral("path"), path);
            }
            if (!alias.isEmpty())
                object.insert(QStringLiteral("alias"), QString::fromLatin1(alias.toBase64()));
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
    const QJsonObject project = {
        {QStringLiteral("format"), formatName},           {QStringLiteral("version"), currentVersion},
        {QStringLiteral("kind"), QStringLiteral("data")}, {QStringLiteral("name"), m_volumeName},
        {QStringLiteral("medium"), m_mediumKey},          {QStringLiteral("items"), items}};
    return QJsonDocument(project).toJson(QJsonDocument::Indented);
}

Result<std::shared_ptr<DiscProject>> readProject(const QByteArray &path, const std::stop_token &stop)
{
    QFile file(stringWithFileSystemRepresentation(path));
    if (!file.open(QIODevice::ReadOnly))
        return notAProject(path, file.errorString());
    if (file.size() > longestProject)
        return notAProject(path, ProjectWords::tr("it is too long for a project"));
    QJsonParseError fault;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &fault);
    const QJsonObject object = document.object();
    if (document.isNull() || object.value(QStringLiteral("format")).toString() != formatName)
        return notAProject(path, document.isNull() ? fault.errorString() : ProjectWords::tr("it is no project"));
    if (object.value(QStringLiteral("version")).toInt() > currentVersion)
        return notAProject(path, ProjectWords::tr("it was saved by a newer version of this program"));

    auto project = std::make_shared<DiscProject>();
    project->volumeName = object.value(QStringLiteral("name")).toString();
    project->mediumKey = object.value(QStringLiteral("medium")).toString();
    project->root = virtualFolderNode(QStringLiteral("disc"));
    const QByteArray folder = folderOf(path);
    std::vector<std::pair<DiscNode *, QJsonArray>> waiting = {
        {project->root.get(), object.value(QStringLiteral("items")).toArray()}};
    while (!waiting.empty()) {
        const auto [parent, items] = std::move(waiting.back());
        waiting.pop_back();
        for (const QJsonValue value : items) {
            if (stop.stop_requested())
                return project;
            const QJsonObject item = value.toObject();
            std::unique_ptr<DiscNode> node = nodeFor(item, folder);
            if (!node)
                return notAProject(path, ProjectWords::tr("it names an item that cannot be on a disc"));
            node->parent = parent;
            parent->item->addItem(node->item);
            if (node->isFolder())
                waiting.emplace_back(node.get(), item.value(QStringLiteral("items")).toArray());
            parent->children.push_back(std::move(node));
        }
    }
    addUpTree(*project->root);
    return project;
}

} // namespace Tessaron::Desktop
