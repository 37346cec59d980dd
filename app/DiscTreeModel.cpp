#include "app/DiscTreeModel.h"

#include "app/DiscRows.h"
#include "app/DiscTreeChanges.h"
#include "app/DiscTreeOrder.h"
#include "app/FileDrops.h"
#include "app/Words.h"

#include <TessaronClasses/KRFileReference.h>

#include <QDateTime>
#include <QLocale>
#include <QMimeData>
#include <QSet>

#include <algorithm>
#include <map>
#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

namespace
{

/// Many rows from many places leave together: a view that hears of each by itself would take minutes.
constexpr auto mostRunsRemovedOneByOne = 100;

} // namespace

class DiscTreeModel::FilteredChange
{
public:
    explicit FilteredChange(DiscTreeModel &model)
        : m_model(model)
        , m_isFiltered(model.isFiltered())
    {
        if (m_isFiltered)
            m_model.beginResetModel();
    }
    ~FilteredChange()
    {
        if (!m_isFiltered)
            return;
        m_model.m_filter.find(*m_model.m_root, m_model.m_marks);
        m_model.endResetModel();
    }
    FilteredChange(const FilteredChange &) = delete;
    FilteredChange &operator=(const FilteredChange &) = delete;

    [[nodiscard]] bool isTreeShown() const { return !m_isFiltered; }

private:
    DiscTreeModel &m_model;
    const bool m_isFiltered;
};

DiscTreeModel::DiscTreeModel(QObject *parent)
    : QAbstractItemModel(parent)
    , m_root(virtualFolderNode(QStringLiteral("disc")))
{
}

void DiscTreeModel::setRoot(std::unique_ptr<DiscNode> root)
{
    beginResetModel();
    m_root = std::move(root);
    m_marks.clear();
    m_filter.find(*m_root, m_marks);
    endResetModel();
    Q_EMIT treeChanged();
}

DiscNode &DiscTreeModel::nodeAt(const QModelIndex &index) const
{
    return index.isValid() ? *static_cast<DiscNode *>(index.internalPointer()) : *m_root;
}

QModelIndex DiscTreeModel::indexOf(const DiscNode &node, Column column) const
{
    auto *const pointer = const_cast<DiscNode *>(&node); // what an index holds; the tree is this model's own
    if (isFiltered()) {
        const std::optional<std::uint32_t> row = m_filter.rowOf(node);
        return row ? createIndex(int(*row), column, pointer) : QModelIndex();
    }
    return node.parent ? createIndex(int(node.row), column, pointer) : QModelIndex();
}

std::vector<DiscNode *> DiscTreeModel::nodesAt(const QModelIndexList &indexes) const
{
    QSet<DiscNode *> chosen;
    for (const QModelIndex &index : indexes)
        chosen.insert(&nodeAt(index));
    chosen.remove(m_root.get());
    std::vector<DiscNode *> result;
    for (DiscNode *const node : chosen) {
        DiscNode *above = node->parent;
        while (above && !chosen.contains(above))
            above = above->parent;
        if (!above)
            result.push_back(node);
    }
    std::map<const DiscNode *, QString> places;
    for (const DiscNode *const node : result) {
        if (!places.contains(node->parent))
            places.emplace(node->parent, node->parent->discPath());
    }
    std::sort(result.begin(), result.end(), [&places](const DiscNode *one, const DiscNode *other) {
        return one->parent == other->parent ? one->row < other->row : places[one->parent] < places[other->parent];
    });
    return result;
}

void DiscTreeModel::insert(DiscNode &parent, std::vector<std::unique_ptr<DiscNode>> nodes)
{
    if (nodes.empty())
        return;
    {
        const FilteredChange change(*this);
        const std::size_t first = parent.children.size();
        if (change.isTreeShown())
            beginInsertRows(indexOf(parent), int(first), int(first + nodes.size() - 1));
        for (const std::unique_ptr<DiscNode> &node : nodes) {
            forgetMarks(*node);
            applyOrderBelow(*node);
        }
        appendNodes(parent, std::move(nodes));
        if (change.isTreeShown())
            endInsertRows();
        sortChildren(parent);
    }
    Q_EMIT treeChanged();
}

/// A node that is new may lie where one lay that is gone.
void DiscTreeModel::forgetMarks(const DiscNode &top)
{
    std::vector<const DiscNode *> waiting = {&top};
    while (!m_marks.isEmpty() && !waiting.empty()) {
        const DiscNode *const node = waiting.back();
        waiting.pop_back();
        m_marks.remove(node);
        for (const std::unique_ptr<DiscNode> &child : node->children)
            waiting.push_back(child.get());
    }
}

