#pragma once

#include "app/DiscNode.h"

#include <TessaronClasses/ZelFileAttribute.h>

#include <QAbstractItemModel>
#include <QHash>
#include <QIcon>
#include <QSet>

#include <memory>
#include <vector>

namespace Tessaron::Desktop
{

/// What filesystems of the disc make of an object.
struct DiscMark {
    enum class Severity : std::uint8_t {
        Told, ///< known, and no reason to look twice
        Changed, ///< another name, or something of it is not as it was
        Lost, ///< no filesystem holds it as it stands
    };
    QString text; ///< a line for each filesystem
    Severity severity = Severity::Told;
};

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

    /// Shows what holds this text in its name, in one list; an empty one shows the tree again.
    void setFilter(const QString &text);
    [[nodiscard]] bool isFiltered() const { return !m_filter.isEmpty(); }

    using Marks = QHash<const DiscNode *, DiscMark>;
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
    struct Order;
    class Rows;

    /// Begins a change that a list of filtered rows cannot follow; when it goes, the list is made anew.
    class FilteredChange;

    [[nodiscard]] QVariant textOf(const DiscNode &node, int column) const;
    [[nodiscard]] QString kindOf(const DiscNode &node) const;
    [[nodiscard]] QIcon iconOf(const DiscNode &node) const;
    [[nodiscard]] QString toolTipOf(const DiscNode &node) const;
    void sortChildren(DiscNode &parent);
    void applyOrder(DiscNode &parent, const std::vector<std::uint32_t> &order);
    void applyOrderBelow(DiscNode &top);
    void movePersistent(const QModelIndexList &before);
    void forgetMarks(const DiscNode &top);
    void findMatches();
    void takeRun(DiscNode &parent, std::uint32_t first, std::uint32_t last,
                 std::vector<std::unique_ptr<DiscNode>> *taken);
    void takeScattered(DiscNode &parent, const std::vector<DiscNode *> &nodes,
                       std::vector<std::unique_ptr<DiscNode>> *taken);
    void rowsChanged(const std::vector<DiscNode *> &nodes);

    std::unique_ptr<DiscNode> m_root;
    int m_sortColumn = Name;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    QString m_filter;
    std::vector<DiscNode *> m_matches;
    QHash<const DiscNode *, std::uint32_t> m_matchRows;
    Marks m_marks;
    // Looked up once for each extension; asking for a type by a name costs microseconds, a frame shows hundreds.
    struct TypeOfFile {
        QString text;
        QIcon icon;
    };
    [[nodiscard]] const TypeOfFile &typeOf(const DiscNode &node) const;
    mutable QHash<QString, TypeOfFile> m_types;
    QIcon m_folderIcon;
    QIcon m_warningIcon;
    QIcon m_changedIcon;
};

/// Type of the data by which rows travel inside the program.
extern const QString discRowsMimeType;

} // namespace Tessaron::Desktop
