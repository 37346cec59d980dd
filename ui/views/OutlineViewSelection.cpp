#include <QItemSelectionModel>
#include <QSet>
#include <QTreeView>

#include <TessaronClassesUI/OutlineViewSelection.h>

namespace Tessaron
{

std::optional<QModelIndexList> selectedItems(const QTreeView &view)
{
    const QItemSelectionModel *const selection = view.selectionModel();
    if (!selection || !selection->hasSelection())
        return std::nullopt;
    // Asking the selection row by row would look at all its ranges each time.
    QSet<QModelIndex> selected;
    for (const QModelIndex &cell : selection->selectedIndexes())
        selected.insert(cell.siblingAtColumn(0));
    QModelIndexList result;
    // The selection itself lists ranges in the order in which they were made, so the rows are walked as they are shown.
    for (QModelIndex row = view.model()->index(0, 0, view.rootIndex()); row.isValid(); row = view.indexBelow(row)) {
        if (selected.contains(row) && !view.isRowHidden(row.row(), row.parent()))
            result.append(row);
    }
    return result.isEmpty() ? std::nullopt : std::optional(result);
}

} // namespace Tessaron
