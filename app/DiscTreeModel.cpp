#include "app/DiscTreeModel.h"

#include "app/FileDrops.h"
#include "app/Words.h"

#include <TessaronClasses/KRFileReference.h>

#include <QApplication>
#include <QCollator>
#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QMimeData>
#include <QMimeDatabase>
#include <QStyle>

#include <algorithm>
#include <map>
#include <numeric>
#include <platform/foundation/FileSystemRepresentation.h>

namespace Tessaron::Desktop
{

const QString discRowsMimeType = QStringLiteral("application/x-tessaron-disc-rows");

namespace
{

constexpr auto mostRunsRemovedOneByOne = 100;

/// Runs of rows that follow each other, taken from nodes in the order of their rows.
struct RowRun {
    std::uint32_t first;
    std::uint32_t last;
};

std::vector<RowRun> runsOf(const std::vector<DiscNode *> &nodesInOrder)
{
    std::vector<RowRun> runs;
    for (const DiscNode *const node : nodesInOrder) {
        if (!runs.empty() && runs.back().last + 1 == node->row)
            ++runs.back().last;
        else
            runs.push_back({node->row, node->row});
    }
    return runs;
}

void numberFrom(DiscNode &parent, std::size_t first)
{
    for (std::size_t row = first; row < parent.children.size(); ++row)
        parent.children[row]->row = std::uint32_t(row);
}

void addToTotals(DiscNode *from, std::uint64_t bytes, std::uint32_t objects)
{
    for (DiscNode *node = from; node; node = node->parent) {
        node->totalBytes += bytes;
        node->objects += objects;
    }
}

void takeFromTotals(DiscNode *from, std::uint64_t bytes, std::uint32_t objects)
{
    for (DiscNode *node = from; node; node = node->parent) {
        node->totalBytes -= bytes;
        node->objects -= objects;
    }
}

} // namespace

/// Compares rows in the order that is shown. Keys of names are made once for each: a comparison by the rules of a
/// language costs ten times as much as one of keys.
struct DiscTreeModel::Order {
    const DiscTreeModel &model;

    [[nodiscard]] std::vector<std::uint32_t> of(const std::vector<std::unique_ptr<DiscNode>> &nodes) const
    {
        std::vector<std::uint32_t> rows(nodes.size());
        std::iota(rows.begin(), rows.end(), 0u);
        std::vector<QCollatorSortKey> keys;
        // The rules of no language know neither upper and lower case nor numbers.
        const QLocale locale;
        QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
        collator.setNumericMode(true);
        collator.setCaseSensitivity(Qt::CaseInsensitive);
        keys.reserve(nodes.size());
        for (const std::unique_ptr<DiscNode> &node : nodes)
            keys.push_back(collator.sortKey(model.m_sortColumn == Kind ? model.kindOf(*node) : node->name));
        const auto compare = [&](std::uint32_t one, std::uint32_t other) {
            const DiscNode &left = *nodes[one];
            const DiscNode &right = *nodes[other];
            if (left.isFolder() != right.isFolder())
                return left.isFolder() ? -1 : 1;
            if (model.m_sortColumn == Size && left.totalBytes != right.totalBytes)
                return left.totalBytes < right.totalBytes ? -1 : 1;
            if (model.m_sortColumn == Modified && left.modified != right.modified)
                return left.modified < right.modified ? -1 : 1;
            const int byKey = keys[one].compare(keys[other]);
            return byKey != 0 ? byKey : QString::compare(left.name, right.name);
        };
        const bool isAscending = model.m_sortOrder == Qt::AscendingOrder;
        std::stable_sort(rows.begin(), rows.end(), [&](std::uint32_t one, std::uint32_t other) {
            return isAscending ? compare(one, other) < 0 : compare(other, one) < 0;
        });
        return rows;
    }
};

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
        m_model.findMatches();
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
    , m_folderIcon(QIcon::fromTheme(QStringLiteral("folder"), QApplication::style()->standardIcon(QStyle::SP_DirIcon)))
    , m_warningIcon(QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning))
    , m_changedIcon(QApplication::style()->standardIcon(QStyle::SP_MessageBoxInformation))
{
}