std::vector<std::unique_ptr<DiscNode>> DiscTreeModel::take(const std::vector<DiscNode *> &nodes)
{
    std::map<DiscNode *, std::vector<DiscNode *>> byParent;
    for (DiscNode *const node : nodes)
        byParent[node->parent].push_back(node);
    QHash<const DiscNode *, std::size_t> places;
    for (std::size_t place = 0; place < nodes.size(); ++place)
        places.insert(nodes[place], place);
    std::vector<std::unique_ptr<DiscNode>> taken;
    {
        const FilteredChange change(*this);
        for (auto &[parent, children] : byParent) {
            std::sort(children.begin(), children.end(),
                      [](const DiscNode *one, const DiscNode *other) { return one->row < other->row; });
            const std::vector<RowRun> runs = runsOf(children);
            if (runs.size() > mostRunsRemovedOneByOne) {
                if (change.isTreeShown())
                    Q_EMIT layoutAboutToBeChanged();
                const QModelIndexList before = persistentIndexList();
                takeScattered(*parent, children, &taken);
                QModelIndexList after;
                for (const QModelIndex &index : before) {
                    const DiscNode &node = nodeAt(index);
                    after << (node.isInside(*m_root) ? indexOf(node, Column(index.column())) : QModelIndex());
                }
                changePersistentIndexList(before, after);
                if (change.isTreeShown())
                    Q_EMIT layoutChanged();
                continue;
            }
            for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
                if (change.isTreeShown())
                    beginRemoveRows(indexOf(*parent), int(run->first), int(run->last));
                takeRun(*parent, *run, &taken);
                if (change.isTreeShown())
                    endRemoveRows();
            }
        }
    }
    std::vector<std::unique_ptr<DiscNode>> inOrder(nodes.size());
    for (std::unique_ptr<DiscNode> &node : taken) {
        const std::size_t place = places.value(node.get());
        inOrder[place] = std::move(node);
    }
    Q_EMIT treeChanged();
    return inOrder;
}

void DiscTreeModel::setNames(const std::vector<std::pair<DiscNode *, QString>> &names)
{
    std::vector<DiscNode *> changed;
    for (const auto &[node, name] : names) {
        node->name = name;
        node->hasUndecodableName = holdsUndecodableBytes(name);
        KRFileReference &reference = *node->item->fileReference();
        const QByteArray path = node->sourcePath();
        const bool isOwnName =
            !reference.isVirtual() && path.mid(path.lastIndexOf('/') + 1) == fileSystemRepresentation(name);
        reference.setDesiredName(isOwnName ? QString() : name);
        m_marks.remove(node);
        changed.push_back(node);
    }
    if (isFiltered()) {
        const FilteredChange change(*this);
    } else {
        rowsChanged(changed);
        QSet<DiscNode *> parents;
        for (DiscNode *const node : changed) {
            if (node->parent)
                parents.insert(node->parent);
        }
        for (DiscNode *const parent : parents)
            sortChildren(*parent);
    }
    Q_EMIT treeChanged();
}

void DiscTreeModel::setOptions(const std::vector<std::pair<DiscNode *, _TessaronAttributes>> &options)
{
    std::vector<DiscNode *> changed;
    for (const auto &[node, attributes] : options) {
        *node->item->fileReference()->tessaronAttributes() = attributes;
        changed.push_back(node);
    }
    rowsChanged(changed);
    Q_EMIT treeChanged();
}

void DiscTreeModel::rowsChanged(const std::vector<DiscNode *> &nodes)
{
    for (const DiscNode *const node : nodes) {
        const QModelIndex first = indexOf(*node);
        if (first.isValid())
            Q_EMIT dataChanged(first, first.siblingAtColumn(columnCountOfAll - 1));
    }
}

void DiscTreeModel::setFilter(const QString &text, DiscSubset subset)
{
    if (text == m_filter.text() && subset == m_filter.subset())
        return;
    beginResetModel();
    m_filter.setText(text);
    m_filter.setSubset(subset);
    m_filter.find(*m_root, m_marks);
    endResetModel();
}

/// Views draw all of their rows anew for one signal over rows at the top: what is marked may lie anywhere.
void DiscTreeModel::setMarks(Marks marks)
{
    if (m_filter.subset() != DiscSubset::All) {
        const FilteredChange change(*this);
        m_marks = std::move(marks);
        return;
    }
    m_marks = std::move(marks);
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCountOfAll - 1), {Qt::DecorationRole});
}

QModelIndex DiscTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= columnCountOfAll || row >= rowCount(parent))
        return {};
    DiscNode *const node =
        isFiltered() ? m_filter.matches()[std::size_t(row)] : nodeAt(parent).children[std::size_t(row)].get();
    return createIndex(row, column, node);
}

QModelIndex DiscTreeModel::parent(const QModelIndex &index) const
{
    if (!index.isValid() || isFiltered())
        return {};
    const DiscNode *const above = nodeAt(index).parent;
    return above ? indexOf(*above) : QModelIndex();
}

int DiscTreeModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid() && parent.column() != 0)
        return 0;
    if (isFiltered())
        return parent.isValid() ? 0 : int(m_filter.matches().size());
    return int(nodeAt(parent).children.size());
}

int DiscTreeModel::columnCount(const QModelIndex &) const
{
    return columnCountOfAll;
}

bool DiscTreeModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0;
}

