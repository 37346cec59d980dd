#include <QItemSelectionModel>
#include <QTreeView>

#include <TessaronClassesUI/OutlineViewSelection.h>

namespace Tessaron
{

namespace
{

/// True when any column of the row is selected. QItemSelectionModel::rowIntersectsSelection() does not see it when
/// something below another parent was selected first.
bool isSelectedRow(const QItemSelectionModel &selection, const QModelIndex &row)
{
    for (int column = 0; column < row.model()->columnCount(row.parent()); ++column) {
        if (selection.isSelected(row.siblingAtColumn(column)))
            return true;
    }
    return false;
}

} // namespace

std::optional<QModelIndexList> selectedItems(const QTreeView &view)
{
    const QItemSelectionModel *const selection = view.selectionModel();
    if (!selection || !selection->hasSelection())
        return std::nullopt;
    QModelIndexList result;
    // The selection itself lists ranges in the order in which they were made, so the rows are walked as they are shown.
    for (QModelIndex row = view.model()->index(0, 0, view.rootIndex()); row.isValid(); row = view.indexBelow(row)) {
        if (isSelectedRow(*selection, row))
            result.append(row);
    }
    return result;
}

} // namespace Tessaron
