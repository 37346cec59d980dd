#include "app/DiscNode.h"

#include <TessaronClasses/KRFileReference.h>

#include <algorithm>
#include <iterator>
#include <platform/coreservices/FSCatalog.h>
#include <platform/foundation/FileSystemRepresentation.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaron::Desktop
{

namespace
{

/// Who the program runs as, asked once.
class ReadingRights
{
public:
    ReadingRights()
        : m_user(::geteuid())
        , m_group(::getegid())
    {
        const int count = ::getgroups(0, nullptr);
        m_groups.resize(std::size_t(std::max(count, 0)));
        if (count > 0 && ::getgroups(count, m_groups.data()) < 0)
            m_groups.clear();
    }

    /// By the mode alone: access lists may allow more, and what they forbid is found when it is read.
    [[nodiscard]] bool mayRead(const FSCatalogInfo &info) const
    {
        if (m_user == 0)
            return true;
        if (info.userId == m_user)
            return (info.mode & S_IRUSR) != 0;
        const bool isInGroup =
            info.groupId == m_group || std::find(m_groups.begin(), m_groups.end(), info.groupId) != m_groups.end();
        return (info.mode & (isInGroup ? S_IRGRP : S_IROTH)) != 0;
    }

private:
    const uid_t m_user;
    const gid_t m_group;
    std::vector<gid_t> m_groups;
};

DiscNodeKind kindOf(std::uint32_t mode)
{
    if (S_ISDIR(mode))
        return DiscNodeKind::Folder;
    if (S_ISREG(mode))
        return DiscNodeKind::File;
    return S_ISLNK(mode) ? DiscNodeKind::SymbolicLink : DiscNodeKind::Other;
}

void describe(DiscNode &node, const ReadingRights &rights)
{
    KRFileReference &reference = *node.item->fileReference();
    node.name = nameOnDisc(*node.item);
    node.hasUndecodableName = holdsUndecodableBytes(node.name);
    if (reference.isVirtual()) {
        node.kind = DiscNodeKind::VirtualFolder;
        return;
    }
    FSCatalogInfo info;
    if (FSGetCatalogInfo(reference.fileRef(), kFSCatInfoDataSizes | kFSCatInfoDates | kFSCatInfoPermissions, &info)
        != noErr) {
        node.isMissing = true;
        node.kind = reference.isContainer() ? DiscNodeKind::Folder : DiscNodeKind::File;
        return;
    }
    node.kind = kindOf(info.mode);
    node.modified = info.contentModDate.seconds;
    node.isUnreadable = (node.kind == DiscNodeKind::File || node.kind == DiscNodeKind::Folder) && !rights.mayRead(info);
    if (node.kind == DiscNodeKind::File) {
        node.size = info.dataLogicalSize;
        node.totalBytes = wholeBlocks(node.size);
    }
}

/// Adds what the children take, those below first: in `order` every node comes before its children.
void addUp(const std::vector<DiscNode *> &order)
{
    for (auto node = order.rbegin(); node != order.rend(); ++node) {
        if (DiscNode *const parent = (*node)->parent) {
            parent->totalBytes += (*node)->totalBytes;
            parent->objects += (*node)->objects;
        }
    }
}

/// Known from the beginning, so that nothing has to be asked again on any thread. An extension that is that of the name
/// keeps the file's own from being appended to it.
std::shared_ptr<KRFileReference> copyOfReference(const DiscNode &node)
{
    KRFileReference &original = *node.item->fileReference();
    if (original.isVirtual())
        return KRFileReference::virtualFolderWithName(node.name);
    _ZelFileAttribute known = ZelFileAttributeNone_fct();
    known.empty = 0;
    known.directory = node.isFolder() ? 0 : 1;
    known.symLink = node.kind == DiscNodeKind::SymbolicLink ? 0 : 1;
    known.bundle = known.alias = known.invisible = known.extensionHidden = 1;
    known.dataSizeIsKnown = known.rsrcSizeIsKnown = 0;
    known.dataSize = node.isFolder() ? 0 : original.dataPhysicalSize();
    known.rsrcSize = node.isFolder() ? 0 : original.rsrcPhysicalSize();
    if (original.hasDesiredName()) {
        const QByteArray name = fileSystemRepresentation(node.name);
        const qsizetype dot = name.lastIndexOf('.');
        known.extension = mallocCopy(dot > 0 ? name.mid(dot + 1) : QByteArray());
    }
    std::shared_ptr<KRFileReference> copy = KRFileReference::initWithFSRef(*original.fileRef(), std::move(known));
    if (original.hasDesiredName())
        copy->setDesiredName(node.name);
    return copy;
}

} // namespace

QString nameOnDisc(const KRFileHierarchyItem &item)
{
    KRFileReference &reference = *item.fileReference();
    if (reference.isVirtual() || reference.hasDesiredName())
        return reference.desiredNameWithExtensionEvenIfHidden(true);
    const QByteArray path = lastKnownPath(*reference.fileRef());
    return stringWithFileSystemRepresentation(path.mid(path.lastIndexOf('/') + 1));
}

DiscNode::~DiscNode()
{
    std::vector<std::unique_ptr<DiscNode>> waiting = std::move(children);
    while (!waiting.empty()) {
        const std::unique_ptr<DiscNode> node = std::move(waiting.back());
        waiting.pop_back();
        std::move(node->children.begin(), node->children.end(), std::back_inserter(waiting));
        node->children.clear();
    }
}

bool DiscNode::isInside(const DiscNode &other) const
{
    const DiscNode *node = this;
    while (node && node != &other)
        node = node->parent;
    return node != nullptr;
}

DiscNode *DiscNode::child(const QString &wanted) const
{
    const auto found = std::find_if(children.begin(), children.end(),
                                    [&wanted](const std::unique_ptr<DiscNode> &each) { return each->name == wanted; });
    return found == children.end() ? nullptr : found->get();
}

QString DiscNode::discPath() const
{
    QString path;
    for (const DiscNode *node = this; node->parent; node = node->parent)
        path.prepend(u'/' + node->name);
    return path.isEmpty() ? QStringLiteral("/") : path;
}

QByteArray DiscNode::sourcePath() const
{
    return lost ? lost->path : lastKnownPath(*item->fileReference()->fileRef());
}

QString DiscNode::shownName() const
{
    return hasUndecodableName ? displayableText(name) : name;
}

std::unique_ptr<DiscNode> describedTree(const std::shared_ptr<KRFileHierarchyItem> &root, const std::stop_token &stop,
                                        std::atomic<std::uint64_t> *looked)
{
    const ReadingRights rights;
    auto top = std::make_unique<DiscNode>();
    top->item = root;
    std::vector<DiscNode *> order = {top.get()};
    for (std::size_t index = 0; index < order.size(); ++index) {
        if (stop.stop_requested())
            return nullptr;
        DiscNode &node = *order[index];
        describe(node, rights);
        ++*looked;
        node.children.reserve(node.item->numberOfItems());
        for (const std::shared_ptr<KRFileHierarchyItem> &item : node.item->items()) {
            auto child = std::make_unique<DiscNode>();
            child->item = item;
            child->parent = &node;
            child->row = std::uint32_t(node.children.size());
            order.push_back(child.get());
            node.children.push_back(std::move(child));
        }
    }
    addUp(order);
    return top;
}

void describeNode(DiscNode &node)
{
    static const ReadingRights rights;
    describe(node, rights);
}

void addUpTree(DiscNode &root)
{
    std::vector<DiscNode *> order = {&root};
    for (std::size_t index = 0; index < order.size(); ++index) {
        DiscNode &node = *order[index];
        node.objects = 1;
        node.totalBytes = node.kind == DiscNodeKind::File ? wholeBlocks(node.size) : 0;
        for (std::size_t row = 0; row < node.children.size(); ++row) {
            node.children[row]->row = std::uint32_t(row);
            order.push_back(node.children[row].get());
        }
    }
    addUp(order);
}

std::unique_ptr<DiscNode> virtualFolderNode(const QString &name)
{
    auto node = std::make_unique<DiscNode>();
    node->item = KRFileHierarchyItem::fileHierarchyItemWithFileReference(KRFileReference::virtualFolderWithName(name));
    node->name = name;
    node->kind = DiscNodeKind::VirtualFolder;
    return node;
}

std::shared_ptr<KRFileHierarchyItem> copyForJob(const DiscNode &root)
{
    const auto copyOf = [](const DiscNode &node) {
        std::shared_ptr<KRFileReference> reference = copyOfReference(node);
        *reference->tessaronAttributes() = *node.item->fileReference()->tessaronAttributes();
        return KRFileHierarchyItem::fileHierarchyItemWithFileReference(std::move(reference));
    };
    std::shared_ptr<KRFileHierarchyItem> top = copyOf(root);
    std::vector<std::pair<const DiscNode *, KRFileHierarchyItem *>> waiting = {{&root, top.get()}};
    while (!waiting.empty()) {
        const auto [node, item] = waiting.back();
        waiting.pop_back();
        item->items().reserve(node->children.size());
        for (const std::unique_ptr<DiscNode> &child : node->children) {
            const std::shared_ptr<KRFileHierarchyItem> copy = copyOf(*child);
            item->addItem(copy);
            if (!child->children.empty())
                waiting.emplace_back(child.get(), copy.get());
        }
    }
    return top;
}

std::uint64_t estimatedDiscSize(const DiscNode &root)
{
    // Of images with all four filesystems: an empty one takes 622,592 bytes, and 5,000 files in 20 folders, named like
    // "holiday picture 17.jpg", 2,738 bytes each besides their contents, most of it UDF's block for each.
    constexpr std::uint64_t emptyDisc = 622'592;
    constexpr std::uint64_t perObject = 2738;
    const std::uint64_t objects = root.objects - 1;
    return objects == 0 ? 0 : emptyDisc + objects * perObject + root.totalBytes;
}

} // namespace Tessaron::Desktop