void DiscTreeModel::setRoot(std::unique_ptr<DiscNode> root)
{
    beginResetModel();
    m_root = std::move(root);
    m_marks.clear();
    findMatches();
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
        const auto found = m_matchRows.constFind(&node);
        return found == m_matchRows.cend() ? QModelIndex() : createIndex(int(*found), column, pointer);
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
        std::uint64_t bytes = 0;
        std::uint32_t objects = 0;
        for (std::unique_ptr<DiscNode> &node : nodes) {
            forgetMarks(*node);
            applyOrderBelow(*node);
            node->parent = &parent;
            bytes += node->totalBytes;
            objects += node->objects;
            parent.item->addItem(node->item);
            parent.children.push_back(std::move(node));
        }
        numberFrom(parent, first);
        addToTotals(&parent, bytes, objects);
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

void DiscTreeModel::takeRun(DiscNode &parent, std::uint32_t first, std::uint32_t last,
                            std::vector<std::unique_ptr<DiscNode>> *taken)
{
    const auto begin = parent.children.begin() + first;
    const auto end = parent.children.begin() + last + 1;
    std::uint64_t bytes = 0;
    std::uint32_t objects = 0;
    for (auto node = begin; node != end; ++node) {
        bytes += (*node)->totalBytes;
        objects += (*node)->objects;
        (*node)->parent = nullptr;
        taken->push_back(std::move(*node));
    }
    parent.children.erase(begin, end);
    KRFileHierarchyItem::Items &items = parent.item->items();
    items.erase(items.begin() + first, items.begin() + last + 1);
    numberFrom(parent, first);
    takeFromTotals(&parent, bytes, objects);
}

/// Many rows from many places: a view that hears of each by itself would take minutes.
void DiscTreeModel::takeScattered(DiscNode &parent, const std::vector<DiscNode *> &nodes,
                                  std::vector<std::unique_ptr<DiscNode>> *taken)
{
    const QSet<const DiscNode *> leaving(nodes.begin(), nodes.end());
    std::vector<std::unique_ptr<DiscNode>> staying;
    KRFileHierarchyItem::Items stayingItems;
    for (std::unique_ptr<DiscNode> &child : parent.children) {
        if (!leaving.contains(child.get())) {
            stayingItems.push_back(child->item);
            staying.push_back(std::move(child));
            continue;
        }
        takeFromTotals(&parent, child->totalBytes, child->objects);
        child->parent = nullptr;
        taken->push_back(std::move(child));
    }
    parent.children = std::move(staying);
    parent.item->items() = std::move(stayingItems);
    numberFrom(parent, 0);
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
                takeRun(*parent, run->first, run->last, &taken);
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

void DiscTreeModel::setFilter(const QString &text)
{
    if (text == m_filter)
        return;
    beginResetModel();
    m_filter = text;
    findMatches();
    endResetModel();
}

/// A hundred thousand names take some ten milliseconds.
void DiscTreeModel::findMatches()
{
    m_matches.clear();
    m_matchRows.clear();
    if (!isFiltered())
        return;
    std::vector<DiscNode *> waiting = {m_root.get()};
    while (!waiting.empty()) {
        DiscNode *const node = waiting.back();
        waiting.pop_back();
        if (node->parent && node->name.contains(m_filter, Qt::CaseInsensitive)) {
            m_matchRows.insert(node, std::uint32_t(m_matches.size()));
            m_matches.push_back(node);
        }
        for (auto child = node->children.rbegin(); child != node->children.rend(); ++child)
            waiting.push_back(child->get());
    }
}

/// Views draw all of their rows anew for one signal over rows at the top: what is marked may lie anywhere.
void DiscTreeModel::setMarks(Marks marks)
{
    m_marks = std::move(marks);
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCountOfAll - 1), {Qt::DecorationRole});
}

QModelIndex DiscTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= columnCountOfAll || row >= rowCount(parent))
        return {};
    DiscNode *const node = isFiltered() ? m_matches[std::size_t(row)] : nodeAt(parent).children[std::size_t(row)].get();
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
        return parent.isValid() ? 0 : int(m_matches.size());
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
        return index.column() == Name ? QVariant(iconOf(node)) : QVariant();
    case Qt::ToolTipRole:
        return toolTipOf(node);
    case Qt::TextAlignmentRole:
        return index.column() == Size ? QVariant(int(Qt::AlignRight | Qt::AlignVCenter)) : QVariant();
    case Qt::AccessibleDescriptionRole:
        return index.column() == Name ? QVariant(toolTipOf(node)) : QVariant();
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
        return kindOf(node);
    case Modified:
        return node.modified == 0
            ? QString()
            : QLocale().toString(QDateTime::fromSecsSinceEpoch(node.modified), QLocale::ShortFormat);
    default:
        return node.parent ? displayableText(node.parent->discPath()) : QString();
    }
}

const DiscTreeModel::TypeOfFile &DiscTreeModel::typeOf(const DiscNode &node) const
{
    const qsizetype dot = node.name.lastIndexOf(u'.');
    const QString extension = dot > 0 ? node.name.mid(dot + 1) : QString();
    const auto known = m_types.constFind(extension);
    if (known != m_types.cend())
        return *known;
    // By the name alone: its content must not be looked at here.
    const QMimeType type =
        QMimeDatabase().mimeTypeForFile(QStringLiteral("x.") + extension, QMimeDatabase::MatchExtension);
    const QIcon plain = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
    const QIcon generic = QIcon::fromTheme(type.genericIconName(), plain);
    return *m_types.insert(
        extension, {type.isDefault() ? tr("File") : type.comment(), QIcon::fromTheme(type.iconName(), generic)});
}