QVariant DiscTreeModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const DiscNode &node = nodeAt(index);
    switch (role) {
    case Qt::DisplayRole:
        return textOf(node, index.column());
    case Qt::EditRole:
        return index.column() == Name ? QVariant(node.shownName()) : QVariant();
    case Qt::DecorationRole:
        return index.column() == Name ? QVariant(m_look.icon(node, markOf(node).severity)) : QVariant();
    case Qt::ToolTipRole:
        return m_look.toolTip(node, markOf(node).text);
    case Qt::TextAlignmentRole:
        return index.column() == Size ? QVariant(int(Qt::AlignRight | Qt::AlignVCenter)) : QVariant();
    case Qt::AccessibleDescriptionRole:
        return index.column() == Name ? QVariant(m_look.toolTip(node, markOf(node).text)) : QVariant();
    default:
        return {};
    }
}

QVariant DiscTreeModel::textOf(const DiscNode &node, int column) const
{
    switch (column) {
    case Name:
        return node.shownName();
    case Size:
        return sizeText(node.isFolder() ? node.totalBytes : node.size);
    case Kind:
        return m_look.kindText(node);
    case Modified:
        return node.modified == 0
            ? QString()
            : QLocale().toString(QDateTime::fromSecsSinceEpoch(node.modified), QLocale::ShortFormat);
    default:
        return node.parent ? displayableText(node.parent->discPath()) : QString();
    }
}

bool DiscTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || index.column() != Name)
        return false;
    const QString name = value.toString();
    if (name == nodeAt(index).shownName())
        return false;
    Q_EMIT renameWanted(&nodeAt(index), name);
    return true;
}

QVariant DiscTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name:
        return tr("Name");
    case Size:
        return tr("Size");
    case Kind:
        return tr("Kind");
    case Modified:
        return tr("Modified");
    default:
        return tr("Folder on the disc");
    }
}

Qt::ItemFlags DiscTreeModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    Qt::ItemFlags result = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled;
    if (index.column() == Name)
        result |= Qt::ItemIsEditable;
    if (nodeAt(index).isFolder())
        result |= Qt::ItemIsDropEnabled;
    return result;
}

void DiscTreeModel::sort(int column, Qt::SortOrder order)
{
    m_sortColumn = column;
    m_sortOrder = order;
    if (isFiltered()) {
        beginResetModel();
        applyOrderBelow(*m_root);
        m_filter.find(*m_root, m_marks);
        endResetModel();
        return;
    }
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    applyOrderBelow(*m_root);
    movePersistent(before);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

DiscTreeOrder DiscTreeModel::order() const
{
    return {m_sortColumn, m_sortOrder, m_look};
}

void DiscTreeModel::sortChildren(DiscNode &parent)
{
    const std::vector<std::uint32_t> rows = order().of(parent.children);
    if (std::is_sorted(rows.begin(), rows.end()))
        return;
    if (isFiltered()) {
        applyOrder(parent, rows);
        return;
    }
    const QList<QPersistentModelIndex> changed = {QPersistentModelIndex(indexOf(parent))};
    Q_EMIT layoutAboutToBeChanged(changed, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    applyOrder(parent, rows);
    movePersistent(before);
    Q_EMIT layoutChanged(changed, VerticalSortHint);
}

/// Of nodes that no view knows, or while all views are told.
void DiscTreeModel::applyOrderBelow(DiscNode &top)
{
    const DiscTreeOrder inOrder = order();
    std::vector<DiscNode *> waiting = {&top};
    while (!waiting.empty()) {
        DiscNode *const node = waiting.back();
        waiting.pop_back();
        applyOrder(*node, inOrder.of(node->children));
        for (const std::unique_ptr<DiscNode> &child : node->children) {
            if (!child->children.empty())
                waiting.push_back(child.get());
        }
    }
}

/// An index keeps its node and finds that node's present row.
void DiscTreeModel::movePersistent(const QModelIndexList &before)
{
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex &index : before)
        after << indexOf(nodeAt(index), Column(index.column()));
    changePersistentIndexList(before, after);
}

QStringList DiscTreeModel::mimeTypes() const
{
    return {discRowsMimeType, QStringLiteral("text/uri-list")};
}

QMimeData *DiscTreeModel::mimeData(const QModelIndexList &indexes) const
{
    return new DiscRows(*this, nodesAt(indexes));
}

bool DiscTreeModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int, const QModelIndex &parent) const
{
    if (data->hasFormat(discRowsMimeType))
        return DiscRows::of(*this, *data) && !isFiltered() && nodeAt(parent).isFolder();
    return holdsFiles(*data);
}

bool DiscTreeModel::dropMimeData(const QMimeData *data, Qt::DropAction, int, int, const QModelIndex &parent)
{
    DiscNode *folder = &nodeAt(parent);
    while (!folder->isFolder())
        folder = folder->parent;
    if (const std::vector<DiscNode *> *const nodes = DiscRows::of(*this, *data)) {
        Q_EMIT moveWanted(*nodes, folder);
        // Not true: the view would remove the rows that it dragged.
        return false;
    }
    const QList<QByteArray> paths = pathsOfFiles(*data);
    if (paths.isEmpty())
        return false;
    Q_EMIT filesDropped(paths, folder);
    return true;
}

} // namespace Tessaron::Desktop
