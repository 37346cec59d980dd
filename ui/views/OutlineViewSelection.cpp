#include <QItemSelectionModel>
#include <QTreeView>

#include <TessaronClassesUI/OutlineViewSelection.h>

namespace Tessaron
{

std::optional<QModelIndexList> selectedItems(const QTreeView &view)
{
    const QItemSelectionModel *const selection = view.selectionModel();
    if (!selection || !selection->hasSelection())
        return std::nullopt;
    QModelIndexList result;
    // The selection itself lists ranges in the order in which they were made, so the rows are walked as they are shown.
    for (QModelIndex row = view.model()->index(0, 0, view.rootIndex()); row.isValid(); row = view.indexBelow(row)) {
        if (selection->rowIntersectsSelection(row.row(), row.parent()))
            result.append(row);
    }
    return result;
}

} // namespace Tessaron
