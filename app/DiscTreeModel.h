#pragma once

#include "app/DiscNode.h"
#include "app/DiscRowLook.h"
#include "app/DiscTreeFilter.h"

#include <TessaronClasses/ZelFileAttribute.h>

#include <QAbstractItemModel>
#include <QHash>

#include <memory>
#include <vector>

namespace Tessaron::Desktop
{

class DiscTreeOrder;

/// The tree of a disc as views see it. The children of each folder lie in the order that is shown. With a filter, the
/// rows are all objects whose names hold its text, in one list.
///
/// Never touches the disk. On the main thread.
class DiscTreeModel final : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column : std::uint8_t { Name, Size, Kind, Modified, Place };
    static constexpr int columnCountOfAll = 5;

    explicit DiscTreeModel(QObject *parent = nullptr);

    [[nodiscard]] DiscNode &root() const { return *m_root; }
    /// Another disc.
    void setRoot(std::unique_ptr<DiscNode> root);
    /// The node of a row; the root for an invalid index.
    [[nodiscard]] DiscNode &nodeAt(const QModelIndex &index) const;
    /// Invalid for the root, and for what the filter hides.
    [[nodiscard]] QModelIndex indexOf(const DiscNode &node, Column column = Name) const;
    /// The nodes of rows, each once, in the order of the tree, without those that lie below others of them.
    [[nodiscard]] std::vector<DiscNode *> nodesAt(const QModelIndexList &indexes) const;

    // What commands change the tree by.

    /// Puts nodes into a folder, in the order that is shown.
    void insert(DiscNode &parent, std::vector<std::unique_ptr<DiscNode>> nodes);
    /// Takes nodes out, in their order; none lies below another.
    [[nodiscard]] std::vector<std::unique_ptr<DiscNode>> take(const std::vector<DiscNode *> &nodes);
    /// The names of nodes on the disc.
    void setNames(const std::vector<std::pair<DiscNode *, QString>> &names);
    void setOptions(const std::vector<std::pair<DiscNode *, _TessaronAttributes>> &options);

    /// Shows what holds this text in its name and is of the subset, in one list; the tree again for neither.
    void setFilter(const QString &text, DiscSubset subset = DiscSubset::All);
    [[nodiscard]] bool isFiltered() const { return m_filter.isOn(); }

    using Marks = DiscMarks;
    /// Marks objects whose names or contents some filesystem of the disc cannot hold as they stand. Replaces what was
    /// marked before.
    void setMarks(Marks marks);
    [[nodiscard]] DiscMark markOf(const DiscNode &node) const { return m_marks.value(&node); }

    // QAbstractItemModel
    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &index) const override;
    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] bool hasChildren(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    [[nodiscard]] QStringList mimeTypes() const override;
    [[nodiscard]] QMimeData *mimeData(const QModelIndexList &indexes) const override;
    [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::CopyAction | Qt::MoveAction; }
    [[nodiscard]] Qt::DropActions supportedDragActions() const override { return Qt::MoveAction; }
    [[nodiscard]] bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                       const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

Q_SIGNALS:
    /// Someone typed another name into the row.
    void renameWanted(Tessaron::Desktop::DiscNode *node, const QString &name);
    /// Files were dropped onto a folder of the disc.
    void filesDropped(const QList<QByteArray> &paths, Tessaron::Desktop::DiscNode *folder);
    /// Rows were dragged onto a folder of the disc.
    void moveWanted(const std::vector<Tessaron::Desktop::DiscNode *> &nodes, Tessaron::Desktop::DiscNode *folder);
    /// The tree or anything in it has changed.
    void treeChanged();

private:
    /// Begins a change that a list of filtered rows cannot follow; when it goes, the list is made anew.
    class FilteredChange;

    [[nodiscard]] QVariant textOf(const DiscNode &node, int column) const;
    [[nodiscard]] DiscTreeOrder order() const;
    void sortChildren(DiscNode &parent);
    void applyOrderBelow(DiscNode &top);
    void movePersistent(const QModelIndexList &before);
    void forgetMarks(const DiscNode &top);
    void rowsChanged(const std::vector<DiscNode *> &nodes);

    std::unique_ptr<DiscNode> m_root;
    int m_sortColumn = Name;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    DiscTreeFilter m_filter;
    Marks m_marks;
    DiscRowLook m_look;
};

} // namespace Tessaron::Desktop
