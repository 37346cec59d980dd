#include "platform/discrecording/content/ContentTree.h"

#include "platform/foundation/FileSystemRepresentation.h"

#include <algorithm>

namespace Tessaron
{

namespace
{

/// The entry of a table ordered by node; null when the node has none.
template <typename Value>
const Value *valueFor(const std::vector<std::pair<NodeIndex, Value>> &table, NodeIndex node)
{
    const auto found = std::lower_bound(table.begin(), table.end(), node,
                                        [](const auto &entry, NodeIndex wanted) { return entry.first < wanted; });
    return found != table.end() && found->first == node ? &found->second : nullptr;
}

} // namespace

std::string_view ContentTree::baseName(NodeIndex node) const
{
    if (nodes[node].has(ContentNode::NameIsChanged)) {
        if (const std::string_view *const name = valueFor(changedNames, node))
            return *name;
    }
    return nodes[node].nameView();
}

QString ContentTree::discName(NodeIndex node) const
{
    return stringWithFileSystemRepresentation(QByteArrayView(nodes[node].name, nodes[node].nameLength));
}

QByteArray ContentTree::discPath(NodeIndex node) const
{
    if (node == 0)
        return QByteArrayLiteral("/");
    std::vector<NodeIndex> chain;
    for (NodeIndex at = node; at != 0; at = nodes[at].parent)
        chain.push_back(at);
    QByteArray path;
    for (auto at = chain.rbegin(); at != chain.rend(); ++at) {
        const std::string_view name = baseName(*at);
        path.append('/').append(name.data(), static_cast<qsizetype>(name.size()));
    }
    return path;
}

FSRef ContentTree::sourceRef(NodeIndex node) const
{
    const ContentNode &object = nodes[node];
    FSRef ref;
    if (object.sourceNode == 0)
        return ref;
    ref.device = devices[object.device];
    ref.inode = object.inode;
    ref.setBirthTime(object.birthTime());
    ref.node = object.sourceNode;
    return ref;
}

FileContents ContentTree::fileContents(NodeIndex node) const
{
    const ContentNode &object = nodes[node];
    FileContents file;
    file.ref = sourceRef(node);
    file.size = object.fileSize();
    file.inode = object.inode;
    file.modification = object.modificationTime();
    file.change = object.changeTime();
    return file;
}

QByteArray ContentTree::memoryContents(NodeIndex node) const
{
    const QByteArray *const contents = valueFor(contentsInMemory, node);
    return contents ? *contents : QByteArray();
}

bool ContentTree::haveSameAttributes(NodeIndex one, NodeIndex other) const
{
    const ContentNode &left = nodes[one];
    const ContentNode &right = nodes[other];
    return left.mode == right.mode && left.userId == right.userId && left.groupId == right.groupId
        && !left.has(ContentNode::HasDates) && !right.has(ContentNode::HasDates);
}

FileTime ContentTree::noLaterThanAllowed(FileTime time) const
{
    return latestTime && time.seconds >= *latestTime ? FileTime{*latestTime, 0} : time;
}

ObjectTimes ContentTree::times(NodeIndex node) const
{
    const ContentNode &object = nodes[node];
    const bool hasSource = object.sourceNode != 0 || object.has(ContentNode::LiesOnDisc);
    ObjectTimes result;
    result.modification = hasSource ? object.modificationTime() : volumeTime;
    result.attributeModification = hasSource && !latestTime ? object.changeTime() : result.modification;
    result.access = result.modification;
    result.creation = result.modification;
    if (hasSource && !latestTime && object.birthTime().seconds != 0)
        result.creation = std::min(result.creation, object.birthTime());
    if (object.has(ContentNode::HasDates)) {
        const auto set =
            std::lower_bound(dates.begin(), dates.end(), node,
                             [](const ContentDates &entry, NodeIndex wanted) { return entry.node < wanted; });
        result.modification = set->modification.value_or(result.modification);
        result.access = set->access.value_or(result.modification);
        result.attributeModification = set->attributeModification.value_or(result.attributeModification);
        result.creation = set->creation.value_or(std::min(result.creation, result.modification));
    }
    result.modification = noLaterThanAllowed(result.modification);
    result.access = noLaterThanAllowed(result.access);
    result.attributeModification = noLaterThanAllowed(result.attributeModification);
    result.creation = noLaterThanAllowed(result.creation);
    return result;
}

} // namespace Tessaron