QString DiscTreeModel::kindOf(const DiscNode &node) const
{
    switch (node.kind) {
    case DiscNodeKind::Folder:
        return tr("Folder");
    case DiscNodeKind::VirtualFolder:
        return tr("New folder");
    case DiscNodeKind::SymbolicLink:
        return tr("Link");
    case DiscNodeKind::Other:
        return tr("Device or pipe");
    case DiscNodeKind::File:
        break;
    }
    return typeOf(node).text;
}

QIcon DiscTreeModel::iconOf(const DiscNode &node) const
{
    if (node.isMissing || node.isUnreadable)
        return m_warningIcon;
    if (const auto mark = m_marks.constFind(&node);
        mark != m_marks.cend() && mark->severity != DiscMark::Severity::Told)
        return mark->severity == DiscMark::Severity::Lost ? m_warningIcon : m_changedIcon;
    return node.isFolder() ? m_folderIcon : typeOf(node).icon;
}

QString DiscTreeModel::toolTipOf(const DiscNode &node) const
{
    QStringList lines;
    if (node.isMissing)
        lines << tr("The file is missing: it was moved or removed.");
    if (node.isUnreadable)
        lines << tr("You may not read this file.");
    if (const auto mark = m_marks.constFind(&node); mark != m_marks.cend())
        lines << mark->text;
    const QString options = optionsText(*node.item->fileReference()->tessaronAttributes());
    if (!options.isEmpty())
        lines << options;
    const QByteArray path = node.sourcePath();
    if (!path.isEmpty())
        lines << displayableText(stringWithFileSystemRepresentation(path));
    return lines.join(u'\n');
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
        findMatches();
        endResetModel();
        return;
    }
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    applyOrderBelow(*m_root);
    movePersistent(before);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

void DiscTreeModel::sortChildren(DiscNode &parent)
{
    const std::vector<std::uint32_t> order = Order{*this}.of(parent.children);
    if (std::is_sorted(order.begin(), order.end()))
        return;
    if (isFiltered()) {
        applyOrder(parent, order);
        return;
    }
    const QList<QPersistentModelIndex> changed = {QPersistentModelIndex(indexOf(parent))};
    Q_EMIT layoutAboutToBeChanged(changed, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    applyOrder(parent, order);
    movePersistent(before);
    Q_EMIT layoutChanged(changed, VerticalSortHint);
}

/// Of nodes that no view knows, or while all views are told.
void DiscTreeModel::applyOrderBelow(DiscNode &top)
{
    std::vector<DiscNode *> waiting = {&top};
    while (!waiting.empty()) {
        DiscNode *const node = waiting.back();
        waiting.pop_back();
        applyOrder(*node, Order{*this}.of(node->children));
        for (const std::unique_ptr<DiscNode> &child : node->children) {
            if (!child->children.empty())
                waiting.push_back(child.get());
        }
    }
}

void DiscTreeModel::applyOrder(DiscNode &parent, const std::vector<std::uint32_t> &order)
{
    if (std::is_sorted(order.begin(), order.end()))
        return;
    std::vector<std::unique_ptr<DiscNode>> sorted;
    sorted.reserve(order.size());
    for (const std::uint32_t row : order)
        sorted.push_back(std::move(parent.children[row]));
    parent.children = std::move(sorted);
    KRFileHierarchyItem::Items &items = parent.item->items();
    for (std::size_t row = 0; row < items.size(); ++row)
        items[row] = parent.children[row]->item;
    numberFrom(parent, 0);
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

/// Rows travel as an object of this process. The type alone says nothing: another window of the program, in a process
/// of its own, sends it, too.
class DiscTreeModel::Rows final : public QMimeData
{
public:
    Rows(const DiscTreeModel &model, std::vector<DiscNode *> nodes)
        : m_model(model)
        , m_nodes(std::move(nodes))
    {
        setData(discRowsMimeType, {});
    }

    /// The rows of this model that the data are; null for any other data.
    [[nodiscard]] static const std::vector<DiscNode *> *of(const DiscTreeModel &model, const QMimeData &data)
    {
        const auto *const rows = dynamic_cast<const Rows *>(&data);
        return rows && &rows->m_model == &model ? &rows->m_nodes : nullptr;
    }

private:
    const DiscTreeModel &m_model;
    const std::vector<DiscNode *> m_nodes;
};

QMimeData *DiscTreeModel::mimeData(const QModelIndexList &indexes) const
{
    return new Rows(*this, nodesAt(indexes));
}

bool DiscTreeModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int, const QModelIndex &parent) const
{
    if (data->hasFormat(discRowsMimeType))
        return Rows::of(*this, *data) && !isFiltered() && nodeAt(parent).isFolder();
    return holdsFiles(*data);
}

bool DiscTreeModel::dropMimeData(const QMimeData *data, Qt::DropAction, int, int, const QModelIndex &parent)
{
    DiscNode *folder = &nodeAt(parent);
    while (!folder->isFolder())
        folder = folder->parent;
    if (const std::vector<DiscNode *> *const nodes = Rows::of(*this, *data)) {
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
